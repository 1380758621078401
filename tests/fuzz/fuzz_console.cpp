// Commands of the console, one in each line, in the real main window; a line after a command that asks answers it.
#include "app/shell/program.h"
#include "tests/faults/fault_world.h"
#include "tests/fuzz/fuzz.h"
#include "ui/main/frmMainMenu.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A person who answers every question with the next line.
class ReadingDialogs : public Dialogs
{
public:
    Answer messageBox(const MessageBox& box) override
    {
        const bool agrees = takeLine().startsWith(u'y');
        switch (box.buttons) {
        case Buttons::Ok:
            return Answer::Ok;
        case Buttons::OkCancel:
            return agrees ? Answer::Ok : Answer::Cancel;
        default:
            return agrees ? Answer::Yes : Answer::No;
        }
    }
    std::optional<QString> inputBox(const InputBox&) override
    {
        return lines.isEmpty() ? std::nullopt : std::optional(takeLine());
    }
    std::optional<QString> fileDialog(const FileDialog&) override
    {
        // Nothing outside of the folder.
        const QString name = takeLine();
        return name.startsWith(u'y') ? std::optional(folder + u"/QUILLON.mdb"_s) : std::nullopt;
    }

    QStringList lines;
    QString folder;

private:
    QString takeLine() { return lines.isEmpty() ? QString() : lines.takeFirst(); }
};

/// The program with a small database, for as long as the fuzzer runs.
struct Console {
    explicit Console(const QString& theFolder) : folder(theFolder)
    {
        prepareFolder(folder);
        dialogs.folder = folder;
        program.setEnd([] {});
        program.mainWindow().showModeless();
        program.mainWindow().openChosenFile(folder + u"/QUILLON.mdb"_s);
        // A window that waits for its person is sent away.
        QObject::connect(&closing, &QTimer::timeout, [] {
            if (QWidget* const modal = QApplication::activeModalWidget())
                modal->close();
        });
        closing.start(0);
    }

    QString folder;
    ReadingDialogs dialogs;
    MemoryEventLog eventLog;
    FixedClock clock;
    RecordingDesktop desktop;
    RealFiles files;
    Program program{{dialogs, eventLog, clock, desktop, files}, folder};
    QTimer closing;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int count = 1;
    static QByteArray name("fuzz_console");
    static char* names[] = {name.data(), nullptr};
    // Neither of the two is ever destroyed: at the end of a process windows outlive what the toolkit destroys them with.
    static const QApplication& application = *new QApplication(count, static_cast<char**>(names));
    Q_UNUSED(application)
    static const QTemporaryDir folder;
    static Console& console = *new Console(folder.path());
    const QString text = textOf(data, size);
    // Of a long input the beginning is enough: a command may fill a window.
    constexpr int MostLines = 12;
    console.dialogs.lines = text.split(u'\n').first(std::min<qsizetype>(text.count(u'\n') + 1, MostLines));
    while (!console.dialogs.lines.isEmpty()) {
        const auto before = console.dialogs.lines.size();
        QKeyEvent chord(QEvent::KeyPress, Qt::Key_Escape, Qt::ShiftModifier);
        QCoreApplication::sendEvent(&console.program.mainWindow(), &chord);
        QCoreApplication::processEvents();
        require(console.dialogs.lines.size() < before, "the console asks for a command");
    }
    // Windows without modality go, too, so that there are never many.
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window != &console.program.mainWindow() && window->isVisible())
            window->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    console.eventLog.lines.clear();
    console.eventLog.calls.take();
    return 0;
}
