#include "app/base/reporting.h"

#include "tests/support/compare_text.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// Dialogs whose every box fails in one way.
template <class Failure> class FailingDialogs : public ScriptedDialogs
{
public:
    explicit FailingDialogs(Failure failure) : m_failure(std::move(failure)) {}
    Answer messageBox(const MessageBox&) override { throw m_failure; }

private:
    Failure m_failure;
};

} // namespace

class TestReporting : public QObject
{
    Q_OBJECT

    CallLog calls;
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    Reporting reporting{dialogs, eventLog, clock};

    void expectReport(const QString& location, const QString& description)
    {
        dialogs.expect(MessageBox{.text = u"対処不能なエラーが発生しました。\r\nLOCATION : "_s + location +
                                          u"\r\nEXPLANATION : "_s + description,
                                  .title = u"Quillon 障害対策部"_s});
    }

private Q_SLOTS:
    void init()
    {
        eventLog.lines.clear();
        calls.take();
    }
    void cleanup() { QCOMPARE(dialogs.takeComplaints(), QStringList()); }

    void theOperationAtWorkIsTheOutermost()
    {
        QStringList seen;
        guarded(reporting, u"DeleteData"_s, [&] {
            guarded(reporting, u"GetDataName"_s, [&] { seen << reporting.operation; });
            seen << reporting.operation;
        });
        seen << reporting.operation;
        QCOMPARE(seen, QStringList({u"DeleteData"_s, u"DeleteData"_s, u""_s}));
    }

    void anEventWhileAnotherWaitsHasAnOperationOfItsOwn()
    {
        const OperationAtWork waiting(reporting, u"mnuDataLink_Click"_s);
        {
            const OperationAtWork event(reporting, u"mnuDataEntry_Click"_s,
                                        OperationAtWork::Inside::HasOwnName);
            QCOMPARE(reporting.operation, u"mnuDataEntry_Click"_s);
        }
        QCOMPARE(reporting.operation, u"mnuDataLink_Click"_s);
    }

    void aFailureThatCostsNothingIsLoggedWithoutABox()
    {
        logFailure(reporting, Error(errors::DiskFull, u"空きがありません。"_s), u"History"_s);
        QCOMPARE(eventLog.lines, QStringList(u"1999/12/31, 23:45, LOCATION : History, ErrorNumber : 61, "
                                             u"DESCRIPTION : 空きがありません。"_s));
    }

    void numberZeroShowsAndLogsNothing()
    {
        ReportError(reporting, 0, u"OpenDbFile"_s);
        QCOMPARE(eventLog.lines, QStringList());
    }

    void aFailureShowsThreeLinesAndLogsOne()
    {
        const QString description = standardDescription(3021);
        expectReport(u"OpenDbFile"_s, description);
        ReportError(reporting, 3021, u"OpenDbFile"_s);
        QCOMPARE(eventLog.lines.size(), 1);
        QVERIFY(compareText(
            eventLog.lines.first(),
            u"1999/12/31, 23:45, LOCATION : OpenDbFile, ErrorNumber : 3021, DESCRIPTION : "_s + description));
    }

    void theLineIsWrittenWhenTheBoxHasBeenAnswered()
    {
        const auto anHourPasses = [this] { clock.time = clock.time.addSecs(qint64{60} * 60); };
        expectReport(u"Main"_s, standardDescription(5));
        dialogs.meanwhile(anHourPasses);
        ReportError(reporting, 5, u"Main"_s);
        dialogs.expect(MessageBox{.text = u"対処不能なエラーが発生しました。\r\n説明：足りません。"_s,
                                  .title = u"Quillon 障害対策部"_s});
        dialogs.meanwhile(anHourPasses);
        reportUntrapped(reporting, Error(35600, u"足りません。"_s), u"Form_Load"_s);
        clock = FixedClock();
        QVERIFY(compareLines(
            calls.lines(),
            {messageBoxCall(u"対処不能なエラーが発生しました。\r\nLOCATION : Main\r\nEXPLANATION : "_s +
                            standardDescription(5)),
             u"log 2000/01/01, 00:45, LOCATION : Main, ErrorNumber : 5, DESCRIPTION : "_s +
                 standardDescription(5),
             messageBoxCall(u"対処不能なエラーが発生しました。\r\n説明：足りません。"_s),
             u"log 2000/01/01, 01:45, LOCATION : Form_Load, ErrorNumber : 35600, DESCRIPTION : 足りません。"_s}));
    }

    void aNegativeNumberIsAFailureLikeAnyOther()
    {
        expectReport(u"Main"_s, standardDescription(-2));
        ReportError(reporting, -2, u"Main"_s);
        QVERIFY(eventLog.lines.value(0).contains(u", ErrorNumber : -2, "_s));
    }

    void theLineIsWrittenEvenWhenTheBoxFails()
    {
        FailingDialogs failing{Error(errors::OutOfMemory)};
        Reporting broken{failing, eventLog, clock};
        ReportError(broken, 5, u"Main"_s);
        QCOMPARE(eventLog.lines.size(), 1);
    }

    void theLineIsWrittenEvenWhenThereIsNoMemoryForTheBox()
    {
        FailingDialogs failing{std::bad_alloc()};
        Reporting broken{failing, eventLog, clock};
        ReportError(broken, 7, u"Main"_s);
        QCOMPARE(eventLog.lines.size(), 1);
    }

    void aFailureOfTheLogIsIgnored()
    {
        struct FailingLog : EventLog {
            void write(const QString&) override { throw Error(errors::DiskFull); }
        } failing;
        Reporting broken{dialogs, failing, clock};
        expectReport(u"Main"_s, standardDescription(5));
        ReportError(broken, 5, u"Main"_s);
    }

    void guardedReportsUnderTheOperationsNameWhatTheFailureSays()
    {
        expectReport(u"DeleteData"_s, u"ここだけの説明"_s);
        int steps = 0;
        guarded(reporting, u"DeleteData"_s, [&] {
            ++steps;
            throw Error(errors::ObjectNotSet, u"ここだけの説明"_s);
        });
        QCOMPARE(steps, 1);
    }

    void aLackOfMemoryIsAFailureLikeOthers()
    {
        expectReport(u"DeleteData"_s, standardDescription(7));
        guarded(reporting, u"DeleteData"_s, [] { throw std::bad_alloc(); });
        qint32 number = 0;
        guardedBy([&](const Error& error) { number = error.number; }, [] { throw std::bad_alloc(); });
        QCOMPARE(number, errors::OutOfMemory);
    }

    void guardedIsSilentWithoutAFailure()
    {
        bool done = false;
        guarded(reporting, u"DeleteData"_s, [&] { done = true; });
        QVERIFY(done);
        QCOMPARE(eventLog.lines, QStringList());
    }

    void guardedLetsOtherExceptionsPass()
    {
        QVERIFY_THROWS_EXCEPTION(std::logic_error, guarded(reporting, u"DeleteData"_s, [] {
                                     throw std::logic_error("a mistake in the program");
                                 }));
    }

    void guardedByHandsTheErrorToItsOwnAnswer()
    {
        qint32 number = 0;
        guardedBy([&](const Error& error) { number = error.number; },
                  [] { throw Error(errors::FieldTooSmall); });
        QCOMPARE(number, 3163);
    }

    void anUntrappedFailureShowsItsOwnDescription()
    {
        dialogs.expect(
            MessageBox{.text = u"対処不能なエラーが発生しました。\r\n説明：カテゴリが足りません。"_s,
                       .title = u"Quillon 障害対策部"_s});
        reportUntrapped(reporting, Error(35600, u"カテゴリが足りません。"_s), u"Form_Load"_s);
        QVERIFY(compareText(eventLog.lines.value(0),
                            u"1999/12/31, 23:45, LOCATION : Form_Load, ErrorNumber : 35600, "
                            u"DESCRIPTION : カテゴリが足りません。"_s));
    }
};

QTEST_GUILESS_MAIN(TestReporting)
#include "test_reporting.moc"
