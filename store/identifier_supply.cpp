#include "store/identifier_supply.h"

#include "app/base/error.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr qsizetype BeginningLength = IdentifierLength - 3;

/// The number of an identifier among those of its day, 0 when it has none that is given out.
int numberOf(QStringView identifier)
{
    if (identifier.size() != IdentifierLength)
        return 0;
    int number = 0;
    for (const QChar digit : identifier.sliced(BeginningLength)) {
        if (digit < u'0' || digit > u'9')
            return 0;
        number = number * 10 + (digit.unicode() - u'0');
    }
    return number;
}

} // namespace

QDate dayOfIdentifier(QStringView identifier, QDate today)
{
    if (identifier.size() != IdentifierLength || identifier[1] != u'-' || identifier[8] != u'-')
        return {};
    const QStringView text = identifier.sliced(2, 6);
    for (const QChar digit : text) {
        if (digit < u'0' || digit > u'9')
            return {};
    }
    constexpr int Century = 100;
    const int lastTwo = text.first(2).toInt();
    int year = today.year() - today.year() % Century + lastTwo;
    if (year > today.year())
        year -= Century;
    return {year, text.sliced(2, 2).toInt(), text.sliced(4, 2).toInt()};
}

IdentifierSupply::IdentifierSupply(const RecordSet& rows, const DataKind& kind)
    : m_rows(rows), m_kind(kind.letter)
{
}

QString IdentifierSupply::beginningOf(QDate day) const
{
    return m_kind + u'-' + day.toString(u"yyMMdd") + u'-';
}

void IdentifierSupply::reserve(QStringView identifier)
{
    const int number = numberOf(identifier);
    if (number == 0)
        return;
    const QString beginning = identifier.first(BeginningLength).toString();
    const auto known = m_days.find(beginning);
    if (known != m_days.end())
        known->taken.set(static_cast<std::size_t>(number));
    else
        m_reserved[beginning].insert(number);
}

IdentifierSupply::Day& IdentifierSupply::dayOf(QDate day)
{
    const QString beginning = beginningOf(day);
    const auto known = m_days.find(beginning);
    if (known != m_days.end())
        return *known;
    Day& fresh = m_days[beginning];
    const std::vector<bool> taken = takenNumbers(m_rows, beginning);
    for (std::size_t number = 1; number <= MostOfADay; ++number)
        fresh.taken.set(number, taken[number]);
    for (const int number : m_reserved.take(beginning))
        fresh.taken.set(static_cast<std::size_t>(number));
    return fresh;
}

QString IdentifierSupply::next(QDate day)
{
    constexpr int MostDays = 36525;
    QDate with = m_room.value(day, day);
    for (int i = 0; i < MostDays; ++i) {
        Day& candidate = dayOf(with);
        while (candidate.next <= MostOfADay && candidate.taken.test(static_cast<std::size_t>(candidate.next)))
            ++candidate.next;
        if (candidate.next <= MostOfADay) {
            m_room[day] = with;
            const int number = candidate.next++;
            candidate.taken.set(static_cast<std::size_t>(number));
            return beginningOf(with) + QString::number(number).rightJustified(3, u'0');
        }
        const QDate known = m_room.value(with, with);
        with = known < with ? known : with.addDays(-1);
    }
    throw Error(errors::Overflow);
}

} // namespace quillon
