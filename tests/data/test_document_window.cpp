#include "tests/data/form_world.h"
#include "tests/support/drag.h"
#include "tests/support/troubled_database.h"

#include <QMenuBar>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Warning{.text = u"名称が最大入力値を超えています。最大入力値は全角32768文字です。"_s,
                         .title = u"Quillon システム監査部"_s};
const MessageBox Updated{.text = u"本データを更新しました。"_s, .title = u"Quillon 文献データ管理部"_s};
// sic: a document's content is called a definition here.
const MessageBox ContentTooLong{.text = u"定義が最大入力値を超えています。最大入力値は全角32000文字です。"_s,
                                .title = u"Quillon システム監査部"_s};

} // namespace

/// In what the window of a document differs from that of a definition.
class TestDocumentWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    static void fill(frmRefDoc& form, const QString& name, const QString& content)
    {
        FormWorld::enter(FormWorld::name(form), name);
        FormWorld::enter(FormWorld::definition(form), content);
    }

    frmRefDoc& newWindow() { return *new frmRefDoc(world->session, world->registry); }
    static QPushButton& button(QWidget& form, int number)
    {
        return *form.findChild<QPushButton*>(u"cmdSize(%1)"_s.arg(number));
    }
    /// Where a control stands in its window.
    static QRect place(const QWidget& form, const QString& designName)
    {
        const auto* control = form.findChild<QWidget*>(designName);
        return {control->mapTo(&form, QPoint()), control->size()};
    }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void menusHaveTheirCaptions()
    {
        frmRefDoc& form = newWindow();
        QCOMPARE(menuBarOf(*form.menuBar()), QStringList({u"データ(&D)"_s, u"リンク(&L)"_s, u"分類(&C)"_s}));
        QCOMPARE(entriesOf(*form.findChild<QMenu*>(u"mnuOpe"_s)),
                 QStringList({u"-mnuDataEntry 登録(&E)"_s, u"mnuDataUpdate 更新(&U)"_s,
                              u"mnuDataDelete 削除(&D)"_s, u"mnuDataLoadText テキストファイルの読込(&T)"_s,
                              u"mnuDataLine |"_s, u"mnuDataChange 画面の切り替え(&F2)"_s,
                              u"mnuDataCloseAll 全画面を閉じる(&A)"_s, u"mnuDataLine2 |"_s,
                              u"mnuDataClose 本画面を閉じる(&C)"_s}));
        QCOMPARE(entriesOf(*form.findChild<QMenu*>(u"mnuLink"_s)),
                 QStringList({u"mnuLinkMain 定義データ(&M)"_s, u"mnuLinkRefDoc 文献データ(&R)"_s,
                              u"mnuLinkRefFile ファイルデータ(&F)"_s, u"mnuLinkLine |"_s,
                              u"mnuLinkView リンク先表示(&V)"_s, u"mnuLinkDelete リンク削除(&D)"_s}));
        QCOMPARE(
            entriesOf(*form.findChild<QMenu*>(u"mnuCategory"_s)),
            QStringList({u"mnuCategoryEntry カテゴリに分類(&A)"_s, u"mnuCategoryDelete 分類を解除(&D)"_s}));
        for (const QString& menu : {u"mnuOpe"_s, u"mnuLink"_s, u"mnuCategory"_s})
            QVERIFY2(FormWorld::entry(form, menu)->isEnabled(), qPrintable(menu));
    }

    void buttonsForTheSizeSayWhatTheyDo()
    {
        frmRefDoc& form = newWindow();
        QStringList descriptions;
        for (int number = 0; number < 3; ++number)
            descriptions << button(form, number).accessibleDescription();
        QCOMPARE(descriptions, QStringList({u"内容の文字の大きさを12ポイントにします。"_s,
                                            u"内容の文字の大きさを10ポイントにします。"_s,
                                            u"内容の文字の大きさを9ポイントにします。"_s}));
    }

    void textCanBeLoadedInEveryMode()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        const QAction* entry = FormWorld::entry(form, u"mnuDataLoadText"_s);
        QVERIFY(entry->isEnabled());
        fill(form, u"本"_s, u"内容"_s);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(entry->isEnabled());
        world->add(u"紙"_s, Paper, u"薄い"_s);
        QVERIFY(FormWorld::entry(world->show<frmRefDoc>(Paper), u"mnuDataLoadText"_s)->isEnabled());
    }

    void displayModeLeavesTextLoadingAsItIs()
    {
        frmRefDoc& form = newWindow();
        FormWorld::entry(form, u"mnuDataLoadText"_s)->setEnabled(false);
        form.setMode(FormMode::Display);
        QVERIFY(!FormWorld::entry(form, u"mnuDataLoadText"_s)->isEnabled());
        form.setMode(FormMode::Registration);
        QVERIFY(FormWorld::entry(form, u"mnuDataLoadText"_s)->isEnabled());
    }

    void statusPanelsHaveToolTips()
    {
        QStringList toolTips;
        for (const QLabel* panel :
             newWindow().findChild<StatusPanels*>(u"sbStatus"_s)->findChildren<QLabel*>())
            toolTips << panel->toolTip();
        QCOMPARE(toolTips, QStringList({u"現在の文献データ画面のステータスを表示します。"_s,
                                        u"入力可能文字数を表示します。"_s}));
    }

    void buttonsSetTheSizeOfTheContent_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("points");
        QTest::newRow("large") << 0 << u"12(&L)"_s << 12;
        QTest::newRow("normal") << 1 << u"10(&N)"_s << 10;
        QTest::newRow("small") << 2 << u"9(&S)"_s << 9;
    }

    void buttonsSetTheSizeOfTheContent()
    {
        QFETCH(int, number);
        QFETCH(int, points);
        frmRefDoc& form = newWindow();
        QTEST(button(form, number).text(), "caption");
        form.setFieldText(2, u"内容"_s);
        QPlainTextEdit& content = FormWorld::definition(form);
        const int other = points == 12 ? 1 : 0;
        button(form, other).click();
        QVERIFY(content.font().pointSize() != points);
        button(form, number).click();
        QCOMPARE(content.font().pointSize(), points);
        QCOMPARE(content.document()->defaultFont().pointSize(), points); // what is drawn
        QCOMPARE(FormWorld::name(form).font(), newWindow().font());
        QCOMPARE(form.fieldText(2), u"内容"_s);
    }

    void sizeOfTheContentIsNotStored()
    {
        world->add(u"本"_s, Book, u"内容"_s);
        auto& form = world->show<frmRefDoc>(Book);
        const QFont before = FormWorld::definition(form).font();
        button(form, 0).click();
        QVERIFY(FormWorld::closes(form)); // and is no change that asks
        QCOMPARE(FormWorld::definition(world->show<frmRefDoc>(Book)).font(), before);
    }

    void controlsStandInTheirPlaces()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        for (const QSize size : {QSize(700, 600), QSize(1000, 500)}) {
            form.resize(size);
            FormWorld::processEvents();
            const QRect name = place(form, u"txtFields(0)"_s);
            const QRect identifier = place(form, u"txtFields(1)"_s);
            const QRect large = place(form, u"cmdSize(0)"_s);
            const QRect content = place(form, u"txtFields(2)"_s);
            const QRect links = place(form, u"lsvLink"_s);
            const QRect categories = place(form, u"lsvCategory"_s);
            QVERIFY(place(form, u"lblName"_s).right() < name.left());
            QVERIFY(name.right() < place(form, u"lblObjectID"_s).left());
            QVERIFY(identifier.right() > size.width() - 30); // at the right end
            QVERIFY(name.bottom() < large.top());
            QVERIFY(place(form, u"lblExplanation"_s).right() < large.left());
            QVERIFY(large.bottom() < content.top());
            QVERIFY(content.left() < 30 && content.right() > size.width() - 30); // over the full width
            QVERIFY(content.bottom() < links.top());
            QVERIFY(links.right() < size.width() / 2 + 10 && categories.left() > size.width() / 2 - 10);
            QCOMPARE(links.top(), categories.top());
            QVERIFY(links.left() < 30 && categories.right() > size.width() - 30);
        }
    }

    void windowCannotBeMadeSmallerThanItsLeastSize()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        form.resize(333, 333); // 5000 twips
        FormWorld::processEvents();
        QCOMPARE(form.frameSize(), QSize(467, 467)); // 7000 twips
        form.resize(333, 600);
        FormWorld::processEvents();
        QCOMPARE(form.frameSize().width(), 467);
        QCOMPARE(form.size().height(), 600);
    }

    void minimizedWindowKeepsItsSize()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        form.resize(700, 600);
        form.showMinimized();
        FormWorld::processEvents();
        form.showNormal();
        FormWorld::processEvents();
        QCOMPARE(form.size(), QSize(700, 600));
    }

    void linkListTakesNoDrops()
    {
        world->add(u"本"_s, Book, u"内容"_s);
        world->add(u"水"_s, Water, u"液体"_s);
        auto& form = world->show<frmRefDoc>(Book);
        QVERIFY(!drop(*FormWorld::list(form, u"lsvLink"_s).viewport(), Water));
        QCOMPARE(world->links(), QStringList());
    }

    void everyKeyWarnsOfATextThatIsFull_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("key");
        QTest::newRow("letter in the content") << 2 << int(Qt::Key_A);
        QTest::newRow("Enter in the content") << 2 << int(Qt::Key_Return);
        QTest::newRow("Delete in the content") << 2 << int(Qt::Key_Delete);
        QTest::newRow("Backspace in the content") << 2 << int(Qt::Key_Backspace);
        QTest::newRow("cursor key in the content") << 2 << int(Qt::Key_Right);
        QTest::newRow("function key in the content") << 2 << int(Qt::Key_F5);
        QTest::newRow("Shift in the content") << 2 << int(Qt::Key_Shift);
        QTest::newRow("blank in the content") << 2 << int(Qt::Key_Space);
        QTest::newRow("letter in the name") << 0 << int(Qt::Key_A);
        QTest::newRow("Enter in the name") << 0 << int(Qt::Key_Return);
        QTest::newRow("cursor key in the identifier") << 1 << int(Qt::Key_Left);
    }

    void everyKeyWarnsOfATextThatIsFull()
    {
        QFETCH(int, index);
        QFETCH(int, key);
        auto& form = world->beginRegistration<frmRefDoc>();
        auto* field = form.findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        const QString text(32768, u'内');
        form.setFieldText(index, text.chopped(1));
        QTest::keyClick(field, Qt::Key_F6); // one character less is silent
        form.setFieldText(index, text);
        world->dialogs.expect(Warning);
        world->dialogs.meanwhile([&] { QCOMPARE(form.fieldText(index), text); }); // before the key acts
        QTest::keyClick(field, static_cast<Qt::Key>(key));
    }

    void warningTakesNoKeyAway()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        const QString text(32768, u'内');
        form.setFieldText(2, text);
        world->dialogs.expect(Warning);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Return);
        QCOMPARE(form.fieldText(2), u'\n' + text);
        world->dialogs.expect(Warning);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Backspace);
        QCOMPARE(form.fieldText(2), text);
    }

    void refusedContentStillShowsRoomForMore()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        form.setFieldText(0, u"本"_s);
        form.setFieldText(2, QString(32001, u'内'));
        form.ShowInputCount(2);
        world->dialogs.expect(ContentTooLong);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角767文字"_s);
    }

    void fullDiskKeepsTheInput()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        const QString content = QString(20'000, u'内');
        fill(form, u"本"_s, content);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s)});
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1"_s); // the file may not grow any more
        world->dialogs.expect(untrapped(61));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 61));
        QCOMPARE(world->documents(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        QVERIFY(othersMayWrite(world->path));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(2), content);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1000000"_s);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + content));
        QCOMPARE(world->memberships(), QStringList(u"A-B|R-991231-001"_s));
        // An update that no longer fits leaves the old text.
        const QString longer = QString(31'000, u'長');
        fill(form, u"本"_s, longer);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1"_s);
        world->dialogs.expect(untrapped(61));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + content));
        QCOMPARE(form.fieldText(2), longer);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1000000"_s);
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + longer));
    }
};

QTEST_MAIN(TestDocumentWindow)
#include "test_document_window.moc"
