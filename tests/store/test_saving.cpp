#include "app/base/error.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QFile>
#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestSaving : public QObject
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

    void everyTextComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << u""_s;
        QTest::newRow("leading zeros") << u"0012"_s;
        QTest::newRow("exponent") << u"1e5"_s;
        QTest::newRow("hexadecimal") << u"0x1F"_s;
        QTest::newRow("decimal point") << u"1.50"_s;
        QTest::newRow("infinite number") << u"9e999"_s;
        QTest::newRow("blank in front") << u" 1"_s;
        QTest::newRow("blanks alone") << u"   "_s;
        QTest::newRow("full-width blank") << u"　水　"_s;
        QTest::newRow("line breaks") << u"a\r\nb\nc\rd"_s;
        QTest::newRow("quotes") << u"it's \"so\" `x` [y]"_s;
        QTest::newRow("SQL") << u"'); DROP TABLE RefDoc; --"_s;
        QTest::newRow("tags") << u"<b>水</b> &amp; &"_s;
        QTest::newRow("zeros") << u"a\0b\0"_s;
        QTest::newRow("zero in front") << u"\0x"_s;
        QTest::newRow("half-width kana") << u"ｶﾞｷﾞ ﾃﾞｰﾀ"_s;
        QTest::newRow("combining mark") << u"か\u3099"_s;
        QTest::newRow("emoji") << u"😀👨‍👩‍👧🇯🇵"_s;
        QTest::newRow("beyond the first plane") << u"𠮷野家"_s;
        QTest::newRow("high surrogate alone") << QString(u"a"_s + QChar(0xD83D) + u'b');
        QTest::newRow("low surrogate alone") << QString(u"a"_s + QChar(0xDE00) + u'b');
        QTest::newRow("surrogates reversed") << QString(QString(QChar(0xDE00)) + QChar(0xD83D));
        QTest::newRow("no characters") << QString(u"\uFFFF"_s + QChar(0xFDD0));
        QTest::newRow("byte order mark") << u"\uFEFFx"_s;
        QTest::newRow("two byte order marks") << u"\uFEFF\uFEFFx"_s;
        QTest::newRow("byte order mark alone") << u"\uFEFF"_s;
        QTest::newRow("swapped byte order mark") << QString(QString(QChar(0xFFFE)) + u"x"_s);
        QTest::newRow("100,000 characters") << u"水とABC。\r\n"_s.repeated(12500);
        QTest::newRow("one page and a bit") << QString(2049, u'水');
    }
    void everyTextComesBackAsItWas()
    {
        QFETCH(QString, text);
        const auto rows = m_world->session.RsRefDoc;
        TestWorld::addRow(rows, {u"n"_s, u"R-991231-001"_s, text});
        rows->moveFirst();
        QVERIFY(compareText(rows->field(2), text));
        TestWorld::addRow(rows, {u"n"_s, u"R-991231-002"_s, u"x"_s});
        rows->moveLast();
        rows->edit();
        rows->setField(2, text);
        rows->update();
        // A search compares to the last unit, too.
        if (!text.contains(u'\'')) {
            rows->findFirst(u"Explanation = '"_s + text + u"' AND Object_ID = 'R-991231-002'"_s);
            QVERIFY(rows->hasCurrentRow());
        }
        m_world->openDatabase(m_world->session.OpenDb->path());
        for (m_world->session.RsRefDoc->moveFirst(); !m_world->session.RsRefDoc->endOfFile();
             m_world->session.RsRefDoc->moveNext())
            QVERIFY(compareText(m_world->session.RsRefDoc->field(2), text));
    }

    void anIdentifierOfDigitsStaysText()
    {
        TestWorld::addRow(m_world->session.RsMain, {u"0012"_s, u"0012"_s, u"1e5"_s});
        TestWorld::addRow(m_world->session.RsMain, {u"12"_s, u"12"_s, u"100000"_s});
        m_world->session.RsMain->findFirst(u"Object_ID ='12'"_s);
        QCOMPARE(m_world->session.RsMain->field(0), u"12"_s);
        QCOMPARE(m_world->session.RsMain->filtered(u"Explanation = '1e5'"_s)->recordCount(), 1);
    }

    void anEmptyTextIsNoNull()
    {
        TestWorld::addRow(m_world->session.RsMain, {QString(), u"M-991231-001"_s, u""_s});
        int nulls = 0;
        m_world->session.RsMain->forEachRow({0, 1, 2}, [&](const RecordSet::Row& row) {
            for (int i = 0; i < 3; ++i)
                nulls += row.isNull(i) ? 1 : 0;
        });
        QCOMPARE(nulls, 0);
    }

    void fieldsThatWereNotSetAreNullAndReadAsEmpty()
    {
        const auto rows = m_world->session.RsMain;
        rows->addNew();
        rows->setField(1, u"M-991231-001"_s);
        rows->update();
        rows->addNew();
        rows->update();
        QVERIFY(m_world->session.RsMain->recordCount() == 2);
        rows->moveLast();
        for (int i = 0; i < 3; ++i)
            QCOMPARE(rows->field(i), QString());
        bool null = false;
        rows->forEachRow({0},
                         [&](const RecordSet::Row& row) { null = row.isNull(0) && row.text(0).isEmpty(); });
        QVERIFY(null);
    }

    void textsWiderThanTheirFieldAreRefused_data()
    {
        QTest::addColumn<QString>("tableName");
        QTest::addColumn<int>("field");
        QTest::addColumn<int>("width");
        for (const TableSchema* table : schema::all()) {
            for (std::size_t i = 0; i < table->fields.size(); ++i) {
                if (table->fields[i].width > 0) {
                    const QByteArray name = (table->name + u'.' + table->fields[i].name).toUtf8();
                    QTest::newRow(name.constData())
                        << table->name << static_cast<int>(i) << table->fields[i].width;
                }
            }
        }
    }
    void textsWiderThanTheirFieldAreRefused()
    {
        QFETCH(QString, tableName);
        QFETCH(int, field);
        QFETCH(int, width);
        const auto rows = setOf(tableName);
        rows->addNew();
        rows->setField(field, QString(width, u'水'));
        rows->update();
        rows->addNew();
        rows->setField(field, QString(width + 1, u'a'));
        QCOMPARE(errorOf([&] { rows->update(); }), errors::FieldTooSmall);
        QCOMPARE(rows->recordCount(), 1);
        rows->moveFirst();
        rows->edit();
        rows->setField(field, QString(width + 1, u'a'));
        QCOMPARE(errorOf([&] { rows->update(); }), errors::FieldTooSmall);
        QCOMPARE(rows->field(field), QString(width, u'水'));
        // What was begun is gone with the failure.
        QCOMPARE(errorOf([&] { rows->update(); }), errors::NoCurrentRecord);
    }

    void widthsAreThoseOfTheDesign()
    {
        QStringList widths;
        for (const TableSchema* table : schema::all()) {
            for (const FieldSchema& field : table->fields)
                widths << table->name + u'.' + field.name + u' ' + QString::number(field.width);
        }
        const QStringList expected = {u"Main.Name 50"_s,
                                      u"Main.Object_ID 12"_s,
                                      u"Main.Explanation 255"_s,
                                      u"RefDoc.Name 50"_s,
                                      u"RefDoc.Object_ID 12"_s,
                                      u"RefDoc.Explanation 0"_s,
                                      u"RefFile.Name 50"_s,
                                      u"RefFile.Object_ID 12"_s,
                                      u"RefFile.Explanation 255"_s,
                                      u"OpenApp.AppName 50"_s,
                                      u"OpenApp.Path 255"_s,
                                      u"Link.Link_Object_ID 12"_s,
                                      u"Link.Object_ID 12"_s,
                                      u"Category_ID.Category_ID 50"_s,
                                      u"Category_ID.Name 50"_s,
                                      u"Category.Category_ID 50"_s,
                                      u"Category.Object_ID 50"_s};
        QCOMPARE(widths, expected);
    }

    void widthsMayBeExceededOnPurpose()
    {
        const auto rows = m_world->session.RsMain;
        rows->addNew();
        rows->setField(data_field::Name, QString(51, u'水'));
        rows->update(RecordSet::Widths::Exceeded);
        rows->moveFirst();
        QCOMPARE(rows->field(data_field::Name), QString(51, u'水'));
    }

    void widthsCountCodeUnits()
    {
        const auto rows = m_world->session.RsMain;
        TestWorld::addRow(rows, {u"😀"_s.repeated(25), u"M-991231-001"_s, u""_s});
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(rows, {u"😀"_s.repeated(25) + u'a', u"M-991231-002"_s, u""_s});
                 }),
                 errors::FieldTooSmall);
        QCOMPARE(rows->recordCount(), 1);
    }

    void duplicatesAreRefused_data()
    {
        QTest::addColumn<QString>("tableName");
        QTest::addColumn<QStringList>("row");
        QTest::addColumn<QStringList>("second");
        QTest::addColumn<int>("number");
        const int duplicate = errors::DuplicateKey;
        const QStringList id = {u"a"_s, u"X-991231-001"_s, u"1"_s};
        const QStringList same = {u"b"_s, u"X-991231-001"_s, u"2"_s};
        QTest::newRow("Main") << u"Main"_s << id << same << duplicate;
        QTest::newRow("RefDoc") << u"RefDoc"_s << id << same << duplicate;
        QTest::newRow("RefFile") << u"RefFile"_s << id << same << duplicate;
        QTest::newRow("Main, other case")
            << u"Main"_s << id << QStringList{u"a"_s, u"x-991231-001"_s, u"1"_s} << 0;
        QTest::newRow("OpenApp") << u"OpenApp"_s << QStringList{u"a"_s, u"b"_s} << QStringList{u"a"_s, u"b"_s}
                                 << 0;
        QTest::newRow("Link") << u"Link"_s << QStringList{u"a"_s, u"b"_s} << QStringList{u"a"_s, u"b"_s}
                              << duplicate;
        QTest::newRow("Link the other way")
            << u"Link"_s << QStringList{u"a"_s, u"b"_s} << QStringList{u"b"_s, u"a"_s} << 0;
        QTest::newRow("Category_ID") << u"Category_ID"_s << QStringList{u"A"_s, u"x"_s}
                                     << QStringList{u"A"_s, u"y"_s} << duplicate;
        QTest::newRow("Category") << u"Category"_s << QStringList{u"A"_s, u"x"_s}
                                  << QStringList{u"A"_s, u"x"_s} << duplicate;
        QTest::newRow("Category, other datum")
            << u"Category"_s << QStringList{u"A"_s, u"x"_s} << QStringList{u"A"_s, u"y"_s} << 0;
    }
    void duplicatesAreRefused()
    {
        QFETCH(QString, tableName);
        QFETCH(QStringList, row);
        QFETCH(QStringList, second);
        QFETCH(int, number);
        const auto rows = setOf(tableName);
        TestWorld::addRow(rows, row);
        QCOMPARE(errorOf([&] { TestWorld::addRow(rows, second); }), number);
        QCOMPARE(rows->recordCount(), number == 0 ? 2 : 1);
    }

    void changingARowIntoADuplicateIsRefused()
    {
        const auto rows = m_world->session.RsMain;
        TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s, u""_s});
        TestWorld::addRow(rows, {u"b"_s, u"M-991231-002"_s, u""_s});
        rows->moveLast();
        rows->edit();
        rows->setField(1, u"M-991231-001"_s);
        QCOMPARE(errorOf([&] { rows->update(); }), errors::DuplicateKey);
        QCOMPARE(TestWorld::rowsOf(rows), QStringList({u"a|M-991231-001|"_s, u"b|M-991231-002|"_s}));
    }

    void aCategoryRowTakesALongIdentifierAndOtherTablesDoNot()
    {
        TestWorld::addRow(m_world->session.RsCategory, {u"A"_s, QString(50, u'x')});
        QCOMPARE(m_world->session.RsCategory->recordCount(), 1);
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-1000"_s, u""_s});
                 }),
                 errors::FieldTooSmall);
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(m_world->session.RsLink, {u"M-991231-1000"_s, u"b"_s});
                 }),
                 errors::FieldTooSmall);
    }

    void aTransactionIsAllOrNothing()
    {
        const auto rows = m_world->session.RsMain;
        sqlite::Connection& connection = m_world->session.OpenDb->connection();
        {
            sqlite::Transaction outer(connection);
            TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s, u""_s});
            sqlite::Transaction inner(connection);
            TestWorld::addRow(rows, {u"b"_s, u"M-991231-002"_s, u""_s});
            inner.commit();
            QVERIFY(connection.inTransaction());
        }
        QVERIFY(!connection.inTransaction());
        QCOMPARE(rows->recordCount(), 0);
        {
            sqlite::Transaction transaction(connection);
            TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s, u""_s});
            // A refused row does not undo the others.
            QCOMPARE(errorOf([&] {
                         TestWorld::addRow(rows, {u"b"_s, u"M-991231-001"_s, u""_s});
                     }),
                     errors::DuplicateKey);
            transaction.commit();
        }
        m_world->openDatabase(m_world->session.OpenDb->path());
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"a|M-991231-001|"_s));
    }

    void aFullDiskRefusesTheRowAndLeavesTheFileAsItWas()
    {
        const auto documents = m_world->session.RsRefDoc;
        TestWorld::addRow(documents, {u"a"_s, u"R-991231-001"_s, u"水"_s});
        fillDisk();
        const QByteArray before = fileBytes();
        const QString large(10000, u'水');
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(documents, {u"b"_s, u"R-991231-002"_s, large});
                 }),
                 errors::DiskFull);
        documents->moveFirst();
        documents->edit();
        documents->setField(2, large);
        QCOMPARE(errorOf([&] { documents->update(); }), errors::DiskFull);
        QCOMPARE(fileBytes(), before);
        QVERIFY(!m_world->session.OpenDb->connection().inTransaction());
        QCOMPARE(TestWorld::rowsOf(documents), QStringList(u"a|R-991231-001|水"_s));
        // What needs no more room can still be saved, and everything once there is room again.
        documents->edit();
        documents->setField(2, u"火"_s);
        documents->update();
        QCOMPARE(TestWorld::rowsOf(documents), QStringList(u"a|R-991231-001|火"_s));
        emptyDisk();
        TestWorld::addRow(documents, {u"b"_s, u"R-991231-002"_s, large});
        QCOMPARE(documents->recordCount(), 2);
    }

    void aDiskThatIsFullInTheMiddleUndoesTheWholeTransaction()
    {
        fillDisk();
        const QByteArray before = fileBytes();
        {
            sqlite::Transaction transaction(m_world->session.OpenDb->connection());
            TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
            QCOMPARE(errorOf([&] {
                         TestWorld::addRow(m_world->session.RsRefDoc,
                                           {u"b"_s, u"R-991231-001"_s, QString(10000, u'水')});
                     }),
                     errors::DiskFull);
            // Nobody may take this for a success.
            QCOMPARE(errorOf([&] { transaction.commit(); }), errors::DiskFull);
        }
        QCOMPARE(fileBytes(), before);
        QCOMPARE(m_world->session.RsMain->recordCount(), 0);
        QCOMPARE(m_world->session.RsRefDoc->recordCount(), 0);
    }

private:
    std::shared_ptr<RecordSet> setOf(const QString& tableName) const
    {
        for (const TableSchema* table : schema::all()) {
            if (table->name == tableName)
                return RecordSet::openTable(m_world->session.OpenDb, *table);
        }
        return nullptr;
    }

    /// From now on the file may not grow by a single page.
    void fillDisk() { m_world->session.OpenDb->connection().execute(u"PRAGMA max_page_count = 1"_s); }
    void emptyDisk() { m_world->session.OpenDb->connection().execute(u"PRAGMA max_page_count = 1000"_s); }
    QByteArray fileBytes() const
    {
        QFile file(m_world->session.OpenDb->path());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read the file");
        return file.readAll();
    }

    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestSaving)
#include "test_saving.moc"
