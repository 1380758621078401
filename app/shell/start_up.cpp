#include "app/shell/start_up.h"

#include "app/base/absolute_path.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/shell/frmSplash.h"
#include "app/shell/program.h"
#include "ui/main/frmMainMenu.h"
#include "ui/restore/frmRestore.h"
#include "ui/widgets/event_edge.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString currentFolderOfProcess()
{
    return QDir::toNativeSeparators(QDir::currentPath());
}

bool Main(Program& program, const std::optional<QString>& file)
{
    Session& session = program.session();
    bool shown = false;
    guarded(session.reporting, u"Main"_s, [&] {
        if (session.CurrentFolder.isEmpty())
            throw Error(errors::PathNotFound);
        // A plain file of this name is an entry, too.
        if (!session.files.entryExists(session.inCurrentFolder(titles::FileFolder)))
            session.dialogs.messageBox({.text = titles::FileFolderMissing, .title = titles::SystemOperation});

        auto* splash = new frmSplash(session, program.windows());
        splash->startTiming();
        splash->showModal();

        program.mainWindow().showModeless();
        shown = true;
    });
    if (shown && file) {
        // Made absolute here, because file dialogs may change the process's current folder later on.
        const QString path =
            QDir::toNativeSeparators(absolutePath(QDir::fromNativeSeparators(session.CurrentFolder), *file));
        handleEvent(session.reporting, u"Main"_s, [&] { program.mainWindow().openChosenFile(path); });
    }
    return shown;
}

bool Restore(Program& program, const std::optional<QString>& file)
{
    Session& session = program.session();
    bool shown = false;
    guarded(session.reporting, u"Main"_s, [&] {
        if (session.CurrentFolder.isEmpty())
            throw Error(errors::PathNotFound);
        program.restoreWindow().showModeless();
        shown = true;
    });
    if (!shown)
        return false;
    handleEvent(session.reporting, u"Main"_s, [&] {
        if (file)
            program.restoreWindow().showDatabase(
                QDir::toNativeSeparators(QDir(session.CurrentFolder).absoluteFilePath(*file)));
        else
            program.restoreWindow().chooseDatabase();
    });
    return true;
}

} // namespace quillon
