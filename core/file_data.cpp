#include "core/file_data.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/desktop.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/datum_place.h"
#include "core/links.h"
#include "core/registration_window.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

#include <QScopeGuard>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

FileOpening ShowRefFile(Session& session, const QString& identifier)
{
    FileOpening outcome = FileOpening::Failed;
    guarded(session.reporting, u"ShowRefFile"_s, [&] {
        RecordSet& rows = required(session.RsRefFile);
        if (!rows.goTo(data_field::Object_ID, identifier))
            throw Error(errors::NoCurrentRecord);
        const QString folder = session.inCurrentFolder(titles::FileFolder);
        // Registration writes the file's name into the first field; the third one may name another file.
        const std::array names = {rows.field(data_field::Explanation), rows.field(data_field::Name)};
        const auto refuse = [&](const QString& text) {
            session.dialogs.messageBox({.text = text, .title = titles::SystemAudit});
        };
        if (!session.files.folderExists(folder)) {
            outcome = FileOpening::NoFolderForFiles;
            refuse(titles::FileFolderMissing);
            return;
        }
        std::optional<QString> path;
        for (const QString& name : names) {
            if (!path)
                path = session.files.storedFile(folder, name);
        }
        if (!path) {
            outcome = FileOpening::FileNotFound;
            refuse(u"指定されたファイルデータが見つかりませんでした。"_s);
            return;
        }
        switch (session.desktop.open(*path)) {
        case OpenOutcome::Opened:
            outcome = FileOpening::Opened;
            break;
        case OpenOutcome::NoAssociation:
            outcome = FileOpening::NoAssociation;
            session.dialogs.messageBox({.text = u"指定されたファイルはアプリに関連付けられていません。"_s,
                                        .title = titles::FileData});
            break;
        case OpenOutcome::OtherFailure:
            outcome = FileOpening::NotStarted;
            break;
        }
    });
    return outcome;
}

namespace
{

/// `requireSource`: sees that the datum to be linked is still there.
template <class RequireSource>
bool registerAndLink(Session& session, const QString& identifier, RequireSource&& requireSource)
{
    // Whatever comes of it, nothing that is chosen afterwards is linked any more.
    const auto endPendingLink = qScopeGuard([&session] { session.LinkSourceMode = false; });
    DataWindow* const window = newRegistration(session, QString(data_kinds::file().letter));
    if (window == nullptr)
        return false;
    session.RegisteringToLink = Session::FileToLink{.with = identifier, .requireIt = requireSource};
    const auto endRegistering = qScopeGuard([&session] { session.RegisteringToLink.reset(); });
    window->showModal();
    // From here on the window may be gone. What it has registered was linked in the same write.
    if (session.RegisteringToLink->failure)
        throw Error(*session.RegisteringToLink->failure);
    return !session.RegisteringToLink->registered.isEmpty();
}

} // namespace

bool RegisterFileAndLink(Session& session, const QString& identifier)
{
    return registerAndLink(session, identifier, [] {});
}

bool RegisterFileAndLink(Session& session, const DatumPlace& datum)
{
    return registerAndLink(session, datum.identifier, [&] { requireDatum(session, datum); });
}

} // namespace quillon
