#include "core/data_records.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/datum_place.h"
#include "core/file_data.h"
#include "core/links.h"
#include "core/mode.h"
#include "core/registration_window.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/lookup/category_names.h"
#include "store/lookup/data_names.h"
#include "store/lookup/identifier_set.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/connection.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The window that shows a datum. Windows of data that are gone do not count when another datum has their identifier.
/// Moves the cursor of the table to the datum when any window bears its identifier.
DataWindow* windowShowing(Session& session, const DataKind& kind, const QString& identifier)
{
    std::vector<DataWindow*> windows;
    for (LoadedWindow* loaded : session.windows.loaded()) {
        DataWindow* window = loaded->asDataWindow();
        if (window != nullptr && window->windowName() == kind.windowName &&
            window->fieldText(1) == identifier && isOpenDatabase(session, window->row().databaseFile))
            windows.push_back(window);
    }
    if (windows.empty())
        return nullptr;
    RecordSet& rows = required(session.*kind.recordSet);
    if (!rows.goTo(data_field::Object_ID, identifier))
        return windows.front();
    const auto showsRow = [&](const DataWindow* window) { return window->row().number == rows.rowNumber(); };
    const auto shown = std::find_if(windows.begin(), windows.end(), showsRow);
    return shown != windows.end() ? *shown : nullptr;
}

void show(Session& session, const DataKind& kind, const QString& identifier)
{
    if (DataWindow* open = windowShowing(session, kind, identifier)) {
        open->bringToFront();
        return;
    }
    RecordSet& rows = required(session.*kind.recordSet);
    if (!rows.goTo(data_field::Object_ID, identifier)) {
        session.dialogs.messageBox({.text = u"指定されたデータが見つかりませんでした。"_s,
                                    .title = kind.shortName,
                                    .icon = Icon::Information});
        return;
    }
    // Read before the window appears: nothing may rely on the cursor once events can run.
    const std::array fields = {rows.field(0), rows.field(1), rows.field(2)};
    const DatumRow row{.databaseFile = openDatabaseFile(session), .number = rows.rowNumber()};
    DataWindow& window = session.windows.newDataWindow(QString(kind.letter));
    window.showModeless();
    window.setCaption(kind.shortName + kind.captionJoint + fields[0]);
    window.setMode(FormMode::Display);
    for (int i = 0; i < 3; ++i)
        window.setFieldText(i, fields[static_cast<std::size_t>(i)]);
    window.setRow(row);
    SetLinkList(session, window, identifier);
    AddCategory(session, window, identifier);
}

} // namespace

void ShowData(Session& session, const QString& identifier)
{
    guarded(session.reporting, u"ShowData"_s, [&] {
        const DataKind* const kind = kindOf(identifier);
        if (kind == nullptr)
            return;
        if (kind->isShownInWindow)
            show(session, *kind, identifier);
        else
            ShowRefFile(session, identifier);
    });
}

void CreateRegisterForm(Session& session, const QString& kind)
{
    guarded(session.reporting, u"CreateRegisterForm"_s, [&] {
        DataWindow* const window = newRegistration(session, kind);
        if (window == nullptr)
            return;
        window->showModeless();
        window->setMode(FormMode::Registration);
        const MainWindowPort& mainWindow = session.mainWindow();
        const int node = mainWindow.selectedNodeIndex();
        if (node > LastFixedNode) {
            auto rows = window->categoryRows();
            CategoryRow selected =
                listedCategory(session, mainWindow.nodeText(node), mainWindow.nodeKey(node));
            // Another program may have given it another name since the tree was built, or may have deleted it and given
            // its identifier to another one. What is filed in must bear its own name.
            if (selected.number != 0)
                selected.name = readCategoryName(session, selected.identifier).value_or(selected.name);
            rows.push_back(selected);
            window->setCategoryRows(rows);
        }
    });
}

namespace
{

/// As what a datum was seen, as far as that matters.
struct Seen {
    std::optional<QString> name = std::nullopt;
    std::optional<qint64> row = std::nullopt;
};

/// Deletes a datum and what hangs on it as one write. The name of the row that was deleted; null when it is gone.
std::optional<QString> deleteWhole(Session& session, const QString& identifier, const Seen& seen)
{
    RecordSet& rows = dataTableOf(session, identifier);
    sqlite::Transaction write(rows.database().connection());
    std::optional<QString> name;
    if (rows.goTo(data_field::Object_ID, identifier)) {
        name = rows.field(data_field::Name);
        if (seen.name.value_or(*name) != *name || seen.row.value_or(rows.rowNumber()) != rows.rowNumber())
            return std::nullopt; // another datum by now: it stays, and all that hangs on it
        rows.deleteRow();
    }
    // Also for a datum whose row is gone, so that nothing is left that points to it.
    deleteLinksOf(session, identifier);
    deleteMembershipsOf(session, identifier);
    write.commit();
    return name;
}

/// The deletion of many data, and what there is to tell about it afterwards.
class DeletionOfMany
{
public:
    DeletionOfMany(Session& session, const std::vector<ListedDatum>& data) : m_session(session), m_data(data)
    {
    }

    /// Deletes all as one write; the relations of all go in one pass over each table.
    /// False, and nothing is changed, when these cannot all go.
    bool deleteTogether(const std::function<void()>& advance)
    {
        sqlite::Connection& connection = required(m_session.RsMain).database().connection();
        RecordSet& links = required(m_session.RsLink);
        RecordSet& memberships = required(m_session.RsCategory);
        sqlite::Transaction write(connection);
        IdentifierSet cleared;
        for (const ListedDatum& datum : m_data) {
            tryTwice(
                [&] {
                    RecordSet& rows = dataTableOf(m_session, datum.identifier);
                    const bool found = rows.goTo(data_field::Object_ID, datum.identifier);
                    if (found && rows.field(data_field::Name) != datum.name)
                        return Deletion::Gone; // another datum by now: it stays, and all that hangs on it
                    if (found)
                        rows.deleteRow();
                    cleared.insert(datum.identifier);
                    return found ? Deletion::Deleted : Deletion::Gone;
                },
                [&](const Error& error) {
                    // Without memory it is not known what has been noted of this one: then none goes.
                    return connection.inTransaction() && error.number != errors::OutOfMemory;
                });
            advance();
        }
        try {
            links.deleteRowsIf({0, 1}, [&](const RecordSet::Row& link) {
                return cleared.contains(link.text(0)) || cleared.contains(link.text(1));
            });
            memberships.deleteRowsIf(
                {1}, [&](const RecordSet::Row& membership) { return cleared.contains(membership.text(0)); });
        } catch (const Error&) {
            // A full disk, for one, undoes everything by itself; then there is nothing to try in another way.
            if (!connection.inTransaction())
                throw;
            return false;
        }
        write.commit();
        return true;
    }

    /// Deletes each as a write of its own, so that one that cannot go keeps no other.
    void deleteEach()
    {
        m_outcome.clear();
        m_failures.clear();
        for (const ListedDatum& datum : m_data) {
            tryTwice(
                [&] {
                    return deleteWhole(m_session, datum.identifier, {.name = datum.name}) ? Deletion::Deleted
                                                                                          : Deletion::Gone;
                },
                [](const Error&) { return true; });
        }
    }

    void tell() const
    {
        for (const Error& failure : m_failures)
            ReportError(m_session.reporting, failure, Location);
        tellNotFound(m_session, std::count(m_outcome.begin(), m_outcome.end(), Deletion::Gone));
    }

    const std::vector<Deletion>& outcome() const { return m_outcome; }

    static inline const QString Location = u"DeleteData"_s;

private:
    template <class Operation, class CanGoOn> void tryTwice(Operation&& operation, CanGoOn&& canGoOn)
    {
        Deletion outcome = Deletion::Kept;
        std::optional<Error> failure;
        for (int attempt = 0; attempt < 2 && outcome == Deletion::Kept; ++attempt) {
            const auto onFailure = [&](const Error& error) {
                if (!canGoOn(error))
                    throw error;
                failure = error;
            };
            guardedBy(onFailure, [&] { outcome = operation(); });
        }
        if (outcome == Deletion::Kept && failure)
            m_failures.push_back(*failure);
        m_outcome.push_back(outcome);
    }

    Session& m_session;
    const std::vector<ListedDatum>& m_data;
    std::vector<Deletion> m_outcome;
    std::vector<Error> m_failures;
};

Deletion deleteOne(Session& session, const QString& identifier, Seen seen, qint16 mode)
{
    Deletion outcome = Deletion::Kept;
    guarded(session.reporting, u"DeleteData"_s, [&] {
        if (asks(mode)) {
            seen.name = readDataName(session, identifier);
            if (!seen.name)
                return;
            const Answer answer = session.dialogs.messageBox(
                {.text = u"<"_s + *seen.name + u"> を削除しますか。"_s, .buttons = Buttons::OkCancel});
            if (answer != Answer::Ok)
                return;
        }
        const std::optional<QString> name = deleteWhole(session, identifier, seen);
        outcome = name ? Deletion::Deleted : Deletion::Gone;
        if (!name)
            tellNotFound(session, 1);
        else if (tells(mode))
            session.dialogs.messageBox({.text = u"< "_s + *name + u" >を削除しました。"_s,
                                        .title = GetDivName(session, identifier, DivName::Title)});
    });
    return outcome;
}

} // namespace

Deletion DeleteDatum(Session& session, const QString& identifier, qint16 mode)
{
    return deleteOne(session, identifier, {}, mode);
}

Deletion DeleteDatum(Session& session, const DatumPlace& place, qint16 mode)
{
    requireDatum(session, place);
    return deleteOne(session, place.identifier, {.row = place.row}, mode);
}

bool DeleteData(Session& session, const QString& identifier, qint16 mode)
{
    return DeleteDatum(session, identifier, mode) == Deletion::Deleted;
}

std::vector<Deletion> DeleteManyData(Session& session, const std::vector<ListedDatum>& data,
                                     const std::function<void()>& advance)
{
    std::vector<Deletion> outcome(data.size(), Deletion::Kept);
    guarded(session.reporting, DeletionOfMany::Location, [&] {
        DeletionOfMany deletion(session, data);
        if (!deletion.deleteTogether(advance))
            deletion.deleteEach();
        outcome = deletion.outcome();
        deletion.tell();
    });
    return outcome;
}

} // namespace quillon
