#include "app/base/error.h"
#include "store/criteria.h"
#include "store/criteria_sql.h"
#include "store/filter_result.h"
#include "store/like_pattern.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <memory>
#include <random>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestCriteria : public QObject
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

    void patternsOnIdentifiersMatchAsTheyDoOneByOne()
    {
        // Beginnings of every kind: letters, the codes after them, other scripts, half characters, wildcards.
        const QStringList pieces = {u"A"_s,
                                    u"a"_s,
                                    u"-"_s,
                                    u"["_s,
                                    u"["_s,
                                    u"]"_s,
                                    u"*"_s,
                                    u"?"_s,
                                    u"#"_s,
                                    u"1"_s,
                                    u"漢"_s,
                                    u"Ā"_s,
                                    u"𠮷"_s,
                                    QString(QChar(u'\uD7FF')),
                                    QString(QChar(u'\uFFFF')),
                                    QString(QChar(u'\uE000'))};
        std::mt19937 random(7);
        const auto text = [&](int most) {
            QString made;
            for (auto size = random() % static_cast<unsigned>(most + 1); size > 0; --size)
                made += pieces[static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size()))];
            return made;
        };
        QStringList identifiers;
        for (int i = 0; i < 300; ++i) {
            identifiers << text(5);
            TestWorld::addRow(m_world->session.RsCategory, {identifiers.last(), u"M-%1"_s.arg(i)});
        }
        int found = 0;
        for (int round = 0; round < 2000; ++round) {
            const QString pattern = text(3) + u'*';
            const LikePattern one(pattern, LikePattern::Comparing::Exactly);
            QStringList expected;
            for (qsizetype i = 0; i < identifiers.size(); ++i) {
                if (one.matches(identifiers[i]))
                    expected << u"M-%1"_s.arg(i);
            }
            QStringList actual;
            m_world->session.RsCategory->filtered(u"Category_ID Like '"_s + pattern + u"'"_s)
                ->forEachRow({1}, [&](const RecordSet::Row& row) { actual << row.text(0).toString(); });
            QCOMPARE(actual, expected);
            found += static_cast<int>(actual.size());
        }
        QVERIFY(found > 2000);
    }

    void wrongTextsAreRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        const int syntax = errors::CriteriaSyntax;
        const int field = errors::UnknownField;
        QTest::newRow("nothing") << u""_s << syntax;
        QTest::newRow("blanks") << u"  \t\r\n"_s << syntax;
        QTest::newRow("field alone") << u"Name"_s << syntax;
        QTest::newRow("no value") << u"Name ="_s << syntax;
        QTest::newRow("no field") << u"= 'a'"_s << syntax;
        QTest::newRow("no operator") << u"Name 'a'"_s << syntax;
        QTest::newRow("value alone") << u"'a'"_s << syntax;
        QTest::newRow("bare word as value") << u"Name = a"_s << syntax;
        QTest::newRow("number as value") << u"Name = 1"_s << syntax;
        QTest::newRow("field as value") << u"Name = Name"_s << syntax;
        QTest::newRow("double quotes") << u"Name = \"a\""_s << syntax;
        QTest::newRow("quote missing") << u"Name = 'a"_s << syntax;
        QTest::newRow("quote too many") << u"Name = 'a''"_s << syntax;
        QTest::newRow("doubled quote") << u"Name = 'a''b'"_s << syntax;
        QTest::newRow("quote inside") << u"Name = 'it's'"_s << syntax;
        QTest::newRow("quote inside, unknown field") << u"Nome = 'it's'"_s << syntax;
        QTest::newRow("parentheses") << u"(Name = 'a')"_s << syntax;
        QTest::newRow("not") << u"NOT Name = 'a'"_s << syntax;
        QTest::newRow("other comparison") << u"Name <> 'a'"_s << syntax;
        QTest::newRow("double equals") << u"Name == 'a'"_s << syntax;
        QTest::newRow("brackets around the field") << u"[Name] = 'a'"_s << syntax;
        QTest::newRow("semicolon") << u"Name = 'a';"_s << syntax;
        QTest::newRow("second statement") << u"Name = 'a'; DELETE FROM Main"_s << syntax;
        QTest::newRow("comment") << u"Name = 'a' -- x"_s << syntax;
        QTest::newRow("union") << u"Name = 'a' UNION SELECT 1"_s << syntax;
        QTest::newRow("parameter") << u"Name = ?"_s << syntax;
        QTest::newRow("zero") << QString(u"Name = 'a'"_s + QChar::Null) << syntax;
        QTest::newRow("dangling and") << u"Name = 'a' AND"_s << syntax;
        QTest::newRow("leading or") << u"OR Name = 'a'"_s << syntax;
        QTest::newRow("two joints") << u"Name = 'a' AND OR Name = 'b'"_s << syntax;
        QTest::newRow("two without a joint") << u"Name = 'a' Name = 'b'"_s << syntax;
        QTest::newRow("keyword as field") << u"Like = 'a'"_s << syntax;
        QTest::newRow("like run together") << u"NameLike'a'"_s << syntax;
        QTest::newRow("unknown field") << u"Nome = 'a'"_s << field;
        QTest::newRow("field in another case") << u"name = 'a'"_s << field;
        QTest::newRow("field of another table") << u"Category_ID = 'A'"_s << field;
        QTest::newRow("row number") << u"rowid = '1'"_s << field;
        QTest::newRow("unknown field further on") << u"Name = 'a' OR Nome Like 'b'"_s << field;
    }
    void wrongTextsAreRefused()
    {
        QFETCH(QString, text);
        QTEST(errorOf([&] { parseCriteria(text, schema::Main()); }), "number");
    }

    void criteriaSelectTheirRows_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("selected"); // the first characters of the explanations
        QTest::newRow("equal") << u"Name ='水'"_s << u"1"_s;
        QTest::newRow("equal, other spacing") << u"\r\n Name\t=   '水'  "_s << u"1"_s;
        QTest::newRow("equal without blanks") << u"Name='水'"_s << u"1"_s;
        QTest::newRow("equal is exact in case") << u"Name = 'ABC'"_s << u"2"_s;
        QTest::newRow("equal is exact in width") << u"Name = 'ＡＢＣ'"_s << u"3"_s;
        QTest::newRow("equal is exact in kana") << u"Name = 'ガス'"_s << u"4"_s;
        QTest::newRow("equal knows no wildcards") << u"Name = '*'"_s << u""_s;
        QTest::newRow("equal with blanks inside") << u"Name = ' a b '"_s << u"6"_s;
        QTest::newRow("equal nothing") << u"Name = ''"_s << u"7"_s;
        QTest::newRow("like reads as a reader") << u"Name Like 'abc'"_s << u"23"_s;
        QTest::newRow("like, half-width voiced kana") << u"Name like '*ｶﾞ*'"_s << u"45"_s;
        QTest::newRow("like, keyword in capitals") << u"Name LIKE '*b*'"_s << u"236"_s;
        QTest::newRow("like without blanks") << u"Name Like'水*'"_s << u"1"_s;
        QTest::newRow("like on the explanation") << u"Explanation Like '[12]*'"_s << u"12"_s;
        QTest::newRow("like everything") << u"Name Like '*'"_s << u"1234567"_s;
        QTest::newRow("percent is a letter") << u"Name Like '%'"_s << u""_s;
        QTest::newRow("like on identifiers is exact") << u"Object_ID Like 'm-*'"_s << u"7"_s;
        QTest::newRow("like on identifiers") << u"Object_ID Like 'M-991231-00#'"_s << u"123456"_s;
        QTest::newRow("or") << u"Name = '水' OR Name = 'ガス'"_s << u"14"_s;
        QTest::newRow("or without blanks") << u"Name='水'or Name='ガス'"_s << u"14"_s;
        QTest::newRow("and") << u"Name Like 'abc' AND Explanation Like '3*'"_s << u"3"_s;
        QTest::newRow("and binds tighter, after")
            << u"Name = '水' OR Name Like 'abc' AND Explanation Like '3*'"_s << u"13"_s;
        QTest::newRow("and binds tighter, before")
            << u"Name Like 'abc' AND Explanation Like '3*' OR Name = '水'"_s << u"13"_s;
        QTest::newRow("keywords inside a text") << u"Name = 'x OR Name = y'"_s << u""_s;
        QTest::newRow("SQL inside a text") << u"Name = 'x\"); DELETE FROM Main; --'"_s << u""_s;
    }
    void criteriaSelectTheirRows()
    {
        QFETCH(QString, text);
        const QStringList names = {u"水"_s, u"ABC"_s, u"ＡＢＣ"_s, u"ガス"_s, u"ｶﾞｽ"_s, u" a b "_s, u""_s};
        for (int i = 0; i < names.size(); ++i) {
            const QString number = QString::number(i + 1);
            const QString identifier = (i == 6 ? u"m-991231-00"_s : u"M-991231-00"_s) + number;
            TestWorld::addRow(m_world->session.RsMain, {names[i], identifier, number + u". row"_s});
        }
        const auto rows = GetFilterResult(m_world->session.reporting, m_world->session.RsMain, text);
        QVERIFY(rows);
        QString selected;
        rows->forEachRow({2}, [&](const RecordSet::Row& row) { selected += row.text(0).front(); });
        QTEST(selected, "selected");
        QCOMPARE(m_world->session.RsMain->recordCount(), 7);
    }

    void aCategoryIsNoRelativeOfItsSmallLetter()
    {
        TestWorld::addRow(m_world->session.RsCategory, {u"a-B"_s, u"M-991231-001"_s});
        TestWorld::addRow(m_world->session.RsCategory, {u"A-B"_s, u"M-991231-002"_s});
        const auto rows =
            m_world->session.RsCategory->filtered(u"Category_ID = 'A' OR Category_ID Like 'A-*'"_s);
        QCOMPARE(TestWorld::rowsOf(rows), QStringList(u"A-B|M-991231-002"_s));
    }

    void identifiersAreFoundByABeginningOfAnyCharacters()
    {
        const auto& categories = m_world->session.RsCategoryID;
        // The bytes of some are at their end; the next character begins with other ones.
        for (const QString& letter :
             {u"A"_s, u"þ"_s, u"ÿ"_s, u"Ā"_s, u"ǿ"_s, u"ヾ"_s, u"ヿ"_s, u"\u3100"_s}) {
            TestWorld::addRow(categories, {letter, u""_s});
            TestWorld::addRow(categories, {letter + u"-ÿ"_s, u""_s});
            TestWorld::addRow(categories, {letter + u"-ÿ-A"_s, u""_s});
        }
        for (const QString& letter : {u"A"_s, u"ÿ"_s, u"ǿ"_s, u"ヿ"_s}) {
            QCOMPARE(categories->filtered(u"Category_ID Like '"_s + letter + u"*'"_s)->recordCount(), 3);
            QCOMPARE(categories->filtered(u"Category_ID Like '"_s + letter + u"-*'"_s)->recordCount(), 2);
            QCOMPARE(categories->filtered(u"Category_ID Like '"_s + letter + u"-ÿ*'"_s)->recordCount(), 2);
        }
    }

    void nullMatchesNothing()
    {
        m_world->session.OpenDb->connection().execute(
            u"INSERT INTO Main (Object_ID) VALUES ('M-991231-001')"_s);
        TestWorld::addRow(m_world->session.RsMain, {QString(), u"M-991231-002"_s, u""_s});
        QCOMPARE(m_world->session.RsMain->filtered(u"Name Like '*'"_s)->recordCount(), 1);
        QCOMPARE(m_world->session.RsMain->filtered(u"Name = ''"_s)->recordCount(), 1);
    }

    void longChainsAreAnsweredOrRefused_data()
    {
        QTest::addColumn<QString>("piece");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("number");
        QTest::newRow("2,000 alternatives") << u" OR Name = 'x'"_s << 1999 << 0;
        QTest::newRow("2,000 alternative patterns") << u" OR Name Like '*x*'"_s << 1999 << 0;
        QTest::newRow("2,000 conditions") << u" AND Name Like '水'"_s << 1999 << 0;
        QTest::newRow("2,000 equal conditions") << u" AND Name = '水'"_s << 1999 << 0;
        QTest::newRow("one more") << u" OR Name = 'x'"_s << 2000 << int(errors::CriteriaSyntax);
        QTest::newRow("100,000 alternatives") << u" OR Name = 'x'"_s << 99999 << int(errors::CriteriaSyntax);
        QTest::newRow("100,000 parentheses") << u"("_s << 100000 << int(errors::CriteriaSyntax);
        QTest::newRow("100,000 quotes") << u"'"_s << 100000 << int(errors::CriteriaSyntax);
    }
    void longChainsAreAnsweredOrRefused()
    {
        QFETCH(QString, piece);
        QFETCH(int, count);
        QFETCH(int, number);
        TestWorld::addRow(m_world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u""_s});
        RecordSet& rows = *m_world->session.RsMain;
        QCOMPARE(errorOf([&] { rows.findFirst(u"Name = '水'"_s + piece.repeated(count)); }), number);
        if (number == 0)
            QCOMPARE(rows.field(1), u"M-991231-001"_s);
    }

    void aTextOfAMillionCharactersIsAnswered()
    {
        TestWorld::addRow(m_world->session.RsRefDoc, {u"a"_s, u"R-991231-001"_s, QString(1000000, u'水')});
        RecordSet& rows = *m_world->session.RsRefDoc;
        rows.findFirst(u"Explanation = '"_s + QString(1000000, u'水') + u"'"_s);
        QVERIFY(rows.hasCurrentRow());
        rows.findFirst(u"Explanation Like '*"_s + QString(999999, u'水') + u"火*'"_s);
        QVERIFY(!rows.hasCurrentRow());
    }

    void noiseIsNeverMoreThanRefused()
    {
        std::mt19937 random(19991231);
        const QStringList pieces = {u"Name"_s, u"Object_ID"_s, u" "_s,      u"="_s,  u"'"_s,  u"Like"_s,
                                    u"AND"_s,  u" OR "_s,      u"'a'"_s,    u"'*"_s, u"["_s,  u"]"_s,
                                    u"(?)"_s,  u"水"_s,        u"\""_s,     u";"_s,  u"--"_s, u"%"_s,
                                    u"\\"_s,   u" = 'a'"_s,    u"Name ='"_s};
        std::uniform_int_distribution<qsizetype> piece(0, pieces.size() - 1);
        std::uniform_int_distribution<int> length(1, 12);
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        int answered = 0;
        for (int round = 0; round < 20000; ++round) {
            QString text;
            for (int i = length(random); i > 0; --i)
                text += pieces[piece(random)];
            const qint32 number = errorOf([&] { m_world->session.RsMain->findFirst(text); });
            QVERIFY2(number == 0 || number == errors::CriteriaSyntax || number == errors::UnknownField,
                     qPrintable(text));
            answered += number == 0 ? 1 : 0;
        }
        QVERIFY(answered > 0);
        QCOMPARE(m_world->session.RsMain->recordCount(), 1);
    }

    void identifierLookUpsUseTheUniqueIndex_data()
    {
        QTest::addColumn<QString>("criteria");
        QTest::addColumn<QString>("tableName");
        QTest::addColumn<QString>("plan");
        QTest::newRow("definition") << u"Object_ID ='M-991231-001'"_s << u"Main"_s
                                    << u"sqlite_autoindex_Main_1 (Object_ID=?)"_s;
        QTest::newRow("link") << u"Object_ID ='a' AND Link_Object_ID = 'b'"_s << u"Link"_s
                              << u"sqlite_autoindex_Link_1 (Object_ID=? AND Link_Object_ID=?)"_s;
        QTest::newRow("category") << u"Category_ID ='A'"_s << u"Category_ID"_s
                                  << u"sqlite_autoindex_Category_ID_1 (Category_ID=?)"_s;
        QTest::newRow("either of two")
            << u"Category_ID ='A' AND Object_ID = 'M' OR Category_ID = 'B' AND Object_ID = 'M'"_s
            << u"Category"_s << u"sqlite_autoindex_Category_1 (Category_ID=? AND Object_ID=?)"_s;
    }
    void identifierLookUpsUseTheUniqueIndex()
    {
        QFETCH(QString, criteria);
        QFETCH(QString, tableName);
        QFETCH(QString, plan);
        for (const TableSchema* table : schema::all()) {
            if (table->name != tableName)
                continue;
            const QString condition = compileCriteria(parseCriteria(criteria, *table), *table).condition;
            const auto statement = m_world->session.OpenDb->connection().prepareOwn(
                u"EXPLAIN QUERY PLAN SELECT rowid FROM \""_s + tableName + u"\" WHERE "_s + condition +
                u" ORDER BY rowid LIMIT 1"_s);
            QString actual;
            while (statement->step())
                actual += statement->text(3).toString() + u'\n';
            QVERIFY2(actual.contains(plan), qPrintable(actual));
        }
    }

private:
    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCriteria)
#include "test_criteria.moc"
