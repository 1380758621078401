#include "tests/data/twin_fixture.h"
#include "tests/support/drag.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What becomes of a data window when its datum or its database goes. Every test runs for both kinds of windows.
class TestDataWindowDeletion : public TwinFixture
{
    Q_OBJECT

private:
    QString own;
    QString ownName;
    QPointer<FormWindow> form;

    void open()
    {
        own = twin().first;
        ownName = twin().name;
        form = &world->show<DataForm>(own);
    }
    void change() const { FormWorld::enter(FormWorld::definition(*form), u"変更"_s); }
    MessageBox question() const
    {
        return {.text = u"<"_s + ownName + u"> を削除しますか。"_s, .buttons = Buttons::OkCancel};
    }
    enum Way { Deleted, Replaced, OtherDatabase };
    /// Takes the datum away from under its window, in the way the present row of test data names.
    void loseDatum()
    {
        QFETCH(int, way);
        if (way == Deleted)
            world->deleteElsewhere(own);
        else if (way == Replaced)
            replaceDatum();
        else
            openAnotherDatabase();
    }
    /// Another datum gets the identifier and even the name.
    void replaceDatum() const
    {
        world->deleteElsewhere(own);
        world->add(ownName, own, u"別のデータ"_s);
    }
    /// Writes another content into the row as another program does.
    void changeElsewhere(const QString& content) const
    {
        RecordSet& rows = *world->tableOf(own);
        QVERIFY(rows.goTo(data_field::Object_ID, own));
        rows.edit();
        rows.setField(data_field::Explanation, content);
        rows.update();
    }
    /// Opens another database file as the File menu does, with a datum of the same identifier and name in it.
    void openAnotherDatabase() const
    {
        const QString other = world->folder.filePath(u"other.mdb"_s);
        FormWorld::create(other);
        world->open(other);
        world->add(ownName, own, u"別のデータ"_s);
    }
    QStringList ownRows() const { return TestWorld::rowsOf(world->tableOf(own)); }

private Q_SLOTS:
    void init()
    {
        makeWorld();
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, Ice, u"固体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
    }

    void cleanup() { endWorld(); }

    void deletionTakesLinksAndCategoriesAlongAndClosesTheWindow_data() { bothKinds(); }

    void deletionTakesLinksAndCategoriesAlongAndClosesTheWindow()
    {
        open();
        TestWorld::addRow(world->session.RsLink, {own, Ice});
        TestWorld::addRow(world->session.RsLink, {Ice, own});
        TestWorld::addRow(world->session.RsLink, {Ice, Ice});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, own});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Ice});
        change(); // asks nothing: there is nothing left to be updated
        world->dialogs.expect(question());
        world->dialogs.expect(
            MessageBox{.text = u"< "_s + ownName + u" >を削除しました。"_s, .title = twin().department});
        QVERIFY(FormWorld::choose(*form, u"mnuDataDelete"_s));
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QVERIFY(!ownRows().join(u' ').contains(own));
        QCOMPARE(world->links(), QStringList({u"M-991231-002|M-991231-002"_s}));
        QCOMPARE(world->memberships(), QStringList({u"A|M-991231-002"_s}));
    }

    void cancelKeepsTheDatumAndTheWindow_data() { bothKinds(); }

    void cancelKeepsTheDatumAndTheWindow()
    {
        open();
        change();
        const QStringList before = ownRows();
        world->dialogs.expect(question(), Answer::Cancel);
        QVERIFY(FormWorld::choose(*form, u"mnuDataDelete"_s));
        QCOMPARE(ownRows(), before);
        QVERIFY(!form.isNull());
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(*form));
    }

    /// How a datum comes to be gone from under its window.
    static void waysToGo()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("way");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"deleted"_s)) << identifier << int(Deleted);
            QTest::newRow(tag(identifier, u"another of its identifier"_s)) << identifier << int(Replaced);
            QTest::newRow(tag(identifier, u"another database"_s)) << identifier << int(OtherDatabase);
        }
    }

    void updateOfADatumThatIsGoneChangesNothing_data() { waysToGo(); }

    void updateOfADatumThatIsGoneChangesNothing()
    {
        open();
        change();
        loseDatum();
        const QStringList before = ownRows();
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QCOMPARE(ownRows(), before);
        QCOMPARE(FormWorld::definition(*form).toPlainText(), u"変更"_s);
    }

    void deletionOfADatumThatIsGoneChangesNothing_data() { waysToGo(); }

    void deletionOfADatumThatIsGoneChangesNothing()
    {
        open();
        loseDatum();
        TestWorld::addRow(world->session.RsLink, {own, Ice});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, own});
        const QStringList before = ownRows();
        world->dialogs.expect(untrapped(3021)); // no question
        QVERIFY(FormWorld::choose(*form, u"mnuDataDelete"_s));
        FormWorld::processEvents();
        QVERIFY(world->loggedUnder(u"mnuDataDelete_Click"_s, 3021));
        QVERIFY(!form.isNull());
        QCOMPARE(ownRows(), before);
        QCOMPARE(world->links().size(), 1);
        QCOMPARE(world->memberships().size(), 1);
        QVERIFY(FormWorld::closes(*form)); // nothing was typed
    }

    void relationsOfADatumThatIsGoneStayAsTheyAre_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("way");
        QTest::addColumn<QString>("entry");
        for (const QString& entry : {u"mnuLinkMain"_s, u"mnuLinkRefDoc"_s, u"mnuLinkRefFile"_s,
                                     u"mnuLinkDelete"_s, u"mnuCategoryEntry"_s, u"mnuCategoryDelete"_s}) {
            for (const QString& identifier : {Water, Book}) {
                QTest::newRow(tag(identifier, u"deleted, "_s + entry)) << identifier << int(Deleted) << entry;
                QTest::newRow(tag(identifier, u"another of its identifier, "_s + entry))
                    << identifier << int(Replaced) << entry;
                QTest::newRow(tag(identifier, u"another database, "_s + entry))
                    << identifier << int(OtherDatabase) << entry;
            }
        }
    }

    void relationsOfADatumThatIsGoneStayAsTheyAre()
    {
        QFETCH(QString, entry);
        const auto relate = [this] {
            TestWorld::addRow(world->session.RsLink, {own, Ice});
            TestWorld::addRow(world->session.RsCategory, {u"A"_s, own});
        };
        own = twin().first;
        relate();
        open();
        for (const QString& list : {u"lsvLink"_s, u"lsvCategory"_s})
            selectRow(FormWorld::list(*form, list), 0);
        loseDatum();
        if (world->links().isEmpty())
            relate();
        world->dialogs.expect(untrapped(3021)); // nothing is asked, no window opens
        QVERIFY(FormWorld::choose(*form, entry));
        QVERIFY(world->loggedUnder(entry + u"_Click"_s, 3021));
        QCOMPARE(world->links(), QStringList(own + u'|' + Ice));
        QCOMPARE(world->memberships(), QStringList(u"A|"_s + own));
        QVERIFY(!world->session.LinkSourceMode);
    }

    void dropOnAWindowWhoseDatumIsGoneLinksNothing()
    {
        own = Water;
        ownName = u"水"_s;
        form = &world->show<DataForm>(own);
        replaceDatum();
        world->dialogs.expect(untrapped(3021));
        drop(*FormWorld::list(*form, u"lsvLink"_s).viewport(), Ice);
        QVERIFY(world->loggedUnder(u"lsvLink_OLEDragDrop"_s, 3021));
        QCOMPARE(world->links(), QStringList());
    }

    void datumThatIsReplacedWhileTheQuestionIsOpenStays_data() { bothKinds(); }

    void datumThatIsReplacedWhileTheQuestionIsOpenStays()
    {
        open();
        world->dialogs.expect(question());
        world->dialogs.meanwhile([this] { replaceDatum(); });
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"Quillon データ調査分析部"_s});
        QVERIFY(FormWorld::choose(*form, u"mnuDataDelete"_s));
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        QVERIFY(ownRows().contains(ownName + u'|' + own + u"|別のデータ"_s));
    }

    void closingAfterTheDatumIsGoneAsksOnlyWhenSomethingWasTyped_data() { waysToGo(); }

    void closingAfterTheDatumIsGoneAsksOnlyWhenSomethingWasTyped()
    {
        open();
        loseDatum();
        change();
        const QStringList before = ownRows();
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(untrapped(3021));
        QVERIFY(!FormWorld::closes(*form));
        QCOMPARE(FormWorld::definition(*form).toPlainText(), u"変更"_s);
        QCOMPARE(ownRows(), before);
        FormWorld::definition(*form).undo();
        QVERIFY(FormWorld::closes(*form));
    }

    void newDatumOfTheIdentifierGetsAWindowOfItsOwn_data() { bothKinds(); }

    void newDatumOfTheIdentifierGetsAWindowOfItsOwn()
    {
        open();
        replaceDatum();
        auto& second = world->show<DataForm>(own);
        QCOMPARE(world->windowCount(), 2);
        QCOMPARE(second.fieldText(2), u"別のデータ"_s);
        QCOMPARE(&world->show<DataForm>(own), &second);
        QCOMPARE(world->windowCount(), 2);
    }

    void newDatumIsAnotherAlsoAfterTheFileWasOpenedAgain_data() { bothKinds(); }

    void newDatumIsAnotherAlsoAfterTheFileWasOpenedAgain()
    {
        own = twin().kind == u"M"_s ? Ice : Book; // the last row, whose number would be given out again
        form = &world->show<DataForm>(own);
        world->open(world->path);
        Database::open(world->path)
            ->connection()
            .execute(u"DELETE FROM %1 WHERE Object_ID = '%2'"_s.arg(
                twin().kind == u"M"_s ? u"Main"_s : u"RefDoc"_s, own));
        auto& registering = beginRegistration();
        QCOMPARE(registering.fieldText(1), own);
        fill(registering, u"雲"_s, u"水滴"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(registering, u"mnuDataEntry"_s));
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QVERIFY(ownRows().contains(u"雲|"_s + own + u"|水滴"_s));
    }

    void windowOfADatumThatIsGoneStillComesForwardForIt_data() { bothKinds(); }

    void windowOfADatumThatIsGoneStillComesForwardForIt()
    {
        open();
        world->deleteElsewhere(own);
        world->show<DataForm>(own); // a list may still show it
        QCOMPARE(world->windowCount(), 1);
    }

    void windowThatRegistersIsNoWindowOfAnotherDatum_data() { bothKinds(); }

    void windowThatRegistersIsNoWindowOfAnotherDatum()
    {
        const QString next = twin().kind + u"-991231-00"_s + (twin().kind == u"M"_s ? u"3"_s : u"2"_s);
        auto& registering = beginRegistration();
        QCOMPARE(registering.fieldText(1), next);
        world->add(u"先客"_s, next, u"別のデータ"_s); // another program was faster
        QVERIFY(&world->show<DataForm>(next) != &registering);
        QCOMPARE(world->windowCount(), 2);
    }

    void datumThatAnotherHasChangedIsToldOnceAndThenOverwritten_data() { bothKinds(); }

    void datumThatAnotherHasChangedIsToldOnceAndThenOverwritten()
    {
        open();
        change();
        changeElsewhere(u"他人の"_s);
        const QStringList before = ownRows();
        world->dialogs.expect(untrapped(3197));
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3197));
        QCOMPARE(ownRows(), before);
        QCOMPARE(FormWorld::definition(*form).toPlainText(), u"変更"_s);
        changeElsewhere(u"また他人の"_s); // told again: this has not been seen either
        world->dialogs.expect(untrapped(3197));
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QVERIFY(ownRows().contains(ownName + u'|' + own + u"|変更"_s));
        QVERIFY(FormWorld::closes(*form));
    }

    void changeByAnotherKeepsTheWindowOpenOnClosing_data() { bothKinds(); }

    void changeByAnotherKeepsTheWindowOpenOnClosing()
    {
        open();
        change();
        changeElsewhere(u"他人の"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(untrapped(3197));
        QVERIFY(!FormWorld::closes(*form));
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::closes(*form));
        QVERIFY(ownRows().contains(ownName + u'|' + own + u"|変更"_s));
    }

    void whatTheWindowItselfHasSavedIsNoChangeByAnother_data() { bothKinds(); }

    void whatTheWindowItselfHasSavedIsNoChangeByAnother()
    {
        form = &beginRegistration();
        own = FormWorld::identifier(*form).text();
        ownName = u"雲"_s;
        FormWorld::enter(FormWorld::name(*form), ownName);
        FormWorld::enter(FormWorld::definition(*form), u"水滴"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        for (const QString& text : {u"一"_s, u"二"_s}) {
            FormWorld::enter(FormWorld::definition(*form), text);
            world->dialogs.expect(twin().updated);
            QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
            QVERIFY(ownRows().contains(ownName + u'|' + own + u'|' + text));
        }
    }

    void windowKeepsItsDatumWhenTheSameFileIsOpenedAgain_data() { bothKinds(); }

    void windowKeepsItsDatumWhenTheSameFileIsOpenedAgain()
    {
        open();
        change();
        world->open(world->path);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(*form));
    }

    void registrationGoesToTheDatabaseThatIsOpen_data() { bothKinds(); }

    void registrationGoesToTheDatabaseThatIsOpen()
    {
        own = twin().first;
        form = &beginRegistration();
        FormWorld::enter(FormWorld::name(*form), u"新"_s);
        change();
        const QString other = world->folder.filePath(u"other.mdb"_s);
        FormWorld::create(other);
        world->open(other);
        expectRegistered();
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        QCOMPARE(ownRows().size(), 1);
        FormWorld::enter(FormWorld::name(*form), u"新々"_s);
        world->dialogs.expect(AskUpdate, Answer::No); // the datum is one of the open database now
        QVERIFY(FormWorld::closes(*form));
    }
};

QTEST_MAIN(TestDataWindowDeletion)
#include "test_data_window_deletion.moc"
