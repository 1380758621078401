#pragma once

#include "core/category_entry.h"
#include "core/data_records.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/failure_box.h"
#include "tests/support/modal_script.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_world.h"
#include "tests/support/window_probe.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/data/frmMainData.h"
#include "ui/data/frmRefDoc.h"
#include "ui/data/frmRefFileEntry.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"
#include "ui/widgets/window_registry.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>

namespace quillon::testing
{

/// The identifiers of the first data of each kind.
inline const QString Water = QStringLiteral("M-991231-001");
inline const QString Ice = QStringLiteral("M-991231-002");
inline const QString Book = QStringLiteral("R-991231-001");
inline const QString Paper = QStringLiteral("R-991231-002");
inline const QString Picture = QStringLiteral("F-991231-001");

/// Data windows over an open database, without the rest of the program: an empty window takes the place of the main
/// window, whose tree is a list of nodes, and dialogs are scripted.
class FormWorld
{
public:
    FormWorld()
    {
        makeWindows<frmMainData>(QStringLiteral("frmMainData"));
        makeWindows<frmRefDoc>(QStringLiteral("frmRefDoc"));
        makeWindows<frmRefFileEntry>(QStringLiteral("frmRefFileEntry"));
        makeWindows<frmDataSelect>(QStringLiteral("frmDataSelect"));
        makeWindows<frmCategory>(QStringLiteral("frmCategory"));
        first = new FormWindow(session, registry, QStringLiteral("frmMainMenu"));
        session.setMainWindow(&mainWindow);
        path = folder.filePath(QStringLiteral("QUILLON.mdb"));
        create(path);
        open(path);
    }

    static void create(const QString& file)
    {
        const auto database = Database::create(file);
        for (const TableSchema* table : schema::all())
            database->execute(table->statement);
    }

    /// Makes a database file the one of the session.
    void open(const QString& file)
    {
        session.OpenDb = Database::open(file);
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
    FormWorld(const FormWorld&) = delete;
    FormWorld& operator=(const FormWorld&) = delete;

    /// Adds a datum of the kind of its identifier.
    void add(const QString& name, const QString& identifier, const QString& explanation) const
    {
        TestWorld::addRow(tableOf(identifier), {name, identifier, explanation});
    }
    QStringList definitions() const { return TestWorld::rowsOf(session.RsMain); }
    QStringList documents() const { return TestWorld::rowsOf(session.RsRefDoc); }
    QStringList registeredFiles() const { return TestWorld::rowsOf(session.RsRefFile); }
    QStringList links() const { return TestWorld::rowsOf(session.RsLink); }
    QStringList memberships() const { return TestWorld::rowsOf(session.RsCategory); }
    const std::shared_ptr<RecordSet>& tableOf(const QString& identifier) const
    {
        return identifier.startsWith(u'M')   ? session.RsMain
               : identifier.startsWith(u'R') ? session.RsRefDoc
                                             : session.RsRefFile;
    }
    /// Adds a category; returns it as a window lists it.
    CategoryRow addCategory(const QString& name, const QString& identifier)
    {
        TestWorld::addRow(session.RsCategoryID, {identifier, name});
        return listedCategory(session, name, identifier);
    }
    /// Deletes a datum as another window or program does.
    void deleteElsewhere(const QString& identifier) const
    {
        RecordSet& rows = *tableOf(identifier);
        rows.findFirst(QStringLiteral("Object_ID = '") + identifier + QStringLiteral("'"));
        rows.deleteRow();
    }

    /// Gives the main window's tree its nine fixed nodes, the last named "カテゴリ", and this many categories: "A"
    /// "分類1" and so on.
    void giveCategories(int count)
    {
        mainWindow.nodes.assign(8, {QStringLiteral("FIXED"), QStringLiteral("固定"), QString()});
        mainWindow.nodes.push_back(
            {QStringLiteral("CATEGORY"), QStringLiteral("カテゴリ"), QStringLiteral("FIXED")});
        for (int i = 0; i < count; ++i) {
            const QString key(QChar(u'A' + i));
            const QString text = QStringLiteral("分類") + QString::number(i + 1);
            mainWindow.nodes.push_back({key, text, QStringLiteral("CATEGORY")});
            TestWorld::addRow(session.RsCategoryID, {key, text});
        }
    }

    /// Opens a definition or document in display mode.
    template <class Form = frmMainData> Form& show(const QString& identifier)
    {
        ShowData(session, identifier);
        processEvents();
        return last<Form>();
    }
    /// Opens the registration window of a kind.
    template <class Form = frmMainData> Form& beginRegistration()
    {
        return registrationOf<Form>(std::is_same_v<Form, frmMainData> ? QStringLiteral("M")
                                    : std::is_same_v<Form, frmRefDoc> ? QStringLiteral("R")
                                                                      : QStringLiteral("F"));
    }
    template <class Form> Form& registrationOf(const QString& kind)
    {
        CreateRegisterForm(session, kind);
        processEvents();
        return last<Form>();
    }
    template <class Form> Form& last() { return *dynamic_cast<Form*>(registry.loaded().back()); }
    int windowCount() const { return static_cast<int>(registry.loaded().size()) - 1; }
    /// The loaded window of a design name; null when there is none.
    FormWindow* loaded(const QString& designName) const
    {
        for (LoadedWindow* window : registry.loaded()) {
            if (window->windowName() == designName)
                return dynamic_cast<FormWindow*>(window);
        }
        return nullptr;
    }
    /// Closes a window as its close box does; false when it stays.
    static bool closes(QWidget& form)
    {
        const QPointer<QWidget> window(&form);
        form.close();
        processEvents();
        return window.isNull();
    }
    /// The untrapped failure that was logged last ran under this handler.
    bool loggedUnder(const QString& handler, qint32 number) const
    {
        return !eventLog.lines.isEmpty() &&
               eventLog.lines.last().contains(
                   QStringLiteral(", LOCATION : %1, ErrorNumber : %2,").arg(handler).arg(number));
    }
    /// What did not happen as a test has written it down.
    QStringList takeComplaints() { return dialogs.takeComplaints() + modals.takeComplaints(); }

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
    static ReportList& list(QWidget& form, const QString& designName)
    {
        return *form.findChild<ReportList*>(designName);
    }
    static ReportModel& rows(QWidget& form, const QString& designName)
    {
        return list(form, designName).rows();
    }

    /// The state of a menu or menu entry.
    static QAction* entry(QWidget& form, const QString& designName)
    {
        if (const auto* menu = form.findChild<QMenu*>(designName))
            return menu->menuAction();
        return form.findChild<QAction*>(designName);
    }
    /// Chooses a menu entry as a person does; false when it is not there, or it or its menu is disabled.
    static bool choose(QWidget& form, const QString& designName)
    {
        QAction* action = entry(form, designName);
        if (action == nullptr || !action->isEnabled())
            return false;
        const auto* menu = qobject_cast<const QMenu*>(action->parent());
        if (menu != nullptr && !menu->menuAction()->isEnabled())
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

    TestFolder folder;
    CallLog calls; // what all of the following are asked to do, in order
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    RecordingDesktop desktop{calls};
    RealFiles files{calls};
    FakeMainWindow mainWindow{calls};
    WindowRegistry registry;
    Session session{{dialogs, eventLog, clock, desktop, files, registry}, folder.path()};
    ModalScript modals{registry};
    FormWindow* first = nullptr; // stands where the main window stands
    QString path;

private:
    template <class Form> void makeWindows(const QString& designName)
    {
        registry.setFactory(designName, [this] { return new Form(session, registry); });
    }
};

} // namespace quillon::testing
