#include "app/base/input_checks.h"

#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestInputChecks : public QObject
{
    Q_OBJECT

    ScriptedDialogs dialogs;
    MemoryEventLog eventLog;
    FixedClock clock;
    Reporting reporting{dialogs, eventLog, clock};

private Q_SLOTS:
    void cleanup() { QCOMPARE(dialogs.takeComplaints(), QStringList()); }

    void anEmptyRequiredFieldIsRefused()
    {
        dialogs.expect(
            MessageBox{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s});
        QVERIFY(!NullCheck(reporting, QString()));
    }

    void oneBlankFillsARequiredField() { QVERIFY(NullCheck(reporting, u" "_s)); }

    void aTextOfTheLimitIsAlreadyTooLong_data()
    {
        QTest::addColumn<QString>("unit");
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("limit");
        QTest::addColumn<bool>("fits");
        QTest::newRow("24 full-width of 25") << u"水"_s << 24 << 25.0 << true;
        QTest::newRow("25 full-width of 25") << u"水"_s << 25 << 25.0 << false;
        QTest::newRow("49 half-width of 25") << u"a"_s << 49 << 25.0 << true;
        QTest::newRow("50 half-width of 25") << u"a"_s << 50 << 25.0 << false;
        QTest::newRow("49 half-width katakana of 25") << u"ｱ"_s << 49 << 25.0 << true;
        QTest::newRow("50 half-width katakana of 25") << u"ｱ"_s << 50 << 25.0 << false;
        QTest::newRow("126 full-width of 127") << u"定"_s << 126 << 127.0 << true;
        QTest::newRow("127 full-width of 127") << u"定"_s << 127 << 127.0 << false;
        QTest::newRow("31999 full-width of 32000") << u"文"_s << 31999 << 32000.0 << true;
        QTest::newRow("32000 full-width of 32000") << u"文"_s << 32000 << 32000.0 << false;
        QTest::newRow("48 half-width of 24.5") << u"a"_s << 48 << 24.5 << true;
        QTest::newRow("49 half-width of 24.5") << u"a"_s << 49 << 24.5 << false;
        QTest::newRow("nothing of 0") << u"a"_s << 0 << 0.0 << false;
        QTest::newRow("nothing of 1") << u"a"_s << 0 << 1.0 << true;
    }

    void aTextOfTheLimitIsAlreadyTooLong()
    {
        QFETCH(QString, unit);
        QFETCH(int, count);
        QFETCH(double, limit);
        QFETCH(bool, fits);
        if (!fits) {
            dialogs.expect(MessageBox{.text = u"名称が最大入力値を超えています。最大入力値は全角"_s +
                                              QString::number(limit) + u"文字です。"_s,
                                      .title = u"Quillon システム監査部"_s});
        }
        QCOMPARE(MaxTextCheck(reporting, unit.repeated(count), limit, u"名称"_s), fits);
    }

    void numbersAreWrittenInTheirShortestForm()
    {
        QCOMPARE(shortestDecimal(25), u"25"_s);
        QCOMPARE(shortestDecimal(32000), u"32000"_s);
        QCOMPARE(shortestDecimal(24.5), u"24.5"_s);
        QCOMPARE(shortestDecimal(0), u"0"_s);
        QCOMPARE(shortestDecimal(-3), u"-3"_s);
    }
};

QTEST_GUILESS_MAIN(TestInputChecks)
#include "test_input_checks.moc"
