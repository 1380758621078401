// The progress bar of the main window: when it is shown, and what it counts.
#include "tests/main/main_window_fixture.h"
#include "ui/main/fill_progress.h"

#include <QProgressBar>
#include <QScreen>

#include <limits>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// Writes down when a bar appears, with its range, and when it disappears.
class BarWatcher : public QObject
{
public:
    explicit BarWatcher(QProgressBar& bar) : m_bar(bar) { bar.installEventFilter(this); }
    QStringList take() { return std::exchange(m_seen, {}); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            m_seen << u"%1 to %2"_s.arg(m_bar.minimum()).arg(m_bar.maximum());
        else if (event->type() == QEvent::Hide)
            m_seen << u"hidden at %1"_s.arg(m_bar.value());
        return QObject::eventFilter(watched, event);
    }

private:
    QProgressBar& m_bar;
    QStringList m_seen;
};

} // namespace

class TestFillProgress : public MainWindowFixture
{
    Q_OBJECT

    QProgressBar* bar = nullptr;
    FixedClock clock;

    void openAndWatch()
    {
        makeWindow();
        openSampleDatabase();
        bar = WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s);
    }

private Q_SLOTS:
    void cleanup()
    {
        if (world)
            endWorld();
    }

    void barIsShownFromTheStartToTheEnd()
    {
        QProgressBar shown;
        shown.hide();
        FillProgress progress(shown, clock);
        progress.start(1000);
        QVERIFY(shown.isVisible());
        QCOMPARE(shown.minimum(), 0);
        QCOMPARE(shown.maximum(), 1000);
        QCOMPARE(shown.value(), 0);
        for (int row = 0; row < 1000; ++row)
            progress.advance();
        QVERIFY(shown.isVisible());
        progress.finish();
        QVERIFY(!shown.isVisible());
        QCOMPARE(shown.value(), 1000);
    }

    void barLeavesNothingOnTheScreen()
    {
        QWidget around;
        around.resize(200, 50);
        QProgressBar shown(&around);
        shown.setTextVisible(false);
        shown.setGeometry(0, 0, 200, 50);
        shown.hide();
        around.show();
        const auto onScreen = [&] {
            QCoreApplication::processEvents();
            return around.screen()->grabWindow(around.winId()).toImage().pixelColor(20, 25);
        };
        const QColor before = onScreen();
        FillProgress progress(shown, clock);
        progress.start(1024);
        clock.time = clock.time.addMSecs(250); // until a bar is worth painting
        for (int row = 0; row < 1023; ++row)
            progress.advance();
        QVERIFY(onScreen() != before);
        progress.finish();
        QCOMPARE(onScreen(), before);
    }

    void barIsPaintedNowAndThen()
    {
        QProgressBar shown;
        FillProgress progress(shown, clock);
        progress.start(10'000);
        const auto valueAfter = [&](int milliseconds) {
            clock.time = clock.time.addMSecs(milliseconds);
            for (int row = 0; row < 512; ++row) // of so many one looks at the clock
                progress.advance();
            return shown.value();
        };
        QCOMPARE(valueAfter(249), 0);
        QCOMPARE(valueAfter(1), 1024);
        QCOMPARE(valueAfter(99), 1024);
        QCOMPARE(valueAfter(1), 2048);
        QCOMPARE(valueAfter(100), 2560);
    }

    void secondFillStartsFromNothing()
    {
        QProgressBar shown;
        FillProgress progress(shown, clock);
        const auto work = [&](int milliseconds) {
            clock.time = clock.time.addMSecs(milliseconds);
            for (int row = 0; row < 512; ++row)
                progress.advance();
        };
        for (int fill = 0; fill < 3; ++fill) {
            progress.start(10'000);
            QCOMPARE(shown.value(), 0);
            work(249);
            QCOMPARE(shown.value(), 0);
            work(1);
            QCOMPARE(shown.value(), 1024);
            if (fill == 1)
                progress.finish(); // the first one never ends
        }
        progress.prepare(5000);
        QCOMPARE(shown.value(), 0);
        work(250);
        QCOMPARE(shown.value(), 512);
    }

    void preparingDoesNotShowTheBar()
    {
        QProgressBar shown;
        shown.hide();
        FillProgress progress(shown, clock);
        progress.prepare(7);
        progress.advance();
        QVERIFY(!shown.isVisible());
        QCOMPARE(shown.minimum(), 0);
        QCOMPARE(shown.maximum(), 7);
    }

    void preparingDoesNotHideTheBarEither()
    {
        QProgressBar shown;
        FillProgress progress(shown, clock);
        progress.start(7);
        progress.prepare(9);
        QVERIFY(shown.isVisible());
        QCOMPARE(shown.maximum(), 9);
    }

    void barIsHiddenHoweverTheWorkEnds()
    {
        QProgressBar shown;
        FillProgress progress(shown, clock);
        try {
            const FillProgress::Showing showing(progress, 3);
            QVERIFY(shown.isVisible());
            throw Error(errors::Locked);
        } catch (const Error&) {
            QVERIFY(!shown.isVisible());
        }
    }

    void moreRowsThanABarCanCountAreItsGreatestNumber()
    {
        QProgressBar shown;
        FillProgress progress(shown, clock);
        progress.start(qint64(1) << 40);
        QCOMPARE(shown.maximum(), std::numeric_limits<int>::max());
    }

    void eachFillShowsTheBarWithItsRows_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("seen");
        QTest::newRow("definitions") << u"M_DIV"_s << QStringList({u"0 to 5"_s, u"hidden at 5"_s});
        QTest::newRow("documents") << u"R_DIV"_s << QStringList({u"0 to 1"_s, u"hidden at 1"_s});
        QTest::newRow("all data") << u"DIV"_s
                                  << QStringList({u"0 to 5"_s, u"hidden at 5"_s, u"0 to 1"_s,
                                                  u"hidden at 1"_s, u"0 to 1"_s, u"hidden at 1"_s});
        QTest::newRow("category and those below")
            << u"A"_s << QStringList({u"0 to 2"_s, u"hidden at 2"_s, u"0 to 2"_s, u"hidden at 2"_s});
        QTest::newRow("empty category") << u"B"_s << QStringList();
        QTest::newRow("undefined data") << u"M_DIV_NODIF"_s << QStringList();
        QTest::newRow("uncategorised data") << u"M_DIV_NOCATEGORY"_s << QStringList();
        QTest::newRow("root") << u"CATEGORY"_s << QStringList();
    }

    void eachFillShowsTheBarWithItsRows()
    {
        QFETCH(QString, key);
        QFETCH(QStringList, seen);
        openAndWatch();
        BarWatcher watcher(*bar);
        chooseNode(key);
        QCOMPARE(watcher.take(), seen);
        QVERIFY(bar->isHidden());
    }

    void uncategorisedDataSetTheBarWithoutShowingIt()
    {
        openAndWatch();
        chooseNode(u"R_DIV"_s);
        QCOMPARE(bar->maximum(), 1);
        chooseNode(u"M_DIV_NOCATEGORY"_s);
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), 5);
        QCOMPARE(names(), QStringList({u"土"_s, u"金"_s, u"木"_s}));
    }

    void withoutMembershipsThereIsNoProgressAtAll()
    {
        openAndWatch();
        database().connection().execute(u"DELETE FROM Category"_s);
        chooseNode(u"R_DIV"_s);
        bar->setValue(0);
        BarWatcher watcher(*bar);
        chooseNode(u"M_DIV_NOCATEGORY"_s);
        QCOMPARE(names().size(), 5);
        QCOMPARE(bar->maximum(), 1);
        QCOMPARE(bar->value(), 0);
        QCOMPARE(watcher.take(), QStringList());
    }

    void buildingTheTreeShowsTheBarWithTheCategories()
    {
        openAndWatch();
        BarWatcher watcher(*bar);
        window->rebuildCategoryTree();
        QCOMPARE(watcher.take(), QStringList({u"0 to 4"_s, u"hidden at 4"_s}));
        database().connection().execute(u"DELETE FROM Category_ID"_s);
        window->rebuildCategoryTree();
        QCOMPARE(watcher.take(), QStringList());
    }

    void workOnSeveralRowsShowsTheBar()
    {
        openAndWatch();
        selectRows({0, 1, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        BarWatcher watcher(*bar);
        QVERIFY(WindowWorld::choose(*window, u"mnuDataDelete"_s));
        QCOMPARE(watcher.take(), QStringList({u"0 to 3"_s, u"hidden at 3"_s}));
        selectRows({0, 1});
        tree->setDropHighlight(tree->nodes().position(u"B"_s));
        expectQuestion(u"選択された複数のデータを [ 乙 ] に分類してもよろしいですか。"_s, Answer::Ok);
        window->tvwCategory_OLEDragDrop(u"M-991231-004"_s);
        QCOMPARE(watcher.take(), QStringList({u"0 to 2"_s, u"hidden at 2"_s}));
    }
};

QTEST_MAIN(TestFillProgress)
#include "test_fill_progress.moc"
