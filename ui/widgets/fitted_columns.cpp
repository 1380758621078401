#include "ui/widgets/fitted_columns.h"

#include "ui/widgets/column_widths.h"
#include "ui/widgets/one_line_delegate.h"
#include "ui/widgets/plain_tool_tip.h"
#include "ui/widgets/report_model.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHash>
#include <QHeaderView>
#include <QHelpEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QTableView>
#include <QToolTip>
#include <QtMath>

#include <algorithm>
#include <cstddef>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int LookedAt = 256; // rows of a whole list, however long it is

/// What the person has chosen in this run: widths in half-width characters by list and column.
class ChosenWidths : public QObject
{
public:
    static ChosenWidths& ofApplication()
    {
        static QPointer<ChosenWidths> widths;
        if (widths.isNull())
            widths = new ChosenWidths(QCoreApplication::instance());
        return *widths;
    }
    QHash<QString, QHash<int, double>> byList;

private:
    using QObject::QObject;
};

} // namespace

FittedColumns::FittedColumns(QTableView& list, const ReportModel& rows)
    : QObject(&list), m_list(list), m_rows(rows), m_columns(static_cast<std::size_t>(rows.columnCount()))
{
    m_looking.setSingleShot(true);
    connect(&m_looking, &QTimer::timeout, this, &FittedColumns::lookAtRowsInSight);
    const auto lookSoon = [this] { m_looking.start(0); };
    connect(list.verticalScrollBar(), &QScrollBar::valueChanged, this, lookSoon);
    connect(&rows, &QAbstractItemModel::layoutChanged, this, lookSoon);
    connect(&rows, &QAbstractItemModel::modelReset, this, &FittedColumns::startAnew);
    connect(&rows, &QAbstractItemModel::rowsInserted, this, [this, lookSoon] {
        lookAtSome();
        lookSoon();
    });
    connect(list.horizontalHeader(), &QHeaderView::sectionResized, this, &FittedColumns::noteResized);
    list.installEventFilter(this);
    list.horizontalHeader()->viewport()->installEventFilter(this);
}

void FittedColumns::setCharacters(const std::vector<int>& characters)
{
    for (std::size_t i = 0; i < std::min(characters.size(), m_columns.size()); ++i)
        m_columns[i].characters = characters[i];
    adaptToFont();
}

void FittedColumns::giveRoomTo(const std::vector<int>& columns)
{
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        m_columns[i].sharesRoom =
            std::find(columns.begin(), columns.end(), static_cast<int>(i)) != columns.end();
    shareRoom();
}

void FittedColumns::fit(const std::vector<int>& columns)
{
    constexpr int Rounding = 1;
    for (const int column : columns) {
        forgetChosen(column);
        Column& fitted = m_columns[static_cast<std::size_t>(column)];
        const int texts = widthOfTexts(m_rows, column, QFontMetrics(m_list.font()));
        fitted.text = texts > 0 ? texts + sideMargins() + Rounding : 0;
        fitted.isWhole = m_rows.rowCount() > 0;
        if (fitted.characters == 0)
            setWidth(column, std::max(fitted.text, m_list.horizontalHeader()->sectionSizeHint(column)));
    }
    shareRoom();
}

int FittedColumns::sideMargins() const
{
    return 2 * (m_list.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &m_list) + 1);
}

void FittedColumns::adaptToFont()
{
    const QFontMetrics metrics(m_list.font());
    const QFontMetricsF exact(m_list.font());
    for (std::size_t code = 0; code < m_advances.size(); ++code)
        m_advances[code] = {metrics.horizontalAdvance(QChar(static_cast<char16_t>(code))),
                            exact.horizontalAdvance(QChar(static_cast<char16_t>(code)))};
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        Column& column = m_columns[i];
        column.text = 0;
        // No header may be cut off, whatever the column holds.
        column.least = std::max(column.characters * m_advances[u'0'].pixels + sideMargins(),
                                m_list.horizontalHeader()->sectionSizeHint(static_cast<int>(i)));
    }
    lookAtSome();
}

void FittedColumns::startAnew()
{
    for (Column& column : m_columns) {
        column.text = 0;
        column.isWhole = false;
    }
    lookAtSome();
    m_looking.start(0);
}

void FittedColumns::lookAtSome()
{
    const qint64 count = m_rows.rowCount();
    const qint64 looks = std::min<qint64>(count, LookedAt);
    for (qint64 look = 0; look < looks; ++look)
        lookAt(static_cast<int>(look * count / looks));
    shareRoom();
}

void FittedColumns::lookAtRowsInSight()
{
    const int first = m_list.rowAt(0);
    if (first < 0)
        return;
    const int last = m_list.rowAt(m_list.viewport()->height() - 1);
    for (int row = first; row <= (last < 0 ? m_rows.rowCount() - 1 : last); ++row)
        lookAt(row);
    shareRoom();
}

void FittedColumns::lookAt(int row)
{
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const QStringView text = m_rows.text(row, static_cast<int>(i));
        if (!text.isEmpty())
            m_columns[i].text = std::max(m_columns[i].text, widthOf(text) + sideMargins());
    }
}

int FittedColumns::widthOf(QStringView text) const
{
    // Identifiers and dates are of such characters, and asking the font takes a hundred times as long.
    const bool isPlain = std::all_of(text.begin(), text.end(), [](QChar unit) {
        return unit.unicode() >= u' ' && unit.unicode() < u'\x7f';
    });
    constexpr int Rounding = 1;
    if (isPlain) {
        int pixels = 0;
        double exactly = 0;
        for (const QChar unit : text) {
            pixels += m_advances[unit.unicode()].pixels;
            exactly += m_advances[unit.unicode()].exact;
        }
        return std::max(pixels, qCeil(exactly)) + Rounding;
    }
    constexpr qsizetype WidestShown = 300; // nobody has room for more
    const OneLineDelegate delegate;
    const QString shown = delegate.displayText(text.first(std::min(text.size(), WidestShown)).toString(), {});
    return QFontMetrics(m_list.font()).horizontalAdvance(shown) + Rounding;
}

void FittedColumns::setWidth(int column, int width)
{
    if (m_list.columnWidth(column) == width)
        return;
    const QScopedValueRollback setting(m_isSettingWidths, true);
    m_list.setColumnWidth(column, width);
}

void FittedColumns::shareRoom()
{
    int left = m_list.viewport()->width();
    std::vector<int> widths(m_columns.size());
    std::vector<std::size_t> sharers;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const Column& column = m_columns[i];
        if (m_list.isColumnHidden(static_cast<int>(i)))
            continue;
        if (column.characters == 0)
            widths[i] = m_list.columnWidth(static_cast<int>(i)); // nobody has said anything about it
        else if (column.chosen)
            widths[i] = qRound(*column.chosen * m_advances[u'0'].pixels);
        else if (column.sharesRoom && !column.isWhole)
            widths[i] = column.least;
        else
            widths[i] = std::max(column.least, column.text);
        left -= widths[i];
        if (column.sharesRoom && !column.chosen && column.characters != 0)
            sharers.push_back(i);
    }
    const auto share = [&](auto wanted) {
        // Who wants least is served first, so that what it leaves goes to the others.
        std::sort(sharers.begin(), sharers.end(),
                  [&](std::size_t a, std::size_t b) { return wanted(a) < wanted(b); });
        auto waiting = static_cast<int>(sharers.size());
        for (const std::size_t i : sharers) {
            const int portion = std::clamp(wanted(i), 0, std::max(left, 0) / waiting--);
            widths[i] += portion;
            left -= portion;
        }
    };
    share([&](std::size_t i) { return std::max(m_columns[i].text - widths[i], 0); });
    // What nobody needs goes to all that hold something.
    if (std::any_of(sharers.begin(), sharers.end(), [&](std::size_t i) { return m_columns[i].text > 0; }))
        std::erase_if(sharers, [&](std::size_t i) { return m_columns[i].text == 0; });
    share([&](std::size_t) { return std::max(left, 0); });
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (m_columns[i].characters != 0 && !m_list.isColumnHidden(static_cast<int>(i)))
            setWidth(static_cast<int>(i), widths[i]);
    }
}

void FittedColumns::noteResized(int column)
{
    const auto place = static_cast<std::size_t>(column);
    const bool isHiding = m_list.columnWidth(column) == 0;
    if (m_isSettingWidths || isHiding || place >= m_columns.size() || m_columns[place].characters == 0)
        return;
    m_columns[place].chosen = double(m_list.columnWidth(column)) / m_advances[u'0'].pixels;
    if (const QString name = nameOfList(); !name.isEmpty())
        ChosenWidths::ofApplication().byList[name][column] = *m_columns[place].chosen;
}

void FittedColumns::forgetChosen(int column)
{
    m_columns[static_cast<std::size_t>(column)].chosen.reset();
    const auto list = ChosenWidths::ofApplication().byList.find(nameOfList());
    if (list != ChosenWidths::ofApplication().byList.end())
        list->remove(column);
}

QString FittedColumns::nameOfList() const
{
    const QString window = m_list.window()->objectName();
    const bool isNamed = !window.isEmpty() && !m_list.objectName().isEmpty();
    return isNamed ? window + u'/' + m_list.objectName() : QString();
}

void FittedColumns::useChosenWidths()
{
    const QHash<int, double> chosen = ChosenWidths::ofApplication().byList.value(nameOfList());
    for (auto width = chosen.begin(); width != chosen.end(); ++width) {
        if (const auto place = static_cast<std::size_t>(width.key()); place < m_columns.size())
            m_columns[place].chosen = width.value();
    }
    shareRoom();
}

bool FittedColumns::tellCutHeader(const QPoint& position)
{
    const QHeaderView& header = *m_list.horizontalHeader();
    const int column = header.logicalIndexAt(position);
    if (column < 0 || header.sectionSize(column) >= header.sectionSizeHint(column))
        return false;
    const QString text = m_rows.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    QToolTip::showText(header.viewport()->mapToGlobal(position), plainToolTip(text), header.viewport());
    return true;
}

bool FittedColumns::eventFilter(QObject* watched, QEvent* event)
{
    // Only now the list stands in its window and bears its name.
    if (watched == &m_list && event->type() == QEvent::Polish)
        useChosenWidths();
    if (watched != &m_list && event->type() == QEvent::ToolTip &&
        tellCutHeader(static_cast<QHelpEvent&>(*event).pos()))
        return true;
    return QObject::eventFilter(watched, event);
}

} // namespace quillon
