#include "app/shell/program.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "app/shell/frmSplash.h"
#include "core/damage_notice.h"
#include "store/database.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/auxiliary/frmEntryInfo.h"
#include "ui/auxiliary/frmFind.h"
#include "ui/auxiliary/frmLinkList.h"
#include "ui/auxiliary/frmManual.h"
#include "ui/data/frmMainData.h"
#include "ui/data/frmRefDoc.h"
#include "ui/data/frmRefFileEntry.h"
#include "ui/main/frmMainMenu.h"
#include "ui/restore/frmRestore.h"
#include "ui/widgets/event_edge.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

Program::Program(const Ports& ports, const QString& currentFolder)
    : m_session({ports.dialogs, ports.eventLog, ports.clock, ports.desktop, ports.files, m_windows},
                currentFolder),
      m_helpKey(m_session.reporting, m_windows)
{
    m_keeping = std::make_unique<kept::Keeping>(
        m_session.reporting,
        kept::KeepingOrder{.keptFolder = ports.keptFolder,
                           .fileFolder = m_session.inCurrentFolder(titles::FileFolder),
                           .copies = ports.copies,
                           .onDamage = [this](const kept::Damage& damage) { tellDamage(damage); }});
    m_session.keeper = m_keeping.get();
    registerWindows(ports.manualFolder);
}

Program::~Program()
{
    // The end of the program is decided: no window is asked anything any more, and none gets an event. Windows that
    // have been unloaded and only wait for their deletion go first, then the loaded ones, the last loaded first.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (auto loaded = m_windows.loaded(); !loaded.empty(); loaded = m_windows.loaded())
        delete loaded.back();
    // The person sees nothing of the program any more; the last copy may take its time, within bounds.
    m_keeping->finish();
}

void Program::registerWindows(const QString& manualFolder)
{
    m_windows.setFactory(u"frmMainData"_s, [this] { return new frmMainData(m_session, m_windows); });
    m_windows.setFactory(u"frmRefDoc"_s, [this] { return new frmRefDoc(m_session, m_windows); });
    m_windows.setFactory(u"frmRefFileEntry"_s, [this] { return new frmRefFileEntry(m_session, m_windows); });
    m_windows.setFactory(u"frmDataSelect"_s, [this] { return new frmDataSelect(m_session, m_windows); });
    m_windows.setFactory(u"frmCategory"_s, [this] { return new frmCategory(m_session, m_windows); });
    m_windows.setFactory(u"frmFind"_s, [this] { return new frmFind(m_session, m_windows); });
    m_windows.setFactory(u"frmLinkList"_s, [this] { return new frmLinkList(m_session, m_windows); });
    m_windows.setFactory(u"frmEntryInfo"_s, [this] { return new frmEntryInfo(m_session, m_windows); });
    m_windows.setFactory(u"frmManual"_s,
                         [this, manualFolder] { return new frmManual(m_session, m_windows, manualFolder); });
    // Opened by its name the splash window is the system information; start-up makes the timed one itself.
    m_windows.setFactory(u"frmSplash"_s, [this] {
        auto* window = new frmSplash(m_session, m_windows);
        window->showInformation();
        return window;
    });
}

void Program::tellDamage(const kept::Damage& damage)
{
    FormWindow* window = m_mainWindow;
    if (window == nullptr)
        window = m_restoreWindow;
    if (window == nullptr)
        return;
    // Nobody else is to wait while a person reads, who reads one box after the other.
    const bool holdsLock = m_session.OpenDb && m_session.OpenDb->connection().holdsLock();
    if (holdsLock || QApplication::activeModalWidget() != nullptr) {
        constexpr int Later = 200; // milliseconds
        QTimer::singleShot(Later, window, [this, damage] { tellDamage(damage); });
        return;
    }
    handleEvent(m_session.reporting, u"Damage"_s, [&] {
        if (m_mainWindow != nullptr)
            TellDamage(m_session, damage);
        else
            m_restoreWindow->tellDamage(damage);
    });
}

frmMainMenu& Program::mainWindow()
{
    if (m_mainWindow == nullptr) {
        m_mainWindow = new frmMainMenu(m_session, m_windows);
        m_windows.setMainWindow(*m_mainWindow);
        m_session.setMainWindow(m_mainWindow);
        QObject::connect(m_mainWindow, &frmMainMenu::endProgram, m_mainWindow, [this] {
            if (m_end)
                m_end();
        });
    }
    return *m_mainWindow;
}

frmRestore& Program::restoreWindow()
{
    if (m_restoreWindow == nullptr) {
        m_restoreWindow = new frmRestore(m_session, m_windows);
        m_windows.setMainWindow(*m_restoreWindow);
        m_session.setMainWindow(m_restoreWindow);
        QObject::connect(m_restoreWindow, &FormWindow::unloaded, m_restoreWindow, [this] {
            m_session.setMainWindow(nullptr);
            if (m_end)
                m_end();
        });
        QObject::connect(m_restoreWindow, &frmRestore::databaseWanted, m_restoreWindow,
                         [this](const QString& path) {
                             if (m_start && !m_start(path))
                                 m_session.dialogs.messageBox({.text = u"Quillon を起動できませんでした。"_s,
                                                               .title = titles::SystemOperation});
                         });
    }
    return *m_restoreWindow;
}

} // namespace quillon
