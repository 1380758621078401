#include "app/base/twips.h"

#include <QtTest>

using namespace quillon;

/// Lengths as they are written down, and on the screen.
class TestTwips : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pixelsAreWhole_data()
    {
        QTest::addColumn<double>("twips");
        QTest::addColumn<int>("pixels");
        QTest::newRow("none") << 0.0 << 0;
        QTest::newRow("less than half a pixel") << 7.0 << 0;
        QTest::newRow("half a pixel") << 7.5 << 1;
        QTest::newRow("a pixel") << 15.0 << 1;
        QTest::newRow("an inch") << 1440.0 << 96;
        QTest::newRow("the least width of the main window") << 8000.0 << 533;
        QTest::newRow("its least height") << 6000.0 << 400;
        QTest::newRow("the least size of a document's window") << 7000.0 << 467;
        QTest::newRow("to the left") << -30.0 << -2;
    }

    void pixelsAreWhole()
    {
        QFETCH(double, twips);
        QTEST(pixelsFromTwips(twips), "pixels");
    }

    void pixelHasFifteenTwips()
    {
        QCOMPARE(twipsFromPixels(0), 0.0);
        QCOMPARE(twipsFromPixels(1), 15.0);
        QCOMPARE(twipsFromPixels(533), 7995.0);
    }
};

QTEST_GUILESS_MAIN(TestTwips)
#include "test_twips.moc"
