#include "tests/data/twin_fixture.h"
#include "ui/data/frmRefFileEntry.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Text that an input method shows and has not confirmed: whatever the person does next takes it for typed.
class TestUnconfirmedText : public TwinFixture
{
    Q_OBJECT

private:
    static void everyField()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("inName");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"name"_s)) << identifier << true;
            QTest::newRow(tag(identifier, u"content"_s)) << identifier << false;
        }
    }
    /// Composes at the end of the field that the row of test data names.
    static void composeIn(DataForm& form, const QString& text)
    {
        QFETCH(bool, inName);
        form.activateWindow();
        if (inName) {
            FormWorld::name(form).setFocus();
            FormWorld::name(form).end(false);
            compose(FormWorld::name(form), text);
        } else {
            FormWorld::definition(form).setFocus();
            FormWorld::definition(form).moveCursor(QTextCursor::End);
            compose(FormWorld::definition(form), text);
        }
    }
    static QMenu& openFirstMenuByMouse(const DataForm& form)
    {
        auto* menu = form.menuBar()->actions().front()->menu();
        QTest::mouseClick(form.menuBar(), Qt::LeftButton, {},
                          form.menuBar()->actionGeometry(menu->menuAction()).center());
        return *menu;
    }
    /// The first datum with the text behind what stood in the field.
    static QString changed(const QString& text)
    {
        QFETCH(bool, inName);
        return inName ? firstDatum(u"水"_s + text, u"液体"_s) : firstDatum(u"水"_s, u"液体"_s + text);
    }

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void closingAsksForIt_data() { everyField(); }

    void closingAsksForIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::closes(form));
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
    }

    void updateWritesIt_data() { everyField(); }

    void updateWritesIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        world->dialogs.expect(twin().updated);
        form.findChild<QAction*>(u"mnuDataUpdate"_s)->trigger();
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
        QVERIFY(FormWorld::closes(form)); // nothing is left of it
    }

    void nameThatIsComposedCountsAsFilled_data() { bothKinds(); }

    void nameThatIsComposedCountsAsFilled()
    {
        DataForm& form = beginRegistration();
        FormWorld::enter(FormWorld::definition(form), u"液体"_s);
        compose(FormWorld::name(form), u"水"_s);
        expectRegistered();
        form.findChild<QAction*>(u"mnuDataEntry"_s)->trigger();
        QCOMPARE(data().size(), 1);
        QVERIFY(data().front().startsWith(u"水|"_s));
    }

    void accessKeyOfAMenuConfirmsIt_data() { everyField(); }

    void accessKeyOfAMenuConfirmsIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        const QKeySequence key = QKeySequence::mnemonic(form.menuBar()->actions().front()->text());
        QTest::keyClick(form.focusWidget(), static_cast<Qt::Key>(key[0].key()), Qt::AltModifier);
        QFETCH(bool, inName);
        QCOMPARE(form.fieldText(inName ? 0 : 2), (inName ? u"水"_s : u"液体"_s) + u"です"_s);
        QVERIFY(QApplication::activePopupWidget() != nullptr);
        QApplication::activePopupWidget()->close();
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(form));
    }

    void entryChosenByMouseWritesIt_data() { everyField(); }

    void entryChosenByMouseWritesIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        QTRY_VERIFY(form.focusWidget()->hasFocus());
        QMenu& menu = openFirstMenuByMouse(form);
        QTRY_VERIFY(menu.isVisible());
        world->dialogs.expect(twin().updated);
        auto* update = form.findChild<QAction*>(u"mnuDataUpdate"_s);
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(update).center());
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
        QVERIFY(FormWorld::closes(form));
    }

    void menuThatIsOnlyLookedAtConfirmsIt_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("inName");
        QTest::addColumn<bool>("ofBar");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"name, a menu of the bar"_s)) << identifier << true << true;
            QTest::newRow(tag(identifier, u"content, a menu of the bar"_s)) << identifier << false << true;
            // That of a field of one line does not open meanwhile.
            QTest::newRow(tag(identifier, u"content, its own menu"_s)) << identifier << false << false;
        }
    }

    void menuThatIsOnlyLookedAtConfirmsIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        QTRY_VERIFY(form.focusWidget()->hasFocus());
        QFETCH(const bool, ofBar);
        if (ofBar) {
            openFirstMenuByMouse(form);
        } else {
            QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {}, form.mapToGlobal(QPoint(20, 20)));
            QCoreApplication::sendEvent(form.focusWidget(), &menuKey);
        }
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::closes(form));
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
    }

    void leavingTheFieldConfirmsIt_data() { everyField(); }

    void leavingTheFieldConfirmsIt()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        QFETCH(bool, inName);
        QTRY_VERIFY(form.focusWidget()->hasFocus());
        (inName ? static_cast<QWidget&>(FormWorld::definition(form)) : FormWorld::name(form)).setFocus();
        QCOMPARE(form.fieldText(inName ? 0 : 2), (inName ? u"水"_s : u"液体"_s) + u"です"_s);
        QCOMPARE(form.fieldText(inName ? 2 : 0), inName ? u"液体"_s : u"水"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(form));
    }

    void whatWasTakenBackIsNotConfirmed_data() { everyField(); }

    void whatWasTakenBackIsNotConfirmed()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        composeIn(form, {});
        QVERIFY(FormWorld::closes(form));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
    }

    void whatTheInputMethodConfirmedComesOnce_data() { everyField(); }

    void whatTheInputMethodConfirmedComesOnce()
    {
        DataForm& form = show();
        composeIn(form, u"です"_s);
        commit(*form.focusWidget(), u"。"_s);
        world->dialogs.expect(twin().updated);
        form.findChild<QAction*>(u"mnuDataUpdate"_s)->trigger();
        QCOMPARE(data(), QStringList(changed(u"。"_s)));
    }

    void commandOfAnotherWindowConfirmsIt_data() { bothKinds(); }

    void commandOfAnotherWindowConfirmsIt()
    {
        DataForm& form = show();
        DataForm& other = beginRegistration();
        compose(FormWorld::definition(form), u"です"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        other.findChild<QAction*>(u"mnuDataCloseAll"_s)->trigger();
    }

    void pathThatIsComposedIsRegistered()
    {
        auto& entry = world->beginRegistration<frmRefFileEntry>();
        compose(FormWorld::name(entry), u"/無い"_s);
        world->dialogs.expect({.text = u"指定されたファイルが見つかりません。"_s, .title = u"FILE"_s});
        entry.findChild<QPushButton*>(u"cmdEntry"_s)->click();
        QCOMPARE(entry.fieldText(0), u"/無い"_s);
    }
};

QTEST_MAIN(TestUnconfirmedText)
#include "test_unconfirmed_text.moc"
