#include "ui/widgets/keyed_tree.h"

#include "ui/widgets/composition_field.h"
#include "ui/widgets/focus_marks.h"
#include "ui/widgets/key_kinds.h"
#include "ui/widgets/one_line_delegate.h"
#include "ui/widgets/text_drops.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

constexpr int ExpandDelay = 700; // milliseconds over a closed node until it opens
constexpr int ScrollInterval = 80;
constexpr int ScrollMargin = 16;

bool isAtOrBelow(QModelIndex index, const QModelIndex& top)
{
    while (index.isValid() && index != top)
        index = index.parent();
    return index.isValid();
}

/// Frames the node under something that is dragged.
class NodeDelegate : public OneLineDelegate
{
public:
    explicit NodeDelegate(KeyedTree* tree) : OneLineDelegate(tree), m_tree(tree) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        OneLineDelegate::paint(painter, option, index);
        if (m_tree->dropHighlight() != 0 && m_tree->nodes().position(index) == m_tree->dropHighlight())
            frameDropTarget(*painter, option);
    }

private:
    KeyedTree* m_tree;
};

} // namespace

KeyedTree::KeyedTree(QWidget* parent)
    : QTreeView(parent), m_model(new KeyedTreeModel(this)), m_composition(new CompositionField(*this))
{
    AccessibleView::install();
    connect(m_model, &QAbstractItemModel::modelReset, this, &KeyedTree::forgetShownNodes);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &KeyedTree::forgetShownNodes);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &KeyedTree::forgetShownNodes);
    connect(this, &QTreeView::expanded, this, &KeyedTree::forgetShownNodes);
    connect(this, &QTreeView::collapsed, this, &KeyedTree::forgetShownNodes);
    setModel(m_model);
    setItemDelegate(new NodeDelegate(this));
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setAcceptDrops(true);
    // Long names and deep branches scroll sideways instead of being cut off.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    m_expandTimer.setSingleShot(true);
    m_expandTimer.setInterval(ExpandDelay);
    connect(&m_expandTimer, &QTimer::timeout, this, [this] {
        if (m_dropHighlight.isValid())
            expand(m_dropHighlight);
    });
    m_scrollTimer.setInterval(ScrollInterval);
    connect(&m_scrollTimer, &QTimer::timeout, this, &KeyedTree::scrollWhileHovering);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { m_choiceToTell = false; });
    connect(this, &QTreeView::collapsed, this, &KeyedTree::selectInsteadOfHidden);
    const auto tellOpened = [this](const QModelIndex& index) { AccessibleView::tellOpened(*this, index); };
    connect(this, &QTreeView::expanded, this, tellOpened);
    connect(this, &QTreeView::collapsed, this, tellOpened);
}

QModelIndex KeyedTree::selectedNode() const
{
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    return selected.isEmpty() ? QModelIndex() : selected.first();
}

int KeyedTree::selectedPosition() const
{
    return m_model->position(selectedNode());
}

void KeyedTree::select(int position)
{
    const QScopedValueRollback byProgram(m_byProgram, true);
    m_choiceToTell = false;
    setCurrentIndex(m_model->indexOf(position));
}

void KeyedTree::expandNode(int position)
{
    expand(m_model->indexOf(position));
}

void KeyedTree::setDropHighlight(int position)
{
    if (dropHighlight() == position)
        return;
    m_dropHighlight = position == 0 ? QModelIndex() : m_model->indexOf(position);
    viewport()->update();
}

bool KeyedTree::isOnBranchArrow(const QModelIndex& index, const QPoint& position) const
{
    if (!m_model->hasChildren(index))
        return false;
    const QRect item = visualRect(index);
    if (isRightToLeft())
        return position.x() > item.right() && position.x() <= item.right() + indentation();
    return position.x() < item.left() && position.x() >= item.left() - indentation();
}

QItemSelectionModel::SelectionFlags KeyedTree::selectionCommand(const QModelIndex& index,
                                                                const QEvent* event) const
{
    // Whether Ctrl is held makes no difference: there is always one selected node, never none.
    if (!index.isValid() || (event != nullptr && event->type() == QEvent::MouseButtonRelease))
        return QItemSelectionModel::NoUpdate;
    return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void KeyedTree::mousePressEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    const QModelIndex index = indexAt(position);
    m_pressedNode = QModelIndex();
    if (event->button() == Qt::LeftButton) {
        if (index.isValid() && !isOnBranchArrow(index, position))
            m_pressedNode = index;
        m_buttonIsDown = true;
        QTreeView::mousePressEvent(event);
        return;
    }
    if (event->button() == Qt::RightButton)
        selectForMenu(index);
    event->accept();
}

void KeyedTree::selectForMenu(const QModelIndex& index)
{
    if (!index.isValid() || m_model->position(index) == selectedPosition())
        return;
    setCurrentIndex(index);
    // Before the menu opens: what it acts on must be what is shown for the node.
    tellChoice();
}

void KeyedTree::mouseMoveEvent(QMouseEvent* event)
{
    // A press that wanders over the nodes is no click and must not take the selection with it.
    if (event->buttons() == Qt::NoButton)
        QTreeView::mouseMoveEvent(event);
    Q_EMIT mouseMoved();
}

void KeyedTree::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    QTreeView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_buttonIsDown = false;
    const QModelIndex pressed = std::exchange(m_pressedNode, QPersistentModelIndex());
    const bool clicked = viewport()->rect().contains(position) && indexAt(position) == pressed;
    // A key may have taken the selection elsewhere while the button was down.
    if (pressed.isValid() && clicked && selectionModel()->isSelected(pressed)) {
        m_choiceToTell = false;
        Q_EMIT nodeClicked(m_model->position(pressed));
    } else if (!m_pressedKeys.any()) {
        tellChoice();
    }
}

void KeyedTree::keyPressEvent(QKeyEvent* event)
{
    m_pressedKeys.press(*event);
    if (asksForMenu(*event)) {
        event->accept();
        QContextMenuEvent menu(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
        if (!event->isAutoRepeat())
            contextMenuEvent(&menu);
        return;
    }
    if (!event->isAutoRepeat())
        Q_EMIT keyPressed(event->key(), event->modifiers());
    if (event->matches(QKeySequence::Paste)) {
        event->accept();
        if (!event->isAutoRepeat())
            Q_EMIT pasteRequested();
        return;
    }
    if (typesControlCharacter(*event)) {
        event->ignore();
        return;
    }
    if (selectsCurrentNode(*event)) {
        setCurrentIndex(currentIndex());
        scrollTo(currentIndex());
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
    const bool goesToAnEnd = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    if (goesToAnEnd && currentIndex().isValid() && !selectionModel()->hasSelection())
        setCurrentIndex(currentIndex()); // it stood there already
}

bool KeyedTree::selectsCurrentNode(const QKeyEvent& event) const
{
    // Where a node was removed its neighbour is where the keyboard stands. Moving on from it would leave it out.
    if (!currentIndex().isValid() || selectionModel()->hasSelection())
        return false;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return false;
    }
}

void KeyedTree::keyReleaseEvent(QKeyEvent* event)
{
    const bool pressedHere = m_pressedKeys.release(*event);
    QTreeView::keyReleaseEvent(event);
    if (pressedHere)
        Q_EMIT keyReleased(event->key(), event->modifiers());
    if (!event->isAutoRepeat() && !m_buttonIsDown)
        tellChoice();
}

void KeyedTree::inputMethodEvent(QInputMethodEvent* event)
{
    if (!m_composition->takes(*event))
        QTreeView::inputMethodEvent(event);
}

void KeyedTree::focusInEvent(QFocusEvent* event)
{
    QTreeView::focusInEvent(event);
    setAttribute(Qt::WA_InputMethodEnabled);
    AccessibleView::tellCurrent(*this, currentIndex());
}

void KeyedTree::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    // The base class would count its nodes with the hidden header among them.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    QAbstractItemView::currentChanged(current, previous);
    AccessibleView::tellCurrent(*this, current);
    // Names are Japanese: an input method must be able to type what is searched, although no node can be edited.
    setAttribute(Qt::WA_InputMethodEnabled);
}

void KeyedTree::focusOutEvent(QFocusEvent* event)
{
    m_pressedKeys.forget();
    m_buttonIsDown = false;
    QTreeView::focusOutEvent(event);
    // What is up again now is told to somebody else. The change of the focus comes to its end first: what is told may
    // show a box.
    QMetaObject::invokeMethod(this, &KeyedTree::tellChoice, Qt::QueuedConnection);
}

void KeyedTree::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QAbstractItemView::selectionChanged(selected, deselected); // NOLINT(bugprone-parent-virtual-call)
    AccessibleView::tellSelection(*this, selected, deselected);
    if (m_byProgram)
        return;
    m_choiceToTell = true;
    if (!m_buttonIsDown && !m_pressedKeys.any())
        tellChoice();
}

void KeyedTree::tellChoice()
{
    const int chosen = selectedPosition();
    if (std::exchange(m_choiceToTell, false) && chosen != 0)
        Q_EMIT nodeChosen(chosen);
}

void KeyedTree::selectInsteadOfHidden(const QModelIndex& closed)
{
    const QModelIndex selected = selectedNode();
    if (selected != closed && isAtOrBelow(selected, closed))
        setCurrentIndex(closed);
}

void KeyedTree::initViewItemOption(QStyleOptionViewItem* option) const
{
    QTreeView::initViewItemOption(option);
    showFocus(*option, *this);
}

void KeyedTree::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    frameCurrentRow(*this, visualRect(currentIndex()));
}

void KeyedTree::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    const QScopedValueRollback byProgram(m_byProgram, true);
    const QModelIndex selected = selectedNode();
    bool goes = false;
    for (int row = first; row <= last; ++row)
        goes = goes || isAtOrBelow(selected, m_model->index(row, 0, parent));
    // The keyboard goes on from the neighbour, but nobody has selected that.
    QTreeView::rowsAboutToBeRemoved(parent, first, last);
    if (goes)
        selectionModel()->clearSelection();
}

void KeyedTree::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        selectForMenu(indexAt(event->pos()));
    } else {
        QPoint inside(0, 0);
        if (currentIndex().isValid()) {
            scrollTo(currentIndex());
            const QRect node = visualRect(currentIndex());
            inside = QPoint(std::max(node.left(), 0), node.bottom());
        }
        position = viewport()->mapToGlobal(inside);
    }
    Q_EMIT menuRequested(position);
}

const std::vector<QModelIndex>& KeyedTree::shownNodes() const
{
    if (!m_shownNodes.empty())
        return m_shownNodes;
    const auto addBelow = [this](const auto& self, const QModelIndex& parent) -> void {
        const int count = m_model->rowCount(parent);
        for (int row = 0; row < count; ++row) {
            const QModelIndex node = m_model->index(row, 0, parent);
            m_shownRows.insert(node, static_cast<int>(m_shownNodes.size()));
            m_shownNodes.push_back(node);
            if (isOpen(node))
                self(self, node);
        }
    };
    addBelow(addBelow, {});
    return m_shownNodes;
}

void KeyedTree::forgetShownNodes()
{
    m_shownNodes.clear();
    m_shownRows.clear();
}

QModelIndex KeyedTree::shownIndex(int row, int column) const
{
    const std::vector<QModelIndex>& shown = shownNodes();
    const bool isThere = row >= 0 && static_cast<std::size_t>(row) < shown.size() && column == 0;
    return isThere ? shown[static_cast<std::size_t>(row)] : QModelIndex();
}

int KeyedTree::shownRow(const QModelIndex& index) const
{
    shownNodes();
    return m_shownRows.value(index, -1);
}

bool KeyedTree::isOpen(const QModelIndex& index) const
{
    // The view remembers of a node that it is to be open, even when there is nothing below it.
    return m_model->hasChildren(index) && isExpanded(index);
}

bool KeyedTree::chooseRow(int row)
{
    const QModelIndex node = shownIndex(row, 0);
    if (!node.isValid())
        return false;
    if (selectionModel()->isSelected(node))
        return true;
    {
        const QScopedValueRollback byProgram(m_byProgram, true);
        setCurrentIndex(node);
    }
    // What is told may fill a list or show a box, for which nobody outside should wait.
    m_choiceToTell = true;
    QMetaObject::invokeMethod(this, &KeyedTree::tellChoice, Qt::QueuedConnection);
    return true;
}

void KeyedTree::goToRow(int row)
{
    if (!shownIndex(row, 0).isValid())
        return;
    activateWindow();
    setFocus(Qt::OtherFocusReason);
    chooseRow(row);
}

void KeyedTree::pressRow(int row)
{
    goToRow(row);
    const auto press = [this, pressed = QPersistentModelIndex(shownIndex(row, 0))] {
        if (!pressed.isValid() || !selectionModel()->isSelected(pressed))
            return;
        m_choiceToTell = false;
        Q_EMIT nodeClicked(m_model->position(pressed));
    };
    // Before the choice is told: a click on a node is not both.
    m_choiceToTell = false;
    QMetaObject::invokeMethod(this, press, Qt::QueuedConnection);
}

void KeyedTree::turnBranch(int row)
{
    const auto turn = [this, node = QPersistentModelIndex(shownIndex(row, 0))] {
        if (node.isValid())
            setExpanded(node, !isExpanded(node));
    };
    QMetaObject::invokeMethod(this, turn, Qt::QueuedConnection);
}

void KeyedTree::openMenuOf(int row)
{
    goToRow(row);
    const auto open = [this] {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
        contextMenuEvent(&event);
    };
    QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

void KeyedTree::hoverAt(const QPoint& position)
{
    m_hoverPosition = position;
    const QModelIndex index = indexAt(position);
    const int hovered = m_model->position(index);
    if (hovered != dropHighlight()) {
        setDropHighlight(hovered);
        if (index.isValid() && m_model->hasChildren(index) && !isExpanded(index))
            m_expandTimer.start();
        else
            m_expandTimer.stop();
    }
    if (!m_scrollTimer.isActive())
        m_scrollTimer.start();
}

void KeyedTree::scrollWhileHovering()
{
    const int step = m_hoverPosition.y() < ScrollMargin                           ? -1
                     : m_hoverPosition.y() >= viewport()->height() - ScrollMargin ? 1
                                                                                  : 0;
    if (step == 0)
        return;
    verticalScrollBar()->triggerAction(step < 0 ? QAbstractSlider::SliderSingleStepSub
                                                : QAbstractSlider::SliderSingleStepAdd);
    hoverAt(m_hoverPosition);
}

void KeyedTree::endHovering()
{
    m_expandTimer.stop();
    m_scrollTimer.stop();
}

void KeyedTree::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void KeyedTree::dragMoveEvent(QDragMoveEvent* event)
{
    if (takesText(*event))
        hoverAt(event->position().toPoint());
}

void KeyedTree::dragLeaveEvent(QDragLeaveEvent* event)
{
    endHovering();
    setDropHighlight(0);
    event->accept();
}

void KeyedTree::dropEvent(QDropEvent* event)
{
    if (!takesText(*event))
        return;
    hoverAt(event->position().toPoint());
    endHovering();
    afterDrop(*this, *event, [this](const QString& text) { Q_EMIT textDropped(text); });
}

} // namespace quillon
