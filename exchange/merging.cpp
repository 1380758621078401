#include "exchange/merging.h"

#include "app/base/ports/clock.h"
#include "core/category_entry.h"
#include "exchange/row_question.h"
#include "exchange/tables.h"
#include "store/data_kinds.h"
#include "store/identifier_supply.h"
#include "store/lookup/identifier_set.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <array>
#include <map>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// Fields that tell a row; nothing identifies one in which any of these is null.
std::vector<int> keyOf(const TableSchema& table)
{
    if (&table == &schema::OpenApp())
        return {};
    if (&table == &schema::Link() || &table == &schema::Category())
        return {0, 1};
    if (&table == &schema::Category_ID())
        return {category_field::Category_ID};
    return {data_field::Object_ID};
}

bool hasKey(const TableSchema& table, const StoredRow& row)
{
    const std::vector<int> key = keyOf(table);
    // sic: an empty text is a key like any other, of which a table takes one.
    return !key.empty() && std::all_of(key.begin(), key.end(), [&](int field) {
        return row[static_cast<std::size_t>(field)].has_value();
    });
}

/// The parent of a category; empty for one of the top level.
QString parentOf(const QString& category)
{
    return category.first(std::max(qsizetype(0), category.lastIndexOf(u'-')));
}

std::optional<QString> textIn(const sqlite::Statement& statement, int column)
{
    if (statement.isNull(column))
        return std::nullopt;
    QString text = statement.text(column).toString();
    return text.isNull() ? u""_s : text; // null means that nothing is stored
}

} // namespace

class Merging::Work
{
public:
    Work(Session& session, RowSource& rows, ImportReport& report, ComingFiles files)
        : m_session(session), m_rows(rows), m_report(report),
          m_files(session, std::move(files),
                  [this](const QString& where, const QString& text) { tell(where, text); })
    {
        for (const DataKind& kind : data_kinds::all())
            m_supplies.emplace_back(required(session.*kind.recordSet), kind);
    }

    void examine()
    {
        for (const TableSchema* const table : schema::all()) {
            m_rows.forEachRow(*table, [&](const StoredRow& row, const QString&) { note(*table, row); });
        }
    }

    void write()
    {
        const auto& kinds = data_kinds::all();
        for (std::size_t i = 0; i < kinds.size(); ++i)
            writeData(i);
        writeWithoutKeys(required(m_session.RsOpenApp));
        placeCategories();
        writeCategories();
        writeLinks();
        writeMemberships();
        if (m_files.lacking() > 0)
            tell({}, u"ファイルデータ %1 件のファイルがありません。"_s.arg(m_files.lacking()));
    }

private:
    struct ComingCategory {
        QString identifier;
        std::optional<QString> name;
        QString as = {}; // under this identifier
        bool isThere = false;
    };

    void note(const TableSchema& table, const StoredRow& row)
    {
        if (!hasKey(table, row))
            return;
        const auto& kinds = data_kinds::all();
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            if (&required(m_session.*kinds[i].recordSet).table() == &table) {
                const QString& identifier = *row[data_field::Object_ID];
                m_coming[i].insert(identifier);
                m_supplies[i].reserve(identifier);
            }
        }
        if (&table == &schema::Category_ID())
            m_categories.push_back(
                {.identifier = *row[category_field::Category_ID], .name = row[category_field::Name]});
    }

    void add(RecordSet& rows, const StoredRow& row, const QString& where)
    {
        if (const FieldSchema* const field = fieldTooLong(rows.table(), row))
            tell(
                where,
                u"項目 %1 が %2 文字を超えています。そのまま取り込みましたが、更新するときは短くしてください。"_s
                    .arg(field->name, QString::number(field->width)));
        rows.addNew();
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i])
                rows.setField(static_cast<int>(i), *row[i]);
        }
        rows.update(RecordSet::Widths::Exceeded);
    }

    void tell(const QString& where, const QString& text)
    {
        m_report.notes.push_back({.where = where, .text = text});
    }

    /// How many equal rows without a key a table had before.
    static std::map<StoredRow, qint64> rowsWithoutKey(const RecordSet& rows)
    {
        std::map<StoredRow, qint64> counts;
        forEachStoredRow(rows, [&](const StoredRow& row, bool) {
            if (!hasKey(rows.table(), row))
                ++counts[row];
        });
        return counts;
    }

    /// Adds rows that nothing identifies until there are as many equal ones as where they come from.
    class Unidentified
    {
    public:
        Unidentified(Work& work, RecordSet& rows) : m_work(work), m_rows(rows) {}

        bool add(const StoredRow& row, const QString& where)
        {
            if (!m_before)
                m_before = rowsWithoutKey(m_rows);
            const auto found = m_before->find(row);
            if (found != m_before->end() && found->second > 0) {
                --found->second;
                return false;
            }
            m_work.add(m_rows, row, where);
            return true;
        }

    private:
        Work& m_work;
        RecordSet& m_rows;
        std::optional<std::map<StoredRow, qint64>> m_before;
    };

    void writeWithoutKeys(RecordSet& rows)
    {
        Unidentified unidentified(*this, rows);
        m_rows.forEachRow(rows.table(),
                          [&](const StoredRow& row, const QString& where) { unidentified.add(row, where); });
    }

    void writeData(std::size_t kindIndex)
    {
        const DataKind& kind = data_kinds::all()[kindIndex];
        RecordSet& rows = required(m_session.*kind.recordSet);
        const QDate today = m_session.clock.now().date();
        Unidentified unidentified(*this, rows);
        RowQuestion present(rows, u"\"Name\", \"Explanation\""_s, keyOf(rows.table()));
        const auto count = [&](bool added) { ++(added ? m_report.added : m_report.skipped); };
        m_rows.forEachRow(rows.table(), [&](const StoredRow& row, const QString& where) {
            if (!hasKey(rows.table(), row)) {
                count(unidentified.add(row, where));
                return;
            }
            const QString& identifier = *row[data_field::Object_ID];
            bool isSame = false;
            const bool isTaken = present.ask({identifier}, [&](const sqlite::Statement& found) {
                isSame = textIn(found, 0) == row[data_field::Name] &&
                         textIn(found, 1) == row[data_field::Explanation];
            });
            count(!isSame);
            if (isSame)
                return;
            StoredRow renamed = row;
            if (&kind == &data_kinds::file())
                m_files.keepApart(renamed, where);
            if (!isTaken) {
                add(rows, renamed, where);
                return;
            }
            const QDate day = dayOfIdentifier(identifier, today);
            const QString given = m_supplies[kindIndex].next(day.isValid() ? day : today);
            renamed[data_field::Object_ID] = given;
            add(rows, renamed, where);
            if (kindOf(identifier) == &kind)
                m_renamedData.insert(identifier, given);
            ++m_report.renamed;
            tell(where, u"識別符号 %1 は別のデータが使用しているため、%2 として取り込みました。"_s.arg(
                            identifier, given));
        });
    }

    /// Finds for each category under which identifier it comes.
    void placeCategories()
    {
        RowQuestion present(required(m_session.RsCategoryID), u"\"Name\""_s, keyOf(schema::Category_ID()));
        std::vector<ComingCategory*> parentsFirst;
        QSet<QString> coming;
        for (ComingCategory& category : m_categories) {
            parentsFirst.push_back(&category);
            coming.insert(category.identifier);
        }
        std::stable_sort(parentsFirst.begin(), parentsFirst.end(),
                         [](const ComingCategory* a, const ComingCategory* b) {
                             return a->identifier.size() < b->identifier.size();
                         });
        QHash<QString, std::optional<QString>> placed; // names by identifiers given out here
        const auto isTaken = [&](const QString& identifier) {
            return coming.contains(identifier) || placed.contains(identifier) || present.ask({identifier});
        };
        for (ComingCategory* const category : parentsFirst) {
            const QString parent = parentOf(category->identifier);
            QString under = m_categoriesAs.value(parent, parent);
            // Without its own parent it would come to lie under a stranger.
            const bool isOrphan = !parent.isEmpty() && !coming.contains(parent);
            if (isOrphan && present.ask({parent}))
                under.clear();
            const QString beginning = under.isEmpty() ? QString() : under + u'-';
            category->as = beginning + (parent.isEmpty() ? category->identifier
                                                         : category->identifier.sliced(parent.size() + 1));
            std::optional<QString> name;
            const bool isThere =
                present.ask({category->as}, [&](const sqlite::Statement& found) { name = textIn(found, 0); });
            category->isThere = isThere && name == category->name;
            // What is to come under this identifier has the older right to it.
            const bool isMoved = category->as != category->identifier;
            if (!category->isThere &&
                (isThere || placed.contains(category->as) || (isMoved && coming.contains(category->as))))
                category->as = newCategoryIdentifier(beginning, isTaken);
            placed.insert(category->as, category->name);
            if (!m_categoriesAs.contains(category->identifier))
                m_categoriesAs.insert(category->identifier, category->as);
        }
    }

    void writeCategories()
    {
        RecordSet& rows = required(m_session.RsCategoryID);
        Unidentified unidentified(*this, rows);
        std::size_t next = 0;
        m_rows.forEachRow(rows.table(), [&](const StoredRow& row, const QString& where) {
            if (!hasKey(rows.table(), row)) {
                m_report.categories += unidentified.add(row, where) ? 1 : 0;
                return;
            }
            const ComingCategory& category = m_categories.at(next++);
            if (category.isThere)
                return;
            StoredRow placed = row;
            placed[category_field::Category_ID] = category.as;
            add(rows, placed, where);
            ++m_report.categories;
            if (category.as != category.identifier)
                tell(where,
                     u"カテゴリ %1 は、%2 として取り込みました。"_s.arg(category.identifier, category.as));
        });
    }

    /// Whether an identifier leads to a datum that came along; otherwise one of the open database may have it.
    bool comesAlong(const QString& identifier) const
    {
        const DataKind* const kind = kindOf(identifier);
        return kind != nullptr && m_coming[data_kinds::positionOf(*kind)].contains(identifier);
    }
    bool isPresent(const QString& identifier)
    {
        const DataKind* const kind = kindOf(identifier);
        return kind != nullptr && m_present[data_kinds::positionOf(*kind)].ask({identifier});
    }
    /// The identifier that a datum has now; nothing when a stranger has it.
    std::optional<QString> identifierNow(const QString& identifier)
    {
        if (!comesAlong(identifier))
            return isPresent(identifier) ? std::nullopt : std::optional(identifier);
        return m_renamedData.value(identifier, identifier);
    }

    void askWhetherPresent()
    {
        m_present.clear();
        for (const DataKind& kind : data_kinds::all()) {
            const RecordSet& rows = required(m_session.*kind.recordSet);
            m_present.emplace_back(rows, u"1"_s, keyOf(rows.table()));
        }
    }

    void writeLinks()
    {
        RecordSet& rows = required(m_session.RsLink);
        askWhetherPresent();
        Unidentified unidentified(*this, rows);
        RowQuestion present(rows, u"1"_s, {0, 1});
        RowQuestion numbers(rows, u"rowid"_s, {0, 1});
        const qint64 before = rows.roughCount();
        m_rows.forEachRow(rows.table(), [&](const StoredRow& row, const QString& where) {
            if (!hasKey(rows.table(), row)) {
                m_report.linked += unidentified.add(row, where) ? 1 : 0;
                return;
            }
            const auto from = identifierNow(*row[0]);
            const auto to = identifierNow(*row[1]);
            if (!from || !to) {
                tell(
                    where,
                    u"リンク先のないリンク %1 - %2 は、別のデータを指すことになるため取り込みませんでした。"_s
                        .arg(*row[0], *row[1]));
                return;
            }
            bool isThere = present.ask({*from, *to});
            // The same link the other way round, unless it came along, too.
            numbers.ask({*to, *from}, [&](const sqlite::Statement& found) {
                isThere = isThere || found.number(0) <= before;
            });
            if (isThere)
                return;
            add(rows, {from, to}, where);
            ++m_report.linked;
        });
    }

    void writeMemberships()
    {
        RecordSet& rows = required(m_session.RsCategory);
        Unidentified unidentified(*this, rows);
        RowQuestion present(rows, u"1"_s, {0, 1});
        RowQuestion categories(required(m_session.RsCategoryID), u"1"_s, keyOf(schema::Category_ID()));
        m_rows.forEachRow(rows.table(), [&](const StoredRow& row, const QString& where) {
            if (!hasKey(rows.table(), row)) {
                m_report.filed += unidentified.add(row, where) ? 1 : 0;
                return;
            }
            const auto datum = identifierNow(*row[1]);
            const auto known = m_categoriesAs.constFind(*row[0]);
            const bool isStranger = known == m_categoriesAs.cend() && categories.ask({*row[0]});
            if (!datum || isStranger) {
                tell(where,
                     u"相手のない分類 %1 - %2 は、別のものを指すことになるため取り込みませんでした。"_s.arg(
                         *row[0], *row[1]));
                return;
            }
            const QString category = known == m_categoriesAs.cend() ? *row[0] : *known;
            if (present.ask({category, *datum}))
                return;
            add(rows, {category, datum}, where);
            ++m_report.filed;
        });
    }

    Session& m_session;
    RowSource& m_rows;
    ImportReport& m_report;
    OwnFiles m_files;
    std::vector<IdentifierSupply> m_supplies;              // by kind
    std::array<IdentifierSet, data_kinds::Count> m_coming; // by kind, as where they come from
    std::vector<RowQuestion> m_present;                    // by kind
    QHash<QString, QString> m_renamedData;
    std::vector<ComingCategory> m_categories;
    QHash<QString, QString> m_categoriesAs;
};

Merging::Merging(Session& session, RowSource& rows, ImportReport& report, ComingFiles files)
    : m_work(std::make_unique<Work>(session, rows, report, std::move(files)))
{
}

Merging::~Merging() = default;

void Merging::examine()
{
    m_work->examine();
}

void Merging::write()
{
    m_work->write();
}

} // namespace quillon::exchange
