#include "app/base/error.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/store/foreign_file.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <memory>
#include <random>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestIdentifiers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_world->openDatabase(m_world->createDatabase());
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void theFirstItemOfTheDayIsNumberOne()
    {
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-001"_s);
        add(m_world->session.RsMain, u"M-991231-001"_s);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-002"_s);
        QCOMPARE(CreateObject_ID(m_world->session, u"R"_s), u"R-991231-001"_s);
        QCOMPARE(CreateObject_ID(m_world->session, u"F"_s), u"F-991231-001"_s);
    }

    void theFirstGapIsTaken()
    {
        add(m_world->session.RsMain, u"M-991231-001"_s);
        add(m_world->session.RsMain, u"M-991231-003"_s);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-002"_s);
    }

    void aNumberFreedByDeletionIsGivenOutAgain()
    {
        add(m_world->session.RsMain, u"M-991231-001"_s);
        add(m_world->session.RsMain, u"M-991231-002"_s);
        m_world->session.RsMain->moveFirst();
        m_world->session.RsMain->deleteRow();
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-001"_s);
    }

    void otherDaysAndStrangersDoNotCount()
    {
        for (const QString& other :
             {u"M-991230-001"_s, u"m-991231-001"_s, u"M-991231-1"_s, u"M-991231-01"_s, u"M-991231-0x1"_s,
              u"M-991231-"_s, u"M-991231-+01"_s, u"M-991231- 1"_s, u"M-991231-０"_s, u"M-991231-000"_s,
              u"M-991231.001"_s, u"M-9912310001"_s})
            add(m_world->session.RsMain, other);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-001"_s);
    }

    void agreesWithAskingNumberByNumber()
    {
        std::mt19937 random(991231);
        std::uniform_int_distribution<int> dice(0, 9);
        for (int round = 0; round < 20; ++round) {
            m_world->session.OpenDb->connection().execute(u"DELETE FROM Main"_s);
            sqlite::Transaction transaction(m_world->session.OpenDb->connection());
            for (int number = 1; number <= 30; ++number) {
                if (dice(random) < 9)
                    add(m_world->session.RsMain, identifier(number));
            }
            transaction.commit();
            int number = 1;
            while (!ExistCheck(m_world->session, identifier(number)))
                ++number;
            QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), identifier(number));
        }
    }

    void beyond999TheIdentifierGrowsAndNoTableHoldsIt()
    {
        fillDay(999);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-1000"_s);
        bool refused = false;
        try {
            add(m_world->session.RsMain, u"M-991231-1000"_s);
        } catch (const Error& error) {
            refused = error.number == errors::FieldTooSmall;
        }
        QVERIFY(refused);
    }

    void theNumberIsSixteenBitsWide()
    {
        fillDay(32766);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-32767"_s);
        fillDay(32767);
        m_world->dialogs.expect(failure(errors::Overflow, u"CreateObject_ID"_s));
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), QString());
    }

    void identifiersAreFoundInFilesOfOtherEncodings()
    {
        const QString path = m_world->folder.filePath(u"utf8.mdb"_s);
        ForeignFile(path)
            .run("CREATE TABLE Main (Name TEXT, Object_ID TEXT UNIQUE, Explanation TEXT)")
            .run("INSERT INTO Main (Object_ID) VALUES ('M-991231-001'), ('M-991231-003'), ('M-991232-002'),"
                 " ('M-99123'), ('水'), (NULL)");
        m_world->session.RsMain = RecordSet::openTable(Database::open(path), schema::Main());
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-002"_s);
    }

    void anUnknownKindIsReportedOnce_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("unknown") << u"X"_s;
        QTest::newRow("small letter") << u"m"_s;
        QTest::newRow("empty") << u""_s;
    }
    void aTableThatTakesSmallLettersForCapitalsIsNumberedAllTheSame()
    {
        m_world->session.OpenDb->execute(u"DROP TABLE Main"_s);
        m_world->session.OpenDb->execute(
            u"CREATE TABLE Main (Name TEXT, Object_ID TEXT COLLATE NOCASE, Explanation TEXT)"_s);
        for (const QString& identifier : {u"m-991231-001"_s, u"M-991231-001"_s, u"M-991231-002"_s})
            add(m_world->session.RsMain, identifier);
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), u"M-991231-003"_s);
    }

    void anUnknownKindIsReportedOnce()
    {
        QFETCH(QString, kind);
        m_world->dialogs.expect(failure(errors::ObjectNotSet, u"ExistCheck"_s));
        QCOMPARE(CreateObject_ID(m_world->session, kind), QString());
        QCOMPARE(m_world->eventLog.lines.size(), 1);
    }

    void withoutADatabaseTheFailureIsReportedOnce()
    {
        m_world->session.RsMain.reset();
        m_world->dialogs.expect(failure(errors::ObjectNotSet, u"ExistCheck"_s));
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), QString());
        m_world->dialogs.expect(failure(errors::ObjectNotSet, u"ExistCheck"_s));
        QVERIFY(!ExistCheck(m_world->session, u"M-991231-001"_s));
    }

    void aLockedFileEndsTheSearchForANumber()
    {
        const auto holder = Database::open(m_world->session.OpenDb->path());
        holder->connection().execute(u"BEGIN EXCLUSIVE"_s);
        m_world->dialogs.expect(failure(errors::Locked, u"ExistCheck"_s));
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), QString());
    }

    void theDateIsCutFromItsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("characters");
        QTest::newRow("two digits for the year") << u"99/12/31"_s << u"991231"_s;
        QTest::newRow("four digits for the year") << u"2026/11/15"_s << u"206/1/"_s;
        QTest::newRow("short") << u"99/1"_s << u"991"_s;
        QTest::newRow("shorter") << u"9"_s << u"9"_s;
        QTest::newRow("missing") << u""_s << u""_s;
        QTest::newRow("another separator") << u"05.01.02"_s << u"050102"_s;
    }
    void theDateIsCutFromItsText()
    {
        QFETCH(QString, text);
        QFETCH(QString, characters);
        m_world->clock.dateText = text.isNull() ? u""_s : text;
        QCOMPARE(GetYYMMDD(m_world->session), characters);
        QCOMPARE(CreateObject_ID(m_world->session, u"R"_s), u"R-"_s + characters + u"-001"_s);
    }

    void theDateOfTheClockIsTwoDigitsEach()
    {
        m_world->clock.time = QDateTime(QDate(2005, 1, 2), QTime(0, 0));
        QCOMPARE(GetYYMMDD(m_world->session), u"050102"_s);
    }

    void aDateWithAQuoteCannotBeLookedUp()
    {
        m_world->clock.dateText = u"'9/12/31"_s;
        m_world->dialogs.expect(failure(errors::CriteriaSyntax, u"ExistCheck"_s));
        QCOMPARE(CreateObject_ID(m_world->session, u"M"_s), QString());
    }

    void existCheckIsTrueForAFreeIdentifier()
    {
        QVERIFY(ExistCheck(m_world->session, u"M-991231-001"_s));
        add(m_world->session.RsMain, u"M-991231-001"_s);
        add(m_world->session.RsRefFile, u"F-991231-001"_s);
        QVERIFY(!ExistCheck(m_world->session, u"M-991231-001"_s));
        QVERIFY(!ExistCheck(m_world->session, u"F-991231-001"_s));
        QVERIFY(ExistCheck(m_world->session, u"R-991231-001"_s));
        QVERIFY(ExistCheck(m_world->session, u"M-991231-002"_s));
        QVERIFY(ExistCheck(m_world->session, u"M"_s));
    }

    void existCheckReportsWhatItCannotLookUp()
    {
        m_world->dialogs.expect(failure(errors::ObjectNotSet, u"ExistCheck"_s));
        QVERIFY(!ExistCheck(m_world->session, u"X-991231-001"_s));
        m_world->dialogs.expect(failure(errors::ObjectNotSet, u"ExistCheck"_s));
        QVERIFY(!ExistCheck(m_world->session, QString()));
        m_world->dialogs.expect(failure(errors::CriteriaSyntax, u"ExistCheck"_s));
        QVERIFY(!ExistCheck(m_world->session, u"M-'"_s));
    }

private:
    static MessageBox failure(qint32 number, const QString& location)
    {
        return {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : "_s + location +
                        u"\r\nEXPLANATION : "_s + standardDescription(number),
                .title = u"Quillon 障害対策部"_s};
    }

    static QString identifier(int number)
    {
        return u"M-991231-"_s + QString::number(number).rightJustified(3, u'0');
    }

    static void add(const std::shared_ptr<RecordSet>& rows, const QString& identifier)
    {
        TestWorld::addRow(rows, {u"名前"_s, identifier, u""_s});
    }

    /// Fills the day up to a number, past the width that the store would hold to.
    void fillDay(int last)
    {
        m_world->session.OpenDb->connection().execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
            u"INSERT OR IGNORE INTO Main (Object_ID) SELECT printf('M-991231-%03d', i) FROM n"_s.arg(last));
    }

    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestIdentifiers)
#include "test_identifiers.moc"
