#include "tests/data/twin_fixture.h"

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
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::No);
        QVERIFY(FormWorld::closes(*form));
    }

    void datumDeletedElsewhereIsToldAndTheWindowStays_data() { bothKinds(); }

    void datumDeletedElsewhereIsToldAndTheWindowStays()
    {
        open();
        TestWorld::addRow(world->session.RsLink, {own, Ice});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, own});
        world->deleteElsewhere(own);
        change();
        world->dialogs.expect(MessageBox{.text = u"<不明> を削除しますか。"_s, .buttons = Buttons::OkCancel});
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"Quillon データ調査分析部"_s});
        QVERIFY(FormWorld::choose(*form, u"mnuDataDelete"_s));
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        QCOMPARE(world->links(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        QVERIFY(FormWorld::closes(*form)); // asks nothing
    }

    void windowOfAnotherDatabaseUpdatesNothing_data() { bothKinds(); }

    void windowOfAnotherDatabaseUpdatesNothing()
    {
        open();
        change();
        openAnotherDatabase();
        const QStringList before = ownRows();
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QCOMPARE(ownRows(), before);
        QVERIFY(FormWorld::closes(*form)); // asks nothing
    }

    void windowKeepsItsDatumWhenTheSameFileIsOpenedAgain_data() { bothKinds(); }

    void windowKeepsItsDatumWhenTheSameFileIsOpenedAgain()
    {
        open();
        change();
        world->open(world->path);
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::No);
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
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::No); // the datum is one of the open database now
        QVERIFY(FormWorld::closes(*form));
    }
};

QTEST_MAIN(TestDataWindowDeletion)
#include "test_data_window_deletion.moc"
