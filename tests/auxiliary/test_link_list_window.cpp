// The window that lists every link of the database.
#include "core/data_records.h"
#include "core/links.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/compare_text.h"
#include "tests/support/failure_box.h"
#include "tests/support/held_key.h"
#include "tests/support/troubled_database.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmLinkList.h"
#include "ui/main/frmMainMenu.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001"_s;
const QString Ice = u"M-991231-002"_s;
const QString Book = u"R-991231-001"_s;
const QString Picture = u"F-991231-001"_s;

const MessageBox NoLinks{.text = u"リンクは存在しません。"_s, .title = u"Quillon リンク情報管理部"_s};
const MessageBox NothingSelected{.text = u"リンクが選択されていません。"_s};

MessageBox question(const QString& source, const QString& target)
{
    return {.text = u"<"_s + source + u"> と <"_s + target + u">のリンクを削除をしますか。"_s,
            .buttons = Buttons::YesNo};
}

MessageBox notice(const QString& source, const QString& target)
{
    return {.text = u"<"_s + source + u"> と <"_s + target + u"> のリンクを削除しました。"_s};
}

} // namespace

class TestLinkListWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowWorld> world;
    QPointer<frmLinkList> form;

    Session& session() const { return world->session(); }
    void addLink(const QString& source, const QString& target) const
    {
        WindowWorld::addRow(session().RsLink, {source, target});
    }
    /// Chooses the entry of the main window's Info menu.
    void choose()
    {
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoLink"_s));
        form = world->window<frmLinkList>(u"frmLinkList"_s);
    }
    /// Links the document to the water, the water to the picture and the ice to the water, and lists them.
    void showThreeLinks()
    {
        addLink(Book, Water);
        addLink(Water, Picture);
        addLink(Ice, Water);
        choose();
        QVERIFY(!form.isNull());
    }
    ReportList& list() const { return *form->findChild<ReportList*>(u"lsvLink"_s); }
    QStringList rows() const { return rowsOf(list().rows()); }
    QString count() const { return form->findChild<QLabel*>(u"lblCount"_s)->text(); }
    QPushButton& button() const { return *form->findChild<QPushButton*>(u"cmdLinkDelete"_s); }
    QStringList links() const { return WindowWorld::rowsOf(session().RsLink); }
    bool isOpen() const
    {
        WindowWorld::processEvents();
        return !form.isNull();
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        world->open(world->createDatabase());
        WindowWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        WindowWorld::addRow(session().RsMain, {u"<b>氷</b>"_s, Ice, u"固体"_s});
        WindowWorld::addRow(session().RsRefDoc, {u"水の本"_s, Book, u"内容"_s});
        WindowWorld::addRow(session().RsRefFile, {u"図.png"_s, Picture, u"図.png"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void windowHasItsTexts()
    {
        showThreeLinks();
        QVERIFY(compareText(form->windowTitle(), u"リンク情報表示画面"));
        QCOMPARE(headersOf(list().rows()),
                 QStringList({u"リンク元-名称"_s, u"種別"_s, u"リンク先-名称"_s, u"種別"_s,
                              u"リンク元-識別符号"_s, u"リンク元-識別符号"_s}));
        QVERIFY(compareText(button().text(), u"リンク削除(&D)"));
        QCOMPARE(menuBarOf(*form->menuBar()), QStringList({u"リンク(&L)"_s}));
        QCOMPARE(entriesOf(*form->findChild<QMenu*>(u"mnuLink"_s)),
                 QStringList({u"mnuLinkShow 表示(&S)"_s, u"mnuLinkDelete 削除(&D)"_s, u"mnuLinkLine |"_s,
                              u"mnuLinkClose 閉じる(&C)"_s}));
        QCOMPARE(list().accessibleName(), u"リンク一覧"_s);
        QCOMPARE(form->findChild<QLabel*>(u"lblCount"_s)->textFormat(), Qt::PlainText);
        QVERIFY(!form->isModal());
        QCOMPARE(tabRound(*form), QStringList({u"lsvLink"_s, u"cmdLinkDelete"_s}));
    }

    void countHasADesignedText()
    {
        // Before anything has been counted.
        form = dynamic_cast<frmLinkList*>(&session().windows.linkList());
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  0"));
    }

    void columnsStandInTheWrittenOrder()
    {
        showThreeLinks();
        QCOMPARE(rows(), QStringList({u"水の本|文献|水|定義|R-991231-001|M-991231-001"_s,
                                      u"水|定義|図.png|FILE|M-991231-001|F-991231-001"_s,
                                      u"<b>氷</b>|定義|水|定義|M-991231-002|M-991231-001"_s}));
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  3"));
        QVERIFY(form->isVisible());
    }

    void endsThatAreGoneAreUnknown()
    {
        addLink(u"M-991231-009"_s, Water);
        addLink(Water, u"X-991231-001"_s);
        addLink(u"F-991231-009"_s, u"R-991231-009"_s);
        choose();
        QCOMPARE(rows(), QStringList({u"不明|定義|水|定義|M-991231-009|M-991231-001"_s,
                                      u"水|定義|不明|不明|M-991231-001|X-991231-001"_s,
                                      u"不明|FILE|不明|文献|F-991231-009|R-991231-009"_s}));
    }

    void choosingAgainListsAnewInTheSameWindow()
    {
        showThreeLinks();
        const frmLinkList* before = form;
        addLink(Water, Water);
        QCOMPARE(rows().size(), 3); // a list keeps what it held when it was filled
        choose();
        QCOMPARE(form, before);
        QCOMPARE(world->windowCount(u"frmLinkList"_s), 1);
        QCOMPARE(rows().size(), 4);
        QCOMPARE(rows().last(), u"水|定義|水|定義|M-991231-001|M-991231-001"_s);
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  4"));
    }

    void withoutAnyLinkThereIsOnlyTheMessage()
    {
        world->dialogs.expect(NoLinks);
        choose();
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
        QVERIFY(world->eventLog.lines.isEmpty());
    }

    void withoutAnyLinkAnOpenWindowIsEmptied()
    {
        showThreeLinks();
        const auto other = Database::open(session().OpenDb->path());
        RecordSet::openTable(other, schema::Link())->deleteEveryRow();
        world->dialogs.expect(NoLinks);
        choose();
        QVERIFY(isOpen());
        QVERIFY(form->isVisible());
        QCOMPARE(rows(), QStringList());
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  0"));
    }

    void showOpensTheSourceAndThenTheTarget()
    {
        showThreeLinks();
        selectRow(list(), 2);
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        QCOMPARE(world->loadedNames(),
                 QStringList({u"frmMainMenu"_s, u"frmLinkList"_s, u"frmMainData"_s, u"frmMainData"_s}));
        const auto* source = world->window<FormWindow>(u"frmMainData"_s, 0);
        const auto* target = world->window<FormWindow>(u"frmMainData"_s, 1);
        QVERIFY(compareText(source->windowTitle(), u"定義画面 - <b>氷</b>"));
        QVERIFY(compareText(target->windowTitle(), u"定義画面 - 水"));
        QTRY_COMPARE(QApplication::activeWindow(), target); // shown last
    }

    void showBringsOpenDataForward()
    {
        showThreeLinks();
        ShowData(session(), Water);
        ShowData(session(), Book);
        selectRow(list(), 0);
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        QCOMPARE(world->loadedNames(),
                 QStringList({u"frmMainMenu"_s, u"frmLinkList"_s, u"frmMainData"_s, u"frmRefDoc"_s}));
        QTRY_COMPARE(QApplication::activeWindow(), world->window<FormWindow>(u"frmMainData"_s));
    }

    void showOpensFilesWithTheirApplication()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        const QString path = world->folder.filePath(u"RefFile/図.png"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        showThreeLinks();
        selectRow(list(), 1);
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QCOMPARE(world->desktop.opened, QStringList(path));
    }

    void showTellsOfEachEndThatIsGone()
    {
        addLink(u"R-991231-009"_s, u"M-991231-009"_s);
        choose();
        selectRow(list(), 0);
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"文献"_s,
                                         .icon = Icon::Information});
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"定義"_s,
                                         .icon = Icon::Information});
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
    }

    void linkToItselfShowsOneWindow()
    {
        addLink(Water, Water);
        choose();
        selectRow(list(), 0);
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
    }

    void showWithoutASelectionDoesNothing()
    {
        showThreeLinks();
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmLinkList"_s}));
    }

    void deletingNeedsASelection_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("menu") << u"mnuLinkDelete"_s;
        QTest::newRow("button") << u"cmdLinkDelete"_s;
    }

    void deletingNeedsASelection()
    {
        QFETCH(QString, way);
        showThreeLinks();
        for (const bool empty : {false, true}) {
            if (empty)
                list().rows().clear();
            world->dialogs.expect(NothingSelected);
            if (way == u"mnuLinkDelete"_s)
                QVERIFY(WindowWorld::choose(*form, way));
            else
                button().click();
        }
        QCOMPARE(links().size(), 3);
    }

    void noKeepsTheLink()
    {
        showThreeLinks();
        const QStringList before = rows();
        selectRow(list(), 2);
        world->dialogs.expect(question(u"<b>氷</b>"_s, u"水"_s), Answer::No);
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkDelete"_s));
        QCOMPARE(rows(), before);
        QCOMPARE(list().selectedRow(), 2);
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  3"));
        QCOMPARE(links().size(), 3);
    }

    void yesDeletesTheLinkAndListsTheRest_data() { deletingNeedsASelection_data(); }

    void yesDeletesTheLinkAndListsTheRest()
    {
        QFETCH(QString, way);
        showThreeLinks();
        selectRow(list(), 1);
        world->dialogs.expect(question(u"水"_s, u"図.png"_s), Answer::Yes);
        world->dialogs.expect(notice(u"水"_s, u"図.png"_s));
        world->dialogs.meanwhile([&] { QCOMPARE(rows().size(), 3); });
        if (way == u"mnuLinkDelete"_s)
            QVERIFY(WindowWorld::choose(*form, way));
        else
            button().click();
        QCOMPARE(links(), QStringList({u"R-991231-001|M-991231-001"_s, u"M-991231-002|M-991231-001"_s}));
        QCOMPARE(rows(), QStringList({u"水の本|文献|水|定義|R-991231-001|M-991231-001"_s,
                                      u"<b>氷</b>|定義|水|定義|M-991231-002|M-991231-001"_s}));
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  2"));
        QVERIFY(form->isVisible());
    }

    void lastLinkLeavesAnEmptyWindow()
    {
        addLink(Book, Water);
        choose();
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  1"));
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水の本"_s, u"水"_s), Answer::Yes);
        world->dialogs.expect(notice(u"水の本"_s, u"水"_s));
        world->dialogs.expect(NoLinks);
        button().click();
        QVERIFY(isOpen());
        QVERIFY(form->isVisible());
        QCOMPARE(rows(), QStringList());
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  0"));
        // And now there is nothing to act on.
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkShow"_s));
        world->dialogs.expect(NothingSelected);
        button().click();
    }

    void linkAndItsReturnAreDeletedTogether()
    {
        addLink(Book, Water);
        addLink(Water, Book);
        addLink(Ice, Water);
        choose();
        selectRow(list(), 1);
        world->dialogs.expect(question(u"水"_s, u"水の本"_s), Answer::Yes);
        world->dialogs.expect(notice(u"水"_s, u"水の本"_s));
        button().click();
        QCOMPARE(links(), QStringList({u"M-991231-002|M-991231-001"_s}));
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  1"));
    }

    void linkDeletedElsewhereIsToldAsDeleted()
    {
        showThreeLinks();
        const auto other = Database::open(session().OpenDb->path());
        const auto otherLinks = RecordSet::openTable(other, schema::Link());
        otherLinks->moveFirst();
        otherLinks->deleteRow();
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水の本"_s, u"水"_s), Answer::Yes);
        world->dialogs.expect(notice(u"水の本"_s, u"水"_s));
        button().click();
        QCOMPARE(rows().size(), 2);
    }

    void endsThatAreGoneAreUnknownWhenDeleting()
    {
        addLink(u"M-991231-009"_s, Water);
        addLink(Ice, Water);
        choose();
        selectRow(list(), 0);
        world->dialogs.expect(question(u"不明"_s, u"水"_s), Answer::Yes);
        world->dialogs.expect(notice(u"不明"_s, u"水"_s));
        button().click();
        QCOMPARE(links(), QStringList({u"M-991231-002|M-991231-001"_s}));
    }

    void questionNamesTheDataAsTheyAreCalledWhenItAsks()
    {
        showThreeLinks();
        session().OpenDb->connection().execute(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s);
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水の本"_s, u"湯"_s), Answer::No);
        button().click();
        QCOMPARE(links().size(), 3);
    }

    void linkOfADatumThatIsAnotherByTheAnswerIsKept()
    {
        showThreeLinks();
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水の本"_s, u"水"_s), Answer::Yes);
        world->dialogs.meanwhile([&] {
            Database::open(session().OpenDb->path())
                ->connection()
                .execute(u"UPDATE Main SET Name = '別' WHERE Name = '水'"_s);
        });
        world->dialogs.expect(failureBox(u"DeleteLink"_s, errors::NoCurrentRecord));
        button().click();
        QCOMPARE(links().size(), 3);
        QCOMPARE(rows().first(), u"水の本|文献|別|定義|R-991231-001|M-991231-001"_s); // listed anew
    }

    void lockedDatabaseKeepsTheLink()
    {
        showThreeLinks();
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水の本"_s, u"水"_s), Answer::Yes);
        world->dialogs.expect(failureBox(u"DeleteLink"_s, errors::Locked));
        {
            const ForeignLock lock(*session().OpenDb, ForeignLock::Kind::Writing);
            button().click();
        }
        QCOMPARE(links().size(), 3);
        QCOMPARE(rows().size(), 3);
        QVERIFY(compareText(count(), u"現在の情報リンク総数 ：  3"));
    }

    void headersSortByTheirColumn_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QStringList>("expected"); // the links in their new order
        const QString bookWater = u"R-991231-001 M-991231-001"_s;
        const QString waterPicture = u"M-991231-001 F-991231-001"_s;
        const QString iceWater = u"M-991231-002 M-991231-001"_s;
        QTest::newRow("source's name") << 0 << QStringList({iceWater, waterPicture, bookWater});
        QTest::newRow("source's kind") << 1 << QStringList({waterPicture, iceWater, bookWater});
        QTest::newRow("target's name") << 2 << QStringList({waterPicture, bookWater, iceWater});
        QTest::newRow("target's kind") << 3 << QStringList({waterPicture, bookWater, iceWater});
        QTest::newRow("source's identifier") << 4 << QStringList({waterPicture, iceWater, bookWater});
        QTest::newRow("target's identifier") << 5 << QStringList({waterPicture, bookWater, iceWater});
    }

    void headersSortByTheirColumn()
    {
        QFETCH(int, column);
        QFETCH(QStringList, expected);
        showThreeLinks();
        form->resize(2000, 600); // every header in sight
        const auto identifiers = [&] {
            QStringList found;
            for (int row = 0; row < list().rows().rowCount(); ++row)
                found << list().rows().text(row, 4).toString() + u' ' + list().rows().text(row, 5).toString();
            return found;
        };
        clickHeader(list(), column);
        QCOMPARE(identifiers(), expected);
        clickHeader(list(), column); // does not turn round
        QCOMPARE(identifiers(), expected);
    }

    void sortedRowIsTheOneActedOn()
    {
        showThreeLinks();
        form->resize(2000, 600);
        clickHeader(list(), 3);
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水"_s, u"図.png"_s), Answer::Yes);
        world->dialogs.expect(notice(u"水"_s, u"図.png"_s));
        button().click();
        // Listed anew, the links stand in their own order again.
        QCOMPARE(rows(), QStringList({u"水の本|文献|水|定義|R-991231-001|M-991231-001"_s,
                                      u"<b>氷</b>|定義|水|定義|M-991231-002|M-991231-001"_s}));
    }

    void menuAndCloseBoxCloseTheWindow()
    {
        showThreeLinks();
        QVERIFY(WindowWorld::choose(*form, u"mnuLinkClose"_s));
        QVERIFY(!isOpen());
        choose();
        QVERIFY(form->close());
        QVERIFY(!isOpen());
        choose();
        QVERIFY(isOpen());
        QCOMPARE(rows().size(), 3);
    }

    void releasedEnterClosesTheWindow_data()
    {
        QTest::addColumn<bool>("inTheList");
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Return in the list") << true << Qt::Key_Return;
        QTest::newRow("Enter in the list") << true << Qt::Key_Enter;
        QTest::newRow("Return while no control has the focus") << false << Qt::Key_Return;
    }

    void releasedEnterClosesTheWindow()
    {
        QFETCH(bool, inTheList);
        QFETCH(Qt::Key, key);
        showThreeLinks();
        selectRow(list(), 0);
        if (!inTheList)
            list().clearFocus();
        QCOMPARE(form->focusWidget() == &list(), inTheList);
        QTest::keyPress(form->windowHandle(), key);
        QVERIFY(isOpen());
        QTest::keyRelease(form->windowHandle(), key);
        QVERIFY(!isOpen());
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s})); // nothing has been shown
    }

    void releaseOfAKeyPressedElsewhereClosesNothing()
    {
        showThreeLinks();
        QTest::keyRelease(form->windowHandle(), Qt::Key_Return);
        QVERIFY(isOpen());
        // The rest of a key that is held down since another window had it.
        repeatKey(list(), Qt::Key_Return);
        QTest::keyRelease(form->windowHandle(), Qt::Key_Return);
        QVERIFY(isOpen());
    }

    void otherKeysCloseNothing()
    {
        showThreeLinks();
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Delete, Qt::Key_Space, Qt::Key_F2}) {
            list().setFocus();
            QTest::keyClick(form->windowHandle(), key);
            QVERIFY(isOpen());
        }
    }

    void enterThatAnswersTheQuestionLeavesTheWindowOpen()
    {
        showThreeLinks();
        selectRow(list(), 0);
        button().setFocus();
        // A real box takes the focus; it gets the release of the key that called it, and a press of its own.
        world->dialogs.expect(question(u"水の本"_s, u"水"_s), Answer::No);
        world->dialogs.meanwhile([&] {
            QMessageBox box(QMessageBox::NoIcon, u"題"_s, u"文"_s, QMessageBox::Yes | QMessageBox::No, form);
            QTimer::singleShot(0, &box, [&box] {
                QTest::keyRelease(box.windowHandle(), Qt::Key_Return);
                QTest::keyPress(box.windowHandle(), Qt::Key_Return);
            });
            QCOMPARE(box.exec(), int(QMessageBox::Yes));
        });
        QTest::keyPress(form->windowHandle(), Qt::Key_Return); // presses the button
        QTest::keyRelease(form->windowHandle(), Qt::Key_Return);
        QVERIFY(isOpen());
        QCOMPARE(form->focusWidget(), &button());
    }
};

QTEST_MAIN(TestLinkListWindow)
#include "test_link_list_window.moc"
