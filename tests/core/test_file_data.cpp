#include "app/base/ports/files.h"
#include "core/checking.h"
#include "core/data_records.h"
#include "core/datum_place.h"
#include "core/file_data.h"
#include "core/file_registration.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/journaled_writes.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString File = u"F-991231-001"_s;
const QString Water = u"M-991231-001"_s;

const MessageBox Missing{.text = u"指定されたファイルデータが見つかりませんでした。"_s,
                         .title = u"Quillon システム監査部"_s};
const MessageBox FolderMissing{.text = u"カレントフォルダ内に【RefFile】フォルダが見つかりませんでした。"
                                       u"ファイルデータをリンク／表示するにはカレントフォルダ内に【RefFile】"
                                       u"フォルダが必要です。"_s,
                               .title = u"Quillon システム監査部"_s};

} // namespace

class TestFileData : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    QString inFolder(const QString& name) { return world->folder.filePath(u"RefFile/"_s + name); }
    static void makeFile(const QString& path)
    {
        QFile file(path);
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    }
    void addFileDatum(const QString& name, const QString& explanation = u"未入力"_s)
    {
        TestWorld::addRow(session().RsRefFile, {name, File, explanation});
    }
    /// What the person does in the window: registers a file under the identifier there.
    void registerIn(const FakeDataWindow& window, const QString& name)
    {
        QVERIFY(QDir(world->folder.path()).mkpath(u"RefFile"_s));
        const QString path = world->folder.filePath(name);
        makeFile(path);
        QCOMPARE(
            RegisterFile(session(), {.path = path, .identifier = window.fieldText(1), .category = {}}, {}),
            FileRegistration::Registered);
    }
    void refusesToOpen(const QString& name)
    {
        addFileDatum(name);
        world->dialogs.expect(Missing);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList());
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void storedFileIsOpenedByItsFullName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("ordinary") << u"water.txt"_s;
        QTest::newRow("Japanese") << u"水の資料（表示）.pdf"_s;
        QTest::newRow("blanks") << u" 水 の 資料 .txt"_s;
        QTest::newRow("quotes") << u"'水' `ls` $(ls).txt"_s;
        QTest::newRow("leading dot") << u".profile"_s;
        QTest::newRow("leading dash") << u"--help"_s;
        QTest::newRow("two dots inside") << u"a..b"_s;
#ifndef Q_OS_WIN // no such names there
        QTest::newRow("double quotes") << u"\"氷\".txt"_s;
        QTest::newRow("three dots") << u"..."_s;
        QTest::newRow("question mark") << u"1?.txt"_s;
#endif
        QTest::newRow("no extension") << u"README"_s;
        QTest::newRow("percent signs and hash") << u"100%20#1.txt"_s;
        QTest::newRow("as long as a column") << QString(50, u'水');
    }

    void storedFileIsOpenedByItsFullName()
    {
        QFETCH(QString, name);
        makeFile(inFolder(name));
        addFileDatum(name);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList(inFolder(name)));
        ShowData(session(), File);
        QCOMPARE(world->desktop.opened.size(), 2);
        QVERIFY(world->windows.dataWindows.empty());
    }

    void whatIsOpenedIsNeitherMissingNorUnregistered()
    {
        makeFile(inFolder(u"BIG.TXT"_s));
        addFileDatum(u"big.txt"_s);
        // That is up to the system.
        const bool isOpened =
            session().files.storedFile(world->folder.filePath(u"RefFile"_s), u"big.txt"_s).has_value();
        QStringList told;
        checkDatabase(session(), [&](const Finding& finding) {
            told << finding.text;
            return true;
        });
        const QStringList onesOwn = {
            u"ファイルデータ「big.txt」(F-991231-001) のファイルがありません。"_s,
            u"ファイル「BIG.TXT」は登録されていません。"_s,
        };
        QCOMPARE(told, isOpened ? QStringList() : onesOwn);
    }

    void nameAsLongAsAFolderTakesIsOpened()
    {
        const QString name = QString(255, u'x');
        makeFile(inFolder(name));
        addFileDatum(u"short"_s, name);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList(inFolder(name)));
    }

    void thirdFieldGoesBeforeTheFirst_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("explanation");
        QTest::addColumn<QString>("opened");
        QTest::newRow("third") << u"a.txt"_s << u"b.txt"_s << u"b.txt"_s;
        QTest::newRow("third, first without file") << u"名称"_s << u"b.txt"_s << u"b.txt"_s;
        QTest::newRow("first, third without file") << u"a.txt"_s << u"未入力"_s << u"a.txt"_s;
        QTest::newRow("first, third empty") << u"a.txt"_s << u""_s << u"a.txt"_s;
        QTest::newRow("first, third leads outside") << u"a.txt"_s << u"../QUILLON.mdb"_s << u"a.txt"_s;
        QTest::newRow("first, third is a folder") << u"a.txt"_s << u"folder"_s << u"a.txt"_s;
    }

    void thirdFieldGoesBeforeTheFirst()
    {
        QFETCH(QString, name);
        QFETCH(QString, explanation);
        QFETCH(QString, opened);
        makeFile(inFolder(u"a.txt"_s));
        makeFile(inFolder(u"b.txt"_s));
        QVERIFY(QDir(inFolder(QString())).mkdir(u"folder"_s));
        addFileDatum(name, explanation);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList(inFolder(opened)));
    }

    void nothingOutsideTheFolderIsOpened_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << u"missing.txt"_s;
        QTest::newRow("empty") << u""_s;
        QTest::newRow("the folder itself") << u"."_s;
        QTest::newRow("the folder above") << u".."_s;
        QTest::newRow("above") << u"../QUILLON.mdb"_s;
        QTest::newRow("above, in the other style") << u"..\\QUILLON.mdb"_s;
        QTest::newRow("down and up") << u"folder/../a.txt"_s;
        QTest::newRow("below") << u"folder/inner.txt"_s;
        QTest::newRow("separator at the end") << u"a.txt/"_s;
        QTest::newRow("separator at the start") << u"/a.txt"_s;
        QTest::newRow("from the root") << u"/etc/passwd"_s;
        QTest::newRow("drive") << u"C:a.txt"_s;
        QTest::newRow("drive and path") << u"C:\\a.txt"_s;
        QTest::newRow("other computer") << u"\\\\host\\share\\a.txt"_s;
        QTest::newRow("address") << u"http://example.com/"_s;
        QTest::newRow("name with a zero") << u"a.txt\0b"_s;
        QTest::newRow("a folder") << u"folder"_s;
    }

    void nothingOutsideTheFolderIsOpened()
    {
        QFETCH(QString, name);
        makeFile(inFolder(u"a.txt"_s));
        QVERIFY(QDir(inFolder(QString())).mkdir(u"folder"_s));
        makeFile(inFolder(u"folder/inner.txt"_s));
        refusesToOpen(name);
    }

#ifdef Q_OS_UNIX
    void linkThatLeadsOutsideCountsAsMissing_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("file outside") << u"../QUILLON.mdb"_s;
        QTest::newRow("through a folder outside") << u"outside/outer.txt"_s;
        QTest::newRow("folder with a like beginning") << u"../RefFile2/near.txt"_s;
        QTest::newRow("device") << u"/dev/null"_s;
        QTest::newRow("nowhere") << u"nowhere"_s;
        QTest::newRow("itself") << u"link"_s;
        QTest::newRow("pipe") << u"pipe"_s;
        QTest::newRow("folder inside") << u"folder"_s;
    }

    void linkThatLeadsOutsideCountsAsMissing()
    {
        QFETCH(QString, target);
        const QDir root(world->folder.path());
        QVERIFY(root.mkdir(u"outer"_s) && root.mkdir(u"RefFile2"_s) && root.mkdir(u"RefFile/folder"_s));
        makeFile(root.filePath(u"outer/outer.txt"_s));
        makeFile(root.filePath(u"RefFile2/near.txt"_s));
        QVERIFY(QFile::link(u"../outer"_s, inFolder(u"outside"_s)));
        QCOMPARE(mkfifo(QFile::encodeName(inFolder(u"pipe"_s)).constData(), 0600), 0);
        QVERIFY(QFile::link(target, inFolder(u"link"_s)));
        refusesToOpen(u"link"_s);
    }

    void linkToAFileInTheFolderIsOpened()
    {
        makeFile(inFolder(u"a.txt"_s));
        QVERIFY(QFile::link(u"a.txt"_s, inFolder(u"link"_s)));
        addFileDatum(u"link"_s);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList(inFolder(u"link"_s)));
    }

    void folderCanBeALinkItself()
    {
        QDir root(world->folder.path());
        QVERIFY(root.rename(u"RefFile"_s, u"elsewhere"_s));
        QVERIFY(QFile::link(u"elsewhere"_s, root.filePath(u"RefFile"_s)));
        makeFile(root.filePath(u"elsewhere/a.txt"_s));
        addFileDatum(u"a.txt"_s);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList(inFolder(u"a.txt"_s)));
    }

    void pipeIsNoFileDatum()
    {
        QCOMPARE(mkfifo(QFile::encodeName(inFolder(u"pipe"_s)).constData(), 0600), 0);
        refusesToOpen(u"pipe"_s);
    }

    void linkInPlaceOfTheFolderThatLeadsNowhereIsNoFolder()
    {
        const QDir root(world->folder.path());
        QVERIFY(root.rmdir(u"RefFile"_s));
        QVERIFY(QFile::link(u"nowhere"_s, root.filePath(u"RefFile"_s)));
        addFileDatum(u"a.txt"_s);
        world->dialogs.expect(FolderMissing);
        ShowRefFile(session(), File);
    }
#endif

    void missingFolderIsTold()
    {
        QVERIFY(QDir(world->folder.path()).rmdir(u"RefFile"_s));
        addFileDatum(u"a.txt"_s);
        world->dialogs.expect(FolderMissing);
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened, QStringList());
        QVERIFY(!QFile::exists(world->folder.filePath(u"RefFile"_s))); // nobody makes one
    }

    void plainFileInPlaceOfTheFolderIsNoFolder()
    {
        QVERIFY(QDir(world->folder.path()).rmdir(u"RefFile"_s));
        makeFile(world->folder.filePath(u"RefFile"_s));
        addFileDatum(u"a.txt"_s);
        world->dialogs.expect(FolderMissing);
        ShowRefFile(session(), File);
    }

    void outcomeOfOpeningIsToldOnlyWithoutAnApplication_data()
    {
        QTest::addColumn<OpenOutcome>("outcome");
        QTest::addColumn<bool>("tells");
        QTest::newRow("opened") << OpenOutcome::Opened << false;
        QTest::newRow("no application") << OpenOutcome::NoAssociation << true;
        QTest::newRow("anything else") << OpenOutcome::OtherFailure << false;
    }

    void outcomeOfOpeningIsToldOnlyWithoutAnApplication()
    {
        QFETCH(OpenOutcome, outcome);
        QFETCH(bool, tells);
        makeFile(inFolder(u"a.xyz"_s));
        addFileDatum(u"a.xyz"_s);
        world->desktop.outcome = outcome;
        if (tells)
            world->dialogs.expect({.text = u"指定されたファイルはアプリに関連付けられていません。"_s,
                                   .title = u"Quillon ファイルデータ管理部"_s});
        ShowRefFile(session(), File);
        QCOMPARE(world->desktop.opened.size(), 1);
    }

    void datumThatIsNotThereIsReportedAndNoOtherFileIsOpened()
    {
        makeFile(inFolder(u"a.txt"_s));
        addFileDatum(u"a.txt"_s);
        session().RsRefFile->moveFirst(); // the row that merely happens to be current
        world->dialogs.expect(failureBox(u"ShowRefFile"_s, 3021));
        ShowRefFile(session(), u"F-991231-002"_s);
        QCOMPARE(world->desktop.opened, QStringList());
    }

    void failuresAreReportedUnderTheOperationsName()
    {
        world->dialogs.expect(failureBox(u"ShowRefFile"_s, 3075));
        ShowRefFile(session(), u"F'"_s);
        session().RsRefFile.reset();
        world->dialogs.expect(failureBox(u"ShowRefFile"_s, 91));
        ShowRefFile(session(), File);
        QCOMPARE(world->eventLog.lines.size(), 2);
    }

    void registeredFileIsLinked()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        addFileDatum(u"a.txt"_s);
        DataWindow& window = session().windows.registrationWindow(u"F"_s);
        auto& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] {
            // The window has its identifier before it appears; the person registers under it.
            QCOMPARE(window.fieldText(1), u"F-991231-002"_s);
            registerIn(fake, u"b.txt"_s);
            TestWorld::addRow(session().RsRefFile, {u"c.txt"_s, u"F-991231-003"_s, u"未入力"_s});
        };
        QVERIFY(RegisterFileAndLink(session(), Water));
        QCOMPARE(world->windows.dataWindows.size(), 1U);
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList(u"M-991231-001|F-991231-002"_s));
    }

    void fileIsLinkedUnderTheIdentifierThatItGot()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        session().windows.registrationWindow(u"F"_s);
        auto& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] {
            addFileDatum(u"a.txt"_s); // another program comes first
            registerIn(fake, u"b.txt"_s);
        };
        QVERIFY(RegisterFileAndLink(session(), Water));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList(u"M-991231-001|F-991231-002"_s));
        // And what another program registers while this window is cancelled is not linked at all.
        fake.whileModal = [&] {
            TestWorld::addRow(session().RsRefFile, {u"c.txt"_s, u"F-991231-003"_s, u"未入力"_s});
        };
        QVERIFY(!RegisterFileAndLink(session(), Water));
        QCOMPARE(TestWorld::rowsOf(session().RsLink).size(), 1);
    }

    void fileIsRegisteredUnderItsIdentifierAndLinkedInOneWrite()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        const JournaledWrites writes(*session().OpenDb, world->calls);
        session().windows.registrationWindow(u"F"_s);
        world->windows.dataWindows.back()->fields[0] = u"/tmp/a.txt"_s; // typed before
        FakeDataWindow& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] { registerIn(fake, u"b.txt"_s); };
        world->calls.take();
        QVERIFY(RegisterFileAndLink(session(), Water));
        QVERIFY(
            compareLines(world->calls.lines(),
                         {u"frmRefFileEntry.mayUnload"_s, u"registrationWindow F"_s,
                          u"frmRefFileEntry.setFieldText 0 "_s, u"frmRefFileEntry.setFieldText 2 "_s,
                          u"frmRefFileEntry.setFieldText 1 F-991231-001"_s, u"frmRefFileEntry.showModal"_s,
                          u"copy "_s + world->folder.filePath(u"b.txt"_s) + u" to "_s + inFolder(u"b.txt"_s),
                          u"insert RefFile b.txt|F-991231-001|未入力"_s,
                          u"insert Link M-991231-001|F-991231-001"_s, u"commit"_s}));
    }

    void cancelledRegistrationLinksNothing()
    {
        addFileDatum(u"a.txt"_s);
        session().RsRefFile->moveFirst();
        QVERIFY(!RegisterFileAndLink(session(), Water));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList());
        // The identifier that was not used is given out again.
        QVERIFY(!RegisterFileAndLink(session(), Water));
        QCOMPARE(world->windows.dataWindows.back()->fields[1], u"F-991231-002"_s);
        QCOMPARE(world->calls.lines().count(u"frmRefFileEntry.showModal"_s), 2);
    }

    void pendingLinkEndsWithTheRegistration_data()
    {
        QTest::addColumn<bool>("registers");
        QTest::addColumn<bool>("fails");
        QTest::newRow("registered") << true << false;
        QTest::newRow("cancelled") << false << false;
        QTest::newRow("failed") << true << true;
    }

    void pendingLinkEndsWithTheRegistration()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        QFETCH(bool, registers);
        QFETCH(bool, fails);
        session().windows.registrationWindow(u"F"_s);
        auto& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] {
            QVERIFY(session().LinkSourceMode);
            if (fails)
                session().RsLink.reset();
            if (registers)
                registerIn(fake, u"b.txt"_s);
        };
        session().LinkSourceMode = true;
        session().LinkSourceID = Water;
        session().LinkSourceName = u"水"_s;
        if (fails)
            QCOMPARE(errorOf([&] { RegisterFileAndLink(session(), Water); }), errors::ObjectNotSet);
        else
            QCOMPARE(RegisterFileAndLink(session(), Water), registers);
        QVERIFY(!session().LinkSourceMode);
        // What the console shows of it stays.
        QCOMPARE(session().LinkSourceID, Water);
        QCOMPARE(session().LinkSourceName, u"水"_s);
    }

    void withoutAnIdentifierNothingIsRegistered()
    {
        session().RsRefFile.reset();
        world->dialogs.expect(failureBox(u"ExistCheck"_s, errors::ObjectNotSet));
        session().LinkSourceMode = true;
        QVERIFY(!RegisterFileAndLink(session(), Water));
        QVERIFY(!world->calls.lines().contains(u"frmRefFileEntry.showModal"_s));
        QVERIFY(!session().LinkSourceMode);
    }

    void fileIsNotLinkedToADatumThatWentMeanwhile()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        session().windows.registrationWindow(u"F"_s);
        FakeDataWindow& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] {
            session().RsMain->moveFirst();
            session().RsMain->deleteRow();
            registerIn(fake, u"b.txt"_s);
        };
        QCOMPARE(errorOf([&] { RegisterFileAndLink(session(), Water); }), errors::NoCurrentRecord);
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList());
        QCOMPARE(session().RsRefFile->recordCount(), 1); // the file datum stays registered
    }

    void fileIsNotLinkedToADatumThatReplacedTheShownOne()
    {
        RecordSet& rows = *session().RsMain;
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        QVERIFY(rows.goTo(data_field::Object_ID, Water));
        const DatumPlace shown{.kind = &data_kinds::definition(),
                               .databaseFile = openDatabaseFile(session()),
                               .identifier = Water,
                               .row = rows.rowNumber()};
        session().windows.registrationWindow(u"F"_s);
        FakeDataWindow& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] {
            QVERIFY(rows.goTo(data_field::Object_ID, Water));
            rows.deleteRow();
            TestWorld::addRow(session().RsMain, {u"火"_s, Water, u"熱"_s});
            registerIn(fake, u"b.txt"_s);
        };
        QCOMPARE(errorOf([&] { RegisterFileAndLink(session(), shown); }), errors::NoCurrentRecord);
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList());
    }

    void registrationWindowInUseMayRefuseTheLink()
    {
        session().windows.registrationWindow(u"F"_s);
        FakeDataWindow& window = *world->windows.dataWindows.back();
        window.fields = {u"/tmp/a.txt"_s, u"F-991231-001"_s, QString()};
        window.closes = false; // its closing question is cancelled
        world->calls.take();
        QVERIFY(!RegisterFileAndLink(session(), Water));
        QCOMPARE(window.fields[0], u"/tmp/a.txt"_s);
        QVERIFY(compareLines(world->calls.lines(),
                             {u"frmRefFileEntry.mayUnload"_s, u"frmRefFileEntry.bringToFront"_s}));
    }

    void failureToLinkGoesToTheCaller()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        session().windows.registrationWindow(u"F"_s);
        auto& fake = *world->windows.dataWindows.back();
        fake.whileModal = [&] { registerIn(fake, u"b.txt"_s); };
        QCOMPARE(errorOf([&] { RegisterFileAndLink(session(), u"M-991231-1000"_s); }),
                 errors::NoCurrentRecord);
        // The file datum stays registered.
        QCOMPARE(session().RsRefFile->recordCount(), 1);
        session().RsLink.reset();
        QCOMPARE(errorOf([&] { RegisterFileAndLink(session(), Water); }), errors::ObjectNotSet);
    }
};

QTEST_GUILESS_MAIN(TestFileData)
#include "test_file_data.moc"
