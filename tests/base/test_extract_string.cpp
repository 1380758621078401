#include "app/base/extract_string.h"

#include "tests/support/compare_text.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestExtractString : public QObject
{
    Q_OBJECT

    ScriptedDialogs dialogs;
    MemoryEventLog eventLog;
    FixedClock clock;
    Reporting reporting{dialogs, eventLog, clock};

    void expectOverflow()
    {
        dialogs.expect(MessageBox{.text = u"対処不能なエラーが発生しました。\r\nLOCATION : ExtractString"
                                          u"\r\nEXPLANATION : "_s +
                                          standardDescription(errors::Overflow),
                                  .title = u"Quillon 障害対策部"_s});
    }

private Q_SLOTS:
    void init() { eventLog.lines.clear(); }
    void cleanup() { QCOMPARE(dialogs.takeComplaints(), QStringList()); }

    void whatFollowsTheLastDelimiterIsReturned_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<QString>("rest");
        QTest::newRow("path") << u"C:\\Data\\DB.mdb"_s << u"\\"_s << u"DB.mdb"_s;
        QTest::newRow("one delimiter") << u"名前=値"_s << u"="_s << u"値"_s;
        QTest::newRow("delimiter first") << u"/a"_s << u"/"_s << u"a"_s;
        QTest::newRow("delimiter last") << u"a/b/"_s << u"/"_s << u""_s;
        QTest::newRow("only the delimiter") << u"/"_s << u"/"_s << u""_s;
        QTest::newRow("delimiters in a row") << u"a///b"_s << u"/"_s << u"b"_s;
        // sic: only one character of the delimiter is skipped.
        QTest::newRow("two characters") << u"a::b::c"_s << u"::"_s << u":c"_s;
        QTest::newRow("three characters") << u"aABCb"_s << u"ABC"_s << u"BCb"_s;
        // The search goes on one character later, so occurrences may overlap.
        QTest::newRow("overlapping") << u"aaa"_s << u"aa"_s << u"a"_s;
        QTest::newRow("exact comparison") << u"aXbxc"_s << u"X"_s << u"bxc"_s;
    }

    void whatFollowsTheLastDelimiterIsReturned()
    {
        QFETCH(QString, text);
        QFETCH(QString, delimiter);
        QFETCH(QString, rest);
        QVERIFY(compareText(ExtractString(reporting, text, delimiter), rest));
    }

    void withoutTheDelimiterTheUserIsTold()
    {
        dialogs.expect(MessageBox{.text = u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s,
                                  .title = u"特定文字列抽出処理"_s});
        QCOMPARE(ExtractString(reporting, u"DB.mdb"_s, u"\\"_s), QString());
    }

    void anEmptyTextHasNoDelimiter()
    {
        dialogs.expect(MessageBox{.text = u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s,
                                  .title = u"特定文字列抽出処理"_s});
        QCOMPARE(ExtractString(reporting, QString(), u"\\"_s), QString());
    }

    void delimitersMayStandUpToPosition32766_data()
    {
        QTest::addColumn<int>("before"); // characters before the delimiter
        QTest::addColumn<QString>("behind");
        QTest::newRow("with a rest") << 32765 << u"rest"_s;
        QTest::newRow("at the end") << 32765 << QString();
    }

    void delimitersMayStandUpToPosition32766()
    {
        QFETCH(int, before);
        QFETCH(QString, behind);
        const QString text = QString(before, u'a') + u'/' + behind;
        QCOMPARE(ExtractString(reporting, text, u"/"_s), behind);
    }

    void laterDelimitersOverflow_data()
    {
        QTest::addColumn<QString>("text");
        // The position itself still fits, but not the one from which the search goes on.
        QTest::newRow("at 32767") << QString(QString(32766, u'a') + u"/rest"_s);
        QTest::newRow("at 32767, the end") << QString(QString(32766, u'a') + u'/');
        QTest::newRow("a second one at 32767") << QString(u"/"_s + QString(32765, u'a') + u"/rest"_s);
        QTest::newRow("at 32768") << QString(QString(32767, u'a') + u"/rest"_s);
        QTest::newRow("a second one far behind") << QString(u"/"_s + QString(40000, u'a') + u"/rest"_s);
    }

    void laterDelimitersOverflow()
    {
        QFETCH(QString, text);
        expectOverflow();
        QCOMPARE(ExtractString(reporting, text, u"/"_s), QString());
        QCOMPARE(eventLog.lines.size(), 1);
        QVERIFY(eventLog.lines.first().contains(u"LOCATION : ExtractString, ErrorNumber : 6,"_s));
    }

    void aLongTextWithAnEarlyDelimiterIsReturnedWhole()
    {
        const QString rest(100000, u'a');
        QCOMPARE(ExtractString(reporting, u"b/"_s + rest, u"/"_s), rest);
    }

    void anEmptyDelimiterEndsTheSearchAtTheEndOfTheText()
    {
        QCOMPARE(ExtractString(reporting, u"abc"_s, QString()), QString());
    }
};

QTEST_GUILESS_MAIN(TestExtractString)
#include "test_extract_string.moc"
