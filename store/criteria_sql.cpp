#include "store/criteria_sql.h"

#include "store/like_pattern.h"
#include "store/sqlite/connection.h"

#include <QHash>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr QStringView Wildcards = u"*?#[";
constexpr const char* ExactTest = "quillon_like_exactly";
constexpr const char* ReaderTest = "quillon_like_as_a_reader";

/// Identifiers are compared to the letter: category "a" is no relative of category "A".
bool isIdentifier(QStringView field)
{
    return field.endsWith(u"_ID");
}

/// Opens a bracket and adds what every text with the pattern's beginning fulfils in any encoding of the file, so that
/// an index finds the few that are worth testing.
void appendPrefixRange(const QString& pattern, const QString& field, CriteriaSql& sql)
{
    sql.condition += u'(';
    qsizetype size = 0;
    while (size < pattern.size() && !Wildcards.contains(pattern[size]))
        ++size;
    // The first text behind all those: its last unit is 256 greater, which makes any byte order put it there.
    constexpr char16_t Beyond = 0x100;
    constexpr char16_t FirstSurrogate = 0xD800;
    if (size == 0 || pattern[size - 1].unicode() >= FirstSurrogate - Beyond)
        return;
    const QString prefix = pattern.first(size);
    QString behind = prefix;
    behind.back() = QChar(static_cast<char16_t>(behind.back().unicode() + Beyond));
    sql.condition +=
        u'"' + field + u"\" >= ? COLLATE BINARY AND \""_s + field + u"\" < ? COLLATE BINARY AND "_s;
    sql.values << prefix << behind;
}

void append(const Criteria& criteria, const TableSchema& table, CriteriaSql& sql)
{
    if (const auto* junction = std::get_if<Criteria::Junction>(&criteria.node)) {
        sql.condition += u'(';
        append(*junction->left, table, sql);
        sql.condition += junction->joint == Criteria::Joint::And ? u" AND " : u" OR ";
        append(*junction->right, table, sql);
        sql.condition += u')';
        return;
    }
    const auto& comparison = std::get<Comparison>(criteria.node);
    const QString& name = table.fields[static_cast<std::size_t>(comparison.field)].name;
    if (comparison.kind == Comparison::Kind::Equal) {
        // Other programs may have made the table with a collation that takes "a" for "A".
        sql.condition += u'"' + name + u"\" = ? COLLATE BINARY"_s;
    } else {
        if (isIdentifier(name))
            appendPrefixRange(comparison.text, name, sql);
        sql.condition +=
            QString::fromLatin1(isIdentifier(name) ? ExactTest : ReaderTest) + u"(?, \""_s + name + u"\")"_s;
        if (isIdentifier(name))
            sql.condition += u')';
    }
    sql.values << comparison.text;
}

/// A test that keeps its patterns ready, for it is called once per row.
sqlite::Connection::PatternTest patternTest(LikePattern::Comparing comparing)
{
    constexpr qsizetype MostPatterns = 64;
    auto ready = std::make_shared<QHash<QString, std::shared_ptr<const LikePattern>>>();
    return [ready, comparing](const QString& pattern, QStringView text) {
        auto found = ready->constFind(pattern);
        if (found == ready->cend()) {
            if (ready->size() >= MostPatterns)
                ready->clear();
            // The key must own its characters; those of `pattern` are SQLite's.
            const QString owned = QString(pattern.constData(), pattern.size());
            found = ready->insert(owned, std::make_shared<const LikePattern>(owned, comparing));
        }
        return (*found)->matches(text);
    };
}

} // namespace

CriteriaSql compileCriteria(const Criteria& criteria, const TableSchema& table)
{
    CriteriaSql sql;
    append(criteria, table, sql);
    return sql;
}

bool isAnsweredByIndex(const Criteria& criteria, const TableSchema& table)
{
    const auto* const comparison = std::get_if<Comparison>(&criteria.node);
    if (comparison == nullptr || comparison->field != 0 || !isIdentifier(table.fields.front().name))
        return false;
    return comparison->kind == Comparison::Kind::Equal ||
           (!comparison->text.isEmpty() && !Wildcards.contains(comparison->text.front()));
}

void addPatternTests(sqlite::Connection& connection)
{
    connection.addPatternTest(ExactTest, patternTest(LikePattern::Comparing::Exactly));
    connection.addPatternTest(ReaderTest, patternTest(LikePattern::Comparing::AsAReader));
}

} // namespace quillon
