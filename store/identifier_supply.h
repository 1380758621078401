#pragma once

#include <QDate>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringView>

#include <bitset>

namespace quillon
{

struct DataKind;
class RecordSet;

/// The day of an identifier such as "M-991231-001", within the hundred years before the end of `today`'s year; no valid
/// date when it does not tell one.
QDate dayOfIdentifier(QStringView identifier, QDate today);

/// Gives out identifiers for many new data of one kind. A day has room for 999; when it is full, those of the day
/// before are given out, and so on. To be used within the write that adds the data.
class IdentifierSupply
{
public:
    /// `rows`: the table of the kind; it outlives this.
    IdentifierSupply(const RecordSet& rows, const DataKind& kind);

    /// Keeps an identifier from being given out, whether or not a row has it.
    void reserve(QStringView identifier);
    /// The first identifier of a day that no row has and that has neither been reserved nor been given out, else one of
    /// the nearest day before it. Error 6 when a hundred years are full.
    QString next(QDate day);

private:
    static constexpr int MostOfADay = 999;

    struct Day {
        std::bitset<MostOfADay + 1> taken;
        int next = 1; // nothing below it is free
    };
    QString beginningOf(QDate day) const;
    Day& dayOf(QDate day);

    const RecordSet& m_rows;
    QString m_kind;
    QHash<QString, Day> m_days;           // by what its identifiers begin with
    QHash<QString, QSet<int>> m_reserved; // the same, of days that nobody has asked for yet
    QHash<QDate, QDate> m_room;           // from a full day to one that may have room
};

} // namespace quillon
