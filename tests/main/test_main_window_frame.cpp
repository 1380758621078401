// The frame of the main window: its lengths, the splitter, the status bar.
#include "app/base/twips.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QTest>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainWindowFrame : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    KeyedTree* tree = nullptr;
    ReportList* list = nullptr;
    QWidget* handle = nullptr;
    QFrame* bar = nullptr;

    double outerWidth() const { return twipsFromPixels(window->frameSize().width()); }

    /// Drags the handle with the mouse to a position of the window's surface.
    void drag(double toTwips, bool release)
    {
        const QPoint start(2, 5);
        const int distance = pixelsFromTwips(toTwips) - handle->x();
        QTest::mousePress(handle, Qt::LeftButton, {}, start);
        QTest::mouseMove(handle, QPoint(distance, 5));
        if (release)
            QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(distance, 5));
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        tree = WindowWorld::control<KeyedTree>(*window, u"tvwCategory"_s);
        list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
        handle = WindowWorld::control<QWidget>(*window, u"imgSplitter"_s);
        bar = WindowWorld::control<QFrame>(*window, u"picSplitter"_s);
        QVERIFY(tree && list && handle && bar);
        window->resize(1000, 700);
        WindowWorld::processEvents();
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void bearsItsTitle() { QVERIFY(compareText(window->windowTitle(), u"Quillon メイン画面")); }

    void panesFollowTheWindow()
    {
        for (const QSize& size : {QSize(1000, 700), QSize(760, 540), QSize(1300, 900)}) {
            window->resize(size);
            WindowWorld::processEvents();
            const double width = outerWidth();
            const double height = twipsFromPixels(window->frameSize().height());
            QCOMPARE(tree->x(), pixelsFromTwips(50));
            QCOMPARE(tree->y(), pixelsFromTwips(50));
            QVERIFY(qAbs(tree->width() - pixelsFromTwips(width / 3 - 200)) <= 1);
            QCOMPARE(list->x(), pixelsFromTwips(width / 3 - 80));
            QCOMPARE(list->y(), pixelsFromTwips(50));
            QVERIFY(qAbs(list->width() - pixelsFromTwips(width / 1.5 - 100)) <= 1);
            QCOMPARE(list->height(), tree->height());
            QCOMPARE(tree->height(), pixelsFromTwips(height - 1000));
            QCOMPARE(handle->y(), pixelsFromTwips(200));
            // Nothing reaches below the surface or behind the status bar.
            QVERIFY(tree->geometry().bottom() < window->centralWidget()->height());
            QVERIFY(list->geometry().right() < window->centralWidget()->width());
        }
    }

    void progressBarSpansTheWindowAndIsHidden()
    {
        auto* progress = WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s);
        QVERIFY(progress->isHidden());
        QCOMPARE(progress->x(), pixelsFromTwips(50));
        QCOMPARE(progress->width(), pixelsFromTwips(outerWidth() - 150));
        QCOMPARE(progress->y(), pixelsFromTwips(twipsFromPixels(window->frameSize().height()) - 1000));
        QVERIFY(progress->geometry().bottom() < window->centralWidget()->height());
    }

    void tallStatusBarHidesNeitherThePanesNorTheProgressBar()
    {
        window->statusBar()->setFixedHeight(150);
        WindowWorld::processEvents();
        const int room = window->centralWidget()->height();
        for (const QWidget* pane : {static_cast<QWidget*>(tree), static_cast<QWidget*>(list)}) {
            const int below = room - (pane->geometry().bottom() + 1);
            QVERIFY(below >= 3 && below <= 4); // 50 twips
        }
        const auto* progress = WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s);
        QCOMPARE(progress->geometry().bottom() + 1, room);
        QCOMPARE(progress->height(), 16); // 240 twips
    }

    void cannotBeMadeSmallerThanItsLeastSize()
    {
        window->resize(100, 100);
        WindowWorld::processEvents();
        QCOMPARE(window->frameSize(), QSize(533, 400)); // 8000 and 6000 twips
    }

    void lengthsAreInPixelsOfFifteenTwips()
    {
        window->resize(QSize(1000, 700) - (window->frameSize() - window->size()));
        WindowWorld::processEvents();
        QCOMPARE(tree->geometry(), QRect(3, 3, 320, 633));
        QCOMPARE(list->geometry(), QRect(328, 3, 660, 633));
        QCOMPARE(handle->y(), 13);
        drag(6000, true);
        QCOMPARE(tree->width(), 400);
        QCOMPARE(list->geometry(), QRect(407, 3, 583, 633));
    }

    void treeHasTheFocusFirst()
    {
        window->activateWindow();
        QTRY_COMPARE(QApplication::focusWidget(), tree);
    }

    void barStopsFiveHundredFromTheEdgesWhileDragging()
    {
        QVERIFY(bar->isHidden());
        const int treeWidth = tree->width();
        drag(200, false);
        QVERIFY(bar->isVisible());
        QCOMPARE(bar->x(), pixelsFromTwips(500));
        QCOMPARE(tree->width(), treeWidth); // the panes stay during the drag
        QTest::mouseMove(handle, QPoint(4000, 5));
        QCOMPARE(bar->x(), pixelsFromTwips(outerWidth() - 500));
        QTest::mouseRelease(handle, Qt::LeftButton);
        QVERIFY(bar->isHidden());
    }

    void panesStopFifteenHundredFromTheEdges()
    {
        drag(200, true);
        QCOMPARE(tree->width(), pixelsFromTwips(1500));
        drag(40000, true);
        QVERIFY(qAbs(tree->width() - pixelsFromTwips(outerWidth() - 1500)) <= 1);
    }

    void barAppearsWhereTheHandleStands()
    {
        QTest::mousePress(handle, Qt::LeftButton);
        QVERIFY(bar->isVisible());
        QCOMPARE(bar->x(), pixelsFromTwips(outerWidth() / 3 - 120));
        QCOMPARE(bar->y(), pixelsFromTwips(200));
        QTest::mouseRelease(handle, Qt::LeftButton);
        QTest::mousePress(handle, Qt::LeftButton);
        QVERIFY(qAbs(bar->x() - pixelsFromTwips(outerWidth() / 3 - 120)) <= 1);
        QCOMPARE(bar->y(), tree->y());
        QTest::mouseRelease(handle, Qt::LeftButton);
    }

    void wholeGapBetweenThePanesCanBeGrabbed_data()
    {
        QTest::addColumn<double>("draggedTo");
        QTest::newRow("as laid out") << 0.0;
        QTest::newRow("dragged") << 6000.0;
        QTest::newRow("dragged to an odd place") << 5555.0;
        QTest::newRow("dragged to the left") << 500.0;
    }

    void wholeGapBetweenThePanesCanBeGrabbed()
    {
        QFETCH(double, draggedTo);
        if (draggedTo > 0)
            drag(draggedTo, true);
        const QWidget* surface = window->centralWidget();
        const int y = tree->geometry().center().y();
        QVERIFY(handle->width() >= 5);
        QVERIFY(handle->x() <= tree->geometry().right() + 1);
        QVERIFY(handle->geometry().right() >= list->x() - 1);
        for (int x = handle->x(); x <= handle->geometry().right(); ++x) {
            QCOMPARE(surface->childAt(x, y), handle);
            QCOMPARE(handle->cursor().shape(), Qt::SizeHorCursor);
            // As the window system delivers it, with nothing else that could take the press.
            const QPoint place = surface->mapTo(window, QPoint(x, y));
            QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, place);
            QVERIFY(bar->isVisible());
            QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, place);
            QVERIFY(bar->isHidden());
            if (draggedTo > 0)
                drag(draggedTo, true);
            else
                window->Form_Resize();
        }
    }

    void gapCanBeGrabbedAtAnyHeightAfterEveryResize()
    {
        const QWidget* surface = window->centralWidget();
        for (const QSize& size : {QSize(1000, 700), QSize(700, 500), QSize(1300, 900), QSize(1000, 600)}) {
            for (const bool dragged : {false, true}) {
                if (dragged)
                    drag(5555, true);
                else
                    window->resize(size);
                WindowWorld::processEvents();
                for (int y = tree->y(); y <= tree->geometry().bottom(); ++y) {
                    for (int x = tree->geometry().right() + 1; x < list->x(); ++x) {
                        const QWidget* there = surface->childAt(x, y);
                        QVERIFY(there != nullptr);
                        QCOMPARE(there->cursor().shape(), Qt::SizeHorCursor);
                    }
                }
                const int x = (tree->geometry().right() + list->x()) / 2;
                for (const int y : {tree->y(), tree->geometry().center().y(), tree->geometry().bottom()}) {
                    const QPoint place = surface->mapTo(window, QPoint(x, y));
                    QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, place);
                    QVERIFY(bar->isVisible());
                    QTest::mouseMove(window->windowHandle(), place + QPoint(40, 0));
                    const int left = bar->x();
                    QVERIFY(qAbs(left - (x + 40)) <= 1);
                    QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, place + QPoint(40, 0));
                    QCOMPARE(tree->width(), left);
                    if (dragged)
                        drag(5555, true);
                    else
                        window->Form_Resize();
                }
            }
        }
    }

    void namesTakeTheRoomOfTheList()
    {
        window->resize(1400, 700);
        WindowWorld::processEvents();
        int length = 0;
        for (int column = 0; column < list->rows().columnCount(); ++column)
            length += list->columnWidth(column);
        QCOMPARE(length, list->viewport()->width());
        const int narrow = list->columnWidth(0);
        drag(3000, true);
        QVERIFY(list->columnWidth(0) > narrow);
    }

    void messageThatDoesNotFitIsTheToolTipOfItsPanel()
    {
        auto* status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s);
        const auto* panel = status->findChild<QLabel*>(u"Status"_s);
        const QString text =
            u"データベース (/home/名/"_s + u"長い名前のフォルダ/"_s.repeated(20) + u"a.mdb)"_s;
        status->setText(1, text);
        QVERIFY(panel->toolTip().contains(text));
        status->setText(1, u"短い"_s);
        QVERIFY(compareText(panel->toolTip(), u"システムの状態を表示します。"));
    }

    void handleCoversNothingOfThePanes()
    {
        for (const double draggedTo : {0.0, 6000.0, 5555.0}) {
            if (draggedTo > 0)
                drag(draggedTo, true);
            for (const QAbstractScrollArea* pane :
                 {static_cast<QAbstractScrollArea*>(tree), static_cast<QAbstractScrollArea*>(list)}) {
                const int frame = pane->frameWidth();
                QVERIFY(
                    !handle->geometry().intersects(pane->geometry().adjusted(frame, frame, -frame, -frame)));
            }
        }
    }

    void releasedSplitterPlacesThePanes()
    {
        drag(6000, true);
        QCOMPARE(tree->width(), pixelsFromTwips(6000));
        QCOMPARE(handle->y(), tree->y());
        QCOMPARE(handle->height(), tree->height());
        QCOMPARE(list->x(), pixelsFromTwips(6100));
        QCOMPARE(list->width(), pixelsFromTwips(outerWidth() - 6250));
        QCOMPARE(list->height(), tree->height());
    }

    void resizingForgetsTheSplitter()
    {
        drag(6000, true);
        window->resize(1100, 720);
        WindowWorld::processEvents();
        QVERIFY(qAbs(tree->width() - pixelsFromTwips(outerWidth() / 3 - 200)) <= 1);
    }

    void positionIsClampedInPlace()
    {
        float position = 10;
        window->SizeControls(position);
        QCOMPARE(position, 1500.0F);
        position = 1e9F;
        window->SizeControls(position);
        QCOMPARE(position, static_cast<float>(outerWidth() - 1500));
    }

    void movingWithoutPressingMovesNothing()
    {
        const int before = bar->x();
        QTest::mouseMove(handle, QPoint(100, 5));
        QCOMPARE(bar->x(), before);
        QVERIFY(bar->isHidden());
    }

    void statusBarHasItsFourPanels()
    {
        auto* status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s);
        const auto panels = status->findChildren<QLabel*>();
        QCOMPARE(panels.size(), 4);
        QVERIFY(compareText(status->text(1), u"展開されているデータベースはありません。"));
        QVERIFY(compareText(status->text(2), u"表示データ数 ： "));
        QVERIFY(compareText(status->text(3), u"1999/12/31"));
        QVERIFY(compareText(status->text(4), u"23:45"));
        QVERIFY(compareText(panels[0]->toolTip(), u"システムの状態を表示します。"));
        QVERIFY(compareText(panels[1]->toolTip(), u"現在表示されているデータ数を表示します。"));
        QVERIFY(compareText(panels[2]->toolTip(), u"全体の日付を表示します。"));
        QVERIFY(compareText(panels[3]->toolTip(), u"現在の時刻を表示します。"));
        for (const QLabel* panel : panels)
            QCOMPARE(panel->accessibleDescription(), panel->toolTip());
    }

    void statusPanelsHaveTheirWidths()
    {
        const auto panels =
            WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->findChildren<QLabel*>();
        const QList<int> wanted = {578, 235, 141, 141}; // 8670, 3528, 2117 and 2117 twips
        for (int panel = 0; panel < 4; ++panel)
            QCOMPARE(panels[panel]->sizeHint().width(), wanted[panel]);
        QCOMPARE(panels[0]->minimumSizeHint().width(), 82); // 1235 twips
        window->resize(1300, 700);
        WindowWorld::processEvents();
        for (int panel = 1; panel < 4; ++panel)
            QCOMPARE(panels[panel]->width(), wanted[panel]);
        QVERIFY(panels[0]->width() > 578); // the first takes what the others leave
    }

    void mouseShowsItsHints()
    {
        auto* status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s);
        QTest::mouseMove(tree->viewport(), QPoint(20, 20));
        QTest::mouseMove(tree->viewport(), QPoint(25, 25));
        QVERIFY(compareText(status->text(1), u"右クリックでカテゴリを追加できます。"));
        QTest::mouseMove(list->viewport(), QPoint(20, 20));
        QTest::mouseMove(list->viewport(), QPoint(25, 25));
        QVERIFY(compareText(status->text(1), u"ドラック＆ドロップでデータをカテゴリに登録できます。"));
    }

    void treeListAndBarAreNamedForScreenReaders()
    {
        QVERIFY(compareText(tree->accessibleName(), u"カテゴリツリー"));
        QVERIFY(compareText(list->accessibleName(), u"データ一覧"));
        QVERIFY(compareText(WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s)->accessibleName(),
                            u"一覧の作成の進み具合"));
        QVERIFY(window->accessibleName().isEmpty());
    }

    void longDatabaseNameDoesNotWidenTheWindow()
    {
        auto* status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s);
        const int width = window->width();
        status->setText(1, QString(400, u'長'));
        WindowWorld::processEvents();
        QCOMPARE(window->width(), width);
        QCOMPARE(status->text(1).size(), 400);
    }
};

QTEST_MAIN(TestMainWindowFrame)
#include "test_main_window_frame.moc"
