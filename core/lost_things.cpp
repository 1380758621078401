#include "core/lost_things.h"

#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/keeper.h"
#include "store/lookup/category_names.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/text_fold.h"

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
        entry.name = GetDataName(m_session, row.text(0)) + u" - "_s + GetDataName(m_session, row.text(1));
        entry.identifier = row.text(0) + u" - "_s + row.text(1);
    } else if (isOf(row, schema::Category())) {
        entry.name = GetCategoryName(m_session, row.text(0)) + u" - "_s + GetDataName(m_session, row.text(1));
        entry.identifier = row.text(0) + u" - "_s + row.text(1);
    } else {
        entry.name = row.text(0);
    }
    return entry;
}

LostDetails LostThings::details(std::size_t number) const
{
    const Event& lost = event(number);
    LostDetails details;
    if (lost.kind == EventKind::FileReplaced) {
        const kept::FormerFile file = m_history->file(lost);
        const QFileInfo present(m_session.inCurrentFolder(titles::FileFolder) + u'/' + file.name);
        const auto sized = [](qint64 size) { return QString::number(size) + u" バイト"_s; };
        details.fields.push_back({.label = u"ファイル名"_s, .before = file.name, .now = {}});
        details.fields.push_back({.label = u"大きさ"_s, .before = sized(file.size), .now = {}});
        if (present.isFile()) {
            details.fields[0].now = file.name;
            details.fields[1].now = sized(present.size());
        }
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
    m_history->forEachRowBeside(lost, [&](const StoredRow& beside) {
        if (beside.fate != RowFate::Deleted)
            return;
        const QString first = beside.text(0);
        const QString second = beside.text(1);
        if (isOf(beside, schema::Link()) && isDeletedItem && (first == identifier || second == identifier)) {
            const QString& partner = first == identifier ? second : first;
            details.links << named(GetDataName(m_session, partner), partner);
        } else if (isOf(beside, schema::Category()) && isDeletedItem && second == identifier) {
            details.categories << named(GetCategoryName(m_session, first), first);
        } else if (isOf(beside, schema::Category()) && isDeletedCategory && first == identifier) {
            details.members << named(GetDataName(m_session, second), second);
        }
    });
    return details;
}

} // namespace quillon
