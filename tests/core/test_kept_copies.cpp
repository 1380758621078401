#include "core/damage_notice.h"
#include "core/kept_copies.h"
#include "store/keeper.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Listing kept copies and taking one out.
class TestKeptCopies : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    QString newFile() const { return world->folder.filePath(u"控え.mdb"_s); }
    kept::Copy copy() { return ListCopies(session(), path).at(0); }
    static MessageBox refusal(const QString& description)
    {
        return {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : TakeOutCopy\r\nEXPLANATION : "_s +
                        description,
                .title = u"Quillon 障害対策部"_s};
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->keep();
        path = world->createDatabase();
        world->openDatabase(path);
        TestWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"流れるもの"_s});
        kept::makeCopy({.place = {*session().keeper->keptFolder(), path},
                        .fileFolder = {},
                        .now = [] { return QDateTime(QDate(2026, 1, 31), QTime(12, 0)); },
                        .goesOn = [] { return true; }});
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void aCopyIsTakenOutAsADatabaseOfItsOwn()
    {
        QVERIFY(TakeOutCopy(session(), copy(), newFile()));
        const QStringList before = TestWorld::rowsOf(session().RsMain);
        world->openDatabase(newFile());
        QCOMPARE(TestWorld::rowsOf(session().RsMain), before);
        QCOMPARE(ListCopies(session(), path).size(), std::size_t{1});
    }

    void theCopiesOfADatabaseThatIsGoneAreListed()
    {
        session().closeDatabase();
        QVERIFY(QFile::remove(path));
        QCOMPARE(ListCopies(session(), path).size(), std::size_t{1});
        QVERIFY(TakeOutCopy(session(), copy(), path));
    }

    void theRegisteredFilesThatAreKeptComeWithIt()
    {
        const QString content = QString(u"絵"_s);
        QDir(world->folder.path()).mkpath(u"RefFile"_s);
        QFile picture(world->folder.filePath(u"RefFile/図.txt"_s));
        QVERIFY(picture.open(QIODevice::WriteOnly));
        picture.write(content.toUtf8());
        picture.close();
        TestWorld::addRow(session().RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"図.txt"_s});
        kept::makeCopy({.place = {*session().keeper->keptFolder(), path},
                        .fileFolder = world->folder.filePath(u"RefFile"_s),
                        .now = [] { return QDateTime(QDate(2026, 2, 1), QTime(12, 0)); },
                        .goesOn = [] { return true; }});
        QDir(world->folder.path()).mkdir(u"別"_s);
        const auto files = TakeOutCopy(session(), copy(), world->folder.filePath(u"別/控え.mdb"_s));
        QVERIFY(files);
        QCOMPARE(files->written, 1);
        QFile taken(world->folder.filePath(u"別/RefFile/図.txt"_s));
        QVERIFY(taken.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(taken.readAll()), content);
    }

    void nothingThatIsThereIsOverwritten()
    {
        QFile file(newFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("mine");
        file.close();
        world->dialogs.expect(failureBox(u"TakeOutCopy"_s, errors::DatabaseExists));
        QVERIFY(!TakeOutCopy(session(), copy(), newFile()));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("mine"));
    }

    void besideAJournalOfAFormerDatabaseNothingIsTakenOut_data()
    {
        QTest::addColumn<QString>("ending");
        QTest::newRow("journal") << u"-journal"_s;
        QTest::newRow("log") << u"-wal"_s;
    }
    void besideAJournalOfAFormerDatabaseNothingIsTakenOut()
    {
        QFETCH(QString, ending);
        const QString left = newFile() + ending;
        QFile journal(left);
        QVERIFY(journal.open(QIODevice::WriteOnly));
        journal.write("of another");
        journal.close();
        world->dialogs.expect(
            refusal(u"同じ名前のデータベースの書き込みの記録「%1」が残っているため、取り出しませんでした。"
                    u"取り出した控えが書き換えられてしまいます。別の名前を指定するか、"
                    u"残っている記録を、元のデータベースと一緒に別の場所に移してください。"_s.arg(left)));
        QVERIFY(!TakeOutCopy(session(), copy(), newFile()));
        QVERIFY(!QFile::exists(newFile()));
        QVERIFY(QFile::exists(left));
    }

    void aHarmedCopyIsRefused()
    {
        QFile harmed(copy().path);
        QVERIFY(harmed.open(QIODevice::ReadWrite));
        harmed.putChar('?');
        harmed.close();
        world->dialogs.expect(refusal(u"控え「"_s + QDir::toNativeSeparators(copy().path) +
                                      u"」は失われているか、壊れています。別の控えを指定してください。"_s));
        QVERIFY(!TakeOutCopy(session(), copy(), newFile()));
        QVERIFY(!QFile::exists(newFile()));
    }

    void whereNothingIsKeptNothingIsListed()
    {
        session().keeper = nullptr;
        QCOMPARE(ListCopies(session(), path).size(), std::size_t{0});
    }

    void damageIsToldWithTheNewestGoodCopy()
    {
        world->dialogs.expect(MessageBox{
            .text =
                u"データベース「知識.mdb」が壊れています。\r\n"
                u"2026/01/31 09:08:07 に作成した正常な控えがあります。\r\n"
                u"控えを取り出すには、quillon --restore で復元画面を開き、［控え］の一覧から選んでください。"_s,
            .title = u"Quillon 障害対策部"_s});
        TellDamage(world->session, {.database = u"/home/user/知識.mdb"_s,
                                    .newestGood = QDateTime(QDate(2026, 1, 31), QTime(9, 8, 7))});
    }

    void damageWithoutAGoodCopyIsToldWithWhatToDo()
    {
        world->dialogs.expect(MessageBox{
            .text = u"データベース「知識.mdb」が壊れています。\r\n"
                    u"正常な控えは残されていません。\r\n"
                    u"これ以上壊れないように、データベースファイルを別の場所に複写してください。"_s,
            .title = u"Quillon 障害対策部"_s});
        TellDamage(world->session, {.database = u"/home/user/知識.mdb"_s, .newestGood = std::nullopt});
    }
};

QTEST_GUILESS_MAIN(TestKeptCopies)
#include "test_kept_copies.moc"
