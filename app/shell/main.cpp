#include "app/base/platform/command_line.h"
#include "app/base/system_files.h"
#include "app/base/system_ports.h"
#include "app/base/titles.h"
#include "app/shell/command_line.h"
#include "app/shell/home_folder.h"
#include "app/shell/japanese_interface.h"
#include "app/shell/manual_folder.h"
#include "app/shell/missing_parts.h"
#include "app/shell/program.h"
#include "app/shell/program_icon.h"
#include "app/shell/real_dialogs.h"
#include "app/shell/session_end.h"
#include "app/shell/start_up.h"
#include "store/kept/place.h"

#include <QApplication>
#include <QFileInfo>
#include <QFont>
#include <QProcess>
#include <QTimer>

#include <optional>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char** argv)
{
    using namespace quillon;

    // Before there is an application object, so that the answers need no display.
    CommandLine commandLine = parseCommandLine(platform::arguments(argc, argv).mid(1));
    if (commandLine.request != CommandLine::Request::Run)
        return answerOnTerminal(commandLine);

    // The toolkit gets the program's name only: a file may be named like one of its options.
    int toolkitCount = 1;
    std::optional<DisplayWatch> displayWatch(std::in_place);
    QApplication application(toolkitCount, argv);
    displayWatch.reset();
    // No display name: the toolkit would append it to every window title.
    QCoreApplication::setApplicationName(u"quillon"_s);
    QGuiApplication::setDesktopFileName(u"quillon"_s);
    QApplication::setQuitOnLastWindowClosed(false); // the splash window is the last one for a moment
    setUpJapaneseInterface(application);
    QGuiApplication::setWindowIcon(programIcon());

    RealDialogs dialogs;
    SystemEventLog eventLog(QCoreApplication::applicationDirPath());
    SystemClock clock;
    SystemDesktop desktop(QCoreApplication::applicationDirPath());
    SystemFiles files;
    // First of all: it explains why nothing that follows can be read. Who starts the program by its name may look at the
    // error stream, and is not kept by boxes that come at every start.
    Dialogs* const boxes = commandLine.atHome ? &dialogs : nullptr;
    tellMissingParts(boxes, missingParts(QApplication::font()));
    if (commandLine.atHome)
        goHome(dialogs, commandLine.file);
    const std::optional<QString> keptFolder = kept::keptFolder();
    tellUnwritableKeptFolder(boxes, keptFolder);
    // A run for taking things back leaves the copies as they are; the next one of the other kind makes the next.
    const std::optional<kept::CopyTimes> copies =
        commandLine.restores ? std::nullopt : std::optional(kept::CopyTimes());
    Program program({.dialogs = dialogs,
                     .eventLog = eventLog,
                     .clock = clock,
                     .desktop = desktop,
                     .files = files,
                     .keptFolder = keptFolder,
                     .copies = copies,
                     .manualFolder = manualFolder(QCoreApplication::applicationDirPath())},
                    currentFolderOfProcess());

    // Leaving all event loops, nested ones included, ends the program at once: no window is closed, so none asks
    // or saves anything, and what is left of them is destroyed together with `program`. Nothing can be lost,
    // because every change was written when it was made; a hard exit of the process would gain nothing.
    const auto end = [] { QCoreApplication::exit(0); };
    program.setEnd(end);
    const SessionEnd sessionEnd(program.windows(), end);

    // Where its registered files lie the program starts, if they lie beside the database.
    program.setStart([&program](const QString& path) {
        const QString beside = QFileInfo(path).absolutePath();
        const bool hasFiles = QFileInfo(beside + u'/' + titles::FileFolder).isDir();
        return QProcess::startDetached(QCoreApplication::applicationFilePath(), {u"--"_s, path},
                                       hasFiles ? beside : program.session().CurrentFolder);
    });

    // Inside the event loop, so that even an end during start-up finds a loop to leave.
    QTimer::singleShot(0, &application, [&] {
        const bool isShown =
            commandLine.restores ? Restore(program, commandLine.file) : Main(program, commandLine.file);
        if (!isShown)
            QCoreApplication::exit(1);
    });
    return QApplication::exec();
}
