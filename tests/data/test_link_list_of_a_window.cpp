#include "tests/data/twin_fixture.h"

#include <QDir>
#include <QFile>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NothingSelected{.text = u"データが選択されていません。"_s,
                                 .title = u"Quillon システム運用部"_s};
const MessageBox NoLinks{.text = u"リンクは存在しません。"_s, .title = u"Quillon システム運用部"_s};

MessageBox linkDeleted(const QString& a, const QString& b)
{
    return {.text = u"<"_s + a + u"> と <"_s + b + u"> のリンクを削除しました。"_s};
}

} // namespace

/// Showing and deleting the links that a data window lists, for a definition and for a document.
class TestLinkListOfAWindow : public TwinFixture
{
    Q_OBJECT

private:
    QString own;
    QString ownName;
    FormWindow* form = nullptr;

    void open()
    {
        own = twin().first;
        ownName = twin().name;
        form = &world->show<DataForm>(own);
    }
    /// The window of this datum with links to "氷" and from the picture.
    void openWithLinks()
    {
        QFETCH(QString, identifier);
        TestWorld::addRow(world->session.RsLink, {identifier, Ice});
        TestWorld::addRow(world->session.RsLink, {Picture, identifier});
        open();
    }
    ReportList& linkList() const { return FormWorld::list(*form, u"lsvLink"_s); }
    QStringList shownLinks() const { return rowsOf(linkList().rows()); }
    QString title(int window) const
    {
        return dynamic_cast<FormWindow*>(world->registry.loaded().at(static_cast<std::size_t>(window)))
            ->windowTitle();
    }

private Q_SLOTS:
    void init()
    {
        makeWorld();
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, Ice, u"固体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
        world->add(u"絵.png"_s, Picture, u"未入力"_s);
    }

    void cleanup() { endWorld(); }

    void linksAreListedFromTheOwnPointOfView_data() { bothKinds(); }

    void linksAreListedFromTheOwnPointOfView()
    {
        openWithLinks();
        QCOMPARE(shownLinks(), QStringList({u"氷|定義|M-991231-002"_s, u"絵.png|FILE|F-991231-001"_s}));
    }

    void selectedLinkIsShown_data() { bothKinds(); }

    void selectedLinkIsShown()
    {
        openWithLinks();
        selectRow(linkList(), 0);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkView"_s));
        QCOMPARE(world->windowCount(), 2);
        QCOMPARE(title(2), u"定義画面 - 氷"_s);
    }

    void doubleClickShowsTheLink_data() { bothKinds(); }

    void doubleClickShowsTheLink()
    {
        openWithLinks();
        doubleClickRow(linkList(), 0);
        QCOMPARE(world->windowCount(), 2);
        QCOMPARE(title(2), u"定義画面 - 氷"_s);
    }

    void enterShowsTheLink_data() { bothKinds(); }

    void enterShowsTheLink()
    {
        openWithLinks();
        selectRow(linkList(), 0);
        QTest::keyClick(&linkList(), Qt::Key_Return);
        QCOMPARE(world->windowCount(), 2);
    }

    void fileOfALinkIsOpened_data() { bothKinds(); }

    void fileOfALinkIsOpened()
    {
        openWithLinks();
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        const QString path = world->folder.filePath(u"RefFile/絵.png"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        selectRow(linkList(), 1);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkView"_s));
        QCOMPARE(world->desktop.opened, QStringList(path));
        QCOMPARE(world->windowCount(), 1);
    }

    void emptyListHasNothingToShow_data() { bothKinds(); }

    void emptyListHasNothingToShow()
    {
        open();
        world->dialogs.expect(NothingSelected);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkView"_s));
        world->dialogs.expect(NothingSelected);
        doubleClickBesideRows(linkList());
        QCOMPARE(world->windowCount(), 1);
    }

    void rowsWithoutASelectionAreNothingToShow_data() { bothKinds(); }

    void rowsWithoutASelectionAreNothingToShow()
    {
        openWithLinks();
        linkList().setFocus(); // makes a row the current one, not a selected one
        world->dialogs.expect(NothingSelected);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkView"_s));
        QCOMPARE(world->windowCount(), 1);
    }

    void doubleClickBesideTheRowsHasNothingToShow_data() { bothKinds(); }

    void doubleClickBesideTheRowsHasNothingToShow()
    {
        openWithLinks();
        selectRow(linkList(), 0);
        world->dialogs.expect(NothingSelected); // a click there selects nothing
        doubleClickBesideRows(linkList());
        QCOMPARE(world->windowCount(), 1);
    }

    void missingPartnerIsTold_data() { bothKinds(); }

    void missingPartnerIsTold()
    {
        openWithLinks();
        world->deleteElsewhere(Ice);
        QCOMPARE(shownLinks().first(), u"氷|定義|M-991231-002"_s); // as it was when the list was filled
        selectRow(linkList(), 0);
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"定義"_s,
                                         .icon = Icon::Information});
        QVERIFY(FormWorld::choose(*form, u"mnuLinkView"_s));
        QCOMPARE(world->windowCount(), 1);
    }

    void selectedLinkIsDeletedWithoutAsking_data() { bothKinds(); }

    void selectedLinkIsDeletedWithoutAsking()
    {
        openWithLinks();
        selectRow(linkList(), 1);
        world->dialogs.expect(linkDeleted(u"絵.png"_s, ownName));
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links(), QStringList({own + u"|M-991231-002"_s}));
        QCOMPARE(shownLinks(), QStringList({u"氷|定義|M-991231-002"_s}));
        selectRow(linkList(), 0);
        world->dialogs.expect(linkDeleted(u"氷"_s, ownName));
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links(), QStringList());
        QCOMPARE(shownLinks(), QStringList());
    }

    void linkDeletedElsewhereIsToldAllTheSame_data() { bothKinds(); }

    void linkDeletedElsewhereIsToldAllTheSame()
    {
        openWithLinks();
        world->session.RsLink->moveFirst();
        world->session.RsLink->deleteRow();
        selectRow(linkList(), 0);
        world->dialogs.expect(linkDeleted(u"氷"_s, ownName));
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(shownLinks(), QStringList({u"絵.png|FILE|F-991231-001"_s}));
    }

    void linkToADatumThatReplacedTheListedOneStays_data() { bothKinds(); }

    void linkToADatumThatReplacedTheListedOneStays()
    {
        openWithLinks();
        world->deleteElsewhere(Ice);
        world->add(u"火"_s, Ice, u"熱"_s); // and linked to it, elsewhere
        selectRow(linkList(), 0);
        world->dialogs.expect(failureBox(u"DeleteLink"_s, 3021));
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links().size(), 2);
        QCOMPARE(shownLinks().first(), u"火|定義|M-991231-002"_s); // now it is seen, and can be deleted
        selectRow(linkList(), 0);
        world->dialogs.expect(linkDeleted(u"火"_s, ownName));
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links().size(), 1);
    }

    void emptyListHasNothingToDelete_data() { bothKinds(); }

    void emptyListHasNothingToDelete()
    {
        open();
        world->dialogs.expect(NoLinks);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
    }

    void rowsWithoutASelectionAreNothingToDelete_data() { bothKinds(); }

    void rowsWithoutASelectionAreNothingToDelete()
    {
        openWithLinks();
        world->dialogs.expect(NoLinks);
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links().size(), 2);
    }

    void headersSortTheLinks_data() { bothKinds(); }

    void headersSortTheLinks()
    {
        openWithLinks();
        clickHeader(linkList(), 2);
        QCOMPARE(shownLinks(), QStringList({u"絵.png|FILE|F-991231-001"_s, u"氷|定義|M-991231-002"_s}));
        selectRow(linkList(), 1);
        world->dialogs.expect(linkDeleted(u"氷"_s, ownName)); // the row on the screen
        QVERIFY(FormWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(world->links(), QStringList({Picture + u'|' + own}));
    }

    void contextMenusBelongToDisplayMode_data() { bothKinds(); }

    void contextMenusBelongToDisplayMode()
    {
        open();
        QCOMPARE(menuOfRightClick(*linkList().viewport()), u"mnuLink"_s);
        QCOMPARE(menuOfRightClick(*FormWorld::list(*form, u"lsvCategory"_s).viewport()), u"mnuCategory"_s);
        QContextMenuEvent key(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QCoreApplication::sendEvent(&linkList(), &key);
        QVERIFY(QApplication::activePopupWidget() != nullptr);
        QApplication::activePopupWidget()->close();

        if (own == Water)
            form = &world->beginRegistration();
        else
            form = &world->beginRegistration<frmRefDoc>();
        QCOMPARE(menuOfRightClick(*linkList().viewport()), QString());
        QCOMPARE(menuOfRightClick(*FormWorld::list(*form, u"lsvCategory"_s).viewport()), QString());
    }
};

QTEST_MAIN(TestLinkListOfAWindow)
#include "test_link_list_of_a_window.moc"
