#include "tests/data/form_world.h"
#include "ui/data/digit_letter_key.h"
#include "ui/data/window_switch.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Warning{.text = u"名称が最大入力値を超えています。最大入力値は全角127文字です。"_s,
                         .title = u"Quillon システム監査部"_s};

} // namespace

class TestDefinitionKeys : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    frmMainData& open(int number)
    {
        const QString identifier = u"M-991231-00%1"_s.arg(number);
        world->add(u"名%1"_s.arg(number), identifier, u"義"_s);
        return world->show(identifier);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void countIsMeasuredInFullWidthCharacters_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("count");
        QTest::newRow("empty name") << 0 << QString() << u"名称：残り全角25文字"_s;
        QTest::newRow("one half-width") << 0 << u"a"_s << u"名称：残り全角24.5文字"_s;
        QTest::newRow("one full-width") << 0 << u"水"_s << u"名称：残り全角24文字"_s;
        QTest::newRow("half-width kana") << 0 << u"ｱｲｳ"_s << u"名称：残り全角23.5文字"_s;
        QTest::newRow("full") << 0 << QString(25, u'水') << u"名称：残り全角0文字"_s;
        QTest::newRow("half too long") << 0 << (QString(25, u'水') + u"a"_s) << u"名称：残り全角-0.5文字"_s;
        QTest::newRow("too long") << 0 << QString(28, u'水') << u"名称：残り全角-3文字"_s;
        QTest::newRow("emoji") << 0 << u"😀"_s << u"名称：残り全角24文字"_s;
        QTest::newRow("empty definition") << 2 << QString() << u"定義：残り全角127文字"_s;
        QTest::newRow("definition") << 2 << u"液体a"_s << u"定義：残り全角124.5文字"_s;
        QTest::newRow("long definition") << 2 << QString(130, u'液') << u"定義：残り全角-3文字"_s;
    }

    void countIsMeasuredInFullWidthCharacters()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        auto* form = new frmMainData(world->session, world->registry);
        form->setFieldText(index, text);
        form->ShowInputCount(static_cast<qint16>(index));
        QTEST(FormWorld::panel(*form, 2), "count");
    }

    void otherFieldsHaveNoCount()
    {
        auto* form = new frmMainData(world->session, world->registry);
        for (const qint16 index : {1, 3, -1})
            form->ShowInputCount(index);
        QCOMPARE(FormWorld::panel(*form, 2), QString());
    }

    void countLagsOneKeyBehind()
    {
        frmMainData& form = world->beginRegistration();
        QLineEdit& name = FormWorld::name(form);
        QTest::keyClick(&name, Qt::Key_A);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角25文字"_s);
        QTest::keyClick(&name, Qt::Key_B);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24.5文字"_s);
        QTest::keyClick(&name, Qt::Key_Backspace);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Return);
        QCOMPARE(FormWorld::panel(form, 2), u"定義：残り全角127文字"_s);
        QTest::keyClick(&FormWorld::identifier(form), Qt::Key_Left); // has no count of its own
        QCOMPARE(FormWorld::panel(form, 2), u"定義：残り全角127文字"_s);
    }

    void countFollowsTheFocus()
    {
        frmMainData& form = world->beginRegistration();
        QFocusEvent event(QEvent::FocusIn);
        FormWorld::enter(FormWorld::definition(form), u"液体"_s);
        QCoreApplication::sendEvent(&FormWorld::definition(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"定義：残り全角125文字"_s);
        QCoreApplication::sendEvent(&FormWorld::name(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角25文字"_s);
        QCoreApplication::sendEvent(&FormWorld::identifier(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角25文字"_s);
    }

    void textThatIsNotConfirmedDoesNotCount()
    {
        frmMainData& form = world->beginRegistration();
        QLineEdit& name = FormWorld::name(form);
        compose(name, u"みず"_s);
        QTest::keyClick(&name, Qt::Key_A);
        form.ShowInputCount(0);
        QVERIFY(!form.fieldText(0).contains(u"みず"_s));
        name.clear();
        compose(FormWorld::definition(form), u"えきたい"_s);
        form.ShowInputCount(2);
        QCOMPARE(FormWorld::panel(form, 2), u"定義：残り全角127文字"_s);
        commit(FormWorld::definition(form), u"液体"_s);
        form.ShowInputCount(2);
        QCOMPARE(FormWorld::panel(form, 2), u"定義：残り全角125文字"_s);
    }

    void longTextWarnsWhileTypingAndTakesTheKey_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("warns");
        QTest::newRow("126 in the name") << 0 << 126 << false;
        QTest::newRow("127 in the name") << 0 << 127 << true;
        QTest::newRow("126 in the definition") << 2 << 126 << false;
        QTest::newRow("127 in the definition") << 2 << 127 << true;
    }

    void longTextWarnsWhileTypingAndTakesTheKey()
    {
        QFETCH(int, index);
        QFETCH(int, length);
        QFETCH(bool, warns);
        frmMainData& form = world->beginRegistration();
        const QString text(length, u'水');
        form.setFieldText(index, text);
        auto* field = form.findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        // To the end of the text: the End key would stop at the end of a wrapped line.
        FormWorld::name(form).end(false);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        if (warns) {
            world->dialogs.expect(Warning);
            world->dialogs.meanwhile([&] { QCOMPARE(form.fieldText(index), text); }); // before the key acts
        }
        QTest::keyClick(field, Qt::Key_A);
        QCOMPARE(form.fieldText(index), text + u'a');
        QTest::keyClick(field, Qt::Key_Backspace); // no digit and no letter
        QTest::keyClick(field, Qt::Key_Space);
    }

    void digitsAndLettersAreToldByTheirKey_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("scanCode");
        QTest::addColumn<bool>("counts");
        const int plain = Qt::NoModifier;
        const int shift = Qt::ShiftModifier;
        const int control = Qt::ControlModifier;
        const int pad = Qt::KeypadModifier;
        QTest::newRow("0") << int(Qt::Key_0) << plain << 0 << true;
        QTest::newRow("9") << int(Qt::Key_9) << plain << 18 << true;
        QTest::newRow("a") << int(Qt::Key_A) << plain << 38 << true;
        QTest::newRow("Z") << int(Qt::Key_Z) << shift << 52 << true;
        QTest::newRow("Ctrl+V") << int(Qt::Key_V) << control << 55 << true;
        QTest::newRow("Shift+1") << int(Qt::Key_Exclam) << shift << 10 << true;
        QTest::newRow("Shift+1, place unknown") << int(Qt::Key_Exclam) << shift << 0 << true;
        QTest::newRow("Shift+2, Japanese") << int(Qt::Key_QuoteDbl) << shift << 11 << true;
        QTest::newRow("Shift+colon, Japanese") << int(Qt::Key_Asterisk) << shift << 48 << false;
        QTest::newRow("at, Japanese") << int(Qt::Key_At) << plain << 34 << false;
        QTest::newRow("number pad") << int(Qt::Key_5) << pad << 84 << false;
        QTest::newRow("blank") << int(Qt::Key_Space) << plain << 65 << false;
        QTest::newRow("minus") << int(Qt::Key_Minus) << plain << 20 << false;
        QTest::newRow("Enter") << int(Qt::Key_Return) << plain << 36 << false;
        QTest::newRow("F2") << int(Qt::Key_F2) << plain << 68 << false;
    }

    void digitsAndLettersAreToldByTheirKey()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, scanCode);
        const QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers),
                              static_cast<quint32>(scanCode), 0, 0);
        QTEST(isDigitOrLetterKey(event), "counts");
    }

    void escapeInAFieldClosesTheWindow_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("name") << 0;
        QTest::newRow("identifier") << 1;
        QTest::newRow("definition") << 2;
    }

    void escapeInAFieldClosesTheWindow()
    {
        QFETCH(int, index);
        const QPointer<frmMainData> form(&open(1));
        QTest::keyClick(form->findChild<QWidget*>(u"txtFields(%1)"_s.arg(index)), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void escapeAsksAsEveryCloseAndCounts()
    {
        frmMainData& form = world->beginRegistration();
        FormWorld::enter(FormWorld::name(form), u"水"_s);
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::Cancel);
        QTest::keyClick(&FormWorld::name(form), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
    }

    void escapeOutsideTheFieldsClosesNothing()
    {
        frmMainData& form = open(1);
        QTest::keyClick(form.findChild<QWidget*>(u"lsvLink"_s), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
    }

    void escapeBelongsToACompositionFirst()
    {
        const QPointer<frmMainData> form(&world->beginRegistration());
        QLineEdit& name = FormWorld::name(*form);
        compose(name, u"みず"_s);
        QTest::keyClick(&name, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        compose(name, QString()); // the composition was taken back
        QTest::keyClick(&name, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void switchDoesNothingForOneWindow()
    {
        frmMainData& form = open(1);
        QTest::keyRelease(&FormWorld::name(form), Qt::Key_F2);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
    }

    void switchGoesRoundInTheOrderOfOpening_data()
    {
        QTest::addColumn<int>("windows");
        QTest::newRow("two") << 2;
        QTest::newRow("three") << 3;
    }

    void switchGoesRoundInTheOrderOfOpening()
    {
        QFETCH(int, windows);
        std::vector<frmMainData*> forms;
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

    void switchLeavesACompositionAlone()
    {
        frmMainData& first = open(1);
        frmMainData& second = open(2);
        QTRY_COMPARE(QApplication::activeWindow(), &second);
        compose(FormWorld::name(second), u"みず"_s);
        QTest::keyRelease(&FormWorld::name(second), Qt::Key_F2);
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &second);
        compose(FormWorld::name(second), QString());
        QTest::keyRelease(&FormWorld::name(second), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &first);
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

QTEST_MAIN(TestDefinitionKeys)
#include "test_definition_keys.moc"
