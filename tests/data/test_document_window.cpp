#include "app/base/twips.h"
#include "core/form_mode.h"
#include "tests/data/form_world.h"
#include "tests/support/compare_text.h"

#include <QMenuBar>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDocumentWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

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

    void newWindowHasItsDesignTexts()
    {
        frmRefDoc& form = newWindow();
        QCOMPARE(form.windowTitle(), u"文献データ画面"_s);
        QCOMPARE(form.windowName(), u"frmRefDoc"_s);
        QCOMPARE(form.fieldText(0), QString());
        QCOMPARE(form.fieldText(1), u"T-123456-123"_s);
        QCOMPARE(form.fieldText(2), QString());
        QCOMPARE(form.modeText(), u"ステータス"_s);
        QCOMPARE(FormWorld::panel(form, 2), QString());
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

    void menusFollowTheMode()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        const auto enabled = [&](const QString& name) { return FormWorld::entry(form, name)->isEnabled(); };
        const QStringList shownOnly{u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s};
        for (const QString& name : shownOnly)
            QVERIFY2(!enabled(name), qPrintable(name));
        QVERIFY(enabled(u"mnuDataEntry"_s));
        QVERIFY(enabled(u"mnuDataLoadText"_s));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.windowTitle(), u"文献データ画面"_s);

        SetFormMode(form, DisplayFormMode);
        for (const QString& name : shownOnly)
            QVERIFY2(enabled(name), qPrintable(name));
        QVERIFY(!enabled(u"mnuDataEntry"_s));
        QVERIFY(enabled(u"mnuDataLoadText"_s));
        QCOMPARE(form.modeText(), u"表示モード"_s);
    }

    void displayModeLeavesTextLoadingAsItIs()
    {
        frmRefDoc& form = newWindow();
        form.setMenuEnabled(u"mnuDataLoadText"_s, false);
        SetFormMode(form, DisplayFormMode);
        QVERIFY(!FormWorld::entry(form, u"mnuDataLoadText"_s)->isEnabled());
        SetFormMode(form, RegistrationFormMode);
        QVERIFY(FormWorld::entry(form, u"mnuDataLoadText"_s)->isEnabled());
    }

    void openedDocumentKeepsTheMenusOfANewWindow()
    {
        world->add(u"本"_s, Book, u"内容"_s);
        auto& form = world->show<frmRefDoc>(Book);
        QVERIFY(!FormWorld::entry(form, u"mnuDataEntry"_s)->isEnabled());
        for (const QString& name :
             {u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s, u"mnuDataLoadText"_s})
            QVERIFY2(FormWorld::entry(form, name)->isEnabled(), qPrintable(name));
    }

    void fieldsHaveLabelsAndToolTips_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("toolTip");
        QTest::newRow("name") << 0 << u"名称"_s << u"文献の名称。最大入力数は全角で25文字です。"_s;
        QTest::newRow("identifier") << 1 << u"ID:"_s << u"情報の認識符号｡情報登録時に自動的に生成されます｡"_s;
        QTest::newRow("content") << 2 << u"文献"_s << u"文献の内容。最大入力数は全角で32,768文字です。"_s;
    }

    void fieldsHaveLabelsAndToolTips()
    {
        QFETCH(int, index);
        QFETCH(QString, label);
        QFETCH(QString, toolTip);
        const auto* field = newWindow().findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        QVERIFY(field != nullptr);
        QVERIFY(compareText(field->toolTip(), toolTip));
        QCOMPARE(field->accessibleDescription(), toolTip);
        QCOMPARE(field->accessibleName(), QString());
        QCOMPARE(labelsOf(*field), QStringList(label));
    }

    void listsHaveTheirHeadersNamesAndToolTips()
    {
        frmRefDoc& form = newWindow();
        QCOMPARE(headersOf(FormWorld::rows(form, u"lsvLink"_s)),
                 QStringList({u"リンク先名称"_s, u"形式"_s, u"ＩＤ"_s}));
        QCOMPARE(headersOf(FormWorld::rows(form, u"lsvCategory"_s)),
                 QStringList({u"分類先カテゴリ名"_s, u"カテゴリID"_s, u"位置"_s}));
        const ReportList& links = FormWorld::list(form, u"lsvLink"_s);
        QCOMPARE(links.accessibleName(), u"リンク一覧"_s);
        QCOMPARE(links.toolTip(), u"データのリンク先。ダブルクリックで表示できます。"_s);
        QCOMPARE(links.accessibleDescription(), links.toolTip());
        const ReportList& categories = FormWorld::list(form, u"lsvCategory"_s);
        QCOMPARE(categories.accessibleName(), u"分類一覧"_s);
        QCOMPARE(categories.toolTip(), u"データの分類先。複数の登録も可能です。"_s);
        QCOMPARE(categories.accessibleDescription(), categories.toolTip());
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

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        QCOMPARE(form.focusWidget(), &FormWorld::name(form));
        QCOMPARE(tabRound(form),
                 QStringList({u"txtFields(0)"_s, u"txtFields(1)"_s, u"cmdSize(0)"_s, u"cmdSize(1)"_s,
                              u"cmdSize(2)"_s, u"txtFields(2)"_s, u"lsvLink"_s, u"lsvCategory"_s}));
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
        form.resize(pixelsFromTwips(5000), pixelsFromTwips(5000));
        FormWorld::processEvents();
        QCOMPARE(form.frameSize(), QSize(pixelsFromTwips(7000), pixelsFromTwips(7000)));
        form.resize(pixelsFromTwips(5000), 600);
        FormWorld::processEvents();
        QCOMPARE(form.frameSize().width(), pixelsFromTwips(7000));
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

    void shownDocumentFillsTheWindow()
    {
        world->add(u"<b>本</b>"_s, Book, u"<i>内容</i>\r\n二"_s);
        world->add(u"水"_s, Water, u"液体"_s);
        TestWorld::addRow(world->session.RsLink, {Book, Water});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Book});
        TestWorld::addRow(world->session.RsCategory, {u"Z"_s, Book});

        auto& form = world->show<frmRefDoc>(Book);

        QVERIFY(form.isVisible());
        QVERIFY(!form.isModal());
        QVERIFY(compareText(form.windowTitle(), u"文献画面-<b>本</b>"));
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QCOMPARE(form.fieldText(0), u"<b>本</b>"_s);
        QCOMPARE(FormWorld::identifier(form).text(), Book);
        QCOMPARE(FormWorld::definition(form).toPlainText(), u"<i>内容</i>\n二"_s);
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvLink"_s)), QStringList({u"水|定義|M-991231-001"_s}));
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList({u"自然|A|"_s, u"不明|Z|"_s}));
    }

    void eachDocumentHasOneWindow()
    {
        world->add(u"本"_s, Book, u"内容"_s);
        world->add(u"紙"_s, Paper, u"内容"_s);
        auto& book = world->show<frmRefDoc>(Book);
        world->show<frmRefDoc>(Paper);
        FormWorld::enter(FormWorld::name(book), u"変更"_s);
        ShowData(world->session, Book);
        QCOMPARE(world->windowCount(), 2);
        QCOMPARE(book.fieldText(0), u"変更"_s); // nothing is loaded again
        FormWorld::processEvents();
        QTRY_COMPARE(QApplication::activeWindow(), &book);
    }

    void registrationWindowIsOneAndListsTheSelectedCategory()
    {
        world->giveCategories(1);
        world->mainWindow.selected = 10;
        auto& form = world->beginRegistration<frmRefDoc>();
        QCOMPARE(form.fieldText(1), Book);
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList({u"分類1|A|"_s}));
        world->beginRegistration<frmRefDoc>();
        QCOMPARE(world->windowCount(), 1);
    }
};

QTEST_MAIN(TestDocumentWindow)
#include "test_document_window.moc"
