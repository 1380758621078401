#pragma once

#include "core/data_records.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/test_world.h"
#include "ui/data/frmMainData.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"
#include "ui/widgets/window_registry.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTest>

namespace quillon::testing
{

/// Definition windows over an open database, without the rest of the program: an empty window takes the place of the
/// main window, and dialogs are scripted.
class FormWorld
{
public:
    FormWorld()
    {
        registry.setFactory(QStringLiteral("frmMainData"),
                            [this] { return new frmMainData(session, registry); });
        first = new FormWindow(session, registry, QStringLiteral("frmMainMenu"));
        session.setMainWindow(&mainWindow);
        path = folder.filePath(QStringLiteral("QUILLON.mdb"));
        const auto database = Database::create(path);
        for (const TableSchema* table : schema::all())
            database->execute(table->statement);
        session.OpenDb = Database::open(path);
        session.RsMain = RecordSet::openTable(session.OpenDb, schema::Main());
        session.RsRefFile = RecordSet::openTable(session.OpenDb, schema::RefFile());
        session.RsRefDoc = RecordSet::openTable(session.OpenDb, schema::RefDoc());
        session.RsLink = RecordSet::openTable(session.OpenDb, schema::Link());
        session.RsCategoryID = RecordSet::openTable(session.OpenDb, schema::Category_ID());
        session.RsCategory = RecordSet::openTable(session.OpenDb, schema::Category());
        session.MainLastFieldIndex = 2;
    }

    ~FormWorld()
    {
        const auto loaded = registry.loaded();
        for (LoadedWindow* window : loaded)
            delete dynamic_cast<FormWindow*>(window);
        processEvents();
    }

    /// Adds a definition.
    void add(const QString& name, const QString& identifier, const QString& explanation)
    {
        TestWorld::addRow(session.RsMain, {name, identifier, explanation});
    }
    QStringList definitions() { return TestWorld::rowsOf(session.RsMain); }

    /// Opens a definition in display mode.
    frmMainData& show(const QString& identifier)
    {
        ShowData(session, identifier);
        processEvents();
        return lastWindow();
    }
    /// Opens the registration window.
    frmMainData& beginRegistration()
    {
        CreateRegisterForm(session, QStringLiteral("M"));
        processEvents();
        return lastWindow();
    }
    frmMainData& lastWindow() { return *dynamic_cast<frmMainData*>(registry.loaded().back()); }
    int windowCount() const { return static_cast<int>(registry.loaded().size()) - 1; }

    static QLineEdit& name(QWidget& form)
    {
        return *form.findChild<QLineEdit*>(QStringLiteral("txtFields(0)"));
    }
    static QLineEdit& identifier(QWidget& form)
    {
        return *form.findChild<QLineEdit*>(QStringLiteral("txtFields(1)"));
    }
    static QPlainTextEdit& definition(QWidget& form)
    {
        return *form.findChild<QPlainTextEdit*>(QStringLiteral("txtFields(2)"));
    }
    static QString panel(QWidget& form, int number)
    {
        return form.findChild<StatusPanels*>(QStringLiteral("sbStatus"))->text(number);
    }
    static ReportModel& rows(QWidget& form, const QString& list)
    {
        return form.findChild<ReportList*>(list)->rows();
    }

    /// The state of a menu or menu entry.
    static QAction* entry(QWidget& form, const QString& designName)
    {
        if (const auto* menu = form.findChild<QMenu*>(designName))
            return menu->menuAction();
        return form.findChild<QAction*>(designName);
    }
    /// Chooses a menu entry as a person does; false when it is not there or disabled.
    static bool choose(QWidget& form, const QString& designName)
    {
        QAction* action = entry(form, designName);
        if (action == nullptr || !action->isEnabled())
            return false;
        action->trigger();
        return true;
    }

    /// Replaces a field's text as a person does by typing or pasting.
    static void enter(QLineEdit& field, const QString& text)
    {
        field.selectAll();
        field.insert(text);
    }
    static void enter(QPlainTextEdit& field, const QString& text)
    {
        field.selectAll();
        field.insertPlainText(text);
    }

    /// Lets posted events, deferred deletions included, run.
    static void processEvents()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    QTemporaryDir folder;
    ScriptedDialogs dialogs;
    MemoryEventLog eventLog;
    FixedClock clock;
    RecordingDesktop desktop;
    RealFiles files;
    FakeMainWindow mainWindow;
    WindowRegistry registry;
    Session session{{dialogs, eventLog, clock, desktop, files, registry}, folder.path()};
    FormWindow* first = nullptr; // stands where the main window stands
    QString path;
};

} // namespace quillon::testing
