#include "app/base/error.h"
#include "tests/support/test_ports.h"
#include "ui/widgets/status_panels.h"

#include <QAccessible>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QSizeGrip>
#include <QTimer>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using quillon::StatusPanels;

namespace
{

const std::vector<StatusPanels::Panel> Panels = {
    {u"Status"_s, 578, 82, u"状態"_s, u"システムの状態を表示します。"_s, true},
    {u""_s, 235, 0, u"表示データ数 ： "_s, u"件数"_s, false},
    {u"Date"_s, 141, 0, u""_s, u"日付"_s, false},
    {u"Time"_s, 141, 0, u""_s, u"時刻"_s, false},
};

} // namespace

class TestStatusPanels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void panelsAreLabelsInOrder();
    void textsArePlain();
    void aPanelOutsideTheBarIsRefused();
    void toolTipsAreTheDescriptions();
    void aLongTextNeverWidensTheWindow();
    void aTextThatDoesNotFitEndsInAnEllipsis();
    void aTextThatDoesNotFitIsTheToolTip();
    void aPanelWantsItsWidth();
    void dateAndTimeFollowTheClock();
    void theSizeGripStays();
};

void TestStatusPanels::panelsAreLabelsInOrder()
{
    StatusPanels bar(Panels);
    bar.resize(1200, bar.sizeHint().height());
    bar.show();
    QCOMPARE(bar.text(1), u"状態"_s);
    QCOMPARE(bar.text(2), u"表示データ数 ： "_s);
    QList<QLabel*> labels = bar.findChildren<QLabel*>();
    QCOMPARE(labels.size(), 4);
    QCOMPARE(labels[0], bar.findChild<QLabel*>(u"Status"_s));
    for (int panel = 1; panel < 4; ++panel)
        QVERIFY(labels[panel - 1]->x() < labels[panel]->x());
}

void TestStatusPanels::textsArePlain()
{
    StatusPanels bar(Panels);
    bar.setText(1, u"<b>水</b> & 火"_s);
    QCOMPARE(bar.text(1), u"<b>水</b> & 火"_s);
    for (const QLabel* label : bar.findChildren<QLabel*>())
        QCOMPARE(label->textFormat(), Qt::PlainText);
}

void TestStatusPanels::aPanelOutsideTheBarIsRefused()
{
    StatusPanels bar(Panels);
    for (const int panel : {0, 5}) {
        qint32 number = 0;
        try {
            bar.setText(panel, u"文"_s);
        } catch (const quillon::Error& error) {
            number = error.number;
        }
        QCOMPARE(number, quillon::errors::IndexOutOfBounds);
    }
}

void TestStatusPanels::toolTipsAreTheDescriptions()
{
    StatusPanels bar(Panels);
    bar.setText(1, u"別の文"_s);
    auto* label = bar.findChild<QLabel*>(u"Status"_s);
    QCOMPARE(label->toolTip(), u"システムの状態を表示します。"_s);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(label);
    QVERIFY(accessible != nullptr);
    QCOMPARE(accessible->text(QAccessible::Description), u"システムの状態を表示します。"_s);
    QCOMPARE(accessible->text(QAccessible::Name), u"別の文"_s);
}

void TestStatusPanels::aLongTextNeverWidensTheWindow()
{
    QMainWindow window;
    auto* bar = new StatusPanels(Panels, &window);
    window.setStatusBar(bar);
    window.resize(700, 300);
    window.show();
    QCoreApplication::processEvents();
    const int before = window.minimumSizeHint().width();
    const QString text(2000, u'長');
    bar->setText(1, text);
    QCoreApplication::processEvents();
    QCOMPARE(window.minimumSizeHint().width(), before);
    QCOMPARE(window.width(), 700);
    QCOMPARE(bar->text(1), text);
}

void TestStatusPanels::aTextThatDoesNotFitEndsInAnEllipsis()
{
    StatusPanels bar(Panels);
    bar.resize(900, bar.sizeHint().height());
    bar.show();
    QCoreApplication::processEvents();
    auto* label = bar.findChild<QLabel*>(u"Status"_s);
    const auto imageWith = [&](const QString& text) {
        bar.setText(1, text);
        QCoreApplication::processEvents();
        return label->grab().toImage();
    };
    // What is drawn is what a label that holds the shortened text draws.
    const QString text(400, u'長');
    const int indent = label->fontMetrics().horizontalAdvance(u'x') / 2;
    const QString shortened =
        label->fontMetrics().elidedText(text, Qt::ElideRight, label->contentsRect().width() - indent);
    QVERIFY(shortened.endsWith(u'…'));
    const QImage drawn = imageWith(text);
    QCOMPARE(drawn, imageWith(shortened));
    QVERIFY(drawn != imageWith(text.left(shortened.size() - 1)));
    QCOMPARE(bar.text(1), text.left(shortened.size() - 1));
}

void TestStatusPanels::aTextThatDoesNotFitIsTheToolTip()
{
    StatusPanels bar(Panels);
    bar.resize(900, bar.sizeHint().height());
    bar.show();
    QCoreApplication::processEvents();
    auto* label = bar.findChild<QLabel*>(u"Status"_s);
    const QString text = u"<b>水</b> "_s.repeated(100);
    bar.setText(1, text);
    QVERIFY(label->toolTip().contains(text.toHtmlEscaped())); // a name in angle brackets is a name
    QCOMPARE(label->accessibleDescription(), u"システムの状態を表示します。"_s);
    bar.setText(1, u"少し長い文を少し長い文を"_s);
    QCOMPARE(label->toolTip(), u"システムの状態を表示します。"_s);
    label->resize(90, label->height());
    QCOMPARE(label->toolTip(), u"少し長い文を少し長い文を"_s);
    label->resize(500, label->height());
    QCOMPARE(label->toolTip(), u"システムの状態を表示します。"_s);
}

void TestStatusPanels::aPanelWantsItsWidth()
{
    StatusPanels bar(Panels);
    auto* label = bar.findChild<QLabel*>(u"Status"_s);
    QCOMPARE(label->sizeHint().width(), 578);
    QCOMPARE(label->minimumSizeHint().width(), 82);
    const StatusPanels plain({{u"p"_s, 0, 0, u"内容"_s, u""_s, false}});
    QVERIFY(plain.findChild<QLabel*>(u"p"_s)->minimumSizeHint().width() > 0);
}

void TestStatusPanels::dateAndTimeFollowTheClock()
{
    StatusPanels bar(Panels);
    quillon::testing::FixedClock clock;
    bar.keepDateAndTime(3, 4, clock);
    QCOMPARE(bar.text(3), u"1999/12/31"_s);
    QCOMPARE(bar.text(4), u"23:45"_s);
    clock.time = clock.time.addSecs(3600);
    auto* timer = bar.findChild<QTimer*>();
    QVERIFY(timer != nullptr && timer->isActive());
    QVERIFY(QMetaObject::invokeMethod(timer, "timeout"));
    QCOMPARE(bar.text(3), u"2000/01/01"_s);
    QCOMPARE(bar.text(4), u"0:45"_s);
}

void TestStatusPanels::theSizeGripStays()
{
    const StatusPanels bar(Panels);
    QVERIFY(bar.isSizeGripEnabled());
}

QTEST_MAIN(TestStatusPanels)
#include "test_status_panels.moc"
