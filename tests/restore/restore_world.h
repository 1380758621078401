#pragma once

#include "app/shell/program.h"
#include "core/categories.h"
#include "core/data_records.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_ports.h"
#include "tests/support/test_world.h"
#include "tests/support/window_world.h"
#include "ui/restore/frmRestore.h"
#include "ui/widgets/report_list.h"

#include <QDir>
#include <QFile>

namespace quillon::testing
{

/// A run for taking things back in a temporary current folder, with a database "知識.mdb" of which everything is kept.
class RestoreWorld
{
public:
    RestoreWorld()
        : path(folder.filePath(QStringLiteral("知識.mdb"))),
          program({.dialogs = dialogs,
                   .eventLog = eventLog,
                   .clock = clock,
                   .desktop = desktop,
                   .files = files,
                   .keptFolder = folder.filePath(QStringLiteral("kept")),
                   .copies = std::nullopt},
                  folder.path())
    {
        program.setEnd([this] { ++ends; });
        program.setStart([this](const QString& wanted) {
            started << wanted;
            return starts;
        });
        QDir(folder.path()).mkdir(QStringLiteral("RefFile"));
        {
            const auto database = Database::create(path);
            for (const TableSchema* table : schema::all())
                database->execute(table->statement);
        }
        program.restoreWindow().showModeless();
        OpenDbFile(program.session(), path);
        TestWorld::addRow(session().RsMain, {QStringLiteral("水"), Water, QStringLiteral("流れるもの")});
        TestWorld::addRow(session().RsMain, {QStringLiteral("火"), Fire, QStringLiteral("燃えるもの")});
        TestWorld::addRow(session().RsCategoryID, {QStringLiteral("A"), QStringLiteral("自然")});
        TestWorld::addRow(session().RsCategory, {QStringLiteral("A"), Water});
        TestWorld::addRow(session().RsLink, {Water, Fire});
    }

    Session& session() { return program.session(); }
    frmRestore& window() { return program.restoreWindow(); }
    template <class Control> Control* control(const QString& name)
    {
        return window().findChild<Control*>(name);
    }
    ReportList& list(const QString& name) { return *control<ReportList>(name); }
    /// Shows the database as it is now, with all its history.
    void show()
    {
        clock.time = clock.time.addSecs(1); // what comes is later than what there is
        window().showDatabase(path);
        WindowWorld::processEvents();
    }
    /// Gives an item other texts.
    void change(const QString& identifier, const QString& name, const QString& content)
    {
        RecordSet& rows = *session().RsMain;
        if (!rows.goTo(data_field::Object_ID, identifier))
            qFatal("there is no such item");
        rows.edit();
        rows.setField(data_field::Name, name);
        rows.setField(data_field::Explanation, content);
        rows.update();
    }
    /// Makes a copy as the program does in the background.
    void makeCopy(const QDateTime& time = QDateTime(QDate(2026, 1, 31), QTime(12, 0)))
    {
        kept::makeCopy({.place = {folder.filePath(QStringLiteral("kept")), path},
                        .fileFolder = folder.filePath(QStringLiteral("RefFile")),
                        .now = [time] { return time; },
                        .goesOn = [] { return true; }});
    }
    static void writeFile(const QString& name, const QByteArray& content)
    {
        QFile file(name);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(content);
    }
    static QByteArray contentOf(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString registered(const QString& name) const
    {
        return folder.filePath(QStringLiteral("RefFile/") + name);
    }

    static inline const QString Water = QStringLiteral("M-991231-001");
    static inline const QString Fire = QStringLiteral("M-991231-002");

    TestFolder folder;
    QString path;
    CallLog calls;
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    RecordingDesktop desktop{calls};
    RealFiles files{calls};
    Program program;
    int ends = 0;
    QStringList started; // databases that another run was to open
    bool starts = true;  // whether that can be started
};

/// A box of the window.
inline MessageBox restoreBox(const QString& text, Buttons buttons = Buttons::Ok, Icon icon = Icon::None)
{
    return {.text = text, .title = QStringLiteral("Quillon データ復元部"), .buttons = buttons, .icon = icon};
}
inline MessageBox restoredBox(const QString& text)
{
    return restoreBox(text, Buttons::Ok, Icon::Information);
}

} // namespace quillon::testing
