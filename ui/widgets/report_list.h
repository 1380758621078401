#pragma once

#include "ui/widgets/report_model.h"

#include <QTableView>

#include <vector>

namespace quillon {

/// A report-style list: whole rows, uniform heights, column headers that sort.
/// Typing goes to the next row whose first column begins with the typed text.
class ReportList : public QTableView
{
    Q_OBJECT

public:
    explicit ReportList(const std::vector<ReportModel::Column>& columns, QWidget* parent = nullptr);

    ReportModel& rows() const { return *m_model; }

    /// The row on which single-row actions work: the current row if it is selected, else the first selected one;
    /// -1 when none is selected.
    int selectedRow() const;
    /// The selected rows in order.
    std::vector<int> selectedRows() const;
    bool moreThanOneSelected() const;
    /// Widths of the columns in characters of the list's font.
    void setColumnCharacters(const std::vector<int>& characters);

Q_SIGNALS:
    /// A header was clicked; the list has been sorted by that column (from 0).
    void columnClicked(int column);
    /// A row was double-clicked, or Enter was pressed on it.
    void rowActivated();
    /// The right mouse button was pressed, or the keyboard's menu key; `position` is global.
    void menuRequested(const QPoint& position);
    /// The mouse moved over the list.
    void mouseMoved();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& search) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void changeEvent(QEvent* event) override;

private:
    void adaptRowHeight();

    ReportModel* m_model;
};

} // namespace quillon
