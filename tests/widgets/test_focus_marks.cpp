// Where the keyboard is, seen at a glance: in what colours panes, rows and controls tell it, in many palettes.
#include "tests/widgets/report_list_fixture.h"

#include "ui/widgets/focus_colours.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/keyed_tree.h"

#include <QAccessible>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleFactory>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using quillon::contrast;
using quillon::FocusRing;
using quillon::KeyedTree;
using quillon::restingSelection;

namespace
{

/// A palette whose two groups are equal.
QPalette paletteOf(const QColor& window, const QColor& base, const QColor& text, const QColor& highlight,
                   const QColor& highlightedText)
{
    QPalette palette(window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::Window, QPalette::Button})
        palette.setColor(role, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, highlightedText);
    return palette;
}

QPalette withInactive(QPalette palette, const QColor& highlight, const QColor& text)
{
    palette.setColor(QPalette::Inactive, QPalette::Highlight, highlight);
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, text);
    return palette;
}

bool differsClearly(const QColor& one, const QColor& other)
{
    return std::hypot(one.red() - other.red(), one.green() - other.green(), one.blue() - other.blue()) >= 64;
}

} // namespace

class TestFocusMarks : public ReportListFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_before = QApplication::palette(); }
    void init()
    {
        QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
        makeList();
        m_tree = new KeyedTree;
        m_tree->nodes().add({}, u"A"_s, u"甲"_s);
        m_tree->nodes().add({}, u"B"_s, u"乙"_s);
        static_cast<QVBoxLayout*>(m_window->layout())->insertWidget(0, m_tree);
        FocusRing::followFocus();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void cleanup()
    {
        takeDown();
        QApplication::setPalette(m_before);
    }

    void contrastIsMeasuredAsTheGuidelinesDo();
    void selectionsRestInOtherColours_data() { palettes(); }
    void selectionsRestInOtherColours();
    void restingSelectionsAreReadable_data() { palettes(); }
    void restingSelectionsAreReadable();
    void listsAndTreesRestWithoutTheKeyboard_data() { palettes(); }
    void listsAndTreesRestWithoutTheKeyboard();
    void whatHasTheKeyboardHasARing_data() { palettes(); }
    void whatHasTheKeyboardHasARing();
    void emptyPanesHaveTheRingToo_data() { palettes(); }
    void emptyPanesHaveTheRingToo();
    void theCurrentRowIsFramed_data() { palettes(); }
    void theCurrentRowIsFramed();
    void theFrameOfARowGoesOnWithIt();
    void whatWouldTakeADropLooksUnlikeASelection_data() { palettes(); }
    void whatWouldTakeADropLooksUnlikeASelection();
    void theRingFollowsItsControl();
    void theRingStaysWithinItsWindow();
    void theRingGoesWithTheKeyboard();
    void controlsThatAreScrolledAwayHaveNoRing();
    void theRingLetsClicksThrough();
    void assistiveTechnologyHearsOfNoRing();

private:
    static void palettes()
    {
        QTest::addColumn<QPalette>("palette");
        QTest::addColumn<bool>("hasOwnColours"); // for selections without the keyboard
        const QPalette light =
            paletteOf(QColor(239, 239, 239), Qt::white, Qt::black, QColor(48, 140, 198), Qt::white);
        const QPalette dark =
            paletteOf(QColor(53, 53, 53), QColor(25, 25, 25), Qt::white, QColor(42, 130, 218), Qt::black);
        QTest::newRow("light") << withInactive(light, QColor(145, 145, 145), Qt::white) << true;
        QTest::newRow("light, inactive as active") << light << false;
        QTest::newRow("light, inactive nearly unseen")
            << withInactive(light, QColor(240, 240, 240), Qt::black) << false;
        QTest::newRow("dark") << withInactive(dark, QColor(90, 90, 90), Qt::white) << true;
        QTest::newRow("dark, inactive as active") << dark << false;
        QTest::newRow("high contrast, black")
            << paletteOf(Qt::black, Qt::black, Qt::white, QColor(26, 235, 255), Qt::black) << false;
        QTest::newRow("high contrast, white")
            << paletteOf(Qt::white, Qt::white, Qt::black, QColor(55, 0, 110), Qt::white) << false;
        QTest::newRow("high contrast, yellow on black")
            << paletteOf(Qt::black, Qt::black, Qt::yellow, Qt::yellow, Qt::black) << false;
        QTest::newRow("selections in grey")
            << paletteOf(QColor(239, 239, 239), Qt::white, Qt::black, QColor(150, 150, 150), Qt::black)
            << false;
        QTest::newRow("selections in a pale colour")
            << paletteOf(QColor(239, 239, 239), Qt::white, Qt::black, QColor(205, 232, 255), Qt::black)
            << false;
    }
    static void use(const QPalette& palette)
    {
        QApplication::setPalette(palette);
        QCoreApplication::processEvents();
    }
    QColor pixel(const QPoint& inWindow) const { return m_window->grab().toImage().pixelColor(inWindow); }
    /// In a row, where no text and no frame is.
    QColor background(const QAbstractItemView& view, const QModelIndex& index) const
    {
        const QRect row = view.visualRect(index);
        return pixel(view.viewport()->mapTo(m_window.get(), QPoint(row.left() + 2, row.top() + 3)));
    }
    QColor frameOf(const QAbstractItemView& view, const QModelIndex& index) const
    {
        const QRect row = view.visualRect(index);
        return pixel(view.viewport()->mapTo(m_window.get(), QPoint(row.left() + 10, row.top())));
    }
    QWidget* ring() const
    {
        QWidget* found = nullptr;
        const auto rings = m_window->findChildren<QWidget*>(u"focusRing"_s);
        for (QWidget* candidate : rings) {
            if (candidate->isVisible())
                found = candidate;
        }
        return found;
    }
    QRect placeInWindow(const QWidget& widget) const
    {
        return {widget.mapTo(m_window.get(), QPoint()), widget.size()};
    }
    /// The ring as the person sees it, on all four sides of a control.
    void verifyRingAround(const QWidget& control, const QPalette& palette) const
    {
        const QRect place = placeInWindow(control);
        for (const QPoint& point :
             {QPoint(place.left() - 1, place.center().y()), QPoint(place.right() + 1, place.center().y()),
              QPoint(place.center().x(), place.top() - 1), QPoint(place.center().x(), place.bottom() + 1)}) {
            const QColor seen = pixel(point);
            QVERIFY(contrast(seen, palette.color(QPalette::Window)) >= 3);
            QVERIFY(contrast(seen, palette.color(QPalette::Base)) >= 3);
        }
    }

    QPalette m_before;
    KeyedTree* m_tree = nullptr;
};

void TestFocusMarks::contrastIsMeasuredAsTheGuidelinesDo()
{
    const auto rounded = [](const QColor& one, const QColor& other) {
        return qRound(100 * contrast(one, other));
    };
    QCOMPARE(rounded(Qt::black, Qt::white), 2100);
    QCOMPARE(rounded(Qt::white, Qt::black), 2100);
    QCOMPARE(rounded(Qt::red, Qt::red), 100);
    QCOMPARE(rounded(QColor(0x77, 0x77, 0x77), Qt::white), 448);
    QCOMPARE(rounded(Qt::blue, Qt::white), 859);
}

void TestFocusMarks::selectionsRestInOtherColours()
{
    QFETCH(const QPalette, palette);
    QFETCH(const bool, hasOwnColours);
    const QColor resting = restingSelection(palette).background;
    QVERIFY(differsClearly(resting, palette.color(QPalette::Active, QPalette::Highlight)));
    QVERIFY(contrast(resting, palette.color(QPalette::Base)) >= (hasOwnColours ? 1.5 : 3));
    if (hasOwnColours)
        QCOMPARE(resting, palette.color(QPalette::Inactive, QPalette::Highlight));
}

void TestFocusMarks::restingSelectionsAreReadable()
{
    QFETCH(const QPalette, palette);
    const auto resting = restingSelection(palette);
    QVERIFY(contrast(resting.text, resting.background) >= 4.5);
}

void TestFocusMarks::listsAndTreesRestWithoutTheKeyboard()
{
    QFETCH(const QPalette, palette);
    use(palette);
    const QColor active = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor resting = restingSelection(palette).background;
    const QModelIndex row = m_list->rows().index(1, 0);
    const QModelIndex node = m_tree->nodes().indexOf(2);
    m_list->setCurrentIndex(row);
    m_tree->select(2);
    m_list->setFocus();
    QCOMPARE(background(*m_list, row), active);
    QCOMPARE(background(*m_tree, node), resting);
    m_tree->setFocus();
    QCOMPARE(background(*m_list, row), resting);
    QCOMPARE(background(*m_tree, node), active);
    m_other->setFocus();
    QCOMPARE(background(*m_list, row), resting);
    QCOMPARE(background(*m_tree, node), resting);
    QCOMPARE(background(*m_list, m_list->rows().index(2, 0)), palette.color(QPalette::Base));
}

void TestFocusMarks::whatHasTheKeyboardHasARing()
{
    QFETCH(const QPalette, palette);
    use(palette);
    for (QWidget* control :
         {static_cast<QWidget*>(m_list), static_cast<QWidget*>(m_tree), static_cast<QWidget*>(m_other)}) {
        control->setFocus();
        verifyRingAround(*control, palette);
    }
}

void TestFocusMarks::emptyPanesHaveTheRingToo()
{
    QFETCH(const QPalette, palette);
    use(palette);
    m_list->rows().clear();
    m_list->setFocus();
    verifyRingAround(*m_list, palette);
    m_tree->nodes().clear();
    m_tree->setFocus();
    verifyRingAround(*m_tree, palette);
}

void TestFocusMarks::theCurrentRowIsFramed()
{
    QFETCH(const QPalette, palette);
    use(palette);
    const QModelIndex row = m_list->rows().index(1, 0);
    m_list->setCurrentIndex(row);
    m_list->setFocus();
    QVERIFY(contrast(frameOf(*m_list, row), palette.color(QPalette::Highlight)) >= 3);
    // The keyboard may stand on a row that is not selected.
    m_list->clearSelection();
    QCOMPARE(m_list->currentIndex(), row);
    QVERIFY(contrast(frameOf(*m_list, row), palette.color(QPalette::Base)) >= 3);
    QCOMPARE(background(*m_list, row), palette.color(QPalette::Base));
    m_other->setFocus();
    QCOMPARE(frameOf(*m_list, row), palette.color(QPalette::Base));
    m_tree->select(1);
    m_tree->setFocus();
    QVERIFY(contrast(frameOf(*m_tree, m_tree->nodes().indexOf(1)), palette.color(QPalette::Highlight)) >= 3);
}

void TestFocusMarks::theFrameOfARowGoesOnWithIt()
{
    m_list->setFocus();
    m_list->selectionModel()->setCurrentIndex(m_list->rows().index(1, 0), QItemSelectionModel::NoUpdate);
    m_list->grab();
    const auto asOnTheScreen = [this] {
        QImage image(m_window->size(), QImage::Format_RGB32);
        QCoreApplication::processEvents();
        m_window->render(&image);
        return image;
    };
    const auto framed = [&](int row) {
        const QRect cell = m_list->visualRect(m_list->rows().index(row, 2)); // the last column
        const QPoint place = m_list->viewport()->mapTo(m_window.get(), cell.topLeft() + QPoint(5, 0));
        return asOnTheScreen().pixelColor(place) != m_list->palette().color(QPalette::Base);
    };
    QVERIFY(framed(1));
    sendKey(Qt::Key_Down, Qt::ControlModifier); // on without selecting
    QCOMPARE(m_list->currentIndex().row(), 2);
    QVERIFY(!framed(1));
    QVERIFY(framed(2));
}

void TestFocusMarks::whatWouldTakeADropLooksUnlikeASelection()
{
    QFETCH(const QPalette, palette);
    use(palette);
    const QModelIndex node = m_tree->nodes().indexOf(1);
    m_list->setFocus(); // where the drag began
    m_tree->select(2);
    m_tree->setDropHighlight(1);
    QCOMPARE(background(*m_tree, node), palette.color(QPalette::Base));
    QVERIFY(contrast(frameOf(*m_tree, node), palette.color(QPalette::Base)) >= 3);
    m_tree->setDropHighlight(2); // the selected one
    const QModelIndex selected = m_tree->nodes().indexOf(2);
    QVERIFY(contrast(frameOf(*m_tree, selected), restingSelection(palette).background) >= 3);
}

void TestFocusMarks::theRingFollowsItsControl()
{
    m_list->setFocus();
    const QMargins beyond(2, 2, 2, 2);
    QCOMPARE(ring()->geometry(), placeInWindow(*m_list) + beyond);
    m_window->resize(700, 600);
    QCoreApplication::processEvents();
    QCOMPARE(ring()->geometry(), placeInWindow(*m_list) + beyond);
    m_tree->hide(); // the list takes its place
    QCoreApplication::processEvents();
    QCOMPARE(ring()->geometry(), placeInWindow(*m_list) + beyond);
    m_list->hide();
    QVERIFY(ring() == nullptr || ring()->geometry() != placeInWindow(*m_list) + beyond);
    m_list->show();
    m_list->setFocus();
    QCoreApplication::processEvents();
    QCOMPARE(ring()->geometry(), placeInWindow(*m_list) + beyond);
}

void TestFocusMarks::theRingStaysWithinItsWindow()
{
    m_window->layout()->setContentsMargins(0, 0, 0, 0);
    m_other->setFocus();
    QCoreApplication::processEvents();
    QVERIFY(m_window->rect().contains(ring()->geometry()));
    QCOMPARE(pixel(QPoint(1, placeInWindow(*m_other).center().y())),
             quillon::focusColour(m_window->palette()));
}

void TestFocusMarks::theRingGoesWithTheKeyboard()
{
    m_list->setFocus();
    QVERIFY(ring() != nullptr);
    QWidget box;
    auto* button = new QPushButton(u"OK"_s, &box);
    box.resize(200, 100);
    box.show();
    box.activateWindow();
    button->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QVERIFY(ring() == nullptr);
    const auto* there = box.findChild<QWidget*>(u"focusRing"_s);
    QVERIFY(there != nullptr && there->isVisible());
    box.close();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QVERIFY(ring() != nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(m_window->findChildren<QWidget*>(u"focusRing"_s).size(), 1);
}

void TestFocusMarks::controlsThatAreScrolledAwayHaveNoRing()
{
    auto* area = new QScrollArea;
    auto* inner = new QWidget;
    inner->resize(300, 2000);
    auto* field = new QLineEdit(inner);
    field->move(10, 10);
    area->setWidget(inner);
    m_window->layout()->addWidget(area);
    QCoreApplication::processEvents();
    field->setFocus();
    QVERIFY(ring() != nullptr);
    area->verticalScrollBar()->setValue(5); // partly
    QVERIFY(placeInWindow(*area->viewport()).contains(ring()->geometry()));
    area->verticalScrollBar()->setValue(500);
    QVERIFY(ring() == nullptr);
    area->verticalScrollBar()->setValue(0);
    QVERIFY(ring() != nullptr);
}

void TestFocusMarks::theRingLetsClicksThrough()
{
    m_list->setFocus();
    const QRect place = placeInWindow(*m_list);
    const QPoint beside(place.left() - 1, place.center().y());
    QVERIFY(ring()->geometry().contains(beside));
    QVERIFY(m_window->childAt(beside) != ring());
}

void TestFocusMarks::assistiveTechnologyHearsOfNoRing()
{
    m_list->setFocus();
    QVERIFY(ring() != nullptr);
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(m_window.get());
    QVERIFY(window != nullptr && window->childCount() >= 3);
    for (int i = 0; i < window->childCount(); ++i)
        QVERIFY(window->child(i)->object() != ring());
}

QTEST_MAIN(TestFocusMarks)
#include "test_focus_marks.moc"
