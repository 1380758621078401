#include "core/category_entry.h"
#include "core/file_registration.h"
#include "core/links.h"
#include "store/identifiers.h"
#include "store/sqlite/transaction.h"
#include "tests/restore/restore_world.h"
#include "tests/support/compare_text.h"
#include "tests/support/outside_press.h"
#include "tests/support/window_probe.h"
#include "ui/widgets/status_panels.h"

#include <QComboBox>
#include <QDebug>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The window to take things back, with a real database and its real history.
class TestRestoreWindow : public QObject
{
    Q_OBJECT

    std::unique_ptr<RestoreWorld> world;

    Session& session() { return world->session(); }
    ReportList& lost() { return world->list(u"lsvLost"_s); }
    /// The rows without their times.
    QStringList lostRows()
    {
        QStringList rows;
        for (const QString& row : rowsOf(lost().rows()))
            rows << row.section(u'|', 1, 3);
        return rows;
    }
    QStringList fields() { return rowsOf(world->list(u"lsvFields"_s).rows()); }
    QString text(const QString& name) { return world->control<QPlainTextEdit>(name)->toPlainText(); }
    QString label(const QString& name) { return world->control<QLabel>(name)->text(); }
    /// The parts of a text that are underlined.
    QStringList underlined(const QString& name)
    {
        QStringList parts;
        for (const QTextEdit::ExtraSelection& part :
             world->control<QPlainTextEdit>(name)->extraSelections()) {
            if (part.format.fontUnderline())
                parts << part.cursor.selectedText();
        }
        return parts;
    }
    QPushButton& putBack() { return *world->control<QPushButton>(u"cmdPutBack"_s); }
    /// Selects a row and presses the button.
    void putBackRow(int row)
    {
        lost().selectRow(row);
        QTest::mouseClick(&putBack(), Qt::LeftButton);
        WindowWorld::processEvents();
    }
    QStringList stored(const std::shared_ptr<RecordSet>& rows) { return TestWorld::rowsOf(rows); }

private Q_SLOTS:
    void init() { world = std::make_unique<RestoreWorld>(); }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void aScreenSmallerThanItHasRoomForItsFrame()
    {
        world->show();
        const QRect room = world->window().screen()->availableGeometry();
        QCOMPARE(room.width(), 800);
        const QRect withFrame = world->window().geometry().marginsAdded({20, 30, 20, 30});
        QVERIFY2(room.contains(withFrame), qPrintable(QDebug::toString(withFrame)));
    }

    void whatWasLostIsListedNewestFirst()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"燃えるもの"_s);
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        QCOMPARE(world->window().windowTitle(), u"Quillon 復元画面"_s);
        QCOMPARE(headersOf(lost().rows()).first(4),
                 QStringList({u"日時"_s, u"できごと"_s, u"名称"_s, u"識別符号"_s}));
        QVERIFY(lost().isColumnHidden(4));
        QCOMPARE(lostRows(),
                 QStringList({u"データの削除|水|M-991231-001"_s, u"データの更新|火|M-991231-002"_s}));
        QVERIFY(compareText(label(u"lblLostCount"_s), u"表示件数 ： 2"));
        QVERIFY(!putBack().isEnabled());
    }

    void whileTheListIsReadItsCountSaysSo()
    {
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->clock.time = world->clock.time.addSecs(1);
        world->window().showDatabase(world->path);
        QVERIFY(compareText(label(u"lblLostCount"_s), u"表示件数 ： 0 (読み込み中です)"));
        WindowWorld::processEvents();
        QVERIFY(compareText(label(u"lblLostCount"_s), u"表示件数 ： 1"));
    }

    void textAndKindNarrowTheList()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"燃えるもの"_s);
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        auto* filter = world->control<QLineEdit>(u"txtFilter"_s);
        QTest::keyClicks(filter, u"NAGARERU"_s);
        WindowWorld::processEvents();
        QCOMPARE(lostRows(), QStringList());
        filter->setText(u"ナガレる"_s);
        WindowWorld::processEvents();
        QCOMPARE(lostRows(), QStringList());
        filter->setText(u"流れる"_s);
        WindowWorld::processEvents();
        QCOMPARE(lostRows(), QStringList(u"データの削除|水|M-991231-001"_s));
        filter->setText(u"m-991231"_s);
        auto* kind = world->control<QComboBox>(u"cboKind"_s);
        QCOMPARE(kind->currentText(), u"すべて"_s);
        kind->setCurrentIndex(kind->findText(u"データの更新"_s));
        WindowWorld::processEvents();
        QCOMPARE(lostRows(), QStringList(u"データの更新|火|M-991231-002"_s));
    }

    void aChangeIsShownWithItsDifferences()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"燃えるもの\r\n熱いもの"_s);
        world->change(RestoreWorld::Fire, u"炎"_s, u"燃えないもの\r\n熱いもの"_s);
        world->show();
        lost().selectRow(0);
        QCOMPARE(fields(), QStringList({u"名称|同じ|炎|炎"_s, u"識別符号|同じ|M-991231-002|M-991231-002"_s,
                                        u"定義|異なる|燃えるもの\r\n熱いもの|燃えないもの\r\n熱いもの"_s}));
        QCOMPARE(text(u"txtBefore"_s), u"燃えるもの\n熱いもの"_s);
        QCOMPARE(text(u"txtNow"_s), u"燃えないもの\n熱いもの"_s);
        QCOMPARE(underlined(u"txtBefore"_s), QStringList(u"る"_s));
        QCOMPARE(underlined(u"txtNow"_s), QStringList(u"ない"_s));
        QVERIFY(compareText(label(u"lblDifference"_s),
                            u"定義 ： 異なる部分に下線 (失われる前 1 行目、現在 1 行目)"));
    }

    void aVeryLongTextIsCutShortOnTheScreenOnly()
    {
        const QString book = u"R-991231-001"_s;
        const QString former = QString(200'007, u'永');
        TestWorld::addRow(session().RsRefDoc, {u"本"_s, book, former});
        QVERIFY(session().RsRefDoc->goTo(data_field::Object_ID, book));
        session().RsRefDoc->edit();
        session().RsRefDoc->setField(data_field::Explanation, u"短い"_s);
        session().RsRefDoc->update();
        world->show();
        lost().selectRow(0);
        QVERIFY(compareText(text(u"txtBefore"_s),
                            former.first(200'000) +
                                u"\n… (以下 7 文字は表示されていません。戻すときは全文が戻ります。)"_s));
        QCOMPARE(text(u"txtNow"_s), u"短い"_s);
        world->dialogs.expect(restoreBox(u"データ「本」を更新前の内容に戻しますか。\r\n"
                                         u"現在の内容もこの一覧に残ります。"_s,
                                         Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"データ「本」を更新前の内容に戻しました。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsRefDoc), QStringList(u"本|R-991231-001|"_s + former));
    }

    void aDeletedItemIsShownAndComesBackWithAllThatHungOnIt()
    {
        const QStringList links = stored(session().RsLink);
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        lost().selectRow(0);
        QCOMPARE(fields(),
                 QStringList({u"名称|現在なし|水|"_s, u"識別符号|現在なし|M-991231-001|"_s,
                              u"定義|現在なし|流れるもの|"_s, u"リンク|現在なし|火 (M-991231-002)|"_s,
                              u"分類|現在なし|自然 (A)|"_s}));
        world->dialogs.expect(restoreBox(u"データ「水」を戻しますか。"_s, Buttons::OkCancel), Answer::Ok);
        world->dialogs.expect(restoredBox(u"データ「水」を戻しました。"_s));
        putBackRow(0);
        QVERIFY(stored(session().RsMain).contains(u"水|M-991231-001|流れるもの"_s));
        QCOMPARE(stored(session().RsLink), links);
        QCOMPARE(stored(session().RsCategory), QStringList(u"A|M-991231-001"_s));
        // It stays selected and shows that it is there.
        QCOMPARE(lost().selectedRow(), 0);
        QVERIFY2(fields().contains(u"定義|同じ|流れるもの|流れるもの"_s), qPrintable(fields().join(u'\n')));
        QVERIFY2(fields().contains(u"リンク|同じ|火 (M-991231-002)|火 (M-991231-002)"_s),
                 qPrintable(fields().join(u'\n')));
    }

    void whereTheIdentifierIsTakenTheNextOneIsTold()
    {
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        TestWorld::addRow(session().RsMain, {u"土"_s, RestoreWorld::Water, u""_s});
        world->show();
        world->dialogs.expect(restoreBox(u"データ「水」を戻しますか。\r\n"
                                         u"同じ識別符号のデータがあるため、別のデータとして登録されます。"_s,
                                         Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"データ「水」を戻しました。\r\n元の識別符号は使われているため、"
                                          u"新しい識別符号は M-991231-003 です。"_s));
        putBackRow(0);
        QVERIFY(stored(session().RsMain).contains(u"水|M-991231-003|流れるもの"_s));
    }

    void cancelLeavesEverythingAsItIs()
    {
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        const QStringList before = stored(session().RsMain);
        world->dialogs.expect(restoreBox(u"データ「水」を戻しますか。"_s, Buttons::OkCancel), Answer::Cancel);
        putBackRow(0);
        QCOMPARE(stored(session().RsMain), before);
    }

    void formerTextsComeBackAndWhatTheyReplaceIsListed()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"新しい"_s);
        world->show();
        world->dialogs.expect(restoreBox(u"データ「火」を更新前の内容に戻しますか。\r\n"
                                         u"現在の内容もこの一覧に残ります。"_s,
                                         Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"データ「火」を更新前の内容に戻しました。"_s));
        putBackRow(0);
        QVERIFY(stored(session().RsMain).contains(u"火|M-991231-002|燃えるもの"_s));
        QCOMPARE(lostRows(),
                 QStringList({u"データの更新|炎|M-991231-002"_s, u"データの更新|火|M-991231-002"_s}));
        // The person stays where it was.
        QCOMPARE(lost().selectedRow(), 1);
        world->dialogs.expect(restoredBox(u"現在も同じ内容です。戻すものはありません。"_s));
        QTest::mouseClick(&putBack(), Qt::LeftButton);
    }

    void nothingIsPutBackBehindABox()
    {
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        lost().selectRow(0);
        QVERIFY(putBack().isEnabled());
        QMessageBox box;
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        pressFromOutside(putBack());
    }

    void ofADeletedItemAFormerChangeCannotComeBackAlone()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"新しい"_s);
        QVERIFY(DeleteData(session(), RestoreWorld::Fire, 0));
        world->show();
        world->dialogs.expect(
            restoredBox(u"「火」は更新の後で削除されています。先に削除されたものを戻してください。"_s));
        putBackRow(1);
    }

    void formerTextsThatWouldReachAnotherAreToldAndChangeNothing()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"新しい"_s);
        world->clock.time = world->clock.time.addSecs(1);
        QVERIFY(DeleteData(session(), RestoreWorld::Fire, 0));
        TestWorld::addRow(session().RsMain, {u"風"_s, RestoreWorld::Fire, u"吹くもの"_s});
        world->show();
        lost().selectRow(1);
        QVERIFY2(fields().contains(u"名称|現在なし|火|"_s), qPrintable(fields().join(u'\n')));
        world->dialogs.expect(
            restoredBox(u"「火」は更新の後で削除されています。先に削除されたものを戻してください。"_s));
        putBackRow(1);
        QVERIFY(stored(session().RsMain).contains(u"風|M-991231-002|吹くもの"_s));
    }

    void aCategoryComesBackWithItsMembers()
    {
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        QCOMPARE(stored(session().RsCategory), QStringList());
        world->show();
        QCOMPARE(lostRows(), QStringList(u"カテゴリの削除|自然|A"_s));
        lost().selectRow(0);
        QVERIFY(fields().contains(u"所属データ|現在なし|水 (M-991231-001)|"_s));
        world->dialogs.expect(restoreBox(u"カテゴリ「自然」を戻しますか。"_s, Buttons::OkCancel), Answer::Ok);
        world->dialogs.expect(restoredBox(u"カテゴリ「自然」を戻しました。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsCategoryID), QStringList(u"A|自然"_s));
        QCOMPARE(stored(session().RsCategory), QStringList(u"A|M-991231-001"_s));
    }

    void ofManyMembersTheFirstAreListedAndAllComeBack()
    {
        constexpr int Members = 1003;
        sqlite::Transaction write(session().RsCategory->database().connection());
        for (int number = 1; number < Members; ++number)
            TestWorld::addRow(session().RsCategory, {u"A"_s, u"R-%1-001"_s.arg(100'000 + number)});
        for (int number = 1; number < Members; ++number)
            TestWorld::addRow(session().RsRefDoc, {u"本"_s, u"R-%1-001"_s.arg(100'000 + number), u""_s});
        write.commit();
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        world->show();
        lost().selectRow(0);
        QCOMPARE(fields().last(), u"ほか|現在なし|3 件は表示されていません。|"_s);
        world->dialogs.expect(restoreBox(u"カテゴリ「自然」を戻しますか。"_s, Buttons::OkCancel), Answer::Ok);
        world->dialogs.expect(restoredBox(u"カテゴリ「自然」を戻しました。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsCategory).size(), Members);
    }

    void whereItsIdentifierIsTakenACategoryBecomesAnother()
    {
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"人工"_s});
        world->show();
        world->dialogs.expect(
            restoreBox(u"カテゴリ「自然」を戻しますか。\r\n"
                       u"同じ識別符号のカテゴリがあるため、別のカテゴリとして登録されます。"_s,
                       Buttons::OkCancel),
            Answer::Ok);
        world->dialogs.expect(
            restoredBox(u"カテゴリ「自然」を戻しました。\r\n元の識別符号は使われているため、"
                        u"新しい識別符号は B です。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsCategoryID), QStringList({u"A|人工"_s, u"B|自然"_s}));
        QCOMPARE(stored(session().RsCategory), QStringList(u"B|M-991231-001"_s));
    }

    void theFormerNameOfACategoryComesBack()
    {
        RenameCategory(session(), presentCategory(session(), u"A"_s), u"天然"_s);
        world->show();
        QCOMPARE(lostRows(), QStringList(u"カテゴリ名の変更|自然|A"_s));
        world->dialogs.expect(restoreBox(u"カテゴリの名称を「自然」に戻しますか。"_s, Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"カテゴリの名称を「自然」に戻しました。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsCategoryID), QStringList(u"A|自然"_s));
    }

    void aLinkAndAMembershipComeBack()
    {
        const QStringList links = stored(session().RsLink);
        world->dialogs.expect(
            MessageBox{.text = u"<水> と <火> のリンクを削除しました。"_s, .title = u"Quillon"_s});
        QVERIFY(DeleteLink(session(), RestoreWorld::Water, RestoreWorld::Fire));
        DeleteCategoryEntry(session(), u"A"_s, RestoreWorld::Water);
        world->show();
        lost().selectRow(1);
        QCOMPARE(fields(),
                 QStringList({u"リンク元|現在なし|M-991231-001|"_s, u"リンク先|現在なし|M-991231-002|"_s}));
        world->dialogs.expect(restoreBox(u"リンク「水 - 火」を戻しますか。"_s, Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"リンクを戻しました。"_s));
        putBackRow(1);
        QCOMPARE(stored(session().RsLink), links);
        world->dialogs.expect(restoreBox(u"分類「自然 - 水」を戻しますか。"_s, Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"分類を戻しました。"_s));
        putBackRow(0);
        QCOMPARE(stored(session().RsCategory), QStringList(u"A|M-991231-001"_s));
    }

    void aFileTooLargeToBeKeptIsListedWithoutItsContent()
    {
        QFile large(world->registered(u"図.txt"_s));
        QVERIFY(large.open(QIODevice::WriteOnly) &&
                large.resize(qint64{101} * 1024 * 1024)); // without blocks
        large.close();
        const QString source = world->folder.filePath(u"図.txt"_s);
        RestoreWorld::writeFile(source, "small");
        const FileEntry entry{
            .path = source, .identifier = CreateObject_ID(session(), u"F"_s), .category = {}};
        QCOMPARE(RegisterFile(session(), entry, {}), FileRegistration::Registered);
        world->show();
        lost().selectRow(0);
        QCOMPARE(fields(), QStringList({u"ファイル名|同じ|図.txt|図.txt"_s,
                                        u"大きさ|異なる|105906176 バイト|5 バイト"_s,
                                        u"内容|異なる|残されていません。|上書き前とは異なる内容"_s}));
    }

    void aFormerFileComesBackAndTheOneItReplacesIsKept()
    {
        const auto registerFile = [&](const QByteArray& content) {
            const QString source = world->folder.filePath(u"図.txt"_s);
            RestoreWorld::writeFile(source, content);
            const FileEntry entry{
                .path = source, .identifier = CreateObject_ID(session(), u"F"_s), .category = {}};
            QCOMPARE(RegisterFile(session(), entry, {}), FileRegistration::Registered);
        };
        registerFile("first");
        registerFile("other");
        world->show();
        QCOMPARE(lostRows(), QStringList(u"ファイルの上書き|図.txt|"_s));
        lost().selectRow(0);
        QCOMPARE(fields(),
                 QStringList({u"ファイル名|同じ|図.txt|図.txt"_s, u"大きさ|同じ|5 バイト|5 バイト"_s,
                              u"内容|異なる|上書き前の内容|上書き前とは異なる内容"_s}));
        world->dialogs.expect(restoreBox(u"ファイル「図.txt」を上書き前の内容に戻しますか。\r\n"
                                         u"現在の内容もこの一覧に残ります。"_s,
                                         Buttons::OkCancel),
                              Answer::Ok);
        world->dialogs.expect(restoredBox(u"ファイル「図.txt」を上書き前の内容に戻しました。"_s));
        putBackRow(0);
        QCOMPARE(RestoreWorld::contentOf(world->registered(u"図.txt"_s)), QByteArray("first"));
        QCOMPARE(lost().rows().rowCount(), 2);
    }

    void aMissingDatabaseIsToldWithWhatCanBeDone()
    {
        world->makeCopy();
        session().closeDatabase();
        world->path = world->folder.filePath(u"無い.mdb"_s);
        world->dialogs.expect(restoreBox(u"データベース「無い.mdb」が見つかりません。\r\n"
                                         u"このデータベースの控えは残されていません。"_s));
        world->show();
        QCOMPARE(lostRows(), QStringList());
        QVERIFY(compareText(label(u"lblLostCount"_s), u"データベース「無い.mdb」が見つかりません。"));
    }

    void ofADatabaseThatIsGoneTheHistoryIsShownAndNothingIsPutBack()
    {
        world->change(RestoreWorld::Fire, u"炎"_s, u"新しい"_s);
        session().closeDatabase();
        QVERIFY(QFile::remove(world->path));
        world->dialogs.expect(
            restoreBox(u"データベース「知識.mdb」が見つかりません。\r\n"
                       u"このデータベースの控えは残されていません。\r\n"
                       u"［失われたデータ］の一覧で、上書きや削除の前の内容を見ることができます。"_s));
        world->show();
        QCOMPARE(lostRows(), QStringList(u"データの更新|火|M-991231-002"_s));
        QVERIFY(compareText(label(u"lblLostCount"_s),
                            u"表示件数 ： 1\nデータベース「知識.mdb」が見つかりません。"
                            u"見ることはできますが、戻すことはできません。"));
        lost().selectRow(0);
        QVERIFY2(fields().contains(u"定義|不明|燃えるもの|"_s), qPrintable(fields().join(u'\n')));
        QVERIFY(!putBack().isEnabled());
    }

    void ofADamagedDatabaseTheCopiesAreShown()
    {
        world->makeCopy();
        const QString good = world->path;
        world->path = world->folder.filePath(u"壊れた.mdb"_s);
        QVERIFY(QFile::copy(good, world->path));
        world->makeCopy();
        RestoreWorld::writeFile(world->path, QByteArray(10'000, 'x'));
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    standardDescription(errors::NotADatabase),
            .title = u"Quillon 障害対策部"_s});
        world->dialogs.expect(restoreBox(u"データベース「壊れた.mdb」を展開できませんでした。\r\n"
                                         u"［控え］の一覧から控えを取り出すことができます。"_s));
        world->show();
        QCOMPARE(lostRows(), QStringList());
        QVERIFY(world->list(u"lsvCopy"_s).isVisible());
        QCOMPARE(world->list(u"lsvCopy"_s).rows().rowCount(), 1);
    }

    void everyControlIsNamedAndReachedByKey()
    {
        QVERIFY(DeleteData(session(), RestoreWorld::Water, 0));
        world->show();
        lost().selectRow(0);
        world->control<QLineEdit>(u"txtDatabase"_s)->setFocus();
        QCOMPARE(tabRound(world->window()),
                 QStringList({u"txtDatabase"_s, u"cmdChoose"_s, u"qt_tabwidget_tabbar"_s, u"txtFilter"_s,
                              u"cboKind"_s, u"lsvLost"_s, u"lsvFields"_s, u"txtBefore"_s, u"txtNow"_s,
                              u"cmdPutBack"_s, u"cmdClose"_s}));
        QCOMPARE(labelsOf(*world->control<QLineEdit>(u"txtDatabase"_s)),
                 QStringList(u"データベース(&D) ："_s));
        QCOMPARE(labelsOf(*world->control<QLineEdit>(u"txtFilter"_s)), QStringList(u"検索文字列(&F) ："_s));
        QCOMPARE(labelsOf(*world->control<QComboBox>(u"cboKind"_s)), QStringList(u"できごと(&T) ："_s));
        QCOMPARE(labelsOf(lost()), QStringList(u"新しい順の一覧(&G) ："_s));
        QCOMPARE(lost().accessibleName(), u"失われたデータの一覧"_s);
        const ReportList& fieldList = world->list(u"lsvFields"_s);
        QCOMPARE(fieldList.accessibleName(), u"項目一覧"_s);
        QCOMPARE(labelsOf(fieldList), QStringList(u"項目(&I) ："_s));
        QCOMPARE(headersOf(fieldList.rows()),
                 QStringList({u"項目"_s, u"違い"_s, u"失われる前"_s, u"現在"_s}));
        QCOMPARE(labelsOf(*world->control<QPlainTextEdit>(u"txtBefore"_s)),
                 QStringList(u"失われる前(&B) ："_s));
        QCOMPARE(labelsOf(*world->control<QPlainTextEdit>(u"txtNow"_s)), QStringList(u"現在(&N) ："_s));
        QCOMPARE(putBack().text(), u"選択したデータを戻す(&R)"_s);
        const auto* choose = world->control<QPushButton>(u"cmdChoose"_s);
        QCOMPARE(choose->text(), u"選択(&O)"_s);
        QCOMPARE(choose->toolTip(), u"別のデータベースを選択します。"_s);
        QCOMPARE(world->control<QLineEdit>(u"txtFilter"_s)->toolTip(),
                 u"名称、内容、識別符号のどれかに含まれる文字列"_s);
        const auto* status = world->window().findChild<StatusPanels*>(u"sbStatus"_s);
        QCOMPARE(status->findChild<QLabel*>()->toolTip(), u"データベースの状態を表示します。"_s);
        const auto* tabs = world->control<QTabWidget>(u"tabPages"_s);
        QCOMPARE(tabs->tabText(0), u"失われたデータ(&L)"_s);
        QCOMPARE(tabs->tabText(1), u"控え(&K)"_s);
    }

    void itFitsASmallScreen()
    {
        world->show();
        const QSize least = world->window().minimumSizeHint();
        QVERIFY2(least.width() <= 780 && least.height() <= 560,
                 qPrintable(u"%1 x %2"_s.arg(least.width()).arg(least.height())));
    }

    void closingItEndsTheRun()
    {
        world->show();
        QTest::mouseClick(world->control<QPushButton>(u"cmdClose"_s), Qt::LeftButton);
        QCOMPARE(world->ends, 1);
    }
};

QTEST_MAIN(TestRestoreWindow)
#include "test_restore_window.moc"
