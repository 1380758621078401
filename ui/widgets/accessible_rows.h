#pragma once

#include <QModelIndex>

class QAbstractItemView;
class QHeaderView;

namespace quillon
{

/// A view with rows as assistive technology has to do with it. Rows count from 0 as they stand below each other on the
/// screen; what a person does by such means happens as if by keyboard or mouse. What may show a box is done later, so
/// that nobody outside waits for the answer.
class AccessibleRows
{
public:
    virtual ~AccessibleRows() = default;

    virtual QAbstractItemView& viewOfRows() = 0;
    /// The header of the columns; null where none is shown.
    virtual QHeaderView* shownHeader() const = 0;
    /// How many columns are shown, and which of the model's the one with this number is.
    virtual int shownColumnCount() const = 0;
    virtual int modelColumn(int shownColumn) const = 0;
    virtual int shownRowCount() const = 0;
    /// An invalid index for a row or a column that is not there.
    virtual QModelIndex shownIndex(int row, int column) const = 0;
    /// -1 for one that is not shown.
    virtual int shownRow(const QModelIndex& index) const = 0;
    /// Whether the row is opened like the branch of a tree, or could be.
    virtual bool isOpen(const QModelIndex& index) const = 0;
    virtual bool canOpen(const QModelIndex& index) const = 0;

    /// Selects a row, beside others where several can be selected. False where there is no such row.
    virtual bool chooseRow(int row) = 0;
    /// Takes a row out of the selection. False where that cannot be.
    virtual bool releaseRow(int row) = 0;
    /// Selects a row alone and gives it the keyboard.
    virtual void goToRow(int row) = 0;
    /// Does what a double click on a row does, or a click where that is what counts.
    virtual void pressRow(int row) = 0;
    /// Opens or closes a branch.
    virtual void turnBranch(int row) = 0;
    /// Opens the menu of a row.
    virtual void openMenuOf(int row) = 0;

    /// Which of the shown columns one of the model's is, -1 for a hidden one.
    int shownColumn(int modelColumn) const;
    /// Whether a person could act on the view now: it is enabled, and `mayActOn` lets them.
    bool canBeActedOn();
};

} // namespace quillon
