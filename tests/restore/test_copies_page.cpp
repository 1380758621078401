#include "core/file_registration.h"
#include "store/identifiers.h"
#include "tests/restore/restore_world.h"
#include "tests/support/compare_text.h"
#include "tests/support/outside_press.h"
#include "tests/support/window_probe.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The list of kept copies, and taking one out.
class TestCopiesPage : public QObject
{
    Q_OBJECT

    std::unique_ptr<RestoreWorld> world;

    QString newFile() const { return world->folder.filePath(u"新.mdb"_s); }
    FileDialog dialog(const QString& proposed) const
    {
        return {.purpose = FileDialog::Purpose::Save,
                .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                .fileName = proposed};
    }
    QString proposed() const { return world->folder.filePath(u"知識_控え_2026-01-31_120000.mdb"_s); }
    void takeOut()
    {
        world->control<QTabWidget>(u"tabPages"_s)->setCurrentIndex(1);
        QTest::mouseClick(world->control<QPushButton>(u"cmdTakeOut"_s), Qt::LeftButton);
        WindowWorld::processEvents();
    }
    static MessageBox takenOut(const QString& path, const QString& more = {})
    {
        return restoreBox(u"控えを「"_s + path + u"」に取り出しました。"_s + more +
                              u"\r\nQuillon で展開しますか。"_s,
                          Buttons::YesNo);
    }
    void registerFile(const QByteArray& content)
    {
        const QString source = world->folder.filePath(u"図.txt"_s);
        RestoreWorld::writeFile(source, content);
        const FileEntry entry{
            .path = source, .identifier = CreateObject_ID(world->session(), u"F"_s), .category = {}};
        QCOMPARE(RegisterFile(world->session(), entry, {}), FileRegistration::Registered);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<RestoreWorld>(); }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void copiesAreListedNewestFirstWithWhatTheyHold()
    {
        world->makeCopy();
        TestWorld::addRow(world->session().RsMain, {u"土"_s, u"M-991231-003"_s, u""_s});
        world->makeCopy(QDateTime(QDate(2026, 2, 1), QTime(8, 30, 5)));
        world->show();
        QStringList rows;
        for (const QString& row : rowsOf(world->list(u"lsvCopy"_s).rows()))
            rows << row.section(u'|', 0, 7);
        QCOMPARE(rows, QStringList({u"2026/02/01 08:30:05|正常|3|0|0|1|1|0"_s,
                                    u"2026/01/31 12:00:00|正常|2|0|0|1|1|0"_s}));
        QVERIFY(compareText(world->control<QLabel>(u"lblCopyCount"_s)->text(), u"控えの数 ： 2"));
    }

    void theListAndItsButtonAreNamed()
    {
        world->makeCopy();
        world->show();
        const ReportList& copies = world->list(u"lsvCopy"_s);
        QCOMPARE(headersOf(copies.rows()).mid(0, 9),
                 QStringList({u"作成日時"_s, u"状態"_s, u"定義"_s, u"文献"_s, u"FILE"_s, u"リンク"_s,
                              u"カテゴリ"_s, u"登録ファイル"_s, u"大きさ"_s}));
        QVERIFY(copies.isColumnHidden(9));
        QCOMPARE(copies.accessibleName(), u"控え一覧"_s);
        QCOMPARE(labelsOf(copies), QStringList(u"新しい順の控えの一覧(&G) ："_s));
        QCOMPARE(world->control<QPushButton>(u"cmdTakeOut"_s)->text(), u"この控えを取り出す(&E)"_s);
    }

    void withoutCopiesThereIsNothingToTakeOut()
    {
        world->show();
        QCOMPARE(world->list(u"lsvCopy"_s).rows().rowCount(), 0);
        QVERIFY(compareText(world->control<QLabel>(u"lblCopyCount"_s)->text(), u"控えの数 ： 0"));
        QVERIFY(!world->control<QPushButton>(u"cmdTakeOut"_s)->isEnabled());
    }

    void aCopyThatHoldsMuchLessThanTheOneBeforeIsMarked()
    {
        world->makeCopy();
        QVERIFY(DeleteData(world->session(), RestoreWorld::Water, 0));
        QVERIFY(DeleteData(world->session(), RestoreWorld::Fire, 0));
        world->makeCopy(QDateTime(QDate(2026, 2, 1), QTime(8, 30, 5)));
        world->show();
        QStringList states;
        for (const QString& row : rowsOf(world->list(u"lsvCopy"_s).rows()))
            states << row.section(u'|', 1, 1);
        QCOMPARE(states, QStringList({u"件数が急減"_s, u"正常"_s}));
    }

    void nothingIsTakenOutBehindABox()
    {
        world->makeCopy();
        world->show();
        world->control<QTabWidget>(u"tabPages"_s)->setCurrentIndex(1);
        QMessageBox box;
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        pressFromOutside(*world->control<QPushButton>(u"cmdTakeOut"_s)); // asks for no name
    }

    void aCopyIsTakenOutAndOpenedInTheProgram()
    {
        world->makeCopy();
        world->show();
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(takenOut(newFile()), Answer::Yes);
        takeOut();
        QCOMPARE(world->started, QStringList(newFile()));
        const auto database = Database::open(newFile());
        QVERIFY(database->tableExists(u"Main"_s));
    }

    void noLeavesItThere()
    {
        world->makeCopy();
        world->show();
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(takenOut(newFile()), Answer::No);
        takeOut();
        QCOMPARE(world->started, QStringList());
        QVERIFY(QFile::exists(newFile()));
    }

    void aProgramThatCannotBeStartedIsTold()
    {
        world->starts = false;
        world->makeCopy();
        world->show();
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(takenOut(newFile()), Answer::Yes);
        world->dialogs.expect(
            MessageBox{.text = u"Quillon を起動できませんでした。"_s, .title = u"Quillon システム運用部"_s});
        takeOut();
    }

    void nothingThatIsThereIsOverwritten()
    {
        world->makeCopy();
        world->show();
        RestoreWorld::writeFile(newFile(), "mine");
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(MessageBox{.text = u"「"_s + newFile() +
                                                 u"」は既に存在します。\r\n"
                                                 u"上書きはできません。別の名前を指定してください。"_s,
                                         .title = u"Quillon システム監査部"_s});
        takeOut();
        QCOMPARE(RestoreWorld::contentOf(newFile()), QByteArray("mine"));
    }

    void ofADatabaseThatIsGoneTheCopyTakesItsPlaceWithItsFiles()
    {
        registerFile("picture");
        world->makeCopy();
        world->session().closeDatabase();
        QVERIFY(QFile::remove(world->path));
        QVERIFY(QFile::remove(world->registered(u"図.txt"_s)));
        world->dialogs.expect(restoreBox(u"データベース「知識.mdb」が見つかりません。\r\n"
                                         u"［控え］の一覧から控えを取り出すことができます。"_s));
        world->show();
        QVERIFY(world->list(u"lsvCopy"_s).isVisible());
        world->dialogs.expect(dialog(world->path), world->path);
        world->dialogs.expect(
            takenOut(world->path, u"\r\n登録ファイルを RefFile フォルダに 1 個取り出しました。"_s),
            Answer::No);
        takeOut();
        QVERIFY(QFile::exists(world->path));
        QCOMPARE(RestoreWorld::contentOf(world->registered(u"図.txt"_s)), QByteArray("picture"));
    }

    void registeredFilesWhoseContentIsNotKeptAreCounted()
    {
        registerFile("picture");
        world->makeCopy();
        QVERIFY(QFile::remove(world->registered(u"図.txt"_s)));
        const kept::Place place(world->folder.filePath(u"kept"_s), world->path);
        QVERIFY(QDir(place.files()).removeRecursively());
        world->show();
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(takenOut(newFile(), u"\r\n内容が残されていない登録ファイルが 1 個あります。"_s),
                              Answer::No);
        takeOut();
        QVERIFY(!QFile::exists(world->registered(u"図.txt"_s)));
    }

    void registeredFilesThatAreThereStay()
    {
        registerFile("former");
        world->makeCopy();
        RestoreWorld::writeFile(world->registered(u"図.txt"_s), "newer");
        world->show();
        world->dialogs.expect(dialog(proposed()), newFile());
        world->dialogs.expect(
            takenOut(newFile(), u"\r\n内容の異なる同じ名前の登録ファイルが 1 個あり、そのままにしました。"_s),
            Answer::No);
        takeOut();
        QCOMPARE(RestoreWorld::contentOf(world->registered(u"図.txt"_s)), QByteArray("newer"));
    }
};

QTEST_MAIN(TestCopiesPage)
#include "test_copies_page.moc"
