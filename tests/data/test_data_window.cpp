#include "tests/data/twin_fixture.h"
#include "tests/support/compare_text.h"

#include <cstdlib>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The windows of definitions and of documents: their controls, what they show, how texts come and go.
class TestDataWindow : public TwinFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void newWindowHasItsDesignTexts_data() { bothKinds(); }

    void newWindowHasItsDesignTexts()
    {
        DataForm& form = newWindow();
        QCOMPARE(form.windowTitle(), twin().title);
        QCOMPARE(form.windowName(), twin().windowName);
        QCOMPARE(form.fieldText(0), QString());
        QCOMPARE(form.fieldText(1), u"T-123456-123"_s);
        QCOMPARE(form.fieldText(2), QString());
        QCOMPARE(form.modeText(), twin().designedMode);
        QCOMPARE(FormWorld::panel(form, 2), QString());
    }

    void controlsTakeTheRoomOfTheWindow_data() { bothKinds(); }

    void controlsTakeTheRoomOfTheWindow()
    {
        DataForm& form = show();
        QWidget& name = FormWorld::name(form);
        QWidget& content = FormWorld::definition(form);
        ReportList& links = FormWorld::list(form, u"lsvLink"_s);
        ReportList& categories = FormWorld::list(form, u"lsvCategory"_s);
        const auto resize = [&form](const QSize& size) {
            form.resize(size);
            FormWorld::processEvents();
        };
        resize({700, 600});
        const QSize before = content.size();
        const int nameWidth = name.width();
        const QSize listsBefore(links.width() + categories.width(), links.height());
        resize({900, 800});
        QCOMPARE(content.width(), before.width() + 200);
        QCOMPARE(name.width(), nameWidth + 200);
        QCOMPARE(links.width() + categories.width(), listsBefore.width() + 200);
        QVERIFY(std::abs(links.width() - categories.width()) <= 1);
        QCOMPARE(links.height(), categories.height());
        QCOMPARE(content.height() + links.height(), before.height() + listsBefore.height() + 200);
        QVERIFY(content.height() > before.height());
        QVERIFY(links.height() > listsBefore.height());
        resize({1, 1}); // gets no smaller than its controls
        const QList<const QWidget*> controls = {&name, &FormWorld::identifier(form), &content, &links,
                                                &categories};
        for (const QWidget* control : controls) {
            const QSize least = control->minimumSizeHint();
            QVERIFY(control->width() >= least.width() && control->height() >= least.height());
            const QRect place(control->mapTo(&form, QPoint(0, 0)), control->size());
            QVERIFY(form.rect().contains(place));
        }
    }

    void menusFollowTheMode_data() { bothKinds(); }

    void menusFollowTheMode()
    {
        DataForm& form = beginRegistration();
        const auto enabled = [&](const QString& name) { return FormWorld::entry(form, name)->isEnabled(); };
        const QStringList shownOnly{u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s};
        for (const QString& name : shownOnly)
            QVERIFY2(!enabled(name), qPrintable(name));
        QVERIFY(enabled(u"mnuDataEntry"_s));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.windowTitle(), twin().title);

        fill(form, u"水"_s, u"液体"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        for (const QString& name : shownOnly)
            QVERIFY2(enabled(name), qPrintable(name));
        QVERIFY(!enabled(u"mnuDataEntry"_s));
        QCOMPARE(form.modeText(), u"表示モード"_s);
    }

    void openedDatumKeepsTheMenusOfANewWindow_data() { bothKinds(); }

    void openedDatumKeepsTheMenusOfANewWindow()
    {
        DataForm& form = show();
        QVERIFY(!FormWorld::entry(form, u"mnuDataEntry"_s)->isEnabled());
        for (const QString& name : {u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s})
            QVERIFY2(FormWorld::entry(form, name)->isEnabled(), qPrintable(name));
    }

    void fieldsHaveLabelsAndToolTips_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("toolTip");
        QTest::newRow("name of a definition")
            << Water << 0 << u"名称"_s << u"データの名称(全角で25文字以内)"_s;
        QTest::newRow("identifier of a definition")
            << Water << 1 << u"ID :"_s << u"データのID｡データ登録時に自動的に生成されます｡"_s;
        QTest::newRow("definition") << Water << 2 << u"定義"_s << u"データの定義(全角122文字以内)"_s;
        QTest::newRow("name of a document")
            << Book << 0 << u"名称"_s << u"文献の名称。最大入力数は全角で25文字です。"_s;
        QTest::newRow("identifier of a document")
            << Book << 1 << u"ID:"_s << u"情報の認識符号｡情報登録時に自動的に生成されます｡"_s;
        QTest::newRow("document") << Book << 2 << u"文献"_s
                                  << u"文献の内容。最大入力数は全角で32,768文字です。"_s;
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

    void listsHaveTheirHeadersNamesAndToolTips_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("headers");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("toolTip");
        const QString linkToolTip = u"データのリンク先。ダブルクリックで表示できます。"_s;
        QTest::newRow("links of a definition")
            << Water << u"lsvLink"_s << QStringList({u"リンク先データ"_s, u"種別"_s, u"識別符号"_s})
            << u"リンク一覧"_s << linkToolTip;
        QTest::newRow("links of a document")
            << Book << u"lsvLink"_s << QStringList({u"リンク先名称"_s, u"形式"_s, u"ＩＤ"_s})
            << u"リンク一覧"_s << linkToolTip;
        QTest::newRow("categories of a definition")
            << Water << u"lsvCategory"_s << QStringList({u"分類先カテゴリ"_s, u"識別符号"_s, u"位置"_s})
            << u"分類一覧"_s << u"データ分類先。複数の登録も可能です。"_s;
        QTest::newRow("categories of a document")
            << Book << u"lsvCategory"_s << QStringList({u"分類先カテゴリ名"_s, u"カテゴリID"_s, u"位置"_s})
            << u"分類一覧"_s << u"データの分類先。複数の登録も可能です。"_s;
    }

    void listsHaveTheirHeadersNamesAndToolTips()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, headers);
        QFETCH(QString, name);
        QFETCH(QString, toolTip);
        const ReportList& shown = FormWorld::list(newWindow(), list);
        QCOMPARE(headersOf(shown.rows()), headers);
        QCOMPARE(shown.accessibleName(), name);
        QCOMPARE(shown.toolTip(), toolTip);
        QCOMPARE(shown.accessibleDescription(), toolTip);
    }

    void identifierIsReadOnlyAndCanBeReached_data() { bothKinds(); }

    void identifierIsReadOnlyAndCanBeReached()
    {
        const QLineEdit& identifier = FormWorld::identifier(newWindow());
        QVERIFY(identifier.isReadOnly());
        QVERIFY(identifier.focusPolicy() & Qt::TabFocus);
    }

    void tabGoesThroughTheWindowAsTheEyeDoes_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QStringList>("places");
        QTest::newRow("definition") << Water
                                    << QStringList({u"txtFields(0)"_s, u"txtFields(1)"_s, u"txtFields(2)"_s,
                                                    u"lsvLink"_s, u"lsvCategory"_s});
        QTest::newRow("document") << Book
                                  << QStringList({u"txtFields(0)"_s, u"txtFields(1)"_s, u"cmdSize(0)"_s,
                                                  u"cmdSize(1)"_s, u"cmdSize(2)"_s, u"txtFields(2)"_s,
                                                  u"lsvLink"_s, u"lsvCategory"_s});
    }

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        QFETCH(QStringList, places);
        DataForm& form = beginRegistration();
        QCOMPARE(form.focusWidget(), &FormWorld::name(form));
        QCOMPARE(tabRound(form), places);
    }

    void shownDatumFillsTheWindow_data() { bothKinds(); }

    void shownDatumFillsTheWindow()
    {
        const QString first = twin().first;
        world->add(u"氷"_s, twin().second, u"固体"_s);
        world->add(u"図"_s, Picture, u"未入力"_s);
        TestWorld::addRow(world->session.RsLink, {twin().second, first});
        TestWorld::addRow(world->session.RsLink, {first, Picture});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, first});
        TestWorld::addRow(world->session.RsCategory, {u"Z"_s, first});

        DataForm& form = show(u"<b>水</b> & [*] ｱ😀"_s, u"<i>液体</i>\r\n二"_s);

        QVERIFY(form.isVisible());
        QVERIFY(!form.isModal());
        QVERIFY(compareText(form.windowTitle(),
                            twin().shownCaption + u"<b>水</b> & [*][*] ｱ😀"_s)); // shows one "[*]"
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QCOMPARE(FormWorld::name(form).text(), u"<b>水</b> & [*] ｱ😀"_s);
        QCOMPARE(FormWorld::identifier(form).text(), first);
        QCOMPARE(FormWorld::definition(form).toPlainText(), u"<i>液体</i>\n二"_s);
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvLink"_s)),
                 QStringList({u"氷|"_s + twin().kindWord + u'|' + twin().second, u"図|FILE|F-991231-001"_s}));
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList({u"自然|A|"_s, u"不明|Z|"_s}));
    }

    void eachDatumHasOneWindow_data() { bothKinds(); }

    void eachDatumHasOneWindow()
    {
        DataForm& first = show();
        world->add(u"氷"_s, twin().second, u"固体"_s);
        world->show<DataForm>(twin().second);
        FormWorld::enter(FormWorld::name(first), u"変更"_s);
        QCOMPARE(world->windowCount(), 2);
        ShowData(world->session, twin().first);
        QCOMPARE(world->windowCount(), 2);
        QCOMPARE(first.fieldText(0), u"変更"_s); // nothing is loaded again
        FormWorld::processEvents();
        QTRY_COMPARE(QApplication::activeWindow(), &first);
    }

    void registrationWindowIsOneAndListsTheSelectedCategory_data() { bothKinds(); }

    void registrationWindowIsOneAndListsTheSelectedCategory()
    {
        world->giveCategories(1);
        world->mainWindow.selected = 10;
        DataForm& form = beginRegistration();
        QCOMPARE(form.fieldText(1), twin().first);
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList({u"分類1|A|"_s}));
        QCOMPARE(form.categoryRows().size(), 1U);
        QCOMPARE(form.categoryRows().front().name, u"分類1"_s);
        QCOMPARE(form.categoryRows().front().identifier, u"A"_s);
        beginRegistration();
        QCOMPARE(world->windowCount(), 1);
    }

    void textComesBackAsItWasLoaded_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("text");
        const auto both = [](const QString& what, const QString& text) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, what)) << identifier << text;
        };
        both(u"empty"_s, {});
        both(u"LF"_s, u"一\n二\n"_s);
        both(u"CR LF"_s, u"一\r\n二\r\n"_s);
        both(u"CR"_s, u"一\r二"_s);
        both(u"mixed"_s, u"\r\n一\n二\r三"_s);
        both(u"separators"_s, u"一\u2028二\u2029三"_s);
        both(u"NUL"_s, u"一"_s + QChar(0) + u"二"_s);
        both(u"blanks"_s, u"  一\u00a0二\t三  "_s);
        both(u"half-width kana and emoji"_s, u"ｱｲｳﾞ😀"_s);
        both(u"markup"_s, u"<p>一</p>&amp;"_s);
        both(u"noncharacters"_s, u"一"_s + QChar(0xfdd0) + u"二"_s + QChar(0xfdd1));
    }

    void textComesBackAsItWasLoaded()
    {
        QFETCH(QString, text);
        DataForm& form = newWindow();
        for (const int index : {0, 2}) {
            form.setFieldText(index, text);
            QVERIFY(compareText(form.fieldText(index), text));
        }
    }

    void textThatWasChangedBackIsAsItWasLoaded_data() { bothKinds(); }

    void textThatWasChangedBackIsAsItWasLoaded()
    {
        DataForm& form = newWindow();
        form.setFieldText(0, u"一\n二"_s);
        form.setFieldText(2, u"一\r\n二\u2028三"_s);
        QTest::keyClicks(&FormWorld::name(form), u"x"_s);
        QTest::keyClicks(&FormWorld::definition(form), u"x"_s);
        QVERIFY(form.fieldText(0) != u"一\n二"_s);
        QVERIFY(compareText(form.fieldText(2), u"x一\r\n二\u2028三"));
        QTest::keyClick(&FormWorld::name(form), Qt::Key_Backspace);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Backspace);
        QVERIFY(compareText(form.fieldText(0), u"一\n二"));
        QVERIFY(compareText(form.fieldText(2), u"一\r\n二\u2028三"));
    }

    void enterBreaksTheLineOfAContent_data() { bothKinds(); }

    void enterBreaksTheLineOfAContent()
    {
        DataForm& form = newWindow();
        QPlainTextEdit& content = FormWorld::definition(form);
        QTest::keyClicks(&content, u"a"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        QTest::keyClicks(&content, u"b"_s);
        QTest::keyClick(&content, Qt::Key_Return, Qt::ShiftModifier);
        QTest::keyClicks(&content, u"c"_s);
        QVERIFY(compareText(form.fieldText(2), u"a\nb\nc"));
    }

    void changedTextKeepsItsBlanks_data() { bothKinds(); }

    void changedTextKeepsItsBlanks()
    {
        DataForm& form = newWindow();
        form.setFieldText(2, u"一\u00a0二"_s);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        QTest::keyClicks(&FormWorld::definition(form), u"x"_s);
        QVERIFY(compareText(form.fieldText(2), u"一\u00a0二x"));
    }

    void fieldOutsideTheWindowIsAnError_data() { bothKinds(); }

    void fieldOutsideTheWindowIsAnError()
    {
        DataForm& form = newWindow();
        QVERIFY_THROWS_EXCEPTION(Error, form.fieldText(3));
        QVERIFY_THROWS_EXCEPTION(Error, form.fieldText(-1));
    }

    void largeFontsAskForALargerWindow_data() { bothKinds(); }

    void largeFontsAskForALargerWindow()
    {
        const QFont before = QApplication::font();
        DataForm& normal = newWindow();
        QFont large = before;
        large.setPointSizeF(before.pointSizeF() * 2);
        QApplication::setFont(large);
        DataForm& enlarged = newWindow();
        QApplication::setFont(before);
        QVERIFY(normal.width() >= 640 && normal.height() >= 480);
        QVERIFY(enlarged.width() >= enlarged.minimumSizeHint().width());
        QVERIFY(enlarged.minimumSizeHint().height() > normal.minimumSizeHint().height());
    }
};

QTEST_MAIN(TestDataWindow)
#include "test_data_window.moc"
