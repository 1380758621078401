#include "app/shell/frmSplash.h"

#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestSplash : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;

    frmSplash& timedSplash()
    {
        auto* splash = new frmSplash(world->session(), world->program.windows());
        splash->startTiming();
        splash->show();
        return *splash;
    }

    frmSplash& informationWindow()
    {
        world->session().windows.showAuxiliary(u"frmSplash"_s);
        return *world->window<frmSplash>(u"frmSplash"_s);
    }

    static QString labelText(frmSplash& splash, const QString& name)
    {
        const auto* label = WindowWorld::control<QLabel>(splash, name);
        return label != nullptr ? label->text() : u"no such label"_s;
    }

private Q_SLOTS:
    void init() { world = std::make_unique<WindowWorld>(); }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void theTimedSplashStaysFor29TicksAndClosesAtThe30th()
    {
        frmSplash& splash = timedSplash();
        const auto* progress = WindowWorld::control<QProgressBar>(splash, u"pgbSplash"_s);
        QCOMPARE(progress->minimum(), 0);
        QCOMPARE(progress->maximum(), 30);
        for (int tick = 1; tick <= 29; ++tick) {
            splash.tmrSwitch_Timer();
            QCOMPARE(progress->value(), tick);
            QCOMPARE(world->windowCount(u"frmSplash"_s), 1);
        }
        splash.tmrSwitch_Timer();
        QCOMPARE(world->windowCount(u"frmSplash"_s), 0);
    }

    void theTimerTicksEveryTenthOfASecond()
    {
        frmSplash& splash = timedSplash();
        const auto* timer = splash.findChild<QTimer*>(u"tmrSwitch"_s);
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 100);
        QVERIFY(!timer->isSingleShot());
    }

    void theTimedSplashHasProgressAndNoButton()
    {
        frmSplash& splash = timedSplash();
        QVERIFY(WindowWorld::control<QProgressBar>(splash, u"pgbSplash"_s)->isVisible());
        QVERIFY(!WindowWorld::control<QPushButton>(splash, u"cmdClose"_s)->isVisible());
        QVERIFY(splash.windowFlags().testFlag(Qt::FramelessWindowHint));
    }

    void nothingClosesTheTimedSplashBeforeItsTime()
    {
        frmSplash& splash = timedSplash();
        QTest::keyClick(&splash, Qt::Key_Escape);
        QTest::keyClick(&splash, Qt::Key_Return);
        QVERIFY(!splash.close());
        QVERIFY(!splash.unload());
        QCOMPARE(world->windowCount(u"frmSplash"_s), 1);
        QVERIFY(splash.isVisible());
    }

    void theTextsAreTheGivenOnes()
    {
        frmSplash& splash = timedSplash();
        QCOMPARE(splash.windowTitle(), u"Quillon"_s);
        QCOMPARE(labelText(splash, u"lblProductName"_s), u"Quillon"_s);
        QCOMPARE(labelText(splash, u"lblPlatform"_s),
                 u"(Self Educational"_s + QString(30, u' ') + u"DataBase Management System)"_s);
        QCOMPARE(labelText(splash, u"lblCompanyProduct"_s), u"自己教育的データベース管理システム"_s);
        QCOMPARE(labelText(splash, u"lblVersion"_s), u"System Ver.1.30 (Ver.2.00β)"_s);
    }

    void runsOfBlanksDoNotCollapse()
    {
        frmSplash& splash = timedSplash();
        auto* label = WindowWorld::control<QLabel>(splash, u"lblPlatform"_s);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        const int shown = label->sizeHint().width();
        label->setText(u"(Self Educational DataBase Management System)"_s);
        QVERIFY(label->sizeHint().width() < shown);
    }

    void nothingIsClipped()
    {
        frmSplash& information = informationWindow();
        const auto labels = information.findChildren<QLabel*>();
        QVERIFY(labels.size() >= 4);
        for (const QLabel* label : labels) {
            QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->objectName()));
            QVERIFY2(label->height() >= label->sizeHint().height(), qPrintable(label->objectName()));
        }
    }

    void theDesignedVersionIsNeverSeenInAnyUse()
    {
        auto splash =
            std::make_unique<frmSplash>(world->session(), world->program.windows()); // not used in either way
        QCOMPARE(labelText(*splash, u"lblVersion"_s), u"=System Ver.0.XX (Public)="_s);
        splash->showInformation();
        QCOMPARE(labelText(*splash, u"lblVersion"_s), u"System Ver.1.30 (Ver.2.00β)"_s);
    }

    void theInformationWindowNeverClosesByItself()
    {
        frmSplash& information = informationWindow();
        QVERIFY(information.isVisible());
        QVERIFY(!information.findChild<QTimer*>(u"tmrSwitch"_s)->isActive());
        QVERIFY(!WindowWorld::control<QProgressBar>(information, u"pgbSplash"_s)->isVisible());
        QVERIFY(WindowWorld::control<QPushButton>(information, u"cmdClose"_s)->isVisible());
        QCOMPARE(information.windowModality(), Qt::NonModal);
        QVERIFY(!information.windowFlags().testFlag(Qt::FramelessWindowHint));
    }

    void theButtonClosesTheInformationWindow()
    {
        frmSplash& information = informationWindow();
        auto* button = WindowWorld::control<QPushButton>(information, u"cmdClose"_s);
        QCOMPARE(button->text(), u"閉じる(&C)"_s);
        button->click();
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmSplash"_s), 0);
    }

    void escClosesTheInformationWindow()
    {
        QTest::keyClick(&informationWindow(), Qt::Key_Escape);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmSplash"_s), 0);
    }

    void theMenuEntryOpensOneWindowOnly()
    {
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoSystem"_s));
        auto* first = world->window<frmSplash>(u"frmSplash"_s);
        QVERIFY(first != nullptr);
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoSystem"_s));
        QCOMPARE(world->windowCount(u"frmSplash"_s), 1);
        QCOMPARE(world->window<frmSplash>(u"frmSplash"_s), first);
    }

    void aClosedInformationWindowOpensAgain()
    {
        informationWindow().cmdClose_Click();
        WindowWorld::processEvents();
        frmSplash& again = informationWindow();
        QVERIFY(again.isVisible());
        QCOMPARE(labelText(again, u"lblVersion"_s), u"System Ver.1.30 (Ver.2.00β)"_s);
    }
};

QTEST_MAIN(TestSplash)
#include "test_splash.moc"
