#include "ui/widgets/accessible_view.h"

#include "app/base/platform/accessibility_bus.h"
#include "ui/widgets/accessible_cell.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QItemSelection>

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

constexpr int MostToldRows = 100;     // of one change of the selection; more would only be noise
constexpr int MostListedRows = 10000; // whose cells are made because they are selected

int cellsIn(const QItemSelection& selection)
{
    int cells = 0;
    for (const QItemSelectionRange& range : selection)
        cells += range.height();
    return cells;
}

/// Goes through the first cells of the rows of a selection, each once, until `visit` answers false.
template <class Visit> void forEachRow(const QItemSelection& selection, Visit&& visit)
{
    for (const QItemSelectionRange& range : selection) {
        if (!range.isValid() || range.left() != 0)
            continue;
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (!visit(range.model()->index(row, 0, range.parent())))
                return;
        }
    }
}

AccessibleView::Listener& currentListener()
{
    static AccessibleView::Listener current = nullptr;
    return current;
}

bool isHeard()
{
    return QAccessible::isActive() || currentListener() != nullptr;
}

void send(QAccessibleEvent& event)
{
    if (currentListener() != nullptr)
        currentListener()(event);
    QAccessible::updateAccessibility(&event);
}

AccessibleView* interfaceOf(AccessibleRows& rows)
{
    return dynamic_cast<AccessibleView*>(QAccessible::queryAccessibleInterface(&rows.viewOfRows()));
}

void tell(AccessibleRows& rows, const QModelIndex& index, QAccessible::Event what)
{
    AccessibleView* view = interfaceOf(rows);
    const int row = rows.shownRow(index);
    if (view == nullptr || row < 0)
        return;
    QAccessibleEvent event(view->cellAt(row, rows.shownColumn(index.column())), what);
    send(event);
}

QAccessibleInterface* interfaceOfRows(const QString& className, QObject* object)
{
    // Asked for every class from the last one down: only the whole object has rows.
    if (object == nullptr || className != QLatin1StringView(object->metaObject()->className()))
        return nullptr;
    auto* rows = dynamic_cast<AccessibleRows*>(object);
    return rows == nullptr ? nullptr : new AccessibleView(*rows);
}

} // namespace

void AccessibleView::install()
{
    QAccessible::installFactory(interfaceOfRows);
}

AccessibleView::Listener AccessibleView::hear(Listener listener)
{
    return std::exchange(currentListener(), listener);
}

void AccessibleView::tellCurrent(AccessibleRows& rows, const QModelIndex& current)
{
    if (isHeard() && current.isValid() && rows.viewOfRows().hasFocus())
        tell(rows, current, QAccessible::Focus);
}

void AccessibleView::tellSelection(AccessibleRows& rows, const QItemSelection& selected,
                                   const QItemSelection& deselected)
{
    if (!isHeard())
        return;
    if (AccessibleView* view = QAccessible::isActive() ? interfaceOf(rows) : nullptr; view != nullptr)
        platform::tellSelectionOnBus(QAccessible::uniqueId(view));
    if (cellsIn(selected) + cellsIn(deselected) > MostToldRows) {
        const QModelIndex current = rows.viewOfRows().currentIndex();
        if (selected.contains(current))
            tell(rows, current, QAccessible::SelectionAdd);
        return;
    }
    const auto telling = [&rows](QAccessible::Event what) {
        return [&rows, what](const QModelIndex& index) {
            tell(rows, index, what);
            return true;
        };
    };
    forEachRow(deselected, telling(QAccessible::SelectionRemove));
    forEachRow(selected, telling(QAccessible::SelectionAdd));
}

void AccessibleView::tellOpened(AccessibleRows& rows, const QModelIndex& index)
{
    if (!isHeard())
        return;
    AccessibleView* view = interfaceOf(rows);
    const int row = rows.shownRow(index);
    if (view == nullptr || row < 0)
        return;
    QAccessible::State changed;
    changed.expanded = true;
    changed.collapsed = true;
    QAccessibleInterface* cell = view->cellAt(row, 0);
    QAccessibleStateChangeEvent event(cell, changed);
    send(event);
    if (QAccessible::isActive())
        platform::tellStateOnBus(QAccessible::uniqueId(cell), QStringLiteral("expanded"), rows.isOpen(index));
}

AccessibleView::AccessibleView(AccessibleRows& rows)
    : QAccessibleWidget(&rows.viewOfRows(),
                        rows.viewOfRows().inherits("QTreeView") ? QAccessible::Tree : QAccessible::Table),
      m_rows(rows)
{
    const QAbstractItemModel* model = rows.viewOfRows().model();
    if (model == nullptr)
        return;
    const auto connectTo = [&](auto signal) {
        QObject::connect(model, signal, &m_listener, [this] { keepPresentCells(); });
    };
    connectTo(&QAbstractItemModel::modelReset);
    connectTo(&QAbstractItemModel::rowsInserted);
    connectTo(&QAbstractItemModel::rowsRemoved);
    connectTo(&QAbstractItemModel::layoutChanged);
}

AccessibleView::~AccessibleView()
{
    forgetCells();
    for (const QAccessible::Id id : std::as_const(m_headers))
        QAccessible::deleteAccessibleInterface(id);
    if (m_nowhere != 0)
        QAccessible::deleteAccessibleInterface(m_nowhere);
}

void AccessibleView::forgetCells()
{
    for (const QAccessible::Id id : std::as_const(m_cells))
        QAccessible::deleteAccessibleInterface(id);
    m_cells.clear();
}

void AccessibleView::keepPresentCells()
{
    if (m_cells.isEmpty())
        return;
    QHash<QModelIndex, QAccessible::Id> present;
    for (const QAccessible::Id id : std::as_const(m_cells)) {
        const auto* cell = dynamic_cast<const AccessibleCell*>(QAccessible::accessibleInterface(id));
        if (cell != nullptr && cell->index().isValid())
            present.insert(cell->index(), id);
        else
            QAccessible::deleteAccessibleInterface(id);
    }
    m_cells.swap(present);
}

void* AccessibleView::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State AccessibleView::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.extSelectable = m_rows.viewOfRows().selectionMode() == QAbstractItemView::ExtendedSelection;
    state.readOnly = true;
    return state;
}

QAccessibleInterface* AccessibleView::focusChild() const
{
    const QModelIndex current = m_rows.viewOfRows().currentIndex();
    return m_rows.shownRow(current) < 0 ? nullptr : cellOf(current);
}

QAccessibleInterface* AccessibleView::childAt(int x, int y) const
{
    const QAbstractItemView& view = m_rows.viewOfRows();
    if (const QHeaderView* header = m_rows.shownHeader(); header != nullptr && header->isVisible()) {
        const QPoint inHeader = header->viewport()->mapFromGlobal(QPoint(x, y));
        if (header->viewport()->rect().contains(inHeader)) {
            const int column = header->logicalIndexAt(inHeader);
            return column < 0 ? nullptr : headerAt(column);
        }
    }
    const QPoint inside = view.viewport()->mapFromGlobal(QPoint(x, y));
    const QModelIndex index = view.viewport()->rect().contains(inside) ? view.indexAt(inside) : QModelIndex();
    return index.isValid() ? cellOf(index) : nullptr;
}

int AccessibleView::headerCount() const
{
    return m_rows.shownHeader() == nullptr ? 0 : columnCount();
}

int AccessibleView::childCount() const
{
    return headerCount() + rowCount() * columnCount();
}

QAccessibleInterface* AccessibleView::child(int index) const
{
    if (index < 0 || index >= childCount())
        return nullptr;
    const int headers = headerCount();
    if (index < headers)
        return headerAt(m_rows.modelColumn(index));
    const int columns = columnCount();
    return cellAt((index - headers) / columns, (index - headers) % columns);
}

int AccessibleView::indexOfChild(const QAccessibleInterface* child) const
{
    if (const auto* header = dynamic_cast<const AccessibleHeader*>(child))
        return m_rows.shownColumn(header->column());
    const auto* cell = dynamic_cast<const AccessibleCell*>(child);
    if (cell == nullptr || cell->rowIndex() < 0)
        return -1;
    return headerCount() + cell->rowIndex() * columnCount() + cell->columnIndex();
}

AccessibleCell* AccessibleView::cellOf(const QModelIndex& index) const
{
    const QAccessible::Id known = index.isValid() ? m_cells.value(index) : m_nowhere;
    if (known != 0)
        return dynamic_cast<AccessibleCell*>(QAccessible::accessibleInterface(known));
    auto* cell = new AccessibleCell(m_rows, index);
    const QAccessible::Id id = QAccessible::registerAccessibleInterface(cell);
    if (index.isValid())
        m_cells.insert(index, id);
    else
        m_nowhere = id;
    return cell;
}

QAccessibleInterface* AccessibleView::cellAt(int row, int column) const
{
    const bool isThere = column >= 0 && column < columnCount();
    return cellOf(isThere ? m_rows.shownIndex(row, m_rows.modelColumn(column)) : QModelIndex());
}

QAccessibleInterface* AccessibleView::headerAt(int modelColumn) const
{
    if (const QAccessible::Id known = m_headers.value(modelColumn); known != 0)
        return QAccessible::accessibleInterface(known);
    auto* header = new AccessibleHeader(m_rows, modelColumn);
    m_headers.insert(modelColumn, QAccessible::registerAccessibleInterface(header));
    return header;
}

QString AccessibleView::columnDescription(int column) const
{
    const QAbstractItemModel* model = m_rows.viewOfRows().model();
    if (m_rows.shownHeader() == nullptr || model == nullptr || column < 0 || column >= columnCount())
        return {};
    return model->headerData(m_rows.modelColumn(column), Qt::Horizontal).toString();
}

int AccessibleView::selectedRowCount() const
{
    return cellsIn(m_rows.viewOfRows().selectionModel()->selection());
}

int AccessibleView::selectedCellCount() const
{
    return selectedRowCount() * columnCount();
}

QList<int> AccessibleView::selectedRows() const
{
    QList<int> rows;
    forEachRow(m_rows.viewOfRows().selectionModel()->selection(), [&](const QModelIndex& index) {
        if (const int row = m_rows.shownRow(index); row >= 0)
            rows << row;
        return true;
    });
    std::sort(rows.begin(), rows.end());
    return rows;
}

QList<QAccessibleInterface*> AccessibleView::selectedCells() const
{
    QList<QAccessibleInterface*> cells;
    int left = MostListedRows;
    forEachRow(m_rows.viewOfRows().selectionModel()->selection(), [&](const QModelIndex& index) {
        for (int column = 0; column < columnCount(); ++column)
            cells << cellOf(index.siblingAtColumn(m_rows.modelColumn(column)));
        return --left > 0;
    });
    return cells;
}

bool AccessibleView::selectRow(int row)
{
    return m_rows.canBeActedOn() && m_rows.chooseRow(row);
}

bool AccessibleView::unselectRow(int row)
{
    return m_rows.canBeActedOn() && m_rows.releaseRow(row);
}

bool AccessibleView::isRowSelected(int row) const
{
    const QModelIndex index = m_rows.shownIndex(row, 0);
    return index.isValid() && m_rows.viewOfRows().selectionModel()->isSelected(index);
}

} // namespace quillon
