#include "core/lost_things.h"

#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/keeper.h"
#include "store/kept/file_contents.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/text_fold.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

using kept::Event;
using kept::RowFate;
using kept::StoredRow;

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

/// The row that stands for a lost one now; false when there is none.
bool goToPresent(Session& session, const StoredRow& lost)
{
    RecordSet& rows = *rowsOf(session, lost);
    if (isItem(lost))
        return rows.goTo(data_field::Object_ID, lost.text(data_field::Object_ID));
    if (isOf(lost, schema::Category_ID()))
        return rows.goTo(category_field::Category_ID, lost.text(category_field::Category_ID));
    rows.findFirst(equals(*lost.table, 0, lost.text(0)) + u" AND "_s + equals(*lost.table, 1, lost.text(1)));
    return rows.hasCurrentRow();
}

/// What something is called now. Its name is for reading only: a damaged file is not told of for each of many rows.
QString nameOfItem(Session& session, const QString& identifier)
{
    QString name = titles::Unknown;
    const DataKind* const kind = kindOf(identifier);
    guardedBy([](const Error&) {},
              [&] {
                  if (kind != nullptr &&
                      required(session.*kind->recordSet).goTo(data_field::Object_ID, identifier))
                      name = (session.*kind->recordSet)->field(data_field::Name);
              });
    return name;
}

QString nameOfCategory(Session& session, const QString& identifier)
{
    QString name = titles::Unknown;
    guardedBy([](const Error&) {},
              [&] {
                  if (required(session.RsCategoryID).goTo(category_field::Category_ID, identifier))
                      name = session.RsCategoryID->field(category_field::Name);
              });
    return name;
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
    const qint64 size = QFileInfo(path).size();
    // Whatever is kept is not so large that looking at it would take long.
    const bool isSame =
        !file.hash.isEmpty() && size == file.size && kept::FileContents::hashOf(path) == file.hash;
    fields[0].now = file.name;
    fields[1].now = sized(size);
    fields[2].now = isSame ? fields[2].before : u"上書き前とは異なる内容"_s;
    return fields;
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

LostThings::LostThings(Session& session) : m_session(session)
{
    if (!session.OpenDb)
        throw Error(errors::ObjectNotSet);
    if (session.keeper != nullptr)
        m_history = std::make_unique<kept::History>(
            kept::Place(session.keeper->keptFolder(), session.OpenDb->path()));
}

LostThings::~LostThings() = default;

void LostThings::ask(const LostQuestion& question)
{
    m_folded = foldedText(question.text);
    m_kind = question.kind;
    m_seen = 0;
    m_listed.clear();
}

bool LostThings::readOn(std::size_t events)
{
    if (!m_history)
        return false;
    if (m_seen == m_history->events().size() && !m_history->readOlder())
        return false;
    const std::size_t end = std::min(m_history->events().size(), m_seen + events);
    for (; m_seen < end; ++m_seen) {
        if (meets(m_history->events()[m_seen]))
            m_listed.push_back(static_cast<quint32>(m_seen));
    }
    return true;
}

bool LostThings::meets(const Event& event) const
{
    if (m_kind && event.kind != *m_kind)
        return false;
    if (m_folded.isEmpty())
        return true;
    bool found = false;
    m_history->forEachText(event, [&](QStringView text) {
        if (found)
            return;
        m_buffer.resize(std::max(m_buffer.size(), static_cast<std::size_t>(text.size())));
        const QStringView folded(m_buffer.data(), foldInto(text, m_buffer.data()));
        found = folded.contains(m_folded);
    });
    return found;
}

const Event& LostThings::event(std::size_t number) const
{
    return m_history->events().at(m_listed.at(number));
}

LostEntry LostThings::entry(std::size_t number) const
{
    const Event& lost = event(number);
    LostEntry entry;
    entry.kind = lost.kind;
    entry.time = QDateTime::fromMSecsSinceEpoch(lost.time);
    entry.operation = m_history->operation(lost);
    if (lost.kind == EventKind::FileReplaced) {
        entry.name = m_history->file(lost).name;
        return entry;
    }
    const StoredRow row = m_history->row(lost);
    if (row.table == nullptr)
        return entry;
    if (isItem(row)) {
        entry.name = row.text(data_field::Name);
        entry.identifier = row.text(data_field::Object_ID);
    } else if (isOf(row, schema::Category_ID())) {
        entry.name = row.text(category_field::Name);
        entry.identifier = row.text(category_field::Category_ID);
    } else if (isOf(row, schema::Link())) {
        entry.name = nameOfItem(m_session, row.text(0)) + u" - "_s + nameOfItem(m_session, row.text(1));
        entry.identifier = row.text(0) + u" - "_s + row.text(1);
    } else if (isOf(row, schema::Category())) {
        entry.name = nameOfCategory(m_session, row.text(0)) + u" - "_s + nameOfItem(m_session, row.text(1));
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
        details.fields = fieldsOfFile(m_session, m_history->file(lost));
        return details;
    }
    const StoredRow row = m_history->row(lost);
    if (row.table == nullptr)
        return details;
    const QStringList labels = labelsOf(*row.table);
    const bool isThere = goToPresent(m_session, row);
    for (int i = 0; i < labels.size(); ++i)
        details.fields.push_back(
            {.label = labels[i],
             .before = row.text(i),
             .now = isThere ? std::optional(rowsOf(m_session, row)->field(i)) : std::nullopt});
    const bool isDeletedItem = lost.kind == EventKind::ItemDeleted;
    const bool isDeletedCategory = lost.kind == EventKind::CategoryDeleted;
    if (!isDeletedItem && !isDeletedCategory)
        return details;
    const QString identifier = row.text(isDeletedItem ? data_field::Object_ID : category_field::Category_ID);
    const auto add = [&](const StoredRow& beside, QStringList& before, QStringList& now, const auto& name,
                         const QString& other) {
        if (before.size() >= MostListed) {
            ++details.notListed;
            return;
        }
        before << named(name(m_session, other), other);
        if (goToPresent(m_session, beside))
            now << before.last();
    };
    m_history->forEachRowBeside(lost, [&](const StoredRow& beside) {
        if (beside.fate != RowFate::Deleted)
            return;
        const QString first = beside.text(0);
        const QString second = beside.text(1);
        if (isOf(beside, schema::Link()) && isDeletedItem && (first == identifier || second == identifier))
            add(beside, details.links, details.linksNow, nameOfItem, first == identifier ? second : first);
        else if (isOf(beside, schema::Category()) && isDeletedItem && second == identifier)
            add(beside, details.categories, details.categoriesNow, nameOfCategory, first);
        else if (isOf(beside, schema::Category()) && isDeletedCategory && first == identifier)
            add(beside, details.members, details.membersNow, nameOfItem, second);
    });
    return details;
}

} // namespace quillon
