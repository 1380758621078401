#include "tests/data/twin_fixture.h"
#include "tests/support/held_key.h"
#include "tests/support/outside_press.h"
#include "ui/data/find_bar.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QWheelEvent>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Searching in the content of a definition or document, and the size of its letters.
class TestFindBar : public TwinFixture
{
    Q_OBJECT

private:
    static FindBar& bar(DataForm& form) { return *form.findChild<FindBar*>(); }
    static QLineEdit& wanted(DataForm& form) { return *form.findChild<QLineEdit*>(u"txtFindInText"_s); }
    static QString count(DataForm& form) { return form.findChild<QLabel*>(u"lblFindCount"_s)->text(); }
    static QString selected(DataForm& form)
    {
        return FormWorld::definition(form).textCursor().selectedText();
    }
    static int at(DataForm& form) { return FormWorld::definition(form).textCursor().selectionStart(); }
    DataForm& showActive(const QString& content) const
    {
        DataForm& form = show(u"水"_s, content);
        form.activateWindow();
        return form;
    }
    static void press(DataForm& form, int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(form.windowHandle(), static_cast<Qt::Key>(key), modifiers);
        FormWorld::processEvents();
    }
    static void turnWheel(QPlainTextEdit& text, int delta, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event({5, 5}, text.viewport()->mapToGlobal(QPointF(5, 5)), {}, {0, delta}, Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(text.viewport(), &event);
    }
    /// Opens the bar by its key and types.
    void find(DataForm& form, const QString& text) const
    {
        QVERIFY(QTest::qWaitForWindowActive(&form));
        press(form, Qt::Key_F, Qt::ControlModifier);
        wanted(form).setText(text);
    }

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void barIsHiddenUntilItIsAskedFor_data() { bothKinds(); }

    void barIsHiddenUntilItIsAskedFor()
    {
        DataForm& form = showActive(u"水は水"_s);
        QVERIFY(bar(form).isHidden());
        find(form, u"水"_s);
        QVERIFY(bar(form).isVisible());
        QVERIFY(wanted(form).hasFocus());
    }

    void buttonsBehindABoxDoNothing_data() { bothKinds(); }

    void buttonsBehindABoxDoNothing()
    {
        DataForm& form = showActive(u"水は水"_s);
        find(form, u"水"_s);
        QMessageBox box;
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        pressFromOutside(*form.findChild<QPushButton*>(u"cmdFindNext"_s));
        QCOMPARE(at(form), 0);
        pressFromOutside(*form.findChild<QPushButton*>(u"cmdFindClose"_s));
        QVERIFY(bar(form).isVisible());
        box.hide();
        pressFromOutside(*form.findChild<QPushButton*>(u"cmdFindNext"_s));
        QCOMPARE(at(form), 2);
    }

    void placesAreShownOneAfterTheOther_data() { bothKinds(); }

    void placesAreShownOneAfterTheOther()
    {
        DataForm& form = showActive(u"水は水、みず"_s);
        find(form, u"水"_s);
        QCOMPARE(count(form), u"1 / 2"_s);
        QCOMPARE(at(form), 0);
        QTest::keyClick(&wanted(form), Qt::Key_Return);
        QCOMPARE(count(form), u"2 / 2"_s);
        QCOMPARE(at(form), 2);
        QTest::keyClick(&wanted(form), Qt::Key_Return); // from the beginning again
        QCOMPARE(at(form), 0);
        QTest::keyClick(&wanted(form), Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(at(form), 2);
        QTest::keyClick(&wanted(form), Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(at(form), 0);
        QCOMPARE(selected(form), u"水"_s);
        QVERIFY(wanted(form).hasFocus());
    }

    void placesAreComparedAsInTheSearch_data() { bothKinds(); }

    void placesAreComparedAsInTheSearch()
    {
        DataForm& form = showActive(u"ｶﾞｽとABC"_s);
        find(form, u"がす"_s);
        QCOMPARE(selected(form), u"ｶﾞｽ"_s);
        wanted(form).setText(u"ａｂｃ"_s);
        QCOMPARE(selected(form), u"ABC"_s);
        wanted(form).setText(u"無い"_s);
        QCOMPARE(count(form), u"見つかりません"_s);
        wanted(form).clear();
        QCOMPARE(count(form), QString());
    }

    void buttonsAndKeysGoOnFromTheCursor_data() { bothKinds(); }

    void buttonsAndKeysGoOnFromTheCursor()
    {
        DataForm& form = showActive(u"水一水二水"_s);
        find(form, u"水"_s);
        form.findChild<QPushButton*>(u"cmdFindNext"_s)->click();
        QCOMPARE(at(form), 2);
        press(form, Qt::Key_F3);
        QCOMPARE(at(form), 4);
        press(form, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(at(form), 2);
        form.findChild<QPushButton*>(u"cmdFindPrevious"_s)->click();
        QCOMPARE(at(form), 0);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        press(form, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(at(form), 4);
    }

    void textThatChangesIsSearchedAnew_data() { bothKinds(); }

    void textThatChangesIsSearchedAnew()
    {
        DataForm& form = showActive(u"水一"_s);
        find(form, u"水"_s);
        QCOMPARE(count(form), u"1 / 1"_s);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        FormWorld::definition(form).insertPlainText(u"水二水"_s);
        QTRY_COMPARE(count(form), u"3 件"_s); // none of them is selected
        press(form, Qt::Key_F3);
        QCOMPARE(count(form), u"1 / 3"_s);
        FormWorld::definition(form).document()->undo();
        FormWorld::definition(form).document()->undo();
        world->dialogs.expect({.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
                              Answer::No);
        FormWorld::enter(FormWorld::name(form), u"別"_s);
        QVERIFY(FormWorld::closes(form));
    }

    void escapeClosesTheBarAndNotTheWindow_data() { bothKinds(); }

    void escapeClosesTheBarAndNotTheWindow()
    {
        const QPointer<DataForm> form(&showActive(u"水"_s));
        find(*form, u"水"_s);
        QTest::keyClick(&wanted(*form), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!form.isNull() && form->isVisible());
        QVERIFY(bar(*form).isHidden());
        QVERIFY(FormWorld::definition(*form).hasFocus());
        QVERIFY(FormWorld::definition(*form).extraSelections().isEmpty());
    }

    void escapeOnAButtonOfTheBarClosesTheBarAlone_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("button");
        for (const QString& identifier : {Water, Book}) {
            for (const QString& button : {u"cmdFindPrevious"_s, u"cmdFindNext"_s, u"cmdFindClose"_s})
                QTest::newRow(tag(identifier, button).constData()) << identifier << button;
        }
    }

    void escapeOnAButtonOfTheBarClosesTheBarAlone()
    {
        QFETCH(const QString, button);
        const QPointer<DataForm> form(&showActive(u"水"_s));
        find(*form, u"水"_s);
        auto* asked = form->findChild<QPushButton*>(button);
        asked->setFocus(Qt::TabFocusReason);
        QVERIFY(asked->hasFocus());
        press(*form, Qt::Key_Escape);
        QVERIFY(!form.isNull() && form->isVisible());
        QVERIFY(bar(*form).isHidden());
        QVERIFY(FormWorld::definition(*form).hasFocus());
    }

    void escapeThatIsHeldClosesTheBarAlone_data() { bothKinds(); }

    void escapeThatIsHeldClosesTheBarAlone()
    {
        const QPointer<DataForm> form(&showActive(u"水"_s));
        find(*form, u"水"_s);
        form->findChild<QPushButton*>(u"cmdFindNext"_s)->setFocus(Qt::TabFocusReason);
        QTest::keyPress(form->windowHandle(), Qt::Key_Escape);
        for (int time = 0; time < 3; ++time) {
            FormWorld::processEvents();
            QVERIFY(!form.isNull() && form->isVisible());
            repeatKey(*form->focusWidget(), Qt::Key_Escape);
        }
        FormWorld::processEvents();
        QVERIFY(!form.isNull() && form->isVisible());
        QVERIFY(bar(*form).isHidden());
        // One that was held before the bar got the keyboard leaves it open.
        QTest::keyRelease(form->windowHandle(), Qt::Key_Escape);
        find(*form, u"水"_s);
        repeatKey(*form->findChild<QPushButton*>(u"cmdFindNext"_s), Qt::Key_Escape);
        QVERIFY(bar(*form).isVisible());
    }

    void selectedWordIsWhatIsSearched_data() { bothKinds(); }

    void selectedWordIsWhatIsSearched()
    {
        DataForm& form = showActive(u"水は\n水"_s);
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QTextCursor cursor = FormWorld::definition(form).textCursor();
        cursor.setPosition(0);
        cursor.setPosition(1, QTextCursor::KeepAnchor);
        FormWorld::definition(form).setTextCursor(cursor);
        press(form, Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(wanted(form).text(), u"水"_s);
        FormWorld::definition(form).selectAll(); // two lines are no word
        press(form, Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(wanted(form).text(), u"水"_s);
    }

    void searchingChangesNothing_data() { bothKinds(); }

    void searchingChangesNothing()
    {
        DataForm& form = showActive(u"水は水"_s);
        find(form, u"水"_s);
        QTest::keyClick(&wanted(form), Qt::Key_Return);
        QVERIFY(FormWorld::closes(form)); // without a question
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"水は水"_s)));
    }

    void textThatWasSearchedElsewhereIsShown_data() { bothKinds(); }

    void textThatWasSearchedElsewhereIsShown()
    {
        DataForm& form = showActive(u"火と水と水"_s);
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QWidget* const before = form.focusWidget();
        form.showPlaceOf(u"水"_s);
        QVERIFY(bar(form).isVisible());
        QCOMPARE(wanted(form).text(), u"水"_s);
        QCOMPARE(at(form), 2);
        QCOMPARE(count(form), u"1 / 2"_s);
        QCOMPARE(form.focusWidget(), before);
    }

    void textThatIsNotThereOpensNoBar_data() { bothKinds(); }

    void textThatIsNotThereOpensNoBar()
    {
        DataForm& form = showActive(u"火"_s);
        form.showPlaceOf(u"水"_s);
        QVERIFY(bar(form).isHidden());
        form.showPlaceOf({});
        QVERIFY(bar(form).isHidden());
    }

    void openBarTellsThatTheTextIsNotThere_data() { bothKinds(); }

    void openBarTellsThatTheTextIsNotThere()
    {
        DataForm& form = showActive(u"水と水と水"_s);
        find(form, u"水"_s);
        QCOMPARE(count(form), u"1 / 3"_s);
        form.showPlaceOf(u"やま"_s);
        QVERIFY(bar(form).isVisible());
        QCOMPARE(wanted(form).text(), u"やま"_s);
        QCOMPARE(count(form), u"見つかりません"_s);
        QVERIFY(FormWorld::definition(form).extraSelections().isEmpty());
    }

    void tabGoesThroughTheBarBelowTheText_data() { bothKinds(); }

    void tabGoesThroughTheBarBelowTheText()
    {
        DataForm& form = showActive(u"水"_s);
        find(form, u"水"_s);
        FormWorld::definition(form).setFocus();
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            QTest::keyClick(form.focusWidget(), Qt::Key_Tab);
            order << form.focusWidget()->objectName();
        }
        QCOMPARE(order, QStringList({u"txtFindInText"_s, u"cmdFindPrevious"_s, u"cmdFindNext"_s,
                                     u"cmdFindClose"_s, u"lsvLink"_s}));
    }

    void controlsSayWhatTheyDo_data() { bothKinds(); }

    void controlsSayWhatTheyDo()
    {
        DataForm& form = showActive(u"水"_s);
        find(form, u"水"_s);
        auto* label = form.findChild<QLabel*>(u"lblFindInText"_s);
        QCOMPARE(label->text(), u"検索:"_s);
        QCOMPARE(label->buddy(), &wanted(form));
        QCOMPARE(wanted(form).toolTip(),
                 u"本文から検索する文字列。Enter で次へ、Shift + Enter で前へ移ります。"_s);
        const auto button = [&](const QString& name) { return form.findChild<QPushButton*>(name); };
        QCOMPARE(button(u"cmdFindPrevious"_s)->text(), u"前へ"_s);
        QCOMPARE(button(u"cmdFindPrevious"_s)->toolTip(), u"Shift + F3"_s);
        QCOMPARE(button(u"cmdFindNext"_s)->text(), u"次へ"_s);
        QCOMPARE(button(u"cmdFindNext"_s)->toolTip(), u"F3"_s);
        QCOMPARE(button(u"cmdFindClose"_s)->text(), u"閉じる"_s);
        button(u"cmdFindClose"_s)->click();
        QVERIFY(bar(form).isHidden());
    }

    void placesBeyondAHundredThousandAreNotCounted_data() { bothKinds(); }

    void placesBeyondAHundredThousandAreNotCounted()
    {
        DataForm& form = showActive(u"水"_s);
        find(form, u"水"_s);
        form.setFieldText(2, QString(100'001, u'水'));
        press(form, Qt::Key_F3);
        QCOMPARE(count(form), u"100000 件以上"_s);
        world->dialogs.expect({.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
                              Answer::No);
        QVERIFY(FormWorld::closes(form));
    }

    void wheelWithControlMakesTheTextLarger_data() { bothKinds(); }

    void wheelWithControlMakesTheTextLarger()
    {
        DataForm& form = showActive(u"水"_s);
        QPlainTextEdit& text = FormWorld::definition(form);
        const auto turn = [&](int delta, Qt::KeyboardModifiers modifiers) {
            turnWheel(text, delta, modifiers);
        };
        const double before = QFontInfo(text.font()).pointSizeF();
        turn(120, Qt::ControlModifier);
        QCOMPARE(qRound(text.font().pointSizeF()), qRound(before + 1));
        turn(60, Qt::ControlModifier); // half a notch
        QCOMPARE(qRound(text.font().pointSizeF()), qRound(before + 1));
        turn(60, Qt::ControlModifier);
        QCOMPARE(qRound(text.font().pointSizeF()), qRound(before + 2));
        turn(120, Qt::NoModifier);
        QCOMPARE(qRound(text.font().pointSizeF()), qRound(before + 2));
        turn(-120 * 200, Qt::ControlModifier);
        QCOMPARE(qRound(text.font().pointSizeF()), 6);
        turn(120 * 200, Qt::ControlModifier);
        QCOMPARE(qRound(text.font().pointSizeF()), 72);
    }

    void keysWithControlMakeTheTextLarger_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<int>("points");
        const auto row = [](const QString& name, int key, Qt::KeyboardModifiers modifiers, int points) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, name).constData()) << identifier << key << modifiers << points;
        };
        const Qt::KeyboardModifiers control = Qt::ControlModifier;
        row(u"plus"_s, Qt::Key_Plus, control, 1);
        row(u"plus with Shift"_s, Qt::Key_Plus, control | Qt::ShiftModifier, 1);
        row(u"plus of the number pad"_s, Qt::Key_Plus, control | Qt::KeypadModifier, 1);
        row(u"plus of a Japanese keyboard"_s, Qt::Key_Semicolon, control, 1);
        row(u"plus of an English keyboard"_s, Qt::Key_Equal, control, 1);
        row(u"minus"_s, Qt::Key_Minus, control, -1);
        row(u"minus of the number pad"_s, Qt::Key_Minus, control | Qt::KeypadModifier, -1);
        row(u"AltGr"_s, Qt::Key_Plus, control | Qt::AltModifier, 0);
        row(u"plus alone"_s, Qt::Key_Plus, Qt::ShiftModifier, 0);
    }

    void keysWithControlMakeTheTextLarger()
    {
        QFETCH(const int, key);
        QFETCH(const Qt::KeyboardModifiers, modifiers);
        QFETCH(const int, points);
        DataForm& form = showActive(u"水"_s);
        QPlainTextEdit& text = FormWorld::definition(form);
        const double before = QFontInfo(text.font()).pointSizeF();
        QKeyEvent press(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(&text, &press);
        QCOMPARE(qRound(QFontInfo(text.font()).pointSizeF() - before), points);
        QCOMPARE(form.fieldText(2), u"水"_s);
    }

    void largerTextLeavesTheWindowAsItIs_data() { bothKinds(); }

    void largerTextLeavesTheWindowAsItIs()
    {
        DataForm& form = showActive(u"水"_s);
        QVERIFY(QTest::qWaitForWindowActive(&form));
        const QSize size = form.size();
        const QSize least = form.minimumSize();
        turnWheel(FormWorld::definition(form), 120 * 200, Qt::ControlModifier);
        FormWorld::processEvents();
        QCOMPARE(form.size(), size);
        QCOMPARE(form.minimumSize(), least);
    }
};

QTEST_MAIN(TestFindBar)
#include "test_find_bar.moc"
