#pragma once

#include "ui/widgets/accessible_view.h"
#include "ui/widgets/pressed_keys.h"
#include "ui/widgets/report_model.h"

#include <QElapsedTimer>
#include <QPersistentModelIndex>
#include <QTableView>

#include <vector>

namespace quillon
{

class CompositionField;
class FittedColumns;

struct Reporting;

/// A report-style list: whole rows, uniform heights, column headers that sort.
/// Typing goes to the next row whose first column begins with the typed text. A failure of sorting is reported as one of
/// the list's "_ColumnClick" and leaves the rows as they were.
class ReportList : public QTableView, public AccessibleRows
{
    Q_OBJECT

public:
    ReportList(Reporting& reporting, const std::vector<ReportModel::Column>& columns,
               QWidget* parent = nullptr);

    ReportModel& rows() const { return *m_model; }

    /// The row on which single-row actions work: the current row if it is selected, else the first selected one;
    /// -1 when none is selected.
    int selectedRow() const;
    /// The selected rows in order.
    std::vector<int> selectedRows() const;
    bool moreThanOneSelected() const;
    /// The least widths of the columns in half-width characters of the list's font; a full-width one takes two. A
    /// column becomes wider for a wider text, unless it is one of those below.
    void setColumnCharacters(const std::vector<int>& characters);

    /// The columns that share what room the list has beyond the widths of all; names, for instance. One that the person
    /// has made wider or narrower stays so, also in later lists of this name in windows of the same kind.
    void giveRoomTo(const std::vector<int>& columns);

    /// The columns that are not hidden, from left to right.
    std::vector<int> shownColumns() const;
    /// By which column the rows are sorted, -1 for none.
    int sortedColumn() const;
    /// Sorts by a column, as the event of a click on its header.
    void columnClick(int column);
    /// Makes every column as wide as what it holds, whatever the person had chosen; names get what room is left besides.
    void fitColumns();

    /// Lets text be dropped anywhere on the list.
    void acceptTextDrops();

    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    void keyboardSearch(const QString& search) override;

    QAbstractItemView& viewOfRows() override { return *this; }
    QHeaderView* shownHeader() const override;
    int shownColumnCount() const override;
    int modelColumn(int shownColumn) const override;
    int shownRowCount() const override { return m_model->rowCount(); }
    QModelIndex shownIndex(int row, int column) const override { return m_model->index(row, column); }
    int shownRow(const QModelIndex& index) const override { return index.row(); }
    bool isOpen(const QModelIndex& /*index*/) const override { return false; }
    bool canOpen(const QModelIndex& /*index*/) const override { return false; }
    bool chooseRow(int row) override;
    bool releaseRow(int row) override;
    void goToRow(int row) override;
    void pressRow(int row) override;
    void turnBranch(int /*row*/) override {}
    void openMenuOf(int row) override;

Q_SIGNALS:
    /// A header was clicked; the list has been sorted by that column (from 0).
    void columnClicked(int column);
    /// A row was double-clicked.
    void rowDoubleClicked();
    /// The list was double-clicked with the left mouse button, on a row or beside the rows.
    void listDoubleClicked();
    /// Enter was pressed in the list, with rows or without.
    void enterPressed();
    /// The right mouse button was pressed, or the keyboard's menu key; `position` is global. Where nobody listens, the
    /// key opens the menu for sorting, which has a key of its own in all lists.
    void menuRequested(const QPoint& position);
    /// The mouse moved over the list.
    void mouseMoved();
    /// A key other than Enter and other than text was pressed; the list has not acted on it yet. A held key is told
    /// once.
    void keyPressed(int key, Qt::KeyboardModifiers modifiers);
    /// A key that had been pressed in the list was released.
    void keyReleased(int key, Qt::KeyboardModifiers modifiers);
    /// Text was dropped on the list, see `acceptTextDrops`.
    void textDropped(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QModelIndexList selectedIndexes() const override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void initViewItemOption(QStyleOptionViewItem* option) const override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit(const std::vector<int>& columns);
    void copySelection();
    bool selectsCurrentRow(const QKeyEvent& event);
    /// Acts on a key that opens a menu or does something with the columns.
    bool takesKeyOfColumns(const QKeyEvent& event);
    void showSortMenu(const QPoint& position);
    /// Where a menu opens that the keyboard asks for; global.
    QPoint placeOfMenu();
    bool hasMenuOfItsOwn() const;
    void adaptToFont();
    void sortBy(int column);
    void endSorting();
    int heightOfRows() const;
    /// Where all columns of a row lie in the viewport.
    QRect placeOfRow(const QModelIndex& index) const;

    Reporting& m_reporting;
    ReportModel* m_model;
    CompositionField* m_composition;
    PressedKeys m_pressedKeys;
    FittedColumns* m_columns = nullptr;
    bool m_pressed = false;          // a mouse button; a double click may follow
    bool m_filledSincePress = false; // and the rows are others by now
    QString m_typed;
    QElapsedTimer m_sinceTyped;
    QPersistentModelIndex m_currentBefore;
};

} // namespace quillon
