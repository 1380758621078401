#include "ui/widgets/report_list.h"

#include "ui/widgets/composition_field.h"
#include "ui/widgets/copied_rows.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/fitted_columns.h"
#include "ui/widgets/focus_marks.h"
#include "ui/widgets/key_kinds.h"
#include "ui/widgets/one_line_delegate.h"
#include "ui/widgets/sort_menu.h"
#include "ui/widgets/text_drops.h"
#include "ui/widgets/wait_cursor.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMetaMethod>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Keeps the current cell in the first column: a list has current rows only, and the first column is what a
/// screen reader should read first.
class RowSelectionModel : public QItemSelectionModel
{
public:
    using QItemSelectionModel::QItemSelectionModel;

    void setCurrentIndex(const QModelIndex& index, SelectionFlags command) override
    {
        QItemSelectionModel::setCurrentIndex(index.siblingAtColumn(0), command);
    }
};

bool isEnter(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

int rowsIn(const QItemSelection& selection)
{
    int rows = 0;
    for (const QItemSelectionRange& range : selection)
        rows += range.height();
    return rows;
}

} // namespace

ReportList::ReportList(Reporting& reporting, const std::vector<ReportModel::Column>& columns, QWidget* parent)
    : QTableView(parent), m_reporting(reporting), m_model(new ReportModel(columns, this)),
      m_composition(new CompositionField(*this))
{
    AccessibleView::install();
    setModel(m_model);
    delete selectionModel();
    setSelectionModel(new RowSelectionModel(m_model, this));
    // The header has nothing to show of a selection, but would look at all rows of it whenever it is painted.
    horizontalHeader()->setSelectionModel(new QItemSelectionModel(m_model, horizontalHeader()));
    setItemDelegate(new OneLineDelegate(this));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setCornerButtonEnabled(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setDragDropMode(DragOnly);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);

    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    QHeaderView* header = horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setHighlightSections(false);
    header->setSectionsClickable(true);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(false);
    connect(header, &QHeaderView::sectionClicked, this, &ReportList::columnClick);
    // The view's own fitting would count as a width that the person has chosen.
    disconnect(header, &QHeaderView::sectionHandleDoubleClicked, this, nullptr);
    connect(header, &QHeaderView::sectionHandleDoubleClicked, this, [this](int column) {
        handleEvent(m_reporting, objectName() + u"_MouseDown"_s, [&] { fit({column}); });
    });
    header->setToolTip(u"クリックするか、Ctrl + Shift + F10 で並べ替えます。"_s);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this,
            [this, header](const QPoint& position) { showSortMenu(header->mapToGlobal(position)); });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        m_filledSincePress = m_pressed;
        endSorting();
    });
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ReportList::endSorting);
    connect(m_model, &ReportModel::scatteredRowsAboutToBeRemoved, this,
            [this] { m_currentBefore = currentIndex(); });
    connect(m_model, &ReportModel::scatteredRowsRemoved, this, [this](int firstRow) {
        // When the current row is among the removed ones, its neighbour is not where the others were moved to.
        if (!m_currentBefore.isValid() && m_model->rowCount() > 0)
            selectionModel()->setCurrentIndex(m_model->index(std::min(firstRow, m_model->rowCount() - 1), 0),
                                              QItemSelectionModel::NoUpdate);
        m_currentBefore = QModelIndex();
    });
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): it looks at the finished list
    m_columns = new FittedColumns(*this, *m_model);
    adaptToFont();
}

int ReportList::heightOfRows() const
{
    return verticalHeader()->defaultSectionSize();
}

void ReportList::adaptToFont()
{
    const QFontMetrics metrics(font());
    // Japanese glyphs may come from a taller font than the one that is set.
    const int text = std::max(metrics.height(), metrics.boundingRect(u"漢gｇ|"_s).height());
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameVMargin, nullptr, this) + 1;
    verticalHeader()->setDefaultSectionSize(text + 2 * margin);
    m_columns->adaptToFont();
}

void ReportList::setColumnCharacters(const std::vector<int>& characters)
{
    m_columns->setCharacters(characters);
}

void ReportList::giveRoomTo(const std::vector<int>& columns)
{
    m_columns->giveRoomTo(columns);
}

void ReportList::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    m_columns->shareRoom();
}

void ReportList::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        adaptToFont();
}

std::vector<int> ReportList::shownColumns() const
{
    std::vector<int> columns;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (!isColumnHidden(column))
            columns.push_back(column);
    }
    return columns;
}

int ReportList::sortedColumn() const
{
    const QHeaderView* header = horizontalHeader();
    return header->isSortIndicatorShown() ? header->sortIndicatorSection() : -1;
}

void ReportList::columnClick(int column)
{
    handleEvent(m_reporting, objectName() + u"_ColumnClick"_s, [&] { sortBy(column); });
}

void ReportList::fitColumns()
{
    handleEvent(m_reporting, objectName() + u"_KeyDown"_s, [this] { fit(shownColumns()); });
}

void ReportList::fit(const std::vector<int>& columns)
{
    const WaitCursor cursor;
    m_columns->fit(columns);
}

void ReportList::sortBy(int column)
{
    const WaitCursor cursor;
    m_model->sortByColumn(column);
    // Set after every click: the header itself would turn the arrow round at the second one.
    horizontalHeader()->setSortIndicator(column, Qt::AscendingOrder);
    horizontalHeader()->setSortIndicatorShown(true);
    Q_EMIT columnClicked(column);
}

void ReportList::endSorting()
{
    horizontalHeader()->setSortIndicatorShown(false);
    m_typed.clear();
}

int ReportList::selectedRow() const
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && selectionModel()->isSelected(current))
        return current.row();
    int first = -1;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        if (range.isValid() && (first < 0 || range.top() < first))
            first = range.top();
    }
    return first;
}

std::vector<int> ReportList::selectedRows() const
{
    std::vector<int> selected;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); range.isValid() && row <= range.bottom(); ++row)
            selected.push_back(row);
    }
    std::sort(selected.begin(), selected.end());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    return selected;
}

bool ReportList::moreThanOneSelected() const
{
    int first = -1;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        if (!range.isValid())
            continue;
        if (range.height() > 1 || (first >= 0 && range.top() != first))
            return true;
        first = range.top();
    }
    return false;
}

void ReportList::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    // Rows become current, not cells: going to a row leaves the columns where they are.
    const int across = horizontalScrollBar()->value();
    QTableView::scrollTo(index, hint);
    horizontalScrollBar()->setValue(across);
}

void ReportList::keyPressEvent(QKeyEvent* event)
{
    m_pressedKeys.press(*event);
    if (isEnter(*event)) {
        event->accept();
        if (!event->isAutoRepeat())
            Q_EMIT enterPressed();
        return;
    }
    if (takesKeyOfColumns(*event)) {
        event->accept();
        return;
    }
    if (!typesText(*event) && !event->isAutoRepeat())
        Q_EMIT keyPressed(event->key(), event->modifiers());
    if (m_model->dragColumn() >= 0 &&
        (event->matches(QKeySequence::Copy) || event->matches(QKeySequence::Cut))) {
        event->accept();
        if (!event->isAutoRepeat())
            copySelection();
        return;
    }
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        horizontalScrollBar()->triggerAction(event->key() == Qt::Key_Left
                                                 ? QAbstractSlider::SliderSingleStepSub
                                                 : QAbstractSlider::SliderSingleStepAdd);
        event->accept();
        return;
    }
    if (typesControlCharacter(*event)) {
        event->ignore();
        return;
    }
    if (selectsCurrentRow(*event)) {
        setCurrentIndex(currentIndex());
        scrollTo(currentIndex());
        event->accept();
        return;
    }
    QTableView::keyPressEvent(event);
}

bool ReportList::takesKeyOfColumns(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers held = event.modifiers() & ~Qt::KeypadModifier;
    std::function<void()> act;
    if (asksForMenu(event))
        act = [this] {
            QContextMenuEvent menu(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
            contextMenuEvent(&menu);
        };
    else if (event.key() == Qt::Key_F10 && held == (Qt::ControlModifier | Qt::ShiftModifier))
        act = [this] { showSortMenu(placeOfMenu()); };
    // On the number pad and, with Shift or without, where the keyboard has none.
    else if (event.key() == Qt::Key_Plus && (held & ~Qt::ShiftModifier) == Qt::ControlModifier)
        act = [this] { fitColumns(); };
    if (act && !event.isAutoRepeat())
        act();
    return static_cast<bool>(act);
}

void ReportList::copySelection()
{
    handleEvent(m_reporting, objectName() + u"_KeyDown"_s, [this] {
        const std::vector<int> rows = selectedRows();
        if (rows.empty())
            return;
        const WaitCursor cursor;
        copyRows(*m_model, rows, m_model->dragColumn());
    });
}

bool ReportList::selectsCurrentRow(const QKeyEvent& event)
{
    // The list that gets the focus has a current row already. Moving on from it would leave it out, and at the ends
    // of the list it could never be selected.
    const bool withControl = event.modifiers().testFlag(Qt::ControlModifier);
    if (withControl || !currentIndex().isValid() || selectionModel()->hasSelection())
        return false;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    case Qt::Key_Home:
        return currentIndex().row() == 0;
    case Qt::Key_End:
        return currentIndex().row() == m_model->rowCount() - 1;
    default:
        return false;
    }
}

void ReportList::keyReleaseEvent(QKeyEvent* event)
{
    const bool pressedHere = m_pressedKeys.release(*event);
    QTableView::keyReleaseEvent(event);
    if (pressedHere)
        Q_EMIT keyReleased(event->key(), event->modifiers());
}

void ReportList::inputMethodEvent(QInputMethodEvent* event)
{
    if (!m_composition->takes(*event))
        QTableView::inputMethodEvent(event);
}

void ReportList::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    setAttribute(Qt::WA_InputMethodEnabled);
    AccessibleView::tellCurrent(*this, currentIndex());
}

void ReportList::focusOutEvent(QFocusEvent* event)
{
    m_pressedKeys.forget();
    QTableView::focusOutEvent(event);
}

void ReportList::keyboardSearch(const QString& search)
{
    const int count = m_model->rowCount();
    if (search.isEmpty()) {
        m_typed.clear();
        return;
    }
    if (count == 0)
        return;
    if (!m_sinceTyped.isValid() || m_sinceTyped.elapsed() > QApplication::keyboardInputInterval())
        m_typed.clear();
    m_sinceTyped.start();
    m_typed += search;
    // The same character again and again goes through the rows that begin with it.
    const bool repeated = m_typed.size() > 1 && m_typed.count(m_typed.front()) == m_typed.size();
    const QStringView wanted = repeated ? QStringView(m_typed).first(1) : QStringView(m_typed);
    const int current = currentIndex().row();
    // A longer text may still fit the current row; a single character goes on to the next one.
    const int start = current + (wanted.size() == 1 && selectionModel()->isSelected(currentIndex()) ? 1 : 0);
    for (int step = 0; step < count; ++step) {
        const int row = (std::max(start, 0) + step) % count;
        if (m_model->text(row, 0).startsWith(wanted, Qt::CaseInsensitive)) {
            setCurrentIndex(m_model->index(row, 0));
            return;
        }
    }
}

QModelIndex ReportList::moveCursor(CursorAction action, Qt::KeyboardModifiers /*modifiers*/)
{
    const int count = m_model->rowCount();
    if (count == 0)
        return {};
    if (!currentIndex().isValid())
        return m_model->index(action == MoveEnd ? count - 1 : 0, 0);
    const int page = std::max(1, viewport()->height() / heightOfRows() - 1);
    int row = currentIndex().row();
    switch (action) {
    case MoveUp:
    case MovePrevious:
        --row;
        break;
    case MoveDown:
    case MoveNext:
        ++row;
        break;
    case MovePageUp:
        row -= page;
        break;
    case MovePageDown:
        row += page;
        break;
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = count - 1;
        break;
    case MoveLeft:
    case MoveRight:
        break;
    }
    return m_model->index(std::clamp(row, 0, count - 1), 0);
}

void ReportList::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    // By rows alone, so that a rubber band may begin below the last row or beside the last column.
    const int count = m_model->rowCount();
    const int offset = verticalHeader()->offset();
    const int top = std::min(rect.top(), rect.bottom()) + offset;
    const int bottom = std::max(rect.top(), rect.bottom()) + offset;
    const int first = std::max(top, 0) / heightOfRows();
    const int last = std::min(bottom / heightOfRows(), count - 1);
    QItemSelection selection;
    if (bottom >= 0 && first <= last)
        selection.select(m_model->index(first, 0), m_model->index(last, m_model->columnCount() - 1));
    selectionModel()->select(selection, command);
}

QModelIndexList ReportList::selectedIndexes() const
{
    // The base class asks for these to see whether and what to drag; a list of a million would take its time.
    const int row = selectedRow();
    if (row < 0)
        return {};
    return {m_model->index(row, 0)};
}

void ReportList::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    // The base class would count its cells with the hidden header of the rows among them.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    QAbstractItemView::currentChanged(current, previous);
    AccessibleView::tellCurrent(*this, current);
    // Names are Japanese: an input method must be able to type what is searched, although no cell can be edited.
    setAttribute(Qt::WA_InputMethodEnabled);
    // The frame goes round all columns.
    viewport()->update(placeOfRow(previous));
    viewport()->update(placeOfRow(current));
}

void ReportList::initViewItemOption(QStyleOptionViewItem* option) const
{
    QTableView::initViewItemOption(option);
    showFocus(*option, *this);
}

void ReportList::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    frameCurrentRow(*this, placeOfRow(currentIndex()));
}

QRect ReportList::placeOfRow(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    return {-horizontalHeader()->offset(), rowViewportPosition(index.row()), horizontalHeader()->length(),
            heightOfRows()};
}

void ReportList::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    constexpr int manyRows = 1000;
    // The base class would list every cell for assistive technology.
    if (rowsIn(selected) + rowsIn(deselected) < manyRows)
        QAbstractItemView::selectionChanged(selected, deselected); // NOLINT(bugprone-parent-virtual-call)
    else
        viewport()->update();
    AccessibleView::tellSelection(*this, selected, deselected);
}

QHeaderView* ReportList::shownHeader() const
{
    return horizontalHeader();
}

int ReportList::shownColumnCount() const
{
    const QHeaderView* header = horizontalHeader();
    return header->count() - header->hiddenSectionCount();
}

int ReportList::modelColumn(int shownColumn) const
{
    const QHeaderView* header = horizontalHeader();
    int column = 0;
    while (column < header->count() && (header->isSectionHidden(column) || shownColumn-- > 0))
        ++column;
    return column;
}

bool ReportList::chooseRow(int row)
{
    const QModelIndex index = m_model->index(row, 0);
    if (!index.isValid())
        return false;
    const auto kept = selectionMode() == ExtendedSelection ? QItemSelectionModel::Select
                                                           : QItemSelectionModel::ClearAndSelect;
    selectionModel()->setCurrentIndex(index, kept | QItemSelectionModel::Rows);
    return true;
}

bool ReportList::releaseRow(int row)
{
    const QModelIndex index = m_model->index(row, 0);
    if (!index.isValid() || selectionMode() != ExtendedSelection)
        return false;
    selectionModel()->select(index, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    return true;
}

void ReportList::goToRow(int row)
{
    const QModelIndex index = m_model->index(row, 0);
    if (!index.isValid())
        return;
    activateWindow();
    setFocus(Qt::OtherFocusReason);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ReportList::pressRow(int row)
{
    goToRow(row);
    const auto press = [this, pressed = QPersistentModelIndex(m_model->index(row, 0))] {
        if (!pressed.isValid() || selectedRow() != pressed.row())
            return;
        Q_EMIT listDoubleClicked();
        Q_EMIT rowDoubleClicked();
    };
    QMetaObject::invokeMethod(this, press, Qt::QueuedConnection);
}

void ReportList::openMenuOf(int row)
{
    goToRow(row);
    const auto open = [this] {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
        contextMenuEvent(&event);
    };
    QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

void ReportList::mousePressEvent(QMouseEvent* event)
{
    m_typed.clear();
    m_pressed = true;
    m_filledSincePress = false;
    QTableView::mousePressEvent(event);
}

void ReportList::mouseMoveEvent(QMouseEvent* event)
{
    QTableView::mouseMoveEvent(event);
    Q_EMIT mouseMoved();
}

void ReportList::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The rows that were meant are gone: the first press has taken the keyboard from a pane that then filled the list.
    if (m_filledSincePress) {
        mousePressEvent(event);
        return;
    }
    const bool onRow = indexAt(event->position().toPoint()).isValid();
    QTableView::mouseDoubleClickEvent(event);
    m_pressed = false; // what follows is no half of this one
    if (event->button() != Qt::LeftButton)
        return;
    Q_EMIT listDoubleClicked();
    if (onRow)
        Q_EMIT rowDoubleClicked();
}

void ReportList::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
    if (event->reason() == QContextMenuEvent::Mouse) {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && !selectionModel()->isSelected(index))
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                         QItemSelectionModel::Rows);
        Q_EMIT menuRequested(event->globalPos());
    } else if (event->modifiers().testFlag(Qt::ControlModifier) || !hasMenuOfItsOwn()) {
        showSortMenu(placeOfMenu());
    } else {
        Q_EMIT menuRequested(placeOfMenu());
    }
}

void ReportList::showSortMenu(const QPoint& position)
{
    handleEvent(m_reporting, objectName() + u"_MouseDown"_s, [&] {
        HeaderActs acts{.columns = {},
                        .sortedColumn = sortedColumn(),
                        .sortBy = [this](int column) { columnClick(column); },
                        .fitColumns = [this] { fitColumns(); }};
        for (const int column : shownColumns())
            acts.columns.push_back(
                {column, m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()});
        openSortMenu(*this, position, acts);
    });
}

QPoint ReportList::placeOfMenu()
{
    QPoint inside(0, 0);
    if (currentIndex().isValid()) {
        scrollTo(currentIndex());
        inside = QPoint(heightOfRows(), visualRect(currentIndex()).bottom());
    }
    return viewport()->mapToGlobal(inside);
}

bool ReportList::hasMenuOfItsOwn() const
{
    static const QMetaMethod Requested = QMetaMethod::fromSignal(&ReportList::menuRequested);
    return isSignalConnected(Requested);
}

void ReportList::acceptTextDrops()
{
    setDragDropMode(DragDrop);
}

void ReportList::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void ReportList::dragMoveEvent(QDragMoveEvent* event)
{
    takesText(*event); // not the base class: it asks the model, and whether the place is free
}

void ReportList::dropEvent(QDropEvent* event)
{
    if (takesText(*event))
        afterDrop(*this, *event, [this](const QString& text) { Q_EMIT textDropped(text); });
}

} // namespace quillon
