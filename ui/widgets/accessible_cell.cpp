#include "ui/widgets/accessible_cell.h"

#include "ui/widgets/accessible_rows.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QTreeView>
#include <QWindow>

namespace quillon
{

namespace
{

QWindow* windowOf(const QAbstractItemView* view)
{
    return view == nullptr ? nullptr : view->window()->windowHandle();
}

QRect onScreen(const QWidget& widget, const QRect& rect)
{
    return rect.isNull() ? QRect() : QRect(widget.mapToGlobal(rect.topLeft()), rect.size());
}

} // namespace

AccessibleCell::AccessibleCell(AccessibleRows& rows, const QModelIndex& index)
    : m_rows(rows), m_view(&rows.viewOfRows()), m_index(index)
{
}

bool AccessibleCell::isValid() const
{
    return !m_view.isNull() && m_index.isValid();
}

bool AccessibleCell::isNode() const
{
    return qobject_cast<const QTreeView*>(m_view.data()) != nullptr;
}

QWindow* AccessibleCell::window() const
{
    return windowOf(m_view);
}

void* AccessibleCell::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableCellInterface)
        return static_cast<QAccessibleTableCellInterface*>(this);
    if (type == QAccessible::ActionInterface)
        return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
}

QAccessibleInterface* AccessibleCell::parent() const
{
    return m_view.isNull() ? nullptr : QAccessible::queryAccessibleInterface(m_view);
}

QString AccessibleCell::text(QAccessible::Text kind) const
{
    return isValid() && kind == QAccessible::Name ? m_index.data().toString() : QString();
}

QRect AccessibleCell::rect() const
{
    return isValid() ? onScreen(*m_view->viewport(), m_view->visualRect(m_index)) : QRect();
}

QAccessible::Role AccessibleCell::role() const
{
    return isNode() ? QAccessible::TreeItem : QAccessible::Cell;
}

QAccessible::State AccessibleCell::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const QWidget& viewport = *m_view->viewport();
    if (!m_view->isVisible() || !onScreen(viewport, viewport.rect()).intersects(rect()))
        state.invisible = true;
    state.disabled = !m_view->isEnabled();
    state.selectable = true;
    state.focusable = true;
    state.extSelectable = m_view->selectionMode() == QAbstractItemView::ExtendedSelection;
    state.selected = isSelected();
    state.focused = m_view->currentIndex() == m_index;
    state.expandable = m_rows.canOpen(m_index);
    state.expanded = m_rows.isOpen(m_index);
    state.collapsed = state.expandable && !state.expanded;
    return state;
}

bool AccessibleCell::isSelected() const
{
    return isValid() && m_view->selectionModel()->isSelected(m_index);
}

QList<QAccessibleInterface*> AccessibleCell::columnHeaderCells() const
{
    if (!isValid() || m_rows.shownHeader() == nullptr)
        return {};
    return {table()->child(columnIndex())}; // the headers come before the cells
}

int AccessibleCell::columnIndex() const
{
    return isValid() ? m_rows.shownColumn(m_index.column()) : -1;
}

int AccessibleCell::rowIndex() const
{
    return isValid() ? m_rows.shownRow(m_index) : -1;
}

QStringList AccessibleCell::actionNames() const
{
    if (!isValid())
        return {};
    QStringList names = {pressAction(), setFocusAction(), showMenuAction()};
    if (!isNode() || m_rows.canOpen(m_index))
        names << toggleAction();
    return names;
}

void AccessibleCell::doAction(const QString& action)
{
    const int row = rowIndex();
    if (row < 0 || !m_rows.canBeActedOn())
        return;
    if (action == pressAction())
        m_rows.pressRow(row);
    else if (action == setFocusAction())
        m_rows.goToRow(row);
    else if (action == showMenuAction())
        m_rows.openMenuOf(row);
    else if (action == toggleAction() && isNode())
        m_rows.turnBranch(row);
    else if (action == toggleAction() && isSelected())
        m_rows.releaseRow(row);
    else if (action == toggleAction())
        m_rows.chooseRow(row);
}

AccessibleHeader::AccessibleHeader(AccessibleRows& rows, int column)
    : m_rows(rows), m_view(&rows.viewOfRows()), m_column(column)
{
}

bool AccessibleHeader::isValid() const
{
    return !m_view.isNull() && m_rows.shownHeader() != nullptr;
}

QWindow* AccessibleHeader::window() const
{
    return windowOf(m_view);
}

void* AccessibleHeader::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

QAccessibleInterface* AccessibleHeader::parent() const
{
    return m_view.isNull() ? nullptr : QAccessible::queryAccessibleInterface(m_view);
}

QString AccessibleHeader::text(QAccessible::Text kind) const
{
    if (!isValid() || kind != QAccessible::Name)
        return {};
    return m_view->model()->headerData(m_column, Qt::Horizontal).toString();
}

QRect AccessibleHeader::rect() const
{
    if (!isValid())
        return {};
    const QHeaderView& header = *m_rows.shownHeader();
    return onScreen(*header.viewport(), {header.sectionViewportPosition(m_column), 0,
                                         header.sectionSize(m_column), header.height()});
}

QAccessible::State AccessibleHeader::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    state.invisible = !m_rows.shownHeader()->isVisible();
    state.disabled = !m_rows.shownHeader()->isEnabled();
    return state;
}

QStringList AccessibleHeader::actionNames() const
{
    if (!isValid() || !m_rows.shownHeader()->sectionsClickable())
        return {};
    return {pressAction()};
}

void AccessibleHeader::doAction(const QString& action)
{
    if (action != pressAction() || actionNames().isEmpty() || !m_rows.canBeActedOn())
        return;
    QHeaderView* header = m_rows.shownHeader();
    QMetaObject::invokeMethod(
        header, [header, column = m_column] { Q_EMIT header->sectionClicked(column); }, Qt::QueuedConnection);
}

} // namespace quillon
