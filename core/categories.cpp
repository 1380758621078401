#include "core/categories.h"

#include "app/base/ports/category_chooser.h"
#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/category_entry.h"
#include "core/datum_place.h"
#include "core/deferred_messages.h"
#include "core/mode.h"
#include "store/filter_result.h"
#include "store/lookup/category_names.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"
#include "store/write_transaction.h"

#include <QHash>

#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Answers the memberships that meet a criteria text, null after a failure, which has been told or noted.
using FindMemberships = std::function<std::shared_ptr<RecordSet>(const QString& criteria)>;

FindMemberships tellingFailures(Session& session)
{
    return [&session](const QString& criteria) {
        return GetFilterResult(session.reporting, session.RsCategory, criteria);
    };
}

/// The same inside a durable write.
FindMemberships deferringFailures(Session& session, DeferredMessages& messages)
{
    return [&session, &messages](const QString& criteria) {
        std::shared_ptr<RecordSet> result;
        messages.trap(u"GetFilterResult"_s,
                      [&] { result = required(session.RsCategory).filtered(criteria); });
        return result;
    };
}

void addMembership(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    RecordSet& memberships = required(session.RsCategory);
    memberships.addNew();
    memberships.setField(0, categoryIdentifier);
    memberships.setField(1, identifier);
    memberships.update();
}

void fileIn(Session& session, const FindMemberships& find, const QString& categoryIdentifier,
            const QString& identifier)
{
    const auto present =
        find(u"Category_ID ='"_s + categoryIdentifier + u"' AND Object_ID = '"_s + identifier + u"'"_s);
    if (required(present).hasRows())
        return;
    addMembership(session, categoryIdentifier, identifier);
}

void takeOutOfAncestors(const FindMemberships& find, const QString& categoryIdentifier,
                        const QString& identifier)
{
    for (auto hyphen = categoryIdentifier.indexOf(u'-'); hyphen >= 0;
         hyphen = categoryIdentifier.indexOf(u'-', hyphen + 1)) {
        const QString ancestor = categoryIdentifier.first(hyphen);
        const auto memberships =
            find(u"Category_ID = '"_s + ancestor + u"' AND Object_ID = '"_s + identifier + u"'"_s);
        if (required(memberships).hasRows()) {
            memberships->moveFirst();
            memberships->deleteRow();
        }
    }
}

} // namespace

bool isFiled(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    RecordSet& memberships = required(session.RsCategory);
    memberships.findFirst(u"Category_ID = '"_s + categoryIdentifier + u"' AND Object_ID = '"_s + identifier +
                          u'\'');
    return memberships.hasCurrentRow();
}

std::vector<CategoryRow> categoriesOf(Session& session, const QString& identifier)
{
    const auto memberships =
        GetFilterResult(session.reporting, session.RsCategory, u"Object_ID ='"_s + identifier + u"'"_s);
    CategoryNameLookup names(session);
    std::vector<CategoryRow> rows;
    required(memberships).forEachRow({0}, [&](const RecordSet::Row& membership) {
        const QString category = membership.text(0).toString();
        rows.push_back({.name = names.name(category), .identifier = category});
    });
    names.tellFailures();
    for (CategoryRow& row : rows)
        row = listedCategory(session, row.name, row.identifier);
    return rows;
}

void AddCategory(Session& session, DataWindow& window, const QString& identifier)
{
    guarded(session.reporting, u"AddCategory"_s, [&] {
        window.setCategoryRows({});
        window.setCategoryRows(categoriesOf(session, identifier));
    });
}

void ClassifyCategory(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    guarded(session.reporting, u"ClassifyCategory"_s, [&] {
        Database& database = required(session.RsCategory).database();
        DeferredMessages messages(database);
        inWriteTransaction(database,
                           [&] { ClassifyDatum(session, messages, categoryIdentifier, identifier); });
        messages.show(session);
    });
}

void ClassifyDatum(Session& session, DeferredMessages& messages, const QString& categoryIdentifier,
                   const QString& identifier)
{
    const FindMemberships find = deferringFailures(session, messages);
    messages.trap(u"ClassifyCategory"_s, [&] {
        // Filed and taken out of the ancestors, or neither.
        sqlite::Transaction filing(required(session.RsCategory).database().connection());
        fileIn(session, find, categoryIdentifier, identifier);
        bool takenOut = false;
        messages.trap(u"DeleteParentCategory"_s, [&] {
            takeOutOfAncestors(find, categoryIdentifier, identifier);
            takenOut = true;
        });
        if (takenOut)
            filing.commit();
    });
}

qsizetype fileNewDatum(Session& session, const QString& identifier, const QStringList& categoryIdentifiers)
{
    // What would be taken out again by a category that follows is not put in.
    QStringList filed;
    for (const QString& category : categoryIdentifiers) {
        filed.removeIf(
            [&](const QString& before) { return before == category || category.startsWith(before + u'-'); });
        filed << category;
    }
    for (const QString& category : std::as_const(filed))
        addMembership(session, category, identifier);
    return filed.size();
}

std::vector<std::size_t> ClassifyManyData(Session& session, const CategoryRow& category,
                                          const std::vector<ListedDatum>& data,
                                          const std::function<void()>& advance)
{
    Database& database = required(session.RsCategory).database();
    DeferredMessages messages(database);
    std::vector<std::size_t> gone;
    inWriteTransaction(database, [&] {
        requireCategory(session, category);
        for (std::size_t i = 0; i < data.size(); ++i) {
            messages.trap(u"ClassifyCategory"_s, [&] {
                if (isStillThere(session, data[i]))
                    ClassifyDatum(session, messages, category.identifier, data[i].identifier);
                else
                    gone.push_back(i);
            });
            advance();
        }
    });
    messages.show(session);
    tellNotFound(session, static_cast<qsizetype>(gone.size()));
    return gone;
}

void DeleteParentCategory(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    guarded(session.reporting, u"DeleteParentCategory"_s,
            [&] { takeOutOfAncestors(tellingFailures(session), categoryIdentifier, identifier); });
}

namespace
{

/// Sees that a category that a list shows is still the same one. Error 3021 when it is gone or another has its identifier.
void requireListed(Session& session, const CategoryRow& category)
{
    if (category.number != 0 && !isCategory(session, category))
        throw Error(errors::NoCurrentRecord);
}

} // namespace

void DeleteCategoryEntry(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    const auto memberships = GetFilterResult(session.reporting, session.RsCategory,
                                             u"Category_ID = '"_s + categoryIdentifier +
                                                 u"' AND Object_ID = '"_s + identifier + u"'"_s);
    required(memberships).moveFirst();
    memberships->deleteRow();
}

void DeleteCategoryEntry(Session& session, const CategoryRow& category, const QString& identifier)
{
    requireListed(session, category);
    DeleteCategoryEntry(session, category.identifier, identifier);
}

void TakeOutOfCategory(Session& session, const CategoryRow& category, const std::vector<ListedDatum>& data)
{
    RecordSet& memberships = required(session.RsCategory);
    sqlite::Transaction write(memberships.database().connection());
    requireListed(session, category);
    qsizetype gone = 0;
    QHash<QString, int> wanted; // how often a datum is to be taken out
    {
        DataNameLookup names(session, static_cast<qint64>(data.size()));
        for (const ListedDatum& datum : data) {
            // No identifier with a quote is ever given out, let alone again.
            if (datum.identifier.contains(u'\'') || names.name(datum.identifier) == datum.name)
                ++wanted[datum.identifier];
            else
                ++gone;
        }
    }
    // sic: without the hyphen before the wildcard, so that the category itself matches too.
    memberships.filtered(u"Category_ID Like '"_s + category.identifier + u"*'"_s)
        ->deleteRowsIf({1}, [&](const RecordSet::Row& row) {
            const auto left = wanted.find(row.text(0).toString());
            if (left == wanted.end() || *left == 0)
                return false;
            --*left;
            return true;
        });
    write.commit();
    for (const int left : wanted)
        gone += left;
    tellNotFound(session, gone);
}

void deleteMembershipsOf(Session& session, const QString& identifier)
{
    required(session.RsCategory).filtered(u"Object_ID ='"_s + identifier + u"'"_s)->deleteEveryRow();
}

void DeleteRelationalCategory(Session& session, const QString& identifier)
{
    guarded(session.reporting, u"DeleteRelationalCategory"_s, [&] {
        required(
            GetFilterResult(session.reporting, session.RsCategory, u"Object_ID ='"_s + identifier + u"'"_s))
            .deleteEveryRow();
    });
}

bool HasSubcategories(Session& session, const QString& categoryIdentifier)
{
    return required(session.RsCategoryID)
        .filtered(u"Category_ID Like '"_s + categoryIdentifier + u"-*'"_s)
        ->hasRows();
}

bool DeleteCategory(Session& session, const QString& categoryIdentifier, qint16 mode)
{
    bool deleted = false;
    guarded(session.reporting, u"DeleteCategory"_s, [&] {
        QString name;
        if (asks(mode) || tells(mode)) {
            const auto present = readCategoryName(session, categoryIdentifier);
            if (!present)
                return;
            name = *present;
        }
        const CategoryRow asked = listedCategory(session, name, categoryIdentifier);
        if (asks(mode)) {
            const Answer answer = session.dialogs.messageBox(
                {.text = u"<"_s + name + u"> を削除しますか。"_s, .buttons = Buttons::OkCancel});
            if (answer != Answer::Ok)
                return;
        }
        const auto memberships = GetFilterResult(session.reporting, session.RsCategory,
                                                 u"Category_ID = '"_s + categoryIdentifier + u"'"_s);
        RecordSet& categories = required(session.RsCategoryID);
        bool found = false;
        {
            // Together or not at all: nobody loses a place in a category that stays.
            sqlite::Transaction write(required(memberships).database().connection());
            found = categories.goTo(category_field::Category_ID, categoryIdentifier);
            const QString present = found ? categories.field(category_field::Name) : titles::Unknown;
            const qint64 number = found ? categories.rowNumber() : 0;
            if (asks(mode) && (present != asked.name || number != asked.number))
                throw Error(errors::NoCurrentRecord); // another one by now: it stays, and its members do
            memberships->deleteEveryRow();
            if (found)
                categories.deleteRow();
            write.commit();
        }
        if (!found)
            // sic: the half-width full stop and the blank at the end.
            session.dialogs.messageBox({.text = u"カテゴリ一覧フレームに不整合が確認されました。"
                                                u"再度データベースを展開することをお勧めします｡ "_s});
        else if (tells(mode))
            session.dialogs.messageBox({.text = u"カテゴリ："_s + name + u"を削除しました。"_s});
        deleted = true;
    });
    return deleted;
}

namespace
{

/// Lets the user choose one of the main window's categories. False when that is cancelled.
bool chooseCategory(Session& session)
{
    const MainWindowPort& tree = session.mainWindow();
    std::vector<ChooserNode> nodes;
    constexpr int Root = positionOf(FixedNode::Categories);
    nodes.push_back({.parentKey = {}, .key = tree.nodeKey(Root), .text = tree.nodeText(Root)});
    for (int position = LastFixedNode + 1; position <= tree.nodeCount(); ++position)
        nodes.push_back({.parentKey = tree.nodeParentKey(position),
                         .key = tree.nodeKey(position),
                         .text = tree.nodeText(position)});
    CategoryChooser& chooser = session.windows.categoryChooser();
    chooser.setNodes(nodes);
    chooser.expandNode(1);
    // sic: the ninth, whatever it is; with fewer nodes the choice fails here.
    constexpr int NinthNode = 9;
    if (nodes.size() < NinthNode) {
        chooser.unload();
        throw Error(
            errors::IndexOutOfBounds,
            u"カテゴリが少ないため選択画面を開けません。カテゴリを八つ以上登録してからやり直してください。"_s);
    }
    chooser.expandNode(NinthNode);
    chooser.showModal();
    return session.CategoryChosen;
}

/// Files a datum in the category that the session remembers as chosen. Another program may have deleted it meanwhile,
/// and a chooser that was closed by its close box chooses what was chosen at any time before.
void classifyInChosen(Session& session, const QString& identifier)
{
    guarded(session.reporting, u"ClassifyCategory"_s, [&] {
        const CategoryRow chosen{.name = session.ChosenCategoryName, .identifier = session.ChosenCategoryID};
        Database& database = required(session.RsCategory).database();
        DeferredMessages messages(database);
        inWriteTransaction(database, [&] {
            // No criteria text can hold a quote. Filing in such a category says so.
            if (!chosen.identifier.contains(u'\''))
                requireCategory(session, chosen);
            ClassifyDatum(session, messages, chosen.identifier, identifier);
        });
        messages.show(session);
    });
}

} // namespace

void SelectCategory(Session& session, const QString& identifier)
{
    if (chooseCategory(session))
        classifyInChosen(session, identifier);
}

void SelectCategory(Session& session, const DatumPlace& datum)
{
    if (!chooseCategory(session))
        return;
    requireDatum(session, datum);
    classifyInChosen(session, datum.identifier);
}

} // namespace quillon
