#include "app/base/error.h"
#include "tests/support/errors_of.h"
#include "ui/widgets/wait_cursor.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <QtTest>

using namespace quillon;
using namespace quillon::testing;

namespace
{

bool showsWork()
{
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor != nullptr && cursor->shape() == Qt::WaitCursor;
}

} // namespace

class TestWaitCursor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QVERIFY(QApplication::overrideCursor() == nullptr); }

    void itIsShownWhileTheWorkLasts()
    {
        {
            const WaitCursor cursor;
            QVERIFY(showsWork());
        }
        QVERIFY(!showsWork());
        QCoreApplication::processEvents(); // nothing is left that would end another one's cursor
    }

    void itIsGoneAfterAFailure()
    {
        const qint32 number = errorOf([] {
            const WaitCursor cursor;
            throw Error(errors::DiskFull);
        });
        QCOMPARE(number, errors::DiskFull);
        QVERIFY(!showsWork());
    }

    void itIsGoneWhileABoxWaitsForAnAnswer()
    {
        const WaitCursor cursor;
        QVERIFY(showsWork());
        bool shownInTheBox = true;
        QEventLoop box;
        QTimer::singleShot(0, &box, [&] {
            shownInTheBox = showsWork();
            box.quit();
        });
        box.exec();
        QVERIFY(!shownInTheBox);
        QVERIFY(!showsWork());
    }

    void workWithinWorkLeavesTheCursorToTheOuterOne()
    {
        const WaitCursor outer;
        {
            const WaitCursor inner;
        }
        QVERIFY(showsWork());
    }

    void anEndedOneTakesNoOtherCursorAway()
    {
        QApplication::setOverrideCursor(Qt::CrossCursor);
        {
            const WaitCursor cursor;
            QCoreApplication::processEvents();
            QVERIFY(!showsWork());
        }
        QVERIFY(QApplication::overrideCursor() != nullptr);
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QApplication::restoreOverrideCursor();
    }
};

QTEST_MAIN(TestWaitCursor)
#include "test_wait_cursor.moc"
