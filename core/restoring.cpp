#include "core/restoring.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/links.h"
#include "core/lost_things.h"
#include "core/present_things.h"
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

// Other programs may have written texts wider than their fields; what stood in the database may stand there again.
constexpr RecordSet::Widths AsItWas = RecordSet::Widths::Exceeded;

void addPair(RecordSet& rows, const QString& first, const QString& second)
{
    rows.addNew();
    rows.setField(0, first);
    rows.setField(1, second);
    rows.update(AsItWas);
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

/// The history of the open database.
kept::History& historyOfOpen(Session& session, const LostThings& things)
{
    if (session.keeper == nullptr || !session.OpenDb)
        throw Error(errors::ObjectNotSet);
    if (!things.isOfOpenDatabase())
        throw Error(errors::ObjectNotSet, u"データベース「%1」が展開されていないため、戻せません。"_s.arg(
                                              QDir::toNativeSeparators(things.place().database())));
    return things.history();
}

/// Why something cannot be put back.
Error notPossible(const QString& reason)
{
    return {errors::NoCurrentRecord, reason};
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
        : m_session(session), m_history(historyOfOpen(session, things)), m_event(things.event(number)),
          m_place(things.place()), m_whereabouts(m_place, m_history), m_present(session, m_whereabouts)
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
        rows.update(AsItWas);
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
        const auto there =
            other == before ? std::optional(m_result.identifier) : m_present.item(other, m_event);
        if (!there)
            owe(isSource ? Owed::LinkTarget : Owed::LinkSource, other);
        else if (isSource)
            linkUnlessLinked(m_session, m_result.identifier, *there);
        else
            linkUnlessLinked(m_session, *there, m_result.identifier);
    }

    void membershipOfItem(const QString& category)
    {
        if (const auto there = m_present.category(category, m_event))
            fileUnlessFiled(m_session, *there, m_result.identifier);
        else
            owe(Owed::Category, category);
    }

    void memberOfCategory(const QString& item)
    {
        if (const auto there = m_present.item(item, m_event))
            fileUnlessFiled(m_session, m_result.identifier, *there);
        else
            owe(Owed::Member, item);
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
        for (const auto& [role, with] : m_whereabouts.dueTo(kind, before, m_event)) {
            const bool isThere =
                role == Owed::Member ? m_present.categoryExists(with) : m_present.itemExists(with);
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
        sqlite::Transaction write(rows.database().connection());
        m_result.identifier = presentOf(row, u"データ"_s, row.text(data_field::Name));
        rows.edit();
        // The row was found by its identifier; what was null is empty.
        rows.setField(data_field::Name, row.text(data_field::Name));
        rows.setField(data_field::Explanation, row.text(data_field::Explanation));
        rows.update(AsItWas);
        write.commit();
        tell(u"データ「"_s + row.text(data_field::Name) + u"」を更新前の内容に戻しました。"_s);
    }

    /// The item or category that had other texts, under its present identifier; the cursor stands on it.
    QString presentOf(const StoredRow& row, const QString& kind, const QString& name)
    {
        if (auto there = m_present.ofRow(row, m_event))
            return *there;
        const bool isCategory = m_event.kind == EventKind::CategoryRenamed;
        const QString before = row.text(isCategory ? category_field::Category_ID : data_field::Object_ID);
        const bool isTaken = isCategory ? m_present.categoryExists(before) : m_present.itemExists(before);
        throw notPossible(
            isTaken ? u"%1「%2」は現在存在せず、その識別符号 %3 は別のものに付けられています。"
                      u"何も変更していません。先に削除されたものを戻してください。"_s.arg(kind, name, before)
                    : u"%1「%2」は現在存在しません。先に削除されたものを戻してください。"_s.arg(kind, name));
    }

    void link()
    {
        const StoredRow row = lost();
        sqlite::Transaction write(required(m_session.RsLink).database().connection());
        linkUnlessLinked(m_session, endOfPair(row.text(0), Whereabouts::Kind::Item),
                         endOfPair(row.text(1), Whereabouts::Kind::Item));
        write.commit();
        tell(u"リンクを戻しました。"_s);
    }

    void membership()
    {
        const StoredRow row = lost();
        sqlite::Transaction write(required(m_session.RsCategory).database().connection());
        fileUnlessFiled(m_session, endOfPair(row.text(0), Whereabouts::Kind::Category),
                        endOfPair(row.text(1), Whereabouts::Kind::Item));
        write.commit();
        tell(u"分類を戻しました。"_s);
    }

    /// What a link or a membership was of, under its present identifier.
    QString endOfPair(const QString& before, Whereabouts::Kind kind)
    {
        const bool isCategory = kind == Whereabouts::Kind::Category;
        const auto there = isCategory ? m_present.category(before, m_event) : m_present.item(before, m_event);
        if (!there)
            throw notPossible(
                u"%1 (%2) が現在存在しないため、戻せません。先に削除されたものを戻してください。"_s.arg(
                    isCategory ? u"カテゴリ"_s : u"データ"_s, before));
        return *there;
    }

    void category()
    {
        const StoredRow row = lost();
        const QString before = row.text(category_field::Category_ID);
        RecordSet& categories = required(m_session.RsCategoryID);
        sqlite::Transaction write(categories.database().connection());
        const QString beginning = beginningUnderParent(before, row.text(category_field::Name));
        if (m_result.hasOtherParent || m_present.categoryExists(before))
            useOtherIdentifier(newCategoryIdentifier(
                beginning, [&](const QString& candidate) { return m_present.categoryExists(candidate); }));
        else
            m_result.identifier = before;
        categories.addNew();
        setFields(categories, row, category_field::Category_ID, m_result.identifier);
        categories.update(AsItWas);
        for (const StoredRow& beside : deletedBeside(m_history, m_event, schema::Category())) {
            if (beside.text(0) == before)
                memberOfCategory(beside.text(1));
        }
        giveWhatIsDue(Whereabouts::Kind::Category, before);
        write.commit();
        noteThatItIsBack(before);
        tell(u"カテゴリ「"_s + row.text(category_field::Name) + u"」を戻しました。"_s);
    }

    /// What the identifier of a lost category begins with now: that of its parent, which may have another one by now, and
    /// a hyphen; nothing at the top level.
    QString beginningUnderParent(const QString& before, const QString& name)
    {
        const QString parent = before.first(std::max<qsizetype>(before.lastIndexOf(u'-'), 0));
        if (parent.isEmpty())
            return before.first(before.lastIndexOf(u'-') + 1);
        const auto there = m_present.category(parent, m_event);
        // Under whoever bears the identifier of the parent now, or under nobody, it would be at home nowhere.
        if (!there)
            throw notPossible(u"カテゴリ「%1」の上位のカテゴリ (%2) が現在存在しないため、戻せません。"
                              u"先に上位のカテゴリを戻してください。"_s.arg(name, parent));
        m_result.hasOtherParent = *there != parent;
        return *there + u'-';
    }

    void categoryName()
    {
        const StoredRow row = lost();
        const QString name = row.text(category_field::Name);
        sqlite::Transaction write(required(m_session.RsCategoryID).database().connection());
        m_result.identifier = presentOf(row, u"カテゴリ"_s, name);
        RenameCategory(m_session, presentCategory(m_session, m_result.identifier), name);
        write.commit();
        tell(u"カテゴリの名称を「"_s + name + u"」に戻しました。"_s);
    }

    void fileContent()
    {
        Keeper* const keeper = m_session.keeper;
        if (keeper == nullptr)
            throw Error(errors::ObjectNotSet);
        const kept::FormerFile former = m_history.file(m_event);
        const kept::FileContents contents(m_place);
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

    void tell(const QString& done)
    {
        m_isDone = true;
        m_result.text = done;
        if (m_result.hasOtherIdentifier)
            m_result.text += (m_result.hasOtherParent ? u"\r\n上位のカテゴリの識別符号が変わっているため"_s
                                                      : u"\r\n元の識別符号は使われているため"_s) +
                             u"、新しい識別符号は "_s + m_result.identifier + u" です。"_s;
        if (m_result.missing > 0)
            m_result.text += u"\r\n相手が存在しないリンクや分類 ("_s + QString::number(m_result.missing) +
                             u" 件) は戻していません。"_s;
    }

    Session& m_session;
    History& m_history;
    Event m_event;
    kept::Place m_place;
    Whereabouts m_whereabouts;
    PresentThings m_present;
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
