#pragma once

#include "ui/widgets/cell_store.h"

#include <QAbstractTableModel>
#include <QString>

#include <initializer_list>
#include <memory>
#include <variant>
#include <vector>

namespace quillon
{

/// The rows of a report-style list, in compact memory, made for a million rows.
///
/// Rows are in the order in which they were appended until a header is clicked; sorting lasts until the next fill:
/// rows appended later stand at the end.
/// Filling gives no signal per row: open a `Fill`, append, and finish it.
class ReportModel : public QAbstractTableModel
{
    Q_OBJECT

    using CellColumn = std::variant<TextColumn, DictionaryColumn>;

public:
    enum class Storage { Text, Dictionary };
    struct Column {
        QString header;
        Storage storage = Storage::Text;
        bool isShown = true; // else it is kept with the rows and no view knows of it; such ones stand last
    };

    explicit ReportModel(const std::vector<Column>& columns, QObject* parent = nullptr);
    ~ReportModel() override;
    ReportModel(const ReportModel&) = delete;
    ReportModel& operator=(const ReportModel&) = delete;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    /// The text of a cell, also of a column that is not shown; row numbers are those on the screen.
    QStringView text(int row, int column) const;
    /// The column whose text is dragged as plain text (of the first dragged row); -1: rows cannot be dragged.
    void setDragColumn(int column) { m_dragColumn = column; }
    int dragColumn() const { return m_dragColumn; }

    /// Removes all rows; sorting ends with them.
    void clear();
    /// All rows of a list and their order on the screen, while they are not in it.
    class Rows
    {
        friend class ReportModel;
        std::vector<CellColumn> m_columns;
        std::vector<quint32> m_order;
        int m_count = 0;
    };
    /// Removes all rows, to be put back as they were.
    std::unique_ptr<Rows> take();
    /// Puts rows back that were taken from this list, in place of those that are in it by now.
    void putBack(Rows& rows);
    /// Sorts by a column: ascending, in Japanese order, equal texts staying in their present order. Not toggled.
    void sortByColumn(int column);
    /// Removes rows given by their numbers on the screen, in any order, in one pass.
    void removeRowsAt(std::vector<int> rows);
    /// Bytes held by the texts and their bookkeeping.
    qsizetype bytesHeld() const;

    /// Until it is finished rows may be appended; views are told once, at its end. One that lies in another one ends
    /// with that.
    class Fill
    {
    public:
        explicit Fill(ReportModel& model);
        /// Ends a fill that a failure has left unfinished: the rows before the failure are shown, too. Never throws;
        /// rows for which there is no memory are dropped.
        ~Fill();
        Fill(const Fill&) = delete;
        Fill& operator=(const Fill&) = delete;

        /// Appends a row; missing cells at the end are empty.
        void append(std::initializer_list<QStringView> cells);
        /// Shows the rows. A failure drops them and leaves those that were there before.
        void finish();

    private:
        ReportModel& m_model;
        bool m_finished = false;
    };

Q_SIGNALS:
    /// Around the removal of so many scattered rows that the others are moved together first.
    void scatteredRowsAboutToBeRemoved();
    /// `firstRow`: the number that the first removed row had.
    void scatteredRowsRemoved(int firstRow);

private:
    int sourceRow(int row) const
    {
        return m_order.empty() ? row : static_cast<int>(m_order[static_cast<std::size_t>(row)]);
    }
    QStringView sourceText(int row, int column) const;
    const std::vector<quint32>& ranks(int column);
    void exchange(Rows& rows);
    void endFill();
    /// Puts the numbers of appended rows behind the order of the screen, where that is not the one of appending.
    void extendOrder();
    /// Drops the rows that the views do not know of.
    void dropUnshown();
    void truncateCells(int rows);
    /// Puts the rows on the screen into this order; selections follow their rows.
    void reorder(std::vector<quint32>&& order);
    void removeRange(int first, int last);
    /// Drops the cells of the rows that are no longer in the order.
    void dropCells();

    std::vector<QString> m_headers;
    std::vector<CellColumn> m_columns;
    int m_rows = 0;     // rows the views know of
    int m_appended = 0; // rows there are, more than m_rows during a fill
    int m_dragColumn = -1;
    std::vector<quint32> m_order; // screen row -> row as appended; empty: the same
    std::vector<std::vector<quint32>>
        m_ranks; // by column, computed once: a row's place among its column's texts
    int m_filling = 0;
};

} // namespace quillon
