#include "tests/data/twin_fixture.h"
#include "tests/support/held_key.h"
#include "ui/data/window_switch.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The keyboard in the windows of definitions and of documents: the remaining count, Esc, compositions, F2.
class TestDataWindowKeys : public TwinFixture
{
    Q_OBJECT

private:
    /// Shows the n-th datum of the kind.
    DataForm& open(int number) const
    {
        const QString identifier = twin().kind + u"-991231-00%1"_s.arg(number);
        world->add(u"名%1"_s.arg(number), identifier, u"義"_s);
        return world->show<DataForm>(identifier);
    }
    static QWidget& field(DataForm& form, int index)
    {
        return *form.findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
    }
    /// Panel 2 when the content takes so many full-width characters.
    static QString countWith(double characters)
    {
        return twin().label + u"：残り全角"_s + QString::number(twin().room - characters) + u"文字"_s;
    }
    static void bothKindsInEveryField()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("index");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"name"_s)) << identifier << 0;
            QTest::newRow(tag(identifier, u"identifier"_s)) << identifier << 1;
            QTest::newRow(tag(identifier, u"content"_s)) << identifier << 2;
        }
    }

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void countIsMeasuredInFullWidthCharacters_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("count");
        const auto name = [](const QString& what, const QString& text, const QString& count) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, what)) << identifier << 0 << text << count;
        };
        name(u"empty name"_s, {}, u"名称：残り全角25文字"_s);
        name(u"one half-width"_s, u"a"_s, u"名称：残り全角24.5文字"_s);
        name(u"one full-width"_s, u"水"_s, u"名称：残り全角24文字"_s);
        name(u"half-width kana"_s, u"ｱｲｳ"_s, u"名称：残り全角23.5文字"_s);
        name(u"full"_s, QString(25, u'水'), u"名称：残り全角0文字"_s);
        name(u"half too long"_s, QString(25, u'水') + u"a"_s, u"名称：残り全角-0.5文字"_s);
        name(u"too long"_s, QString(28, u'水'), u"名称：残り全角-3文字"_s);
        name(u"emoji"_s, u"😀"_s, u"名称：残り全角24文字"_s);
        const auto content = [](const QString& what, const QString& text, const QString& inDefinition,
                                const QString& inDocument) {
            QTest::newRow(tag(Water, what)) << Water << 2 << text << inDefinition;
            QTest::newRow(tag(Book, what)) << Book << 2 << text << inDocument;
        };
        content(u"empty content"_s, {}, u"定義：残り全角127文字"_s, u"文献：残り全角32768文字"_s);
        content(u"content"_s, u"液体a"_s, u"定義：残り全角124.5文字"_s, u"文献：残り全角32765.5文字"_s);
        content(u"a line break is one byte here"_s, u"内\n容"_s, u"定義：残り全角124.5文字"_s,
                u"文献：残り全角32765.5文字"_s);
        content(u"and two in a file of Windows"_s, u"内\r\n容"_s, u"定義：残り全角124文字"_s,
                u"文献：残り全角32765文字"_s);
        QTest::newRow("full definition") << Water << 2 << QString(127, u'液') << u"定義：残り全角0文字"_s;
        QTest::newRow("long definition") << Water << 2 << QString(130, u'液') << u"定義：残り全角-3文字"_s;
        QTest::newRow("full document") << Book << 2 << QString(32768, u'内') << u"文献：残り全角0文字"_s;
        QTest::newRow("long document") << Book << 2 << QString(32771, u'内') << u"文献：残り全角-3文字"_s;
    }

    void countIsMeasuredInFullWidthCharacters()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        DataForm& form = newWindow();
        form.setFieldText(index, text);
        form.ShowInputCount(static_cast<qint16>(index));
        QTEST(FormWorld::panel(form, 2), "count");
    }

    void otherFieldsHaveNoCount_data() { bothKinds(); }

    void otherFieldsHaveNoCount()
    {
        DataForm& form = newWindow();
        for (const qint16 index : {1, 3, -1})
            form.ShowInputCount(index);
        QCOMPARE(FormWorld::panel(form, 2), QString());
    }

    void countLagsOneKeyBehind_data() { bothKinds(); }

    void countLagsOneKeyBehind()
    {
        DataForm& form = beginRegistration();
        QLineEdit& name = FormWorld::name(form);
        QTest::keyClick(&name, Qt::Key_A);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角25文字"_s);
        QTest::keyClick(&name, Qt::Key_B);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24.5文字"_s);
        QTest::keyClick(&name, Qt::Key_Backspace);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
        QPlainTextEdit& content = FormWorld::definition(form);
        QTest::keyClick(&content, Qt::Key_A);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0));
        QTest::keyClick(&content, Qt::Key_Return);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0.5));
        QTest::keyClick(&content, Qt::Key_Backspace);
        QCOMPARE(FormWorld::panel(form, 2), countWith(1));
        QTest::keyClick(&content, Qt::Key_Left);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0.5));
        QTest::keyClick(&FormWorld::identifier(form), Qt::Key_Left); // has no count of its own
        QCOMPARE(FormWorld::panel(form, 2), countWith(0.5));
    }

    void countFollowsTheFocus_data() { bothKinds(); }

    void countFollowsTheFocus()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        QFocusEvent event(QEvent::FocusIn);
        QCoreApplication::sendEvent(&FormWorld::definition(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), countWith(2));
        QCoreApplication::sendEvent(&FormWorld::name(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
        QCoreApplication::sendEvent(&FormWorld::identifier(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
    }

    void countFollowsAnInputMethodOneStepBehind_data() { bothKinds(); }

    void countFollowsAnInputMethodOneStepBehind()
    {
        DataForm& form = beginRegistration();
        QPlainTextEdit& content = FormWorld::definition(form);
        compose(content, u"ないよう"_s);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0)); // not yet text
        commit(content, u"内容"_s);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0));
        compose(content, u"あ"_s);
        QCOMPARE(FormWorld::panel(form, 2), countWith(2));
        QCOMPARE(form.fieldText(2), u"内容"_s);
    }

    void textThatIsNotConfirmedDoesNotCount_data() { bothKinds(); }

    void textThatIsNotConfirmedDoesNotCount()
    {
        DataForm& form = beginRegistration();
        QLineEdit& name = FormWorld::name(form);
        compose(name, u"みず"_s);
        QTest::keyClick(&name, Qt::Key_A);
        form.ShowInputCount(0);
        QVERIFY(!form.fieldText(0).contains(u"みず"_s));
        name.clear();
        compose(FormWorld::definition(form), u"えきたい"_s);
        form.ShowInputCount(2);
        QCOMPARE(FormWorld::panel(form, 2), countWith(0));
        commit(FormWorld::definition(form), u"液体"_s);
        form.ShowInputCount(2);
        QCOMPARE(FormWorld::panel(form, 2), countWith(2));
    }

    void escapeInAFieldClosesTheWindow_data() { bothKindsInEveryField(); }

    void escapeInAFieldClosesTheWindow()
    {
        QFETCH(int, index);
        // However long the content is, this key warns of nothing.
        const QPointer<DataForm> form(&show(u"水"_s, QString(twin().longest, u'内')));
        QTest::keyClick(&field(*form, index), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void escapeAsksAsEveryCloseAndCounts_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("count");
        QTest::newRow("name of a definition") << Water << 0 << u"名称：残り全角23文字"_s;
        QTest::newRow("definition") << Water << 2 << u"定義：残り全角125文字"_s;
        QTest::newRow("name of a document") << Book << 0 << u"名称：残り全角23文字"_s;
        QTest::newRow("document") << Book << 2 << u"文献：残り全角32766文字"_s;
    }

    void escapeAsksAsEveryCloseAndCounts()
    {
        QFETCH(int, index);
        DataForm& form = beginRegistration();
        if (index == 0)
            FormWorld::enter(FormWorld::name(form), u"内容"_s);
        else
            FormWorld::enter(FormWorld::definition(form), u"内容"_s);
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::Cancel);
        QTest::keyClick(&field(form, index), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
        QTEST(FormWorld::panel(form, 2), "count");
    }

    void escapeOutsideTheFieldsClosesNothing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("place");
        for (const QString& identifier : {Water, Book}) {
            for (const QString& place : {u"lsvLink"_s, u"lsvCategory"_s})
                QTest::newRow(tag(identifier, place)) << identifier << place;
        }
        QTest::newRow("button for the size of a document") << Book << u"cmdSize(0)"_s;
    }

    void escapeOutsideTheFieldsClosesNothing()
    {
        QFETCH(QString, place);
        DataForm& form = show();
        QTest::keyClick(form.findChild<QWidget*>(place), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
    }

    void escapeHeldDownClosesOneWindow_data() { bothKindsInEveryField(); }

    void escapeHeldDownClosesOneWindow()
    {
        QFETCH(int, index);
        const QPointer<DataForm> behind(&open(1));
        const QPointer<DataForm> front(&open(2));
        QTest::keyPress(&field(*front, index), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(front.isNull());
        repeatKey(field(*behind, index), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!behind.isNull());
    }

    void escapeBelongsToACompositionFirst_data() { bothKinds(); }

    void escapeBelongsToACompositionFirst()
    {
        const QPointer<DataForm> form(&beginRegistration());
        QLineEdit& name = FormWorld::name(*form);
        compose(name, u"みず"_s);
        QTest::keyClick(&name, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        compose(name, QString()); // the composition was taken back
        QPlainTextEdit& content = FormWorld::definition(*form);
        compose(content, u"ないよう"_s);
        QTest::keyClick(&content, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        QTest::keyClick(&content, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void compositionInTheNameThatIsTakenBackLeavesEscape_data() { bothKinds(); }

    void compositionInTheNameThatIsTakenBackLeavesEscape()
    {
        const QPointer<DataForm> form(&beginRegistration());
        compose(FormWorld::name(*form), u"みず"_s);
        compose(FormWorld::name(*form), QString());
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void enterConfirmsACompositionBeforeItBreaksTheLine_data() { bothKinds(); }

    void enterConfirmsACompositionBeforeItBreaksTheLine()
    {
        DataForm& form = beginRegistration();
        QPlainTextEdit& content = FormWorld::definition(form);
        compose(content, u"内容"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        QCOMPARE(form.fieldText(2), u"内容"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        QCOMPARE(form.fieldText(2), u"内容\n"_s);
    }

    void keysOfACompositionWarnOfNothing_data() { bothKinds(); }

    void keysOfACompositionWarnOfNothing()
    {
        DataForm& form = beginRegistration();
        form.setFieldText(2, QString(static_cast<qsizetype>(twin().room), u'内'));
        compose(FormWorld::definition(form), u"あ"_s);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Left);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_A);
        QCOMPARE(FormWorld::panel(form, 2), countWith(twin().room));
    }

    void switchDoesNothingForOneWindow_data() { bothKinds(); }

    void switchDoesNothingForOneWindow()
    {
        DataForm& form = open(1);
        QTest::keyRelease(&FormWorld::name(form), Qt::Key_F2);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
    }

    void switchGoesRoundInTheOrderOfOpening_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("windows");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"two"_s)) << identifier << 2;
            QTest::newRow(tag(identifier, u"three"_s)) << identifier << 3;
        }
    }

    void switchGoesRoundInTheOrderOfOpening()
    {
        QFETCH(int, windows);
        std::vector<DataForm*> forms;
        for (int i = 1; i <= windows; ++i)
            forms.push_back(&open(i));
        QTRY_COMPARE(QApplication::activeWindow(), forms.back());
        // From the last to the first, then onward; the key is seen whatever has the focus.
        const QStringList places{u"txtFields(0)"_s, u"txtFields(2)"_s, u"lsvLink"_s, u"lsvCategory"_s};
        std::size_t current = forms.size() - 1;
        for (const QString& place : places) {
            QTest::keyRelease(forms[current]->findChild<QWidget*>(place), Qt::Key_F2);
            current = (current + 1) % forms.size();
            QTRY_VERIFY2(QApplication::activeWindow() == forms[current], qPrintable(place));
        }
        QVERIFY(FormWorld::choose(*forms[current], u"mnuDataChange"_s));
        QTRY_COMPARE(QApplication::activeWindow(), forms[(current + 1) % forms.size()]);
    }

    void switchKeyHeldDownSwitchesOnce_data() { bothKinds(); }

    void switchKeyHeldDownSwitchesOnce()
    {
        DataForm& first = open(1);
        open(2);
        DataForm& third = open(3);
        QTRY_COMPARE(QApplication::activeWindow(), &third);
        for (const QString& place : {u"txtFields(0)"_s, u"lsvLink"_s}) {
            repeatKey(*third.findChild<QWidget*>(place), Qt::Key_F2);
            FormWorld::processEvents();
            QCOMPARE(QApplication::activeWindow(), &third);
        }
        repeatKey(third, Qt::Key_F2);
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &third);
        holdKey(FormWorld::name(third), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &first);
    }

    void switchLeavesACompositionAlone_data() { bothKinds(); }

    void switchLeavesACompositionAlone()
    {
        DataForm& first = open(1);
        DataForm& second = open(2);
        QTRY_COMPARE(QApplication::activeWindow(), &second);
        compose(FormWorld::name(second), u"みず"_s);
        QTest::keyRelease(&FormWorld::name(second), Qt::Key_F2);
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &second);
        compose(FormWorld::name(second), QString());
        QTest::keyRelease(&FormWorld::name(second), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &first);
    }

    void switchGoesThroughDefinitionsAndDocuments()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
        auto& water = world->show(Water);
        auto& book = world->show<frmRefDoc>(Book);
        auto& file = world->beginRegistration<frmRefFileEntry>(); // is passed over
        auto& other = world->beginRegistration<frmRefDoc>();
        QTRY_COMPARE(QApplication::activeWindow(), &other);
        QTest::keyRelease(&FormWorld::name(other), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &water);
        QTest::keyRelease(&FormWorld::definition(water), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &book);
        QTest::keyRelease(book.findChild<QWidget*>(u"cmdSize(1)"_s), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &other);
        QTest::keyRelease(FormWorld::list(other, u"lsvLink"_s).viewport(),
                          Qt::Key_F3); // another key does nothing
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &other);
        QVERIFY(FormWorld::choose(other, u"mnuDataChange"_s));
        QTRY_COMPARE(QApplication::activeWindow(), &water);
        QTest::keyRelease(&file, Qt::Key_F2); // knows no switching
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &water);
    }

    void switchCountsWindowsOfOneDatumOnce()
    {
        FakeWindows windows;
        FakeMainWindow mainWindow;
        windows.list.push_back(&mainWindow);
        const auto add = [&](const QString& kind, const QString& identifier) -> FakeDataWindow& {
            windows.newDataWindow(kind).setFieldText(1, identifier);
            return *windows.dataWindows.back();
        };
        FakeDataWindow& early = add(u"M"_s, u"M-1"_s);
        add(u"M"_s, u"M-1"_s);
        windows.registrationWindow(u"F"_s).setFieldText(1, u"F-1"_s); // is passed over
        FakeDataWindow& document = add(u"R"_s, u"R-1"_s);

        for (const auto& window : windows.dataWindows)
            window->calls = CallLog(); // of its own

        switchDataWindow(windows, u"M-1"_s); // from the later one, also when asked in the earlier one
        QCOMPARE(document.calls.take(), QStringList(u"frmRefDoc.bringToFront"_s));
        switchDataWindow(windows, u"R-1"_s);
        QCOMPARE(early.calls.take(), QStringList(u"frmMainData.bringToFront"_s));
        switchDataWindow(windows, u"M-1"_s);
        QCOMPARE(document.calls.take(), QStringList(u"frmRefDoc.bringToFront"_s));
        for (const auto& window : windows.dataWindows)
            QCOMPARE(window->calls.lines(), QStringList());
    }
};

QTEST_MAIN(TestDataWindowKeys)
#include "test_data_window_keys.moc"
