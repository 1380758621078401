#include "ui/widgets/report_model.h"

#include "ui/widgets/text_ranks.h"

#include <QMimeData>
#include <QScopeGuard>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Every removed range costs the views one pass over their rows.
constexpr std::size_t RangesRemovedSingly = 64;

struct RowRange {
    int first;
    int last;
};

std::vector<RowRange> rangesOf(const std::vector<int>& rows)
{
    std::vector<RowRange> ranges;
    for (const int row : rows) {
        if (!ranges.empty() && ranges.back().last + 1 == row)
            ranges.back().last = row;
        else
            ranges.push_back({row, row});
    }
    return ranges;
}

} // namespace

ReportModel::ReportModel(const std::vector<Column>& columns, QObject* parent)
    : QAbstractTableModel(parent), m_ranks(columns.size())
{
    for (const Column& column : columns) {
        if (column.isShown)
            m_headers.push_back(column.header);
        if (column.storage == Storage::Dictionary)
            m_columns.emplace_back(DictionaryColumn());
        else
            m_columns.emplace_back(TextColumn());
    }
}

ReportModel::~ReportModel() = default;

int ReportModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int ReportModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_headers.size());
}

QStringView ReportModel::sourceText(int row, int column) const
{
    return std::visit([row](const auto& cells) { return cells.at(row); },
                      m_columns[static_cast<std::size_t>(column)]);
}

QStringView ReportModel::text(int row, int column) const
{
    return sourceText(sourceRow(row), column);
}

QVariant ReportModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return text(index.row(), index.column()).toString();
}

QVariant ReportModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return {};
    return m_headers[static_cast<std::size_t>(section)];
}

Qt::ItemFlags ReportModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (m_dragColumn >= 0)
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QStringList ReportModel::mimeTypes() const
{
    return {u"text/plain"_s};
}

QMimeData* ReportModel::mimeData(const QModelIndexList& indexes) const
{
    if (indexes.isEmpty() || m_dragColumn < 0)
        return nullptr;
    auto* data = new QMimeData;
    data->setText(text(indexes.first().row(), m_dragColumn).toString());
    return data;
}

void ReportModel::clear()
{
    beginResetModel();
    for (CellColumn& column : m_columns)
        std::visit([](auto& cells) { cells.clear(); }, column);
    m_rows = 0;
    m_appended = 0;
    m_order = {};
    for (std::vector<quint32>& ranks : m_ranks)
        ranks = {};
    endResetModel();
}

std::unique_ptr<ReportModel::Rows> ReportModel::take()
{
    auto taken = std::make_unique<Rows>();
    for (const CellColumn& column : m_columns) {
        if (std::holds_alternative<DictionaryColumn>(column))
            taken->m_columns.emplace_back(DictionaryColumn());
        else
            taken->m_columns.emplace_back(TextColumn());
    }
    exchange(*taken);
    return taken;
}

void ReportModel::putBack(Rows& rows)
{
    exchange(rows);
}

/// Shows other rows; there is nothing in it that could fail.
void ReportModel::exchange(Rows& rows)
{
    beginResetModel();
    m_columns.swap(rows.m_columns);
    m_order.swap(rows.m_order);
    m_rows = std::exchange(rows.m_count, m_rows);
    m_appended = m_rows;
    for (std::vector<quint32>& ranks : m_ranks)
        ranks = {};
    endResetModel();
}

ReportModel::Fill::Fill(ReportModel& model) : m_model(model)
{
    ++m_model.m_filling;
}

ReportModel::Fill::~Fill()
{
    try {
        finish();
    } catch (...) {
        // Whoever left the fill unfinished has a failure to tell about already.
    }
}

void ReportModel::Fill::finish()
{
    if (!std::exchange(m_finished, true) && --m_model.m_filling == 0)
        m_model.endFill();
}

void ReportModel::Fill::append(std::initializer_list<QStringView> cells)
{
    const QStringView* cell = cells.begin();
    try {
        for (CellColumn& column : m_model.m_columns) {
            const QStringView text = cell != cells.end() ? *cell++ : QStringView();
            std::visit([text](auto& store) { store.append(text); }, column);
        }
    } catch (...) {
        // A row is there with all its cells or not at all.
        m_model.truncateCells(m_model.m_appended);
        throw;
    }
    ++m_model.m_appended;
}

void ReportModel::endFill()
{
    if (m_appended == m_rows)
        return;
    try {
        extendOrder();
    } catch (...) {
        dropUnshown();
        throw;
    }
    for (CellColumn& column : m_columns)
        std::visit([](auto& cells) { cells.shrink(); }, column);
    for (std::vector<quint32>& ranks : m_ranks)
        ranks = {};
    beginInsertRows({}, m_rows, m_appended - 1);
    m_rows = m_appended;
    endInsertRows();
}

void ReportModel::extendOrder()
{
    if (m_order.empty())
        return;
    m_order.resize(static_cast<std::size_t>(m_appended));
    std::iota(m_order.begin() + m_rows, m_order.end(), static_cast<quint32>(m_rows));
}

void ReportModel::dropUnshown()
{
    truncateCells(m_rows);
    m_appended = m_rows;
}

void ReportModel::truncateCells(int rows)
{
    for (CellColumn& column : m_columns)
        std::visit([rows](auto& cells) { cells.truncate(std::min(cells.size(), rows)); }, column);
}

const std::vector<quint32>& ReportModel::ranks(int column)
{
    std::vector<quint32>& ranks = m_ranks[static_cast<std::size_t>(column)];
    if (ranks.empty())
        ranks = std::visit([](const auto& cells) { return ranksOf(cells); },
                           m_columns[static_cast<std::size_t>(column)]);
    return ranks;
}

void ReportModel::sortByColumn(int column)
{
    // Rows that a fill has not announced yet have no place on the screen.
    if (column < 0 || column >= columnCount() || m_rows < 2 || m_filling > 0)
        return;
    const std::vector<quint32>& rank = ranks(column);
    // Counting keeps equal texts in their present order and takes the same short time at every click.
    std::vector<quint32> places(*std::max_element(rank.begin(), rank.end()) + std::size_t(2));
    for (int row = 0; row < m_rows; ++row)
        ++places[rank[static_cast<std::size_t>(sourceRow(row))] + std::size_t(1)];
    std::partial_sum(places.begin(), places.end(), places.begin());
    std::vector<quint32> order(static_cast<std::size_t>(m_rows));
    for (int row = 0; row < m_rows; ++row) {
        const auto source = static_cast<quint32>(sourceRow(row));
        order[places[rank[source]]++] = source;
    }
    reorder(std::move(order));
}

void ReportModel::reorder(std::vector<quint32>&& order)
{
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    // The views must hear of the end even when there is no memory to follow their rows.
    const auto told = qScopeGuard([this] { Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint); });
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    if (!before.isEmpty()) {
        std::vector<int> place(order.size());
        for (std::size_t row = 0; row < order.size(); ++row)
            place[order[row]] = static_cast<int>(row);
        after.reserve(before.size());
        for (const QModelIndex& index : before)
            after.append(
                createIndex(place[static_cast<std::size_t>(sourceRow(index.row()))], index.column()));
    }
    m_order = std::move(order);
    changePersistentIndexList(before, after);
}

void ReportModel::removeRowsAt(std::vector<int> rows)
{
    if (m_filling > 0)
        return;
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    std::erase_if(rows, [this](int row) { return row < 0 || row >= m_rows; });
    if (rows.empty())
        return;
    if (m_order.empty()) {
        m_order.resize(static_cast<std::size_t>(m_rows));
        std::iota(m_order.begin(), m_order.end(), 0U);
    }
    const std::vector<RowRange> ranges = rangesOf(rows);
    if (ranges.size() <= RangesRemovedSingly) {
        std::for_each(ranges.rbegin(), ranges.rend(),
                      [this](const RowRange& range) { removeRange(range.first, range.last); });
    } else {
        // The rows that go are moved to the end and leave as one range, so that what is selected stays selected.
        Q_EMIT scatteredRowsAboutToBeRemoved();
        std::vector<quint32> order;
        order.reserve(m_order.size());
        std::size_t next = 0;
        for (int row = 0; row < m_rows; ++row) {
            if (next < rows.size() && rows[next] == row)
                ++next;
            else
                order.push_back(m_order[static_cast<std::size_t>(row)]);
        }
        const auto kept = static_cast<int>(order.size());
        for (const int row : rows)
            order.push_back(m_order[static_cast<std::size_t>(row)]);
        reorder(std::move(order));
        removeRange(kept, m_rows - 1);
    }
    dropCells();
    if (ranges.size() > RangesRemovedSingly)
        Q_EMIT scatteredRowsRemoved(rows.front());
}

void ReportModel::removeRange(int first, int last)
{
    beginRemoveRows({}, first, last);
    m_order.erase(m_order.begin() + first, m_order.begin() + last + 1);
    m_rows -= last - first + 1;
    endRemoveRows();
}

void ReportModel::dropCells()
{
    std::vector<bool> keep(static_cast<std::size_t>(m_appended), false);
    for (const quint32 source : m_order)
        keep[source] = true;
    for (CellColumn& column : m_columns)
        std::visit([&keep](auto& cells) { cells.retain(keep); }, column);
    for (std::vector<quint32>& ranks : m_ranks) {
        std::size_t kept = 0;
        for (std::size_t row = 0; row < ranks.size(); ++row) {
            if (keep[row])
                ranks[kept++] = ranks[row];
        }
        ranks.resize(kept);
    }
    std::vector<quint32> renumbered(keep.size());
    quint32 number = 0;
    for (std::size_t row = 0; row < keep.size(); ++row) {
        renumbered[row] = number;
        number += keep[row] ? 1 : 0;
    }
    for (quint32& source : m_order)
        source = renumbered[source];
    m_appended = m_rows;
    if (std::is_sorted(m_order.begin(), m_order.end()))
        m_order = {};
}

qsizetype ReportModel::bytesHeld() const
{
    auto bytes = static_cast<qsizetype>(m_order.capacity()) * qsizetype(sizeof(quint32));
    for (const CellColumn& column : m_columns)
        bytes += std::visit([](const auto& cells) { return cells.bytesHeld(); }, column);
    for (const std::vector<quint32>& ranks : m_ranks)
        bytes += static_cast<qsizetype>(ranks.capacity() * sizeof(quint32));
    return bytes;
}

} // namespace quillon
