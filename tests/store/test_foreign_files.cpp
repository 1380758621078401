#include "app/base/error.h"
#include "store/database.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/store/foreign_file.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QFile>
#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr const char* PlainMain = "CREATE TABLE Main (Name, Object_ID, Explanation)";

} // namespace

/// Database files that other programs have made or changed.
class TestForeignFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_path = m_world->folder.filePath(u"foreign.mdb"_s);
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void tablesThatDoNotFitAreRefused_data()
    {
        QTest::addColumn<QByteArray>("sql");
        QTest::addColumn<int>("number");
        const auto row = [](const char* name, const char* sql, qint32 number) {
            QTest::newRow(name) << QByteArray(sql) << static_cast<int>(number);
        };
        row("no table", "CREATE TABLE Other (x)", errors::TableNotFound);
        row("another case", "CREATE TABLE MAIN (Name, Object_ID, Explanation)", errors::TableNotFound);
        row("a view", "CREATE TABLE t (Name, Object_ID, Explanation); CREATE VIEW Main AS SELECT * FROM t",
            errors::TableNotFound);
        row("a virtual table", "CREATE VIRTUAL TABLE Main USING fts4(Name, Object_ID, Explanation)",
            errors::TableNotFound);
        row("a field missing", "CREATE TABLE Main (Name, Object_ID)", errors::UnknownField);
        row("a field in another case", "CREATE TABLE Main (NAME, Object_ID, Explanation)",
            errors::UnknownField);
        row("without row numbers",
            "CREATE TABLE Main (Name, Object_ID PRIMARY KEY, Explanation) WITHOUT ROWID",
            errors::UnknownField);
        row("row numbers hidden", "CREATE TABLE Main (Name, Object_ID, Explanation, RowID)",
            errors::UnknownField);
        row("fields in another order", "CREATE TABLE Main (Explanation, Extra, Object_ID, Name)", 0);
    }
    void tablesThatDoNotFitAreRefused()
    {
        QFETCH(QByteArray, sql);
        ForeignFile(m_path).run(sql.constData());
        const auto database = Database::open(m_path);
        QTEST(errorOf([&] { RecordSet::openTable(database, schema::Main()); }), "number");
    }

    void fieldsAreFoundByNameAndOthersIgnored()
    {
        ForeignFile(m_path)
            .run("CREATE TABLE Main (Explanation, Extra DEFAULT 'e', Object_ID, Name)")
            .run("INSERT INTO Main VALUES ('explanation', 'extra', 'M-991231-001', 'name')");
        const auto rows = openMain();
        rows->moveFirst();
        QCOMPARE(rows->field(0), u"name"_s);
        rows->edit();
        rows->setField(2, u"changed"_s);
        rows->update();
        TestWorld::addRow(rows, {u"new"_s, u"M-991231-002"_s, u"text"_s});
        QCOMPARE(ForeignFile(m_path).ask("SELECT * FROM Main"),
                 QStringList({u"changed|extra|M-991231-001|name"_s, u"text|e|M-991231-002|new"_s}));
    }

    void nullsInEveryFieldReadAsEmpty()
    {
        ForeignFile(m_path).run(PlainMain).run("INSERT INTO Main VALUES (NULL, NULL, NULL)");
        const auto rows = openMain();
        rows->moveFirst();
        for (int i = 0; i < 3; ++i)
            QCOMPARE(rows->field(i), QString());
        QCOMPARE(TestWorld::rowsOf(rows), QStringList(u"||"_s));
        rows->findFirst(u"Object_ID ='M-991231-001'"_s);
        QVERIFY(!rows->hasCurrentRow());
        rows->moveFirst();
        rows->edit();
        rows->setField(0, u"a"_s);
        rows->update();
        QCOMPARE(TestWorld::rowsOf(rows), QStringList(u"a||"_s));
    }

    void numbersAndBytesReadAsTexts()
    {
        ForeignFile(m_path).run(PlainMain).run(
            "INSERT INTO Main VALUES (12, 1.5, x'414243'), ('x', 'y', x'')");
        const auto rows = openMain();
        rows->moveFirst();
        QCOMPARE(rows->field(0), u"12"_s);
        QCOMPARE(rows->field(1), u"1.5"_s);
        QCOMPARE(rows->field(2), u"ABC"_s);
        rows->moveNext();
        QCOMPARE(rows->field(2), QString());
    }

    void numbersAndBytesAreListedAndSearchedAsTexts_data()
    {
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QString>("bytesAsText");
        QTest::newRow("UTF-8") << QByteArray("UTF-8") << u"4l\uFFFDA"_s;
        QTest::newRow("UTF-16le") << QByteArray("UTF-16le") << QString(u"水"_s + QChar(0x41FF));
    }
    void numbersAndBytesAreListedAndSearchedAsTexts()
    {
        QFETCH(QByteArray, encoding);
        QFETCH(QString, bytesAsText);
        ForeignFile(m_path)
            .run("PRAGMA encoding = '" + encoding + '\'')
            .run(PlainMain)
            .run(
                "INSERT INTO Main VALUES (x'346CFF41', 1.5, 12), (12, 'M-991231-002', x'346CFF41'), ('x', 'y', 'z')");
        const auto rows = openMain();
        QCOMPARE(TestWorld::rowsOf(rows),
                 QStringList({bytesAsText + u"|1.5|12"_s, u"12|M-991231-002|"_s + bytesAsText, u"x|y|z"_s}));
        // With the copy in memory, and without.
        QCOMPARE(rows->filtered(u"Name Like '*12*' OR Explanation Like '*12*'"_s)->recordCount(), 2);
        QCOMPARE(rows->filtered(u"Name Like '*12*'"_s)->recordCount(), 1);
        const QString criteria = u"Name Like '*%1*' OR Explanation Like '*%1*'"_s.arg(bytesAsText);
        QStringList names;
        rows->filtered(criteria)->forEachName([&](QStringView name, QStringView identifier) {
            names << name.toString() + u'|' + identifier.toString();
        });
        QCOMPARE(names, QStringList({bytesAsText + u"|1.5"_s, u"12|M-991231-002"_s}));
    }

    void otherEncodingsWork_data()
    {
        QTest::addColumn<QByteArray>("pragma");
        QTest::newRow("UTF-8") << QByteArray("PRAGMA encoding = 'UTF-8'");
        QTest::newRow("UTF-16le") << QByteArray("PRAGMA encoding = 'UTF-16le'");
        QTest::newRow("UTF-16be") << QByteArray("PRAGMA encoding = 'UTF-16be'");
    }
    void otherEncodingsWork()
    {
        QFETCH(QByteArray, pragma);
        ForeignFile(m_path)
            .run(pragma.constData())
            .run("CREATE TABLE Main (Name TEXT, Object_ID TEXT UNIQUE, Explanation TEXT)")
            .run("INSERT INTO Main VALUES ('水😀', 'M-991231-001', 'ｶﾞ')");
        const auto rows = openMain();
        rows->findFirst(u"Object_ID ='M-991231-001'"_s);
        QCOMPARE(rows->field(0), u"水😀"_s);
        rows->findFirst(u"Explanation Like '*が*'"_s);
        QVERIFY(rows->hasCurrentRow());
        TestWorld::addRow(rows, {u"0012"_s, u"M-991231-002"_s, u"新しい😀"_s});
        QCOMPARE(
            ForeignFile(m_path).ask("SELECT Name, Explanation FROM Main WHERE Object_ID = 'M-991231-002'"),
            QStringList(u"0012|新しい😀"_s));
    }

    void foreignCodeDoesNotRun()
    {
        ForeignFile(m_path)
            .run("CREATE TABLE Main (Name TEXT, Object_ID TEXT, Explanation TEXT); CREATE TABLE Log (x)")
            .run("CREATE TRIGGER added AFTER INSERT ON Main BEGIN INSERT INTO Log VALUES ('added'); END")
            .run("CREATE TRIGGER removed BEFORE DELETE ON Main BEGIN SELECT RAISE(ABORT, 'no'); END");
        const auto rows = openMain();
        TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s, u""_s});
        rows->moveFirst();
        rows->deleteRow();
        QCOMPARE(rows->recordCount(), 0);
        QCOMPARE(ForeignFile(m_path).ask("SELECT * FROM Log"), QStringList());
    }

    void foreignCollationsDoNotBlurIdentifiers()
    {
        ForeignFile(m_path)
            .run("CREATE TABLE Main (Name TEXT, Object_ID TEXT COLLATE NOCASE UNIQUE, Explanation TEXT)")
            .run("INSERT INTO Main VALUES ('a', 'm-991231-001', '')");
        const auto rows = openMain();
        rows->findFirst(u"Object_ID ='M-991231-001'"_s);
        QVERIFY(!rows->hasCurrentRow());
    }

    void foreignRulesAreReportedAsFailures()
    {
        ForeignFile(m_path).run(
            "CREATE TABLE Main (Name TEXT NOT NULL, Object_ID TEXT CHECK (length(Object_ID) > 3),"
            " Explanation TEXT)");
        const auto rows = openMain();
        rows->addNew();
        QCOMPARE(errorOf([&] { rows->update(); }), errors::InvalidArgument);
        QCOMPARE(errorOf([&] { TestWorld::addRow(rows, {u"a"_s, u"x"_s, u""_s}); }), errors::InvalidArgument);
        QCOMPARE(rows->recordCount(), 0);
    }

    void conflictsAreFailuresWhateverTheTableMakesOfThem_data()
    {
        QTest::addColumn<QByteArray>("clause");
        for (const char* clause : {"REPLACE", "IGNORE", "FAIL", "ROLLBACK"})
            QTest::newRow(clause) << QByteArray(clause);
    }
    void conflictsAreFailuresWhateverTheTableMakesOfThem()
    {
        QFETCH(QByteArray, clause);
        ForeignFile(m_path)
            .run("CREATE TABLE Main (Name TEXT NOT NULL ON CONFLICT " + clause +
                 " DEFAULT 'd' CHECK (Name <> 'x'), Object_ID TEXT UNIQUE ON CONFLICT " + clause +
                 ", Explanation TEXT)")
            .run("INSERT INTO Main VALUES ('a', 'M-991231-001', ''), ('b', 'M-991231-002', '')");
        const auto rows = openMain();
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(rows, {u"c"_s, u"M-991231-001"_s, u""_s});
                 }),
                 errors::DuplicateKey);
        rows->moveLast();
        rows->edit();
        rows->setField(1, u"M-991231-001"_s);
        QCOMPARE(errorOf([&] { rows->update(); }), errors::DuplicateKey);
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(rows, {u"x"_s, u"M-991231-003"_s, u""_s});
                 }),
                 errors::InvalidArgument);
        QCOMPARE(TestWorld::rowsOf(rows), QStringList({u"a|M-991231-001|"_s, u"b|M-991231-002|"_s}));
    }

    void rowsOfOtherTablesDoNotTakeOursWithThem()
    {
        ForeignFile(m_path)
            .run("CREATE TABLE Main (Name TEXT, Object_ID TEXT UNIQUE, Explanation TEXT);"
                 "CREATE TABLE Category (Category_ID TEXT, Object_ID TEXT REFERENCES Main (Object_ID)"
                 " ON DELETE CASCADE)")
            .run("INSERT INTO Main VALUES ('a', 'M-991231-001', '');"
                 "INSERT INTO Category VALUES ('A', 'M-991231-001')");
        const auto rows = openMain();
        rows->moveFirst();
        rows->deleteRow();
        QCOMPARE(ForeignFile(m_path).ask("SELECT * FROM Category"), QStringList(u"A|M-991231-001"_s));
    }

    void anIndexInAnOrderOfItsOwnIsToldAsAMatterOfTheFile()
    {
        {
            ForeignFile file(m_path);
            const auto compare = [](void*, int a, const void*, int b, const void*) { return a - b; };
            QCOMPARE(sqlite3_create_collation(file.handle(), "THEIRS", SQLITE_UTF8, nullptr, compare),
                     SQLITE_OK);
            file.run(PlainMain).run("CREATE INDEX theirs ON Main (Name COLLATE THEIRS)");
        }
        try {
            openMain();
            QFAIL("it opened");
        } catch (const Error& error) {
            QCOMPARE(error.number, errors::NotADatabase);
            QVERIFY(compareText(error.description,
                                u"データベースの表が Quillon にない並べ方を使っているため扱えません。"
                                u"Quillon のデータベースか確認してください。"));
        }
    }

    void aDamagedTextTellsItsTableAndRow()
    {
        const QString page =
            ForeignFile(m_path)
                .run(PlainMain)
                .run("INSERT INTO Main VALUES ('a', 'M-991231-001', hex(zeroblob(20000)))")
                .ask("SELECT min(pageno) FROM dbstat WHERE name = 'Main' AND pagetype = 'overflow'")
                .value(0);
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek((page.toLongLong() - 1) * 4096)); // where the number of the next page stands
        QCOMPARE(file.write(QByteArray(4, '\x5A')), 4);
        file.close();
        const auto rows = openMain();
        rows->moveFirst();
        QCOMPARE(rows->field(0), u"a"_s);
        try {
            rows->field(2);
            QFAIL("it was read");
        } catch (const Error& error) {
            QVERIFY(compareText(
                error.description,
                u"データベースが壊れているため、テーブル Main の行 (番号 1) を読み取れませんでした。"
                u"控えのファイルを展開してください。"));
        }
    }

    void halfACharacterStaysWhatItIs_data()
    {
        QTest::addColumn<QByteArray>("encoding");
        for (const char* encoding : {"UTF-8", "UTF-16le", "UTF-16be"})
            QTest::newRow(encoding) << QByteArray(encoding);
    }
    void halfACharacterStaysWhatItIs()
    {
        QFETCH(QByteArray, encoding);
        ForeignFile(m_path).run("PRAGMA encoding = '" + encoding + '\'').run(PlainMain);
        const QChar high(0xD83D);
        const QChar low(0xDE00);
        const QString name = u"前"_s + high + u"後😀"_s + low;
        const QString text = QString(high) + u"x한"_s + low + high;
        {
            const auto rows = openMain();
            TestWorld::addRow(rows, {name, u"M-991231-001"_s, text});
            TestWorld::addRow(rows, {QString(low), u"M-991231-002"_s, u"\uFFFD"_s});
        }
        const auto rows = openMain();
        QCOMPARE(TestWorld::rowsOf(rows),
                 (QStringList{name + u"|M-991231-001|"_s + text, QString(low) + u"|M-991231-002|\uFFFD"_s}));
        rows->findFirst(u"Name = '"_s + name + u"'"_s);
        QVERIFY(rows->hasCurrentRow());
        QVERIFY(compareText(rows->field(2), text));
        // A pattern tells one half from another, with the copy in memory and without.
        const QString half = QString(high) + u"*"_s;
        QCOMPARE(rows->filtered(u"Explanation Like '"_s + half + u"'"_s)->recordCount(), 1);
        QCOMPARE(rows->filtered(u"Name Like '"_s + QString(low) + u"'"_s)->recordCount(), 1);
        QCOMPARE(rows->filtered(u"Name Like '"_s + half + u"' OR Explanation Like '"_s + half + u"'"_s)
                     ->recordCount(),
                 1);
    }

    void theGreatestRowNumberIsNoEnd()
    {
        ForeignFile(m_path).run(PlainMain).run(
            "INSERT INTO Main (rowid, Object_ID) VALUES (9223372036854775807, 'last'), (-5, 'first')");
        const auto rows = openMain();
        rows->moveFirst();
        QCOMPARE(rows->field(1), u"first"_s);
        rows->moveLast();
        QCOMPARE(rows->field(1), u"last"_s);
        TestWorld::addRow(rows, {u"a"_s, u"new"_s, u""_s});
        QCOMPARE(rows->recordCount(), 3);
    }

    void aFileWithAWriteAheadLogIsSwitchedBack()
    {
        ForeignFile(m_path)
            .run("PRAGMA journal_mode = WAL")
            .run(PlainMain)
            .run("INSERT INTO Main VALUES ('a', 'M-991231-001', '')");
        {
            const auto rows = openMain();
            TestWorld::addRow(rows, {u"b"_s, u"M-991231-002"_s, u""_s});
        }
        ForeignFile file(m_path);
        QCOMPARE(file.ask("PRAGMA journal_mode"), QStringList(u"delete"_s));
        QCOMPARE(file.ask("SELECT count(*) FROM Main"), QStringList(u"2"_s));
    }

    void aFileThatIsHeldInThatModeStillOpens()
    {
        ForeignFile holder(m_path);
        holder.run("PRAGMA journal_mode = WAL").run(PlainMain);
        const auto rows = openMain();
        TestWorld::addRow(rows, {u"b"_s, u"M-991231-002"_s, u""_s});
        QCOMPARE(holder.ask("SELECT Name FROM Main"), QStringList(u"b"_s));
    }

    void openingAFileThatLacksATableFailsAtThatTable()
    {
        ForeignFile(m_path).run("CREATE TABLE Main (Name, Object_ID, Explanation);"
                                "CREATE TABLE OpenApp (AppName, Path);"
                                "CREATE TABLE RefDoc (Name, Object_ID, Explanation);"
                                "CREATE TABLE Link (Link_Object_ID, Object_ID);");
        m_world->dialogs.expect({.text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\n"
                                         u"EXPLANATION : "_s +
                                         standardDescription(errors::TableNotFound),
                                 .title = u"Quillon 障害対策部"_s});
        QVERIFY(!OpenDbFile(m_world->session, m_path));
        QVERIFY(!m_world->session.OpenDb);
        QVERIFY(!m_world->session.RsMain);
        QCOMPARE(m_world->session.MainLastFieldIndex, 0);
        const QStringList calls = m_world->calls.about(u"frmMainMenu"_s);
        QCOMPARE(calls.last(), u"frmMainMenu.setStatus 1 ファイルデータテーブルを展開中です。"_s);
        QVERIFY(!calls.contains(u"frmMainMenu.enableDatabaseMenus"_s));
    }

private:
    std::shared_ptr<RecordSet> openMain() const
    {
        return RecordSet::openTable(Database::open(m_path), schema::Main());
    }

    std::unique_ptr<TestWorld> m_world;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestForeignFiles)
#include "test_foreign_files.moc"
