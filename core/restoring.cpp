#include "core/restoring.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/links.h"
#include "core/lost_things.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"
#include "store/keeper.h"
#include "store/kept/file_contents.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <QDir>

#include <algorithm>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

using kept::Event;
using kept::History;
using kept::RowFate;
using kept::StoredRow;

/// The kind whose table a row is of; null for a table of no kind.
const DataKind* kindOfRow(Session& session, const StoredRow& row)
{
    for (const DataKind& kind : data_kinds::all()) {
        if (&required(session.*kind.recordSet).table() == row.table)
            return &kind;
    }
    return nullptr;
}

bool itemExists(Session& session, const QString& identifier)
{
    const DataKind* const kind = kindOf(identifier);
    return kind != nullptr && required(session.*kind->recordSet).goTo(data_field::Object_ID, identifier);
}

bool categoryExists(Session& session, const QString& identifier)
{
    return required(session.RsCategoryID).goTo(category_field::Category_ID, identifier);
}

void addPair(RecordSet& rows, const QString& first, const QString& second)
{
    rows.addNew();
    rows.setField(0, first);
    rows.setField(1, second);
    rows.update();
}

/// Writes the fields of a row as they were; the field of its identifier holds `identifier`.
void setFields(RecordSet& rows, const StoredRow& row, int identifierField, const QString& identifier)
{
    for (int i = 0; i < static_cast<int>(rows.table().fields.size()); ++i) {
        if (i == identifierField)
            rows.setField(i, identifier);
        else if (!row.isNull(i))
            rows.setField(i, row.text(i));
    }
}

/// The rows of a table that were deleted together with an event.
std::vector<StoredRow> deletedBeside(const History& history, const Event& event, const TableSchema& table)
{
    std::vector<StoredRow> rows;
    history.forEachRowBeside(event, [&](const StoredRow& row) {
        if (row.table == &table && row.fate == RowFate::Deleted)
            rows.push_back(row);
    });
    return rows;
}

/// The work of putting back one event.
class PuttingBack
{
public:
    PuttingBack(Session& session, const LostThings& things, std::size_t number)
        : m_session(session), m_history(things.history()), m_event(things.event(number))
    {
    }

    /// Nothing when a failure has been told on the way.
    std::optional<PutBackResult> run()
    {
        switch (m_event.kind) {
        case EventKind::ItemDeleted:
            item();
            break;
        case EventKind::ItemChanged:
            texts();
            break;
        case EventKind::LinkRemoved:
            link();
            break;
        case EventKind::TakenOutOfCategory:
            membership();
            break;
        case EventKind::CategoryDeleted:
            category();
            break;
        case EventKind::CategoryRenamed:
            categoryName();
            break;
        case EventKind::FileReplaced:
            fileContent();
            break;
        case EventKind::Other:
            throw Error(errors::InvalidArgument);
        }
        return m_isDone ? std::optional(m_result) : std::nullopt;
    }

private:
    void item()
    {
        const StoredRow row = lost();
        const DataKind* const kind = kindOfRow(m_session, row);
        if (kind == nullptr)
            throw Error(errors::InvalidArgument);
        RecordSet& rows = required(m_session.*kind->recordSet);
        const QString before = row.text(data_field::Object_ID);
        // A new one is asked for before the write: the file is not to be locked while a failure of that is told.
        if (rows.goTo(data_field::Object_ID, before))
            useOtherIdentifier(CreateObject_ID(m_session, QString(kind->letter)));
        else
            m_result.identifier = before;
        if (m_result.identifier.isEmpty())
            return; // why there is no other one has been told
        sqlite::Transaction write(rows.database().connection());
        rows.addNew();
        setFields(rows, row, data_field::Object_ID, m_result.identifier);
        rows.update();
        for (const StoredRow& beside : deletedBeside(m_history, m_event, schema::Link()))
            linkOfItem(beside, before);
        for (const StoredRow& beside : deletedBeside(m_history, m_event, schema::Category())) {
            if (beside.text(1) == before)
                file(beside.text(0), m_result.identifier);
        }
        write.commit();
        tell(u"データ「"_s + row.text(data_field::Name) + u"」を戻しました。"_s);
    }

    /// A link of a deleted item, when it is one of this item.
    void linkOfItem(const StoredRow& link, const QString& before)
    {
        const auto now = [&](int side) {
            return link.text(side) == before ? m_result.identifier : link.text(side);
        };
        if (link.text(0) == before || link.text(1) == before)
            connect(now(0), now(1));
    }

    void connect(const QString& source, const QString& target)
    {
        if (!itemExists(m_session, source) || !itemExists(m_session, target))
            ++m_result.missing;
        else if (!areLinked(m_session, source, target))
            addPair(required(m_session.RsLink), source, target);
    }

    void file(const QString& category, const QString& identifier)
    {
        if (!categoryExists(m_session, category) || !itemExists(m_session, identifier))
            ++m_result.missing;
        else if (!isFiled(m_session, category, identifier))
            addPair(required(m_session.RsCategory), category, identifier);
    }

    void texts()
    {
        const StoredRow row = lost();
        const DataKind* const kind = kindOfRow(m_session, row);
        if (kind == nullptr)
            throw Error(errors::InvalidArgument);
        RecordSet& rows = required(m_session.*kind->recordSet);
        m_result.identifier = row.text(data_field::Object_ID);
        sqlite::Transaction write(rows.database().connection());
        if (!rows.goTo(data_field::Object_ID, m_result.identifier))
            throw Error(errors::NoCurrentRecord);
        rows.edit();
        // The row was found by its identifier; what was null is empty.
        rows.setField(data_field::Name, row.text(data_field::Name));
        rows.setField(data_field::Explanation, row.text(data_field::Explanation));
        rows.update();
        write.commit();
        tell(u"データ「"_s + row.text(data_field::Name) + u"」を更新前の内容に戻しました。"_s);
    }

    void link()
    {
        const StoredRow row = lost();
        sqlite::Transaction write(required(m_session.RsLink).database().connection());
        connect(row.text(0), row.text(1));
        requireBothEnds();
        write.commit();
        tell(u"リンクを戻しました。"_s);
    }

    void membership()
    {
        const StoredRow row = lost();
        sqlite::Transaction write(required(m_session.RsCategory).database().connection());
        file(row.text(0), row.text(1));
        requireBothEnds();
        write.commit();
        tell(u"分類を戻しました。"_s);
    }

    void category()
    {
        const StoredRow row = lost();
        const QString before = row.text(category_field::Category_ID);
        RecordSet& categories = required(m_session.RsCategoryID);
        sqlite::Transaction write(categories.database().connection());
        if (categoryExists(m_session, before)) {
            const QString beginning = before.first(before.lastIndexOf(u'-') + 1);
            useOtherIdentifier(newCategoryIdentifier(
                beginning, [&](const QString& candidate) { return categoryExists(m_session, candidate); }));
        } else {
            m_result.identifier = before;
        }
        categories.addNew();
        setFields(categories, row, category_field::Category_ID, m_result.identifier);
        categories.update();
        for (const StoredRow& beside : deletedBeside(m_history, m_event, schema::Category())) {
            if (beside.text(0) == before)
                file(m_result.identifier, beside.text(1));
        }
        write.commit();
        tell(u"カテゴリ「"_s + row.text(category_field::Name) + u"」を戻しました。"_s);
    }

    void categoryName()
    {
        const StoredRow row = lost();
        m_result.identifier = row.text(category_field::Category_ID);
        RenameCategory(m_session, presentCategory(m_session, m_result.identifier),
                       row.text(category_field::Name));
        tell(u"カテゴリの名称を「"_s + row.text(category_field::Name) + u"」に戻しました。"_s);
    }

    void fileContent()
    {
        Keeper* const keeper = m_session.keeper;
        if (keeper == nullptr)
            throw Error(errors::ObjectNotSet);
        const kept::FormerFile former = m_history.file(m_event);
        const kept::FileContents contents(
            kept::Place(keeper->keptFolder(), required(m_session.RsRefFile).database().path()));
        const std::optional<QString> content = contents.find(former.hash);
        if (!content)
            throw Error(errors::FileNotFound,
                        u"ファイル「%1」の上書き前の内容は残されていません。"_s.arg(former.name));
        const QString folder = m_session.inCurrentFolder(titles::FileFolder);
        const QString path = folder + QDir::separator() + former.name;
        const auto present = m_session.files.fileExists(path) ? keeper->fileGoes(path) : nullptr;
        if (present && !present->isKept())
            throw Error(errors::PathFileAccess,
                        u"現在のファイル「%1」の内容を残せないため、戻しませんでした。"_s.arg(former.name));
        const auto copy = m_session.files.stageCopy(*content, folder, former.name, {});
        copy->place({});
        copy->keep();
        if (present)
            present->isReplaced();
        tell(u"ファイル「"_s + former.name + u"」を上書き前の内容に戻しました。"_s);
    }

    StoredRow lost() const
    {
        StoredRow row = m_history.row(m_event);
        if (row.table == nullptr)
            throw Error(errors::NoCurrentRecord);
        return row;
    }

    void useOtherIdentifier(const QString& identifier)
    {
        m_result.identifier = identifier;
        m_result.hasOtherIdentifier = true;
    }

    void requireBothEnds() const
    {
        if (m_result.missing > 0)
            throw Error(errors::NoCurrentRecord);
    }

    void tell(const QString& done)
    {
        m_isDone = true;
        m_result.text = done;
        if (m_result.hasOtherIdentifier)
            m_result.text += u"\r\n元の識別符号は使われているため、新しい識別符号は "_s +
                             m_result.identifier + u" です。"_s;
        if (m_result.missing > 0)
            m_result.text += u"\r\n相手が存在しないリンクや分類 ("_s + QString::number(m_result.missing) +
                             u" 件) は戻していません。"_s;
    }

    Session& m_session;
    const History& m_history;
    Event m_event;
    PutBackResult m_result;
    bool m_isDone = false;
};

} // namespace

std::optional<PutBackResult> PutBack(Session& session, const LostThings& things, std::size_t number)
{
    std::optional<PutBackResult> result;
    guarded(session.reporting, u"PutBack"_s, [&] { result = PuttingBack(session, things, number).run(); });
    return result;
}

} // namespace quillon
