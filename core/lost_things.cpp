#include "core/lost_things.h"

#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/kept_place.h"
#include "core/present_things.h"
#include "core/whereabouts.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/kept/file_contents.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/text_fold.h"

#include <QDir>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

using kept::Event;
using kept::RowFate;
using kept::StoredRow;
using Kind = Whereabouts::Kind;

bool isOf(const StoredRow& row, const TableSchema& table)
{
    return row.table == &table;
}

bool isItem(const StoredRow& row)
{
    return isOf(row, schema::Main()) || isOf(row, schema::RefDoc()) || isOf(row, schema::RefFile());
}

QString named(const QString& name, const QString& identifier)
{
    return name + u" ("_s + identifier + u')';
}

/// The item's own text, and the words for it.
QStringList labelsOf(const TableSchema& table)
{
    if (&table == &schema::Main())
        return {u"名称"_s, u"識別符号"_s, u"定義"_s};
    if (&table == &schema::RefDoc())
        return {u"名称"_s, u"識別符号"_s, u"内容"_s};
    if (&table == &schema::RefFile())
        return {u"名称"_s, u"識別符号"_s, u"説明"_s};
    if (&table == &schema::Link())
        return {u"リンク元"_s, u"リンク先"_s};
    if (&table == &schema::Category_ID())
        return {u"識別符号"_s, u"カテゴリ名"_s};
    if (&table == &schema::Category())
        return {u"カテゴリ"_s, u"データ"_s};
    return {u"アプリケーション"_s, u"パス"_s};
}

/// The record set over the table of a row.
const std::shared_ptr<RecordSet>& rowsOf(Session& session, const StoredRow& row)
{
    for (const auto* rows : {&session.RsMain, &session.RsRefDoc, &session.RsRefFile, &session.RsOpenApp,
                             &session.RsLink, &session.RsCategoryID, &session.RsCategory}) {
        if (*rows && &(*rows)->table() == row.table)
            return *rows;
    }
    throw Error(errors::ObjectNotSet);
}

QString equals(const TableSchema& table, int field, const QString& text)
{
    return table.fields[static_cast<std::size_t>(field)].name + u" = '"_s + text + u'\'';
}

/// A former content beside the file that stands there now.
std::vector<LostField> fieldsOfFile(Session& session, const kept::FormerFile& file)
{
    const QString path = session.inCurrentFolder(titles::FileFolder) + QDir::separator() + file.name;
    const auto sized = [](qint64 size) { return QString::number(size) + u" バイト"_s; };
    std::vector<LostField> fields = {
        {.label = u"ファイル名"_s, .before = file.name, .now = {}},
        {.label = u"大きさ"_s, .before = sized(file.size), .now = {}},
        {.label = u"内容"_s,
         .before = file.hash.isEmpty() ? u"残されていません。"_s : u"上書き前の内容"_s,
         .now = {}}};
    if (!session.files.fileExists(path))
        return fields;
    const qint64 size = platform::sizeAndTime(path).size;
    // Whatever is kept is not so large that looking at it would take long.
    const bool isSame =
        !file.hash.isEmpty() && size == file.size && kept::FileContents::hashOf(path) == file.hash;
    fields[0].now = file.name;
    fields[1].now = sized(size);
    fields[2].now = isSame ? fields[2].before : u"上書き前とは異なる内容"_s;
    return fields;
}

/// What hung on something that was deleted.
struct Relation {
    Kind other = Kind::Item; // what is at its other end
    QString identifier;      // of that
    bool isItselfFirst = false;
};

/// What a row that was deleted beside an item or a category was to it; nothing when it did not hang on it.
std::optional<Relation> relationTo(Kind itself, const QString& identifier, const StoredRow& beside)
{
    const QString first = beside.text(0);
    const QString second = beside.text(1);
    if (beside.fate != RowFate::Deleted)
        return std::nullopt;
    if (isOf(beside, schema::Category())) {
        if (itself == Kind::Category && first == identifier)
            return Relation{.other = Kind::Item, .identifier = second, .isItselfFirst = true};
        if (itself == Kind::Item && second == identifier)
            return Relation{.other = Kind::Category, .identifier = first};
    }
    if (isOf(beside, schema::Link()) && itself == Kind::Item) {
        if (first == identifier)
            return Relation{.other = Kind::Item, .identifier = second, .isItselfFirst = true};
        if (second == identifier)
            return Relation{.other = Kind::Item, .identifier = first};
    }
    return std::nullopt;
}

/// Where relations are listed: those that were and those that are there now.
struct RelationLists {
    QStringList& before;
    QStringList& now;
};
RelationLists listsFor(LostDetails& details, Kind itself, bool isLink)
{
    if (isLink)
        return {.before = details.links, .now = details.linksNow};
    if (itself == Kind::Category)
        return {.before = details.members, .now = details.membersNow};
    return {.before = details.categories, .now = details.categoriesNow};
}

/// So many of its relations are listed.
constexpr int MostListed = 1000;

} // namespace

QString lostKindName(EventKind kind)
{
    switch (kind) {
    case EventKind::ItemDeleted:
        return u"データの削除"_s;
    case EventKind::ItemChanged:
        return u"データの更新"_s;
    case EventKind::LinkRemoved:
        return u"リンクの解除"_s;
    case EventKind::TakenOutOfCategory:
        return u"分類の解除"_s;
    case EventKind::CategoryDeleted:
        return u"カテゴリの削除"_s;
    case EventKind::CategoryRenamed:
        return u"カテゴリ名の変更"_s;
    case EventKind::FileReplaced:
        return u"ファイルの上書き"_s;
    case EventKind::Other:
        return u"その他"_s;
    }
    return {};
}

/// What is kept of the database.
struct LostThings::Kept {
    Kept(Session& session, kept::Place ofDatabase)
        : place(std::move(ofDatabase)), history(place), whereabouts(place, history),
          present(session, whereabouts)
    {
    }

    kept::Place place;
    kept::History history;
    Whereabouts whereabouts;
    PresentThings present;
};

namespace
{

const QString& pathOfOpen(Session& session)
{
    if (!session.OpenDb)
        throw Error(errors::ObjectNotSet);
    return session.OpenDb->path();
}

} // namespace

LostThings::LostThings(Session& session) : LostThings(session, pathOfOpen(session)) {}

LostThings::LostThings(Session& session, const QString& database) : m_session(session)
{
    if (const std::optional<kept::Place> place = keptPlace(session, database))
        m_kept = std::make_unique<Kept>(session, *place);
}

LostThings::~LostThings() = default;

const kept::Place& LostThings::place() const
{
    if (!m_kept)
        throw Error(errors::ObjectNotSet);
    return m_kept->place;
}

kept::History& LostThings::history() const
{
    if (!m_kept)
        throw Error(errors::ObjectNotSet);
    return m_kept->history;
}

bool LostThings::isOfOpenDatabase() const
{
    if (!m_kept || !m_session.OpenDb)
        return false;
    const QString& open = m_session.OpenDb->path();
    if (m_comparedPath != open) {
        const std::optional<kept::Place> place = keptPlace(m_session, open);
        m_isOfComparedPath = place && place->folder() == m_kept->place.folder();
        m_comparedPath = open;
    }
    return m_isOfComparedPath;
}

void LostThings::ask(const LostQuestion& question)
{
    m_folded = foldedText(question.text);
    m_kind = question.kind;
    m_seen = 0;
    m_listed.clear();
    m_names.clear();
}

bool LostThings::readOn(std::size_t events)
{
    if (!m_kept)
        return false;
    const std::vector<Event>& known = m_kept->history.events();
    if (m_seen == known.size() && !m_kept->history.readOlder())
        return false;
    const std::size_t end = std::min(known.size(), m_seen + events);
    for (; m_seen < end; ++m_seen) {
        if (meets(known[m_seen]))
            m_listed.push_back(static_cast<quint32>(m_seen));
    }
    return true;
}

bool LostThings::holdsQuestion(QStringView text) const
{
    m_buffer.resize(std::max(m_buffer.size(), static_cast<std::size_t>(text.size())));
    const QStringView folded(m_buffer.data(), foldInto(text, m_buffer.data()));
    return folded.contains(m_folded);
}

bool LostThings::meets(const Event& event) const
{
    if (m_kind && event.kind != *m_kind)
        return false;
    if (m_folded.isEmpty())
        return true;
    bool found = false;
    history().forEachText(event, [&](QStringView text) { found = found || holdsQuestion(text); });
    if (found || (event.kind != EventKind::LinkRemoved && event.kind != EventKind::TakenOutOfCategory))
        return found;
    const StoredRow row = history().row(event);
    const Kind first = event.kind == EventKind::LinkRemoved ? Kind::Item : Kind::Category;
    return holdsQuestion(nameOf(first, row.text(0), event)) ||
           holdsQuestion(nameOf(Kind::Item, row.text(1), event));
}

QString LostThings::nameOf(Kind kind, const QString& identifier, const Event& event) const
{
    const bool isItem = kind == Kind::Item;
    const auto there = m_kept->whereabouts.now(kind, identifier, event);
    const QString key = (isItem ? u'I' : u'C') + there.value_or(QString());
    if (const auto known = m_names.constFind(key); there && known != m_names.cend())
        return *known;
    std::optional<QString> name;
    // It is for reading only: a damaged file is not told of for each of many rows.
    const auto unknown = [](const Error&) {};
    guardedBy(unknown, [&] {
        if (!there || !isOfOpenDatabase())
            return;
        const PresentThings& present = m_kept->present;
        if (!(isItem ? present.itemExists(*there) : present.categoryExists(*there)))
            return;
        const RecordSet& rows =
            isItem ? required(m_session.*kindOf(*there)->recordSet) : required(m_session.RsCategoryID);
        name = rows.field(isItem ? data_field::Name : category_field::Name);
    });
    if (name) {
        constexpr qsizetype Most = 50'000; // what is forgotten is soon looked up again
        if (m_names.size() >= Most)
            m_names.clear();
        m_names.insert(key, *name);
        return *name;
    }
    const StoredRow deleted = m_kept->whereabouts.deletedSince(kind, identifier, event);
    return deleted.table != nullptr ? deleted.text(isItem ? data_field::Name : category_field::Name)
                                    : titles::Unknown;
}

const Event& LostThings::event(std::size_t number) const
{
    return history().events().at(m_listed.at(number));
}

LostEntry LostThings::entry(std::size_t number) const
{
    const Event& lost = event(number);
    LostEntry entry;
    entry.kind = lost.kind;
    entry.time = QDateTime::fromMSecsSinceEpoch(lost.time);
    entry.operation = history().operation(lost);
    if (lost.kind == EventKind::FileReplaced) {
        entry.name = history().file(lost).name;
        return entry;
    }
    const StoredRow row = history().row(lost);
    if (row.table == nullptr)
        return entry;
    if (isItem(row)) {
        entry.name = row.text(data_field::Name);
        entry.identifier = row.text(data_field::Object_ID);
    } else if (isOf(row, schema::Category_ID())) {
        entry.name = row.text(category_field::Name);
        entry.identifier = row.text(category_field::Category_ID);
    } else if (isOf(row, schema::Link())) {
        entry.name = nameOf(Kind::Item, row.text(0), lost) + u" - "_s + nameOf(Kind::Item, row.text(1), lost);
        entry.identifier = row.text(0) + u" - "_s + row.text(1);
    } else if (isOf(row, schema::Category())) {
        entry.name =
            nameOf(Kind::Category, row.text(0), lost) + u" - "_s + nameOf(Kind::Item, row.text(1), lost);
        entry.identifier = row.text(0) + u" - "_s + row.text(1);
    } else {
        entry.name = row.text(0);
    }
    return entry;
}

LostDetails::Present LostDetails::present() const
{
    const auto isGone = [](const LostField& field) { return !field.now; };
    if (std::all_of(fields.begin(), fields.end(), isGone))
        return Present::Gone;
    const auto isSame = [](const LostField& field) { return field.now == field.before; };
    return std::all_of(fields.begin(), fields.end(), isSame) ? Present::Same : Present::Different;
}

LostDetails LostThings::details(std::size_t number) const
{
    const Event& lost = event(number);
    LostDetails details;
    if (lost.kind == EventKind::FileReplaced) {
        details.fields = fieldsOfFile(m_session, history().file(lost));
        return details;
    }
    const StoredRow row = history().row(lost);
    if (row.table == nullptr)
        return details;
    const QStringList labels = labelsOf(*row.table);
    details.isCompared = isOfOpenDatabase();
    const bool isThere = details.isCompared && goToPresent(row, lost);
    for (int i = 0; i < labels.size(); ++i)
        details.fields.push_back(
            {.label = labels[i],
             .before = row.text(i),
             .now = isThere ? std::optional(rowsOf(m_session, row)->field(i)) : std::nullopt});
    if (lost.kind == EventKind::ItemDeleted || lost.kind == EventKind::CategoryDeleted)
        addRelations(details, row, lost);
    return details;
}

bool LostThings::goToPresent(const StoredRow& row, const Event& event) const
{
    const PresentThings& present = m_kept->present;
    if (isItem(row) || isOf(row, schema::Category_ID()))
        return present.ofRow(row, event).has_value();
    if (isOf(row, schema::Link()))
        return goToPair(*row.table, present.item(row.text(0), event), present.item(row.text(1), event));
    if (isOf(row, schema::Category()))
        return goToPair(*row.table, present.category(row.text(0), event), present.item(row.text(1), event));
    return goToPair(*row.table, row.text(0), row.text(1));
}

bool LostThings::goToPair(const TableSchema& table, const std::optional<QString>& first,
                          const std::optional<QString>& second) const
{
    if (!first || !second)
        return false;
    StoredRow sought;
    sought.table = &table;
    RecordSet& rows = *rowsOf(m_session, sought);
    rows.findFirst(equals(table, 0, *first) + u" AND "_s + equals(table, 1, *second));
    return rows.hasCurrentRow();
}

void LostThings::addRelations(LostDetails& details, const StoredRow& row, const Event& event) const
{
    const Kind kind = event.kind == EventKind::ItemDeleted ? Kind::Item : Kind::Category;
    const QString identifier =
        row.text(kind == Kind::Item ? data_field::Object_ID : category_field::Category_ID);
    const PresentThings& present = m_kept->present;
    const auto presentOf = [&](Kind of, const QString& lost) {
        return of == Kind::Item ? present.item(lost, event) : present.category(lost, event);
    };
    std::optional<QString> itself;
    if (details.isCompared) {
        itself = presentOf(kind, identifier);
        details.isIdentifierTaken =
            kind == Kind::Item ? present.itemExists(identifier) : present.categoryExists(identifier);
    }
    history().forEachRowBeside(event, [&](const StoredRow& beside) {
        const std::optional<Relation> relation = relationTo(kind, identifier, beside);
        if (!relation)
            return;
        const auto [before, now] = listsFor(details, kind, isOf(beside, schema::Link()));
        if (before.size() >= MostListed) {
            ++details.notListed;
            return;
        }
        const QString name = nameOf(relation->other, relation->identifier, event);
        before << named(name, relation->identifier);
        if (!itself)
            return;
        const std::optional<QString> other = presentOf(relation->other, relation->identifier);
        const bool isFirst = relation->isItselfFirst;
        if (goToPair(*beside.table, isFirst ? itself : other, isFirst ? other : itself))
            now << named(name, *other);
    });
}

} // namespace quillon
