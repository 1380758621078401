#include "bench/quiet_program.h"

#include "bench/paint_watch.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QCoreApplication>

#include <stdexcept>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

template <class Control> Control& control(frmMainMenu& window, const QString& name)
{
    auto* found = window.findChild<Control*>(name);
    if (found == nullptr)
        throw std::runtime_error("the main window lacks a control");
    return *found;
}

} // namespace

Answer NoDialogs::messageBox(const MessageBox& box)
{
    if (!m_announced.isNull() && std::exchange(m_announced, {}) == box.text)
        return Answer::Ok;
    throw std::runtime_error("a box came up: " + box.text.toStdString());
}

std::optional<QString> NoDialogs::inputBox(const InputBox& box)
{
    throw std::runtime_error("a box came up: " + box.prompt.toStdString());
}

std::optional<QString> NoDialogs::fileDialog(const FileDialog&)
{
    throw std::runtime_error("a file dialog came up");
}

QuietProgram::QuietProgram() : m_program({m_dialogs, m_eventLog, clock, m_desktop, m_files}, m_folder.path())
{
    m_program.mainWindow().showModeless();
    QCoreApplication::processEvents();
}

QuietProgram::~QuietProgram() = default;

ReportList& QuietProgram::list()
{
    return control<ReportList>(mainWindow(), u"lsvData"_s);
}

KeyedTree& QuietProgram::tree()
{
    return control<KeyedTree>(mainWindow(), u"tvwCategory"_s);
}

void QuietProgram::open(const QString& path, bool expectRows)
{
    const PaintWatch watch(*list().viewport());
    mainWindow().openChosenFile(path);
    QCoreApplication::processEvents();
    if (!watch.painted() || (list().rows().rowCount() == 0 && expectRows))
        throw std::runtime_error("the list was not painted");
}

void QuietProgram::clickNode(const QString& key)
{
    const int node = tree().nodes().position(key);
    tree().select(node);
    mainWindow().tvwCategory_NodeClick(node);
}

void QuietProgram::closeOtherWindows()
{
    for (LoadedWindow* loaded : session().windows.loaded()) {
        if (loaded != &mainWindow() && !loaded->unload())
            throw std::runtime_error("a window stayed open");
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

} // namespace quillon::bench
