#include "core/restoring.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/links.h"
#include "core/lost_things.h"
#include "core/whereabouts.h"
#include "store/data_kinds.h"
#include "store/database.h"
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
using Owed = kept::OwedRelation::Other;

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

void linkUnlessLinked(Session& session, const QString& source, const QString& target)
{
    if (!areLinked(session, source, target))
        addPair(required(session.RsLink), source, target);
}

void fileUnlessFiled(Session& session, const QString& category, const QString& identifier)
{
    if (!isFiled(session, category, identifier))
        addPair(required(session.RsCategory), category, identifier);
}

kept::Place placeOf(Session& session)
{
    if (session.keeper == nullptr || !session.OpenDb)
        throw Error(errors::ObjectNotSet);
    return {session.keeper->keptFolder(), session.OpenDb->path()};
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
        : m_session(session), m_history(things.history()), m_event(things.event(number)),
          m_whereabouts(placeOf(session), m_history, m_event)
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
                membershipOfItem(beside.text(0));
        }
        giveWhatIsDue(Whereabouts::Kind::Item, before);
        write.commit();
        noteThatItIsBack(before);
        tell(u"データ「"_s + row.text(data_field::Name) + u"」を戻しました。"_s);
    }

    /// A link of a deleted item, when it is one of this item.
    void linkOfItem(const StoredRow& link, const QString& before)
    {
        const bool isSource = link.text(0) == before;
        if (!isSource && link.text(1) != before)
            return;
        const QString other = link.text(isSource ? 1 : 0);
        const auto there = other == before ? std::optional(m_result.identifier) : presentItem(other);
        if (!there)
            owe(isSource ? Owed::LinkTarget : Owed::LinkSource, other);
        else if (isSource)
            linkUnlessLinked(m_session, m_result.identifier, *there);
        else
            linkUnlessLinked(m_session, *there, m_result.identifier);
    }

    void membershipOfItem(const QString& category)
    {
        if (const auto there = presentCategoryOf(category))
            fileUnlessFiled(m_session, *there, m_result.identifier);
        else
            owe(Owed::Category, category);
    }

    void memberOfCategory(const QString& item)
    {
        if (const auto there = presentItem(item))
            fileUnlessFiled(m_session, m_result.identifier, *there);
        else
            owe(Owed::Member, item);
    }

    /// What bore an identifier when the lost one was lost, as far as it is there.
    std::optional<QString> presentItem(const QString& identifier)
    {
        auto there = m_whereabouts.now(Whereabouts::Kind::Item, identifier);
        return there && itemExists(m_session, *there) ? there : std::nullopt;
    }
    std::optional<QString> presentCategoryOf(const QString& identifier)
    {
        auto there = m_whereabouts.now(Whereabouts::Kind::Category, identifier);
        return there && categoryExists(m_session, *there) ? there : std::nullopt;
    }

    void owe(Owed role, const QString& other)
    {
        ++m_result.missing;
        m_owed.push_back({.role = role, .other = other});
    }

    /// The relations that others came back without.
    void giveWhatIsDue(Whereabouts::Kind kind, const QString& before)
    {
        const QString& here = m_result.identifier;
        for (const auto& [role, with] : m_whereabouts.dueTo(kind, before)) {
            const bool isThere =
                role == Owed::Member ? categoryExists(m_session, with) : itemExists(m_session, with);
            if (!isThere)
                continue;
            switch (role) {
            case Owed::LinkSource:
                linkUnlessLinked(m_session, here, with);
                break;
            case Owed::LinkTarget:
                linkUnlessLinked(m_session, with, here);
                break;
            case Owed::Category:
                fileUnlessFiled(m_session, here, with);
                break;
            case Owed::Member:
                fileUnlessFiled(m_session, with, here);
                break;
            }
        }
    }

    void noteThatItIsBack(const QString& before)
    {
        m_session.keeper->isBack({.isCategory = m_event.kind == EventKind::CategoryDeleted,
                                  .before = before,
                                  .deletedAt = m_event.time,
                                  .after = m_result.identifier,
                                  .owed = m_owed});
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
        linkUnlessLinked(m_session, requiredEnd(presentItem(row.text(0))),
                         requiredEnd(presentItem(row.text(1))));
        write.commit();
        tell(u"リンクを戻しました。"_s);
    }

    void membership()
    {
        const StoredRow row = lost();
        sqlite::Transaction write(required(m_session.RsCategory).database().connection());
        fileUnlessFiled(m_session, requiredEnd(presentCategoryOf(row.text(0))),
                        requiredEnd(presentItem(row.text(1))));
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
                memberOfCategory(beside.text(1));
        }
        giveWhatIsDue(Whereabouts::Kind::Category, before);
        write.commit();
        noteThatItIsBack(before);
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

    static QString requiredEnd(const std::optional<QString>& identifier)
    {
        return identifier ? *identifier : throw Error(errors::NoCurrentRecord);
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
    Whereabouts m_whereabouts;
    std::vector<kept::OwedRelation> m_owed;
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
