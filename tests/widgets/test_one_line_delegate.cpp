// Texts of lists and trees are drawn in a way of their own, for speed: they must look as the style draws them.
#include "tests/widgets/report_list_fixture.h"

#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/laid_out_lines.h"
#include "ui/widgets/one_line_delegate.h"

#include <QHelpEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyledItemDelegate>
#include <QTextLayout>
#include <QToolTip>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using quillon::KeyedTree;
using quillon::LaidOutLines;
using quillon::OneLineDelegate;

namespace
{

/// Lets the style draw the same texts; the views themselves frame the current row.
class PlainDelegate : public QStyledItemDelegate
{
public:
    QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        return OneLineDelegate().displayText(value, locale);
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem item = option;
        item.state &= ~QStyle::State_HasFocus;
        QStyledItemDelegate::paint(painter, item, index);
    }
};

QImage imageOf(QWidget& view)
{
    view.grab(); // a first painting may still lay out the view
    QCoreApplication::processEvents();
    return view.grab().toImage();
}

QString randomName(QRandomGenerator& random)
{
    static const QString Units =
        u"あいがぱーアイガｱｲｶﾞ漢字龍𠮷,.ABCWAVTomi fi0123456789-「」、。…éÄ\u3099\u0300\u05d0\u05d1\u0627\u0644😀"_s;
    QString name;
    const int length = random.bounded(1, 40);
    while (name.size() < length)
        name += Units[random.bounded(Units.size())];
    return name;
}

} // namespace

class TestOneLineDelegate : public ReportListFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
        makeList();
        m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        QRandomGenerator random(7);
        QStringList names{u"りんご"_s, u"apple"_s, u""_s, u"二行\nの名称\tと\x01"_s, u"長"_s.repeated(3000)};
        while (names.size() < 400)
            names << randomName(random);
        fill(*m_list, names);
    }
    void cleanup() { takeDown(); }

    void listsLookAsTheStyleDrawsThem_data();
    void listsLookAsTheStyleDrawsThem();
    void disabledAndInactiveListsDoToo();
    void listsFromRightToLeftDoToo();
    void treesDoToo();
    void otherStylesDrawTheirOwnTexts();
    void aTextLooksTheSameWhenDrawnAgainInAnotherWidthAndFont();
    void onlyLinesDrawnLatelyAreKept();
    void aTextThatIsShortenedIsToldWhole_data();
    void aTextThatIsShortenedIsToldWhole();
    void aNodeThatIsNotAllInSightIsToldWhole();

private:
    /// The tool tip that comes when the mouse rests on an item.
    static QString toolTipAt(QAbstractItemView& view, const QModelIndex& index)
    {
        const QString another = u"前の説明"_s; // a tool tip takes its time to disappear
        QToolTip::showText(view.mapToGlobal(QPoint()), another, &view);
        const QPoint place = (view.visualRect(index) & view.viewport()->rect()).center();
        QHelpEvent resting(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(view.viewport(), &resting);
        return QToolTip::text() == another ? QString() : QToolTip::text();
    }
    void compareLists()
    {
        PlainDelegate plain;
        QAbstractItemDelegate* own = m_list->itemDelegate();
        const QImage ours = imageOf(*m_list);
        m_list->setItemDelegate(&plain);
        const QImage theirs = imageOf(*m_list);
        m_list->setItemDelegate(own);
        QCOMPARE(ours, theirs);
        QCOMPARE(imageOf(*m_list), ours);
    }
};

void TestOneLineDelegate::listsLookAsTheStyleDrawsThem_data()
{
    QTest::addColumn<int>("firstRow");
    for (int row = 0; row < 400; row += 12)
        QTest::addRow("from row %d", row) << row;
}

void TestOneLineDelegate::listsLookAsTheStyleDrawsThem()
{
    QFETCH(const int, firstRow);
    m_list->verticalScrollBar()->setValue(firstRow);
    compareLists();
    m_list->setCurrentIndex(m_list->rows().index(firstRow + 1, 0));
    compareLists();
}

void TestOneLineDelegate::disabledAndInactiveListsDoToo()
{
    m_list->selectAll();
    compareLists();
    m_list->setEnabled(false);
    compareLists();
    m_list->setEnabled(true);
    m_other->setFocus();
    compareLists();
}

void TestOneLineDelegate::listsFromRightToLeftDoToo()
{
    m_list->setLayoutDirection(Qt::RightToLeft);
    compareLists();
    m_list->verticalScrollBar()->setValue(30);
    compareLists();
}

void TestOneLineDelegate::treesDoToo()
{
    KeyedTree tree;
    tree.resize(200, 400);
    QRandomGenerator random(8);
    for (int i = 0; i < 40; ++i)
        tree.nodes().add({}, u"K%1"_s.arg(i), randomName(random));
    tree.show();
    tree.select(3);
    PlainDelegate plain;
    const QImage ours = imageOf(tree);
    tree.setItemDelegate(&plain);
    QCOMPARE(ours, imageOf(tree));
}

void TestOneLineDelegate::otherStylesDrawTheirOwnTexts()
{
    const std::unique_ptr<QStyle> windows(QStyleFactory::create(u"Windows"_s));
    QVERIFY(windows != nullptr);
    m_list->setStyle(windows.get());
    m_list->setCurrentIndex(m_list->rows().index(1, 0));
    compareLists();
    m_list->setStyle(nullptr);
}

void TestOneLineDelegate::aTextLooksTheSameWhenDrawnAgainInAnotherWidthAndFont()
{
    const QImage before = imageOf(*m_list);
    m_list->setColumnCharacters({5, 2, 3});
    compareLists();
    m_list->setColumnCharacters({50, 10, 14});
    compareLists();
    const QFont font = m_list->font();
    QFont large = font;
    large.setPointSize(font.pointSize() * 2);
    m_list->setFont(large);
    compareLists();
    m_list->setFont(font);
    m_list->setColumnCharacters({20, 10, 14});
    QCOMPARE(imageOf(*m_list), before);
}

void TestOneLineDelegate::aTextThatIsShortenedIsToldWhole_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("told");
    QTest::newRow("one that fits") << u"水"_s << QString();
    QTest::newRow("one that does not") << u"長い名前"_s.repeated(8) << u"長い名前"_s.repeated(8);
    QTest::newRow("one that reads like markup")
        << u"<b>水</b> & 火"_s.repeated(3)
        << u"<p style=\"white-space:pre-wrap\">"_s + u"<b>水</b> & 火"_s.repeated(3).toHtmlEscaped() +
               u"</p>"_s;
}

void TestOneLineDelegate::aTextThatIsShortenedIsToldWhole()
{
    QFETCH(QString, name);
    QFETCH(QString, told);
    m_list->rows().clear();
    fill(*m_list, {name});
    m_list->setColumnWidth(0, 120);
    QCOMPARE(toolTipAt(*m_list, m_list->rows().index(0, 0)), told);
    m_list->setColumnWidth(0, 500);
    QCOMPARE(toolTipAt(*m_list, m_list->rows().index(0, 0)), QString());
    QToolTip::hideText();
}

void TestOneLineDelegate::aNodeThatIsNotAllInSightIsToldWhole()
{
    KeyedTree tree;
    const QString name = u"長い名前のカテゴリ"_s.repeated(5);
    tree.nodes().add({}, u"A"_s, name);
    tree.resize(200, 200);
    tree.show();
    QCoreApplication::processEvents();
    QCOMPARE(toolTipAt(tree, tree.nodes().indexOf(1)), name);
    tree.resize(1200, 200);
    QCoreApplication::processEvents();
    QCOMPARE(toolTipAt(tree, tree.nodes().indexOf(1)), QString());
    QToolTip::hideText();
}

void TestOneLineDelegate::onlyLinesDrawnLatelyAreKept()
{
    LaidOutLines lines;
    const QFont font;
    const QTextLayout* often = lines.line(u"いつも"_s, font).layout.get();
    for (int i = 0; i < 10'000; ++i) {
        lines.line(QString::number(i), font);
        QCOMPARE(lines.line(u"いつも"_s, font).layout.get(), often);
        QVERIFY(lines.count() <= 2'000);
    }
    QCOMPARE(lines.line(u"9999"_s, font).layout->text(), u"9999"_s);
}

QTEST_MAIN(TestOneLineDelegate)
#include "test_one_line_delegate.moc"
