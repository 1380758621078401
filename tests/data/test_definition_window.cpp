#include "tests/data/form_world.h"
#include "tests/support/compare_text.h"
#include "ui/data/text_fields.h"

#include <QMenuBar>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDefinitionWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void newWindowHasItsDesignTexts()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QCOMPARE(form->windowTitle(), u"定義データ画面"_s);
        QCOMPARE(form->windowName(), u"frmMainData"_s);
        QCOMPARE(form->fieldText(0), QString());
        QCOMPARE(form->fieldText(1), u"T-123456-123"_s);
        QCOMPARE(form->fieldText(2), QString());
        QCOMPARE(form->modeText(), u"表示モード"_s);
        QCOMPARE(FormWorld::panel(*form, 2), QString());
    }

    void menusHaveTheirCaptions()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QCOMPARE(menuBarOf(*form->menuBar()), QStringList({u"データ&D)"_s, u"リンク(&L)"_s, u"分類(&C)"_s}));
        QCOMPARE(
            entriesOf(*form->findChild<QMenu*>(u"mnuData"_s)),
            QStringList({u"mnuDataDelete 削除(&D)"_s, u"mnuDataUpdate 更新(&U)"_s,
                         u"-mnuDataEntry 登録(&E)"_s, u"-mnuDataNoDef 未定義登録(&N)"_s, u"mnuDataLine |"_s,
                         u"mnuDataChange 画面の切り替え(&F2)"_s, u"mnuDataCloseAll 全画面を閉じる(&A)"_s,
                         u"mnuDataLine2 |"_s, u"mnuDataClose 本画面を閉じる(&C)"_s}));
        QCOMPARE(entriesOf(*form->findChild<QMenu*>(u"mnuLink"_s)),
                 QStringList({u"mnuLinkMain 定義データ(&M)"_s, u"mnuLinkRefDoc 文献データ(&R)"_s,
                              u"mnuLinkRefFile ファイルデータ(&F)"_s, u"mnuLinkCategory 分類先を指定"_s,
                              u"mnuLinkLine |"_s, u"mnuLinkView リンク先表示(&V)"_s,
                              u"mnuLinkDelete リンク削除(&D)"_s}));
        QCOMPARE(
            entriesOf(*form->findChild<QMenu*>(u"mnuCategory"_s)),
            QStringList({u"mnuCategoryEntry カテゴリに分類(&E)"_s, u"mnuCategoryDelete 分類を解除(&D)"_s}));
    }

    void menusFollowTheMode()
    {
        frmMainData& form = world->beginRegistration();
        const auto enabled = [&](const QString& name) { return FormWorld::entry(form, name)->isEnabled(); };
        const QStringList shownOnly{u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s};
        const QStringList registrationOnly{u"mnuDataEntry"_s, u"mnuDataNoDef"_s};
        for (const QString& name : shownOnly)
            QVERIFY2(!enabled(name), qPrintable(name));
        for (const QString& name : registrationOnly)
            QVERIFY2(enabled(name), qPrintable(name));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.windowTitle(), u"定義データ画面"_s);

        FormWorld::enter(FormWorld::name(form), u"水"_s);
        FormWorld::enter(FormWorld::definition(form), u"液体"_s);
        world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s});
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        for (const QString& name : shownOnly)
            QVERIFY2(enabled(name), qPrintable(name));
        for (const QString& name : registrationOnly)
            QVERIFY2(!enabled(name), qPrintable(name));
        QCOMPARE(form.modeText(), u"表示モード"_s);
    }

    void menuThatTheWindowLacksChangesNothing()
    {
        auto* form = new frmMainData(world->session, world->registry);
        form->setMenuEnabled(u"mnuDataLoadText"_s, false);
        QCOMPARE(FormWorld::entry(*form, u"mnuDataLoadText"_s), nullptr);
    }

    void fieldsHaveLabelsAndToolTips_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("toolTip");
        QTest::newRow("name") << 0 << u"名称"_s << u"データの名称(全角で25文字以内)"_s;
        QTest::newRow("identifier") << 1 << u"ID :"_s << u"データのID｡データ登録時に自動的に生成されます｡"_s;
        QTest::newRow("definition") << 2 << u"定義"_s << u"データの定義(全角122文字以内)"_s;
    }

    void fieldsHaveLabelsAndToolTips()
    {
        QFETCH(int, index);
        QFETCH(QString, label);
        QFETCH(QString, toolTip);
        auto* form = new frmMainData(world->session, world->registry);
        auto* field = form->findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        QVERIFY(field != nullptr);
        QVERIFY(compareText(field->toolTip(), toolTip));
        QCOMPARE(field->accessibleDescription(), toolTip);
        QCOMPARE(field->accessibleName(), QString());
        QCOMPARE(labelsOf(*field), QStringList(label));
    }

    void listsHaveTheirHeadersNamesAndToolTips()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QCOMPARE(headersOf(FormWorld::rows(*form, u"lsvLink"_s)),
                 QStringList({u"リンク先データ"_s, u"種別"_s, u"識別符号"_s}));
        QCOMPARE(headersOf(FormWorld::rows(*form, u"lsvCategory"_s)),
                 QStringList({u"分類先カテゴリ"_s, u"識別符号"_s, u"位置"_s}));
        const auto* links = form->findChild<ReportList*>(u"lsvLink"_s);
        const auto* categories = form->findChild<ReportList*>(u"lsvCategory"_s);
        QCOMPARE(links->accessibleName(), u"リンク一覧"_s);
        QCOMPARE(links->toolTip(), u"データのリンク先。ダブルクリックで表示できます。"_s);
        QCOMPARE(links->accessibleDescription(), links->toolTip());
        QCOMPARE(categories->accessibleName(), u"分類一覧"_s);
        QCOMPARE(categories->toolTip(), u"データ分類先。複数の登録も可能です。"_s);
        QCOMPARE(categories->accessibleDescription(), categories->toolTip());
    }

    void identifierIsReadOnlyAndCanBeReached()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QVERIFY(FormWorld::identifier(*form).isReadOnly());
        QVERIFY(FormWorld::identifier(*form).focusPolicy() & Qt::TabFocus);
    }

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        frmMainData& form = world->beginRegistration();
        QCOMPARE(form.focusWidget(), &FormWorld::name(form));
        QCOMPARE(tabRound(form), QStringList({u"txtFields(0)"_s, u"txtFields(1)"_s, u"txtFields(2)"_s,
                                              u"lsvLink"_s, u"lsvCategory"_s}));
    }

    void shownDefinitionFillsTheWindow()
    {
        world->add(u"<b>水</b> & [*] ｱ😀"_s, Water, u"<i>液体</i>"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        TestWorld::addRow(world->session.RsLink, {u"M-991231-002"_s, Water});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});

        frmMainData& form = world->show(Water);

        QVERIFY(form.isVisible());
        QVERIFY(compareText(form.windowTitle(), u"定義画面 - <b>水</b> & [*][*] ｱ😀")); // shows one "[*]"
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QCOMPARE(FormWorld::name(form).text(), u"<b>水</b> & [*] ｱ😀"_s);
        QCOMPARE(FormWorld::identifier(form).text(), Water);
        QCOMPARE(FormWorld::definition(form).toPlainText(), u"<i>液体</i>"_s);
        const ReportModel& links = FormWorld::rows(form, u"lsvLink"_s);
        QCOMPARE(links.rowCount(), 1);
        QCOMPARE(links.text(0, 0), u"氷");
        QCOMPARE(links.text(0, 1), u"定義");
        QCOMPARE(links.text(0, 2), u"M-991231-002");
        const ReportModel& categories = FormWorld::rows(form, u"lsvCategory"_s);
        QCOMPARE(categories.rowCount(), 1);
        QCOMPARE(categories.text(0, 0), u"自然");
        QCOMPARE(categories.text(0, 1), u"A");
        QCOMPARE(categories.text(0, 2), u"");
    }

    void eachDatumHasOneWindow()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        frmMainData& water = world->show(Water);
        world->show(u"M-991231-002"_s);
        QCOMPARE(world->windowCount(), 2);
        ShowData(world->session, Water);
        QCOMPARE(world->windowCount(), 2);
        FormWorld::processEvents();
        QTRY_COMPARE(QApplication::activeWindow(), &water);
    }

    void registrationWindowIsOneAndListsTheSelectedCategory()
    {
        world->mainWindow.nodes.assign(9, {u"FIXED"_s, u"固定"_s, QString()});
        world->mainWindow.nodes.push_back({u"A"_s, u"自然"_s, u"CATEGORY"_s});
        world->mainWindow.selected = 10;
        frmMainData& form = world->beginRegistration();
        QCOMPARE(form.fieldText(1), Water);
        QCOMPARE(form.categoryRows().size(), 1U);
        QCOMPARE(form.categoryRows().front().name, u"自然"_s);
        QCOMPARE(form.categoryRows().front().identifier, u"A"_s);
        world->beginRegistration();
        QCOMPARE(world->windowCount(), 1);
    }

    void textComesBackAsItWasLoaded_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("LF") << u"一\n二\n"_s;
        QTest::newRow("CR LF") << u"一\r\n二\r\n"_s;
        QTest::newRow("CR") << u"一\r二"_s;
        QTest::newRow("mixed") << u"\r\n一\n二\r三"_s;
        QTest::newRow("separators") << u"一\u2028二\u2029三"_s;
        QTest::newRow("NUL") << (u"一"_s + QChar(0) + u"二"_s);
        QTest::newRow("blanks") << u"  一\u00a0二\t三  "_s;
        QTest::newRow("half-width kana and emoji") << u"ｱｲｳﾞ😀"_s;
        QTest::newRow("markup") << u"<p>一</p>&amp;"_s;
        QTest::newRow("noncharacters") << (u"一"_s + QChar(0xfdd0) + u"二"_s + QChar(0xfdd1));
    }

    void textComesBackAsItWasLoaded()
    {
        QFETCH(QString, text);
        auto* form = new frmMainData(world->session, world->registry);
        for (const int index : {0, 2}) {
            form->setFieldText(index, text);
            QVERIFY(compareText(form->fieldText(index), text));
        }
    }

    void textThatWasChangedBackIsAsItWasLoaded()
    {
        auto* form = new frmMainData(world->session, world->registry);
        form->setFieldText(0, u"一\n二"_s);
        form->setFieldText(2, u"一\r\n二\u2028三"_s);
        QTest::keyClicks(&FormWorld::name(*form), u"x"_s);
        QTest::keyClicks(&FormWorld::definition(*form), u"x"_s);
        QVERIFY(form->fieldText(0) != u"一\n二"_s);
        QVERIFY(compareText(form->fieldText(2), u"x一\r\n二\u2028三"));
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Backspace);
        QTest::keyClick(&FormWorld::definition(*form), Qt::Key_Backspace);
        QVERIFY(compareText(form->fieldText(0), u"一\n二"));
        QVERIFY(compareText(form->fieldText(2), u"一\r\n二\u2028三"));
    }

    void enterBreaksTheLineOfADefinition()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QPlainTextEdit& definition = FormWorld::definition(*form);
        QTest::keyClicks(&definition, u"a"_s);
        QTest::keyClick(&definition, Qt::Key_Return);
        QTest::keyClicks(&definition, u"b"_s);
        QTest::keyClick(&definition, Qt::Key_Return, Qt::ShiftModifier);
        QTest::keyClicks(&definition, u"c"_s);
        QVERIFY(compareText(form->fieldText(2), u"a\nb\nc"));
    }

    void changedTextKeepsItsBlanks()
    {
        auto* form = new frmMainData(world->session, world->registry);
        form->setFieldText(2, u"一\u00a0二"_s);
        FormWorld::definition(*form).moveCursor(QTextCursor::End);
        QTest::keyClicks(&FormWorld::definition(*form), u"x"_s);
        QVERIFY(compareText(form->fieldText(2), u"一\u00a0二x"));
    }

    void fieldOutsideTheWindowIsAnError()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QVERIFY_THROWS_EXCEPTION(Error, form->fieldText(3));
        QVERIFY_THROWS_EXCEPTION(Error, form->fieldText(-1));
    }

    void largeFontsAskForALargerWindow()
    {
        const QFont before = QApplication::font();
        auto* normal = new frmMainData(world->session, world->registry);
        QFont large = before;
        large.setPointSizeF(before.pointSizeF() * 2);
        QApplication::setFont(large);
        auto* enlarged = new frmMainData(world->session, world->registry);
        QApplication::setFont(before);
        QVERIFY(normal->width() >= 640 && normal->height() >= 480);
        QVERIFY(enlarged->width() >= enlarged->minimumSizeHint().width());
        QVERIFY(enlarged->minimumSizeHint().height() > normal->minimumSizeHint().height());
    }
};

QTEST_MAIN(TestDefinitionWindow)
#include "test_definition_window.moc"
