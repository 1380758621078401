#include "store/identifiers.h"

#include "app/base/ports/clock.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

#include <limits>
#include <optional>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int GreatestNumber = std::numeric_limits<qint16>::max();

QString sequenceText(int number)
{
    return QString::number(number).rightJustified(3, u'0');
}

} // namespace

std::vector<bool> takenNumbers(const RecordSet& recordSet, const QString& beginning)
{
    if (beginning.contains(u'\''))
        throw Error(errors::CriteriaSyntax);
    std::vector<bool> taken(GreatestNumber + 1, false);
    const QString field = u'"' + recordSet.table().fields[data_field::Object_ID].name + u'"';
    sqlite::Statement& statement = recordSet.database().connection().prepare(
        u"SELECT "_s + field + u" FROM \""_s + recordSet.table().name + u"\" WHERE "_s + field +
        u" >= ? COLLATE BINARY ORDER BY "_s + field + u" COLLATE BINARY"_s);
    const sqlite::ResetAtEnd reset(statement);
    statement.bind(1, beginning);
    // Texts of one beginning follow each other without a gap, in whatever encoding the file compares them.
    while (statement.step() && statement.text(0).startsWith(beginning)) {
        const QString ending = statement.text(0).sliced(beginning.size()).toString();
        const int number = ending.toInt();
        if (number > 0 && number <= GreatestNumber && ending == sequenceText(number))
            taken[static_cast<std::size_t>(number)] = true;
    }
    return taken;
}

namespace
{

QString firstFreeNumber(const std::vector<bool>& taken)
{
    int number = 1;
    while (number <= GreatestNumber && taken[static_cast<std::size_t>(number)])
        ++number;
    if (number > GreatestNumber)
        throw Error(errors::Overflow);
    return sequenceText(number);
}

} // namespace

QString CreateObject_ID(Session& session, const QString& kind)
{
    QString identifier;
    guarded(session.reporting, u"CreateObject_ID"_s, [&] {
        const QString beginning = kind + u'-' + GetYYMMDD(session) + u'-';
        std::optional<std::vector<bool>> taken;
        // One pass over the day's identifiers answers what `ExistCheck` would be asked number by number. When it
        // cannot be answered, the next number would fare no better, so the failure is told once.
        guarded(session.reporting, u"ExistCheck"_s,
                [&] { taken = takenNumbers(dataTableOf(session, beginning), beginning); });
        if (!taken)
            return;
        identifier = beginning + firstFreeNumber(*taken);
    });
    return identifier;
}

QString freeIdentifier(RecordSet& rows, const QString& identifier)
{
    const QString beginning = identifier.first(identifier.lastIndexOf(u'-') + 1);
    if (beginning.isEmpty() || !rows.goTo(data_field::Object_ID, identifier))
        return identifier;
    return beginning + firstFreeNumber(takenNumbers(rows, beginning));
}

QString GetYYMMDD(Session& session)
{
    QString characters;
    guarded(session.reporting, u"GetYYMMDD"_s, [&] {
        const QString date = session.clock.identifierDate();
        for (const int position : {0, 3, 6})
            characters += date.mid(position, 2);
    });
    return characters;
}

bool ExistCheck(Session& session, const QString& identifier)
{
    bool free = false;
    guarded(session.reporting, u"ExistCheck"_s,
            [&] { free = !dataTableOf(session, identifier).goTo(data_field::Object_ID, identifier); });
    return free;
}

void requireIdentifier(const QString& identifier)
{
    if (identifier.isEmpty())
        throw Error(errors::InvalidArgument,
                    u"識別符号がないため登録できません。画面を閉じて、登録をやり直してください。"_s);
}

} // namespace quillon
