// How far a long work is, and its end before it is done.
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "tests/support/compare_text.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using quillon::testing::compareText;

namespace
{

class Listener : public Progress
{
public:
    void at(qint64 done, qint64 whole) override { told << u"%1/%2"_s.arg(done).arg(whole); }
    bool cancelled() override { return told.size() == endsAfter; }

    QStringList told;
    int endsAfter = -1;
};

} // namespace

class TestProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTold()
    {
        Listener listener;
        advance(&listener, 1, 2);
        advance(&listener, 2, 2);
        QCOMPARE(listener.told, QStringList({u"1/2"_s, u"2/2"_s}));
    }

    void mayBeNobody() { advance(nullptr, 1, 2); }

    void whoeverEndsTheWorkIsToldThatNothingWasWritten()
    {
        Listener listener;
        listener.endsAfter = 2;
        advance(&listener, 1, 3);
        try {
            advance(&listener, 2, 3);
        } catch (const Refused& end) {
            QVERIFY(compareText(end.description, u"中止しました。何も書き込んでいません。"_s));
            QCOMPARE(end.number, errors::InvalidArgument);
            return;
        }
        QFAIL("the work goes on");
    }
};

QTEST_GUILESS_MAIN(TestProgress)
#include "test_progress.moc"
