#pragma once

#include "ui/widgets/accessible_rows.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QModelIndex>
#include <QObject>

class QItemSelection;

namespace quillon
{

class AccessibleCell;

/// What assistive technology sees of a list or a tree: the column headers that are shown, and the cells row by row.
/// Cells are made when they are asked for and stay what they are when rows are sorted, added or removed around them.
class AccessibleView : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    /// From now on views with rows have an interface of this class.
    static void install();

    using Listener = void (*)(QAccessibleEvent&);
    /// Somebody who hears what is told here before the toolkit does; null for nobody. Answers who has heard so far.
    static Listener hear(Listener listener);

    /// Tells of the row that the keyboard is on, if the view has it.
    static void tellCurrent(AccessibleRows& rows, const QModelIndex& current);
    /// Tells which rows have been selected and which no longer are; of very many only of the current one.
    static void tellSelection(AccessibleRows& rows, const QItemSelection& selected,
                              const QItemSelection& deselected);
    /// Tells that a branch has been opened or closed.
    static void tellOpened(AccessibleRows& rows, const QModelIndex& index);

    explicit AccessibleView(AccessibleRows& rows);
    ~AccessibleView() override;
    AccessibleView(const AccessibleView&) = delete;
    AccessibleView& operator=(const AccessibleView&) = delete;

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QAccessibleInterface* focusChild() const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

    /// Never null: a cell that is not valid where there is none.
    QAccessibleInterface* cellAt(int row, int column) const override;
    /// The header of a column of the model.
    QAccessibleInterface* headerAt(int modelColumn) const;
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QString columnDescription(int column) const override;
    QString rowDescription(int /*row*/) const override { return {}; }
    int columnCount() const override { return m_rows.shownColumnCount(); }
    int rowCount() const override { return m_rows.shownRowCount(); }
    int selectedCellCount() const override;
    /// Those of some thousand rows at most.
    QList<QAccessibleInterface*> selectedCells() const override;
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override;
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override;
    bool isColumnSelected(int /*column*/) const override { return false; }
    bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int /*column*/) override { return false; }
    bool unselectRow(int row) override;
    bool unselectColumn(int /*column*/) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent* /*event*/) override {} // the model tells of it, too

private:
    int headerCount() const;
    AccessibleCell* cellOf(const QModelIndex& index) const;
    void keepPresentCells();
    void forgetCells();

    AccessibleRows& m_rows;
    QObject m_listener; // to the model
    mutable QHash<QModelIndex, QAccessible::Id> m_cells;
    mutable QHash<int, QAccessible::Id> m_headers;
    mutable QAccessible::Id m_nowhere = 0; // a cell that there is not
};

} // namespace quillon
