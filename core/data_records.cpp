#include "core/data_records.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/deferred_messages.h"
#include "core/file_data.h"
#include "core/links.h"
#include "core/mode.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"
#include "store/lookup/data_names.h"
#include "store/lookup/identifier_set.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/write_transaction.h"

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

void tellNotFound(Session& session)
{
    session.dialogs.messageBox(
        {.text = u"指定されたデータが見つかりませんでした。"_s, .title = titles::DataResearch});
}

DataWindow* windowShowing(Session& session, const DataKind& kind, const QString& identifier)
{
    for (LoadedWindow* loaded : session.windows.loaded()) {
        DataWindow* window = loaded->asDataWindow();
        if (window != nullptr && window->windowName() == kind.windowName &&
            window->fieldText(1) == identifier)
            return window;
    }
    return nullptr;
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
    DataWindow& window = session.windows.newDataWindow(QString(kind.letter));
    window.showModeless();
    window.setCaption(kind.shortName + kind.captionJoint + fields[0]);
    window.setMode(FormMode::Display);
    for (int i = 0; i < 3; ++i)
        window.setFieldText(i, fields[static_cast<std::size_t>(i)]);
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
        DataWindow& window = session.windows.registrationWindow(kind);
        window.showModeless();
        window.setFieldText(1, CreateObject_ID(session, kind));
        window.setMode(FormMode::Registration);
        const MainWindowPort& mainWindow = session.mainWindow();
        const int node = mainWindow.selectedNodeIndex();
        if (node > LastFixedNode) {
            auto rows = window.categoryRows();
            rows.push_back({.name = mainWindow.nodeText(node), .identifier = mainWindow.nodeKey(node)});
            window.setCategoryRows(rows);
        }
    });
}

bool DeleteData(Session& session, const QString& identifier, qint16 mode)
{
    bool deleted = false;
    guarded(session.reporting, u"DeleteData"_s, [&] {
        if (asks(mode)) {
            const Answer answer = session.dialogs.messageBox(
                {.text = u"<"_s + GetDataName(session, identifier) + u"> を削除しますか。"_s,
                 .buttons = Buttons::OkCancel});
            if (answer != Answer::Ok)
                return;
        }
        RecordSet& rows = dataTableOf(session, identifier);
        if (rows.goTo(data_field::Object_ID, identifier)) {
            const QString name = rows.field(data_field::Name);
            rows.deleteRow();
            deleted = true;
            if (tells(mode))
                session.dialogs.messageBox({.text = u"< "_s + name + u" >を削除しました。"_s,
                                            .title = GetDivName(session, identifier, DivName::Title)});
        } else {
            tellNotFound(session);
        }
        // Also for a datum whose row is gone, so that nothing is left that points to it.
        DeleteRelationalLink(session, identifier);
        DeleteRelationalCategory(session, identifier);
    });
    return deleted;
}

std::vector<bool> DeleteManyData(Session& session, const QStringList& identifiers,
                                 const std::function<void()>& advance)
{
    std::vector<bool> deleted;
    deleted.reserve(static_cast<std::size_t>(identifiers.size()));
    Database& database = required(session.RsMain).database();
    DeferredMessages messages(database);
    inWriteTransaction(database, [&] {
        IdentifierSet gone;
        for (const QString& identifier : identifiers) {
            bool rowDeleted = false;
            for (int attempt = 0; attempt < 2 && !rowDeleted; ++attempt) {
                messages.trap(u"DeleteData"_s, [&] {
                    RecordSet& rows = dataTableOf(session, identifier);
                    if (rows.goTo(data_field::Object_ID, identifier)) {
                        rows.deleteRow();
                        rowDeleted = true;
                    } else {
                        messages.add(tellNotFound);
                    }
                    gone.insert(identifier);
                });
            }
            deleted.push_back(rowDeleted);
            advance();
        }
        const auto isGone = [&](QStringView identifier) { return gone.contains(identifier); };
        messages.trap(u"DeleteRelationalLink"_s, [&] {
            required(session.RsLink).deleteRowsIf({0, 1}, [&](const RecordSet::Row& link) {
                return isGone(link.text(0)) || isGone(link.text(1));
            });
        });
        messages.trap(u"DeleteRelationalCategory"_s, [&] {
            required(session.RsCategory).deleteRowsIf({1}, [&](const RecordSet::Row& membership) {
                return isGone(membership.text(0));
            });
        });
    });
    messages.show(session);
    return deleted;
}

} // namespace quillon
