// The category menu: new categories, new names, deletion.
#include "store/record_set.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainCategoryMenu : public MainWindowFixture
{
    Q_OBJECT

    const QString TopLevelQuestion = u"新規にカテゴリを登録しますか。"_s;
    const QString NameWanted = u"カテゴリ名を入力してください。"_s;

    void chooseEntry(const QString& name) { QVERIFY(WindowWorld::choose(*window, name)); }
    void expectName(const std::optional<QString>& answer)
    {
        world->dialogs.expect(InputBox{.prompt = NameWanted}, answer);
    }
    void expectNewName(const QString& content, const std::optional<QString>& answer)
    {
        world->dialogs.expect(InputBox{.prompt = u"新しいカテゴリ名を入力して下さい。"_s, .content = content},
                              answer);
    }
    void select(const QString& key) { tree->select(tree->nodes().position(key)); }
    /// Registers a category in one go.
    void registerCategory(const QString& question, const QString& name)
    {
        expectQuestion(question, Answer::Ok);
        expectName(name);
        chooseEntry(u"mnuCategoryEntry"_s);
    }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
    }
    void cleanup() { endWorld(); }

    void fixedNodesGetCategoriesOfTheTopLevel_data()
    {
        QTest::addColumn<QString>("selected");
        for (const QString& key : {u"DIV"_s, u"M_DIV"_s, u"F_DIV_NOCATEGORY"_s, u"CATEGORY"_s})
            QTest::newRow(key.toLatin1()) << key;
    }

    void fixedNodesGetCategoriesOfTheTopLevel()
    {
        QFETCH(QString, selected);
        select(selected);
        registerCategory(TopLevelQuestion, u"丙"_s);
        QCOMPARE(categories(),
                 QStringList({u"A|甲"_s, u"A-A|甲の一"_s, u"A-B|甲の二"_s, u"B|乙"_s, u"C|丙"_s}));
        const int added = window->nodeCount();
        QCOMPARE(window->nodeKey(added), u"C"_s);
        QVERIFY(compareText(window->nodeText(added), u"丙"));
        QCOMPARE(window->nodeParentKey(added), u"CATEGORY"_s);
        QCOMPARE(selectedKey(), selected);
        QVERIFY(selected == u"F_DIV_NOCATEGORY"_s ||
                tree->isExpanded(tree->nodes().indexOf(tree->nodes().position(selected))));
    }

    void categoryGetsCategoriesBelowIt()
    {
        select(u"B"_s);
        registerCategory(u"乙の下に新規のカテゴリを登録しますか。"_s, u"<乙>の一"_s);
        QCOMPARE(categories().last(), u"B-A|<乙>の一"_s);
        QCOMPARE(window->nodeParentKey(window->nodeCount()), u"B"_s);
        QVERIFY(tree->isExpanded(tree->nodes().indexOf(tree->nodes().position(u"B"_s))));
        registerCategory(u"乙の下に新規のカテゴリを登録しますか。"_s, u"乙の二"_s);
        QCOMPARE(categories().last(), u"B-B|乙の二"_s);
    }

    void identifierThatAnotherProgramHasTakenIsPassedOver()
    {
        WindowWorld::addRow(world->session().RsCategoryID, {u"C"_s, u"他"_s}); // the tree does not show it
        registerCategory(TopLevelQuestion, u"丙"_s);
        QCOMPARE(categories().last(), u"D|丙"_s);
        QCOMPARE(window->nodeKey(window->nodeCount()), u"D"_s);
    }

    void registeringDoesNotRebuildTheList()
    {
        chooseNode(u"M_DIV"_s);
        const QStringList before = rows();
        registerCategory(TopLevelQuestion, u"丙"_s);
        QCOMPARE(rows(), before);
        QVERIFY(compareText(count(), u"表示データ数 ： 5"));
    }

    void cancelledQuestionRegistersNothing()
    {
        expectQuestion(TopLevelQuestion, Answer::Cancel);
        chooseEntry(u"mnuCategoryEntry"_s);
        QCOMPARE(categories().size(), 4);
        QCOMPARE(window->nodeCount(), 13);
    }

    void emptyOrCancelledNameIsTold()
    {
        for (const std::optional<QString>& answer : {std::optional<QString>(), std::optional(QString())}) {
            expectQuestion(TopLevelQuestion, Answer::Ok);
            expectName(answer);
            expectNotice(NameWanted);
            chooseEntry(u"mnuCategoryEntry"_s);
        }
        QCOMPARE(categories().size(), 4);
        QCOMPARE(window->nodeCount(), 13);
    }

    void freedIdentifierIsGivenAgain()
    {
        select(u"A-A"_s);
        expectQuestion(u"<甲の一> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        select(u"A"_s);
        registerCategory(u"甲の下に新規のカテゴリを登録しますか。"_s, u"新"_s);
        QCOMPARE(categories().last(), u"A-A|新"_s);
    }

    void twentySeventhCategoryWorksLikeAnyOther()
    {
        for (char16_t letter = u'C'; letter <= u'Z'; ++letter)
            WindowWorld::addRow(session().RsCategoryID, {QString(QChar(letter)), u"名"_s});
        world->open(database().path());
        registerCategory(TopLevelQuestion, u"二十七"_s);
        QCOMPARE(categories().last(), u"[|二十七"_s);
        select(u"["_s);
        registerCategory(u"二十七の下に新規のカテゴリを登録しますか。"_s, u"下"_s);
        QCOMPARE(categories().last(), u"[-A|下"_s);
        WindowWorld::addRow(session().RsCategory, {u"["_s, u"M-991231-003"_s});
        WindowWorld::addRow(session().RsCategory, {u"[-A"_s, u"M-991231-004"_s});
        WindowWorld::addRow(session().RsCategory, {u"\\"_s, u"M-991231-005"_s});
        chooseNode(u"["_s);
        QCOMPARE(rows(), QStringList({u"土|定義|M-991231-003|NO"_s, u"金|定義|M-991231-004|YES"_s}));
        selectRows({0, 1});
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(rows(), QStringList());
        QCOMPARE(memberships().last(), u"\\|M-991231-005"_s);
        QCOMPARE(memberships().size(), 5);
        select(u"[-A"_s);
        expectQuestion(u"<下> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(categories().last(), u"[|二十七"_s);
    }

    void fiftyCharactersFitAndFiftyOneDoNot()
    {
        const QString fits(50, u'名');
        registerCategory(TopLevelQuestion, fits);
        QCOMPARE(categories().last(), u"C|"_s + fits);
        expectQuestion(TopLevelQuestion, Answer::Ok);
        expectName(fits + u'名');
        expectFailure(u"mnuCategoryEntry_Click"_s, errors::FieldTooSmall);
        world->dialogs.expect(InputBox{.prompt = NameWanted, .content = fits + u'名'}, std::nullopt);
        expectNotice(NameWanted);
        chooseEntry(u"mnuCategoryEntry"_s);
        QCOMPARE(categories().size(), 5);
        QCOMPARE(window->nodeCount(), 14);
        registerCategory(TopLevelQuestion, u"次"_s); // nothing is left of the attempt
        QCOMPARE(categories().last(), u"D|次"_s);
    }

    void lockedDatabaseRegistersNothing()
    {
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            expectQuestion(TopLevelQuestion, Answer::Ok);
            expectName(u"丙"_s);
            expectFailure(u"mnuCategoryEntry_Click"_s, errors::Locked);
            world->dialogs.expect(InputBox{.prompt = NameWanted, .content = u"丙"_s}, std::nullopt);
            expectNotice(NameWanted);
            chooseEntry(u"mnuCategoryEntry"_s);
        }
        QCOMPARE(categories().size(), 4);
        QCOMPARE(window->nodeCount(), 13);
        registerCategory(TopLevelQuestion, u"丙"_s);
        QCOMPARE(categories().last(), u"C|丙"_s);
    }

    void fixedNodesAreNoCategoriesToRenameOrDelete()
    {
        for (int position = 1; position <= 9; ++position) {
            tree->select(position);
            expectNotice(u"指定された項目はカテゴリではありません。"_s);
            chooseEntry(u"mnuCategoryRename"_s);
            expectNotice(u"カテゴリが選択されていません。"_s);
            chooseEntry(u"mnuCategoryDelete"_s);
        }
        QCOMPARE(window->nodeCount(), 13);
    }

    void renamingChangesRowAndNode()
    {
        select(u"A"_s);
        expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Ok);
        expectNewName(u"甲"_s, u"'新' <名>"_s);
        chooseEntry(u"mnuCategoryRename"_s);
        QCOMPARE(categories(), QStringList({u"A|'新' <名>"_s, u"A-A|甲の一"_s, u"A-B|甲の二"_s, u"B|乙"_s}));
        QCOMPARE(nodeTexts(), QStringList({u"A='新' <名>"_s, u"A-A=甲の一"_s, u"A-B=甲の二"_s, u"B=乙"_s}));
        QCOMPARE(memberships().size(), 4);
    }

    void cancelledOrEmptyNewNameChangesNothing()
    {
        select(u"A"_s);
        expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuCategoryRename"_s);
        for (const std::optional<QString>& answer : {std::optional<QString>(), std::optional(QString())}) {
            expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Ok);
            expectNewName(u"甲"_s, answer);
            expectNotice(u"カテゴリ名が入力されていません。"_s);
            chooseEntry(u"mnuCategoryRename"_s);
        }
        QCOMPARE(categories().first(), u"A|甲"_s);
        QCOMPARE(nodeTexts().first(), u"A=甲"_s);
    }

    void renamingThatFailsKeepsRowNodeAndWhatWasTyped_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("meanwhile");
        QTest::addColumn<qint32>("number");
        QTest::newRow("too long") << QString(51, u'名') << QString() << errors::FieldTooSmall;
        QTest::newRow("table missing") << u"新"_s << u"DROP TABLE Category_ID"_s << errors::TableNotFound;
    }

    void renamingThatFailsKeepsRowNodeAndWhatWasTyped()
    {
        QFETCH(QString, name);
        QFETCH(QString, meanwhile);
        QFETCH(qint32, number);
        select(u"A"_s);
        const bool tableIsThere = number != errors::TableNotFound;
        const QStringList before = categories();
        expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Ok);
        if (!meanwhile.isEmpty())
            world->dialogs.meanwhile(
                [&] { Database::open(database().path())->connection().execute(meanwhile); });
        expectNewName(u"甲"_s, name);
        expectPlainFailure(number);
        expectNewName(name, std::nullopt);
        expectNotice(u"カテゴリ名が入力されていません。"_s);
        chooseEntry(u"mnuCategoryRename"_s);
        QVERIFY(world->eventLog.lines.last().contains(
            u"LOCATION : mnuCategoryRename_Click, ErrorNumber : %1,"_s.arg(number)));
        QCOMPARE(nodeTexts().first(), u"A=甲"_s);
        if (!tableIsThere)
            return;
        QCOMPARE(categories(), before);
        select(u"B"_s); // and the next one is renamed as if nothing had happened
        expectQuestion(u"カテゴリ：乙の名称を変更しますか。"_s, Answer::Ok);
        expectNewName(u"乙"_s, u"新乙"_s);
        chooseEntry(u"mnuCategoryRename"_s);
        QCOMPARE(categories().last(), u"B|新乙"_s);
        QCOMPARE(categories().size(), before.size());
    }

    void nameThatWasTooLongCanBeShortened()
    {
        const QString tooLong = QString(50, u'名') + u"前"_s;
        select(u"A"_s);
        expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Ok);
        expectNewName(u"甲"_s, tooLong);
        expectPlainFailure(errors::FieldTooSmall);
        expectNewName(tooLong, tooLong + u"後"_s);
        expectPlainFailure(errors::FieldTooSmall);
        expectNewName(tooLong + u"後"_s, tooLong.left(50));
        chooseEntry(u"mnuCategoryRename"_s);
        QCOMPARE(categories().first(), u"A|"_s + tooLong.left(50));
        QCOMPARE(nodeTexts().first(), u"A="_s + tooLong.left(50));

        expectQuestion(tooLong.left(50) + u"の下に新規のカテゴリを登録しますか。"_s, Answer::Ok);
        expectName(tooLong);
        expectFailure(u"mnuCategoryEntry_Click"_s, errors::FieldTooSmall);
        world->dialogs.expect(InputBox{.prompt = NameWanted, .content = tooLong}, u"短い名"_s);
        chooseEntry(u"mnuCategoryEntry"_s);
        QCOMPARE(categories().last(), u"A-C|短い名"_s);
        QCOMPARE(nodeTexts().last(), u"A-C=短い名"_s);
    }

    void categoryThatIsGoneIsNeitherRenamedNorGivenOnesBelow_data()
    {
        QTest::addColumn<bool>("asked");
        QTest::addColumn<QString>("sql");
        const QString gone = u"DELETE FROM Category_ID WHERE Category_ID = 'B'"_s;
        QTest::newRow("before the question") << false << gone;
        QTest::newRow("before the answer") << true << gone;
        QTest::newRow("another has its identifier")
            << true << u"UPDATE Category_ID SET Name = '別' WHERE Category_ID = 'B'"_s;
    }

    void categoryThatIsGoneIsNeitherRenamedNorGivenOnesBelow()
    {
        QFETCH(bool, asked);
        QFETCH(QString, sql);
        const auto change = [&] { Database::open(database().path())->connection().execute(sql); };
        const auto restore = [&] {
            database().connection().execute(u"INSERT OR REPLACE INTO Category_ID VALUES ('B', '乙')"_s);
        };
        select(u"B"_s);
        if (asked) {
            expectQuestion(u"カテゴリ：乙の名称を変更しますか。"_s, Answer::Ok);
            world->dialogs.meanwhile(change);
            expectNewName(u"乙"_s, u"新"_s);
        } else {
            change();
        }
        expectPlainFailure(errors::NoCurrentRecord);
        chooseEntry(u"mnuCategoryRename"_s);
        restore();
        if (asked) {
            expectQuestion(u"乙の下に新規のカテゴリを登録しますか。"_s, Answer::Ok);
            world->dialogs.meanwhile(change);
            expectName(u"新"_s);
        } else {
            change();
        }
        expectFailure(u"mnuCategoryEntry_Click"_s, errors::NoCurrentRecord);
        chooseEntry(u"mnuCategoryEntry"_s);
        QVERIFY(!categories().contains(u"B|新"_s));
        QVERIFY(!categories().contains(u"B-A|新"_s));
        QCOMPARE(nodeTexts().last(), u"B=乙"_s);
    }

    void questionsNameTheCategoryAsItIsCalledWhenTheyAsk()
    {
        select(u"B"_s);
        database().connection().execute(u"UPDATE Category_ID SET Name = '丁' WHERE Category_ID = 'B'"_s);
        expectQuestion(u"丁の下に新規のカテゴリを登録しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuCategoryEntry"_s);
        expectQuestion(u"<丁> を削除しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuCategoryDelete"_s);
        expectQuestion(u"カテゴリ：丁の名称を変更しますか。"_s, Answer::Ok);
        expectNewName(u"丁"_s, u"戊"_s);
        chooseEntry(u"mnuCategoryRename"_s);
        QCOMPARE(categories().last(), u"B|戊"_s);
        QCOMPARE(nodeTexts().last(), u"B=戊"_s);
    }

    void categoryToWhichAnotherProgramGaveOneBelowIsKept()
    {
        select(u"B"_s);
        database().connection().execute(u"INSERT INTO Category_ID VALUES ('B-A', '子')"_s);
        expectNotice(u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(categories().size(), 5);
    }

    void lockedDatabaseRenamesNothing()
    {
        select(u"A"_s);
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            expectQuestion(u"カテゴリ：甲の名称を変更しますか。"_s, Answer::Ok);
            expectNewName(u"甲"_s, u"新"_s);
            expectPlainFailure(errors::Locked);
            expectNewName(u"新"_s, std::nullopt);
            expectNotice(u"カテゴリ名が入力されていません。"_s);
            chooseEntry(u"mnuCategoryRename"_s);
        }
        QCOMPARE(categories().first(), u"A|甲"_s);
        QCOMPARE(nodeTexts().first(), u"A=甲"_s);
    }

    void categoryWithSubcategoriesIsKept()
    {
        select(u"A"_s);
        expectNotice(u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(categories().size(), 4);
        QCOMPARE(window->nodeCount(), 13);
    }

    void cancelKeepsTheCategory()
    {
        select(u"A-A"_s);
        expectQuestion(u"<甲の一> を削除しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(categories().size(), 4);
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(window->nodeCount(), 13);
    }

    void deletedCategoryLeavesNoneSelectedAndTheListAlone_data()
    {
        QTest::addColumn<QString>("deleted");
        QTest::addColumn<QString>("question");
        QTest::newRow("a first one") << u"A-A"_s << u"<甲の一> を削除しますか。"_s;
        QTest::newRow("a last one") << u"A-B"_s << u"<甲の二> を削除しますか。"_s;
        QTest::newRow("one of the top level") << u"B"_s << u"<乙> を削除しますか。"_s;
    }

    void deletedCategoryLeavesNoneSelectedAndTheListAlone()
    {
        QFETCH(QString, deleted);
        QFETCH(QString, question);
        chooseNode(deleted);
        const QStringList listed = rows();
        const QString counted = count();
        expectQuestion(question, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(window->nodeCount(), 12);
        QCOMPARE(tree->nodes().position(deleted), 0);
        QCOMPARE(selectedKey(), QString());
        QCOMPARE(rows(), listed);
        QCOMPARE(count(), counted);
        for (const QString& row : categories() + memberships())
            QVERIFY(!row.startsWith(deleted + u'|'));
        QCOMPARE(definitions().size(), 5); // its data stay
    }

    void rowsOfADeletedCategoryAreTakenOutOfNoOther()
    {
        const QString noCategory = u"カテゴリが選択されていません。"_s;
        chooseNode(u"A-A"_s);
        expectQuestion(u"<甲の一> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        const QStringList before = memberships();
        list->selectAll();
        expectNotice(noCategory);
        chooseEntry(u"mnuDataCategoryDelete"_s);
        // Neither of the next one that gets its identifier.
        select(u"A"_s);
        registerCategory(u"甲の下に新規のカテゴリを登録しますか。"_s, u"新"_s);
        WindowWorld::addRow(session().RsCategory, {u"A-A"_s, u"M-991231-001"_s});
        select(u"A-A"_s);
        expectNotice(noCategory);
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(memberships(), before + QStringList(u"A-A|M-991231-001"_s));
        QCOMPARE(names(), QStringList(u"水"_s));
    }

    void withoutASelectedNodeEveryEntryFailsBeforeItAsks()
    {
        tree->clearSelection();
        world->dialogs.expect(
            failureBox(u"mnuCategoryEntry_Click"_s, u"カテゴリツリーの項目が選択されていません。"_s));
        chooseEntry(u"mnuCategoryEntry"_s);
        for (const QString& entry : {u"mnuCategoryRename"_s, u"mnuCategoryDelete"_s}) {
            world->dialogs.expect(MessageBox{.text = u"対処不能なエラーが発生しました。\r\n説明："
                                                     u"カテゴリツリーの項目が選択されていません。"_s,
                                             .title = u"Quillon 障害対策部"_s});
            chooseEntry(entry);
            QVERIFY(world->eventLog.lines.last().contains(
                u"LOCATION : %1_Click, ErrorNumber : 91,"_s.arg(entry)));
        }
        QCOMPARE(categories().size(), 4);
    }

    void lastCategoryLeavesNoneSelected()
    {
        for (const QString& key : {u"A-A"_s, u"A-B"_s, u"A"_s, u"B"_s}) {
            select(key);
            expectQuestion(u"<"_s + window->nodeText(tree->selectedPosition()) + u"> を削除しますか。"_s,
                           Answer::Ok);
            chooseEntry(u"mnuCategoryDelete"_s);
        }
        QCOMPARE(selectedKey(), QString());
        QCOMPARE(categories(), QStringList());
        QCOMPARE(memberships(), QStringList());
    }

    void deletingACategoryWhoseRowIsMissingIsToldAndRemovesTheNode()
    {
        select(u"A-B"_s);
        database().connection().execute(u"DELETE FROM Category_ID WHERE Category_ID = 'A-B'"_s);
        expectQuestion(u"<不明> を削除しますか。"_s, Answer::Ok);
        // sic: the half-width full stop and the blank at the end.
        expectNotice(u"カテゴリ一覧フレームに不整合が確認されました。"
                     u"再度データベースを展開することをお勧めします｡ "_s);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(tree->nodes().position(u"A-B"_s), 0);
        QCOMPARE(memberships(),
                 QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s, u"A|M-991231-002"_s}));
    }

    void lockedDatabaseDeletesNothing()
    {
        select(u"A-B"_s);
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            expectQuestion(u"<甲の二> を削除しますか。"_s, Answer::Ok);
            expectFailure(u"DeleteCategory"_s, errors::Locked);
            chooseEntry(u"mnuCategoryDelete"_s);
        }
        QCOMPARE(categories().size(), 4);
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(selectedKey(), u"A-B"_s);
    }

    void newCategoryIsRenamedAndDeletedLikeAnyOther()
    {
        select(u"B"_s);
        registerCategory(u"乙の下に新規のカテゴリを登録しますか。"_s, u"子"_s);
        select(u"B-A"_s);
        expectQuestion(u"カテゴリ：子の名称を変更しますか。"_s, Answer::Ok);
        expectNewName(u"子"_s, u"孫"_s);
        chooseEntry(u"mnuCategoryRename"_s);
        expectQuestion(u"<孫> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        select(u"B"_s);
        expectQuestion(u"<乙> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuCategoryDelete"_s);
        QCOMPARE(nodeTexts(), QStringList({u"A=甲"_s, u"A-A=甲の一"_s, u"A-B=甲の二"_s}));
        QCOMPARE(categories(), QStringList({u"A|甲"_s, u"A-A|甲の一"_s, u"A-B|甲の二"_s}));
    }
};

QTEST_MAIN(TestMainCategoryMenu)
#include "test_main_category_menu.moc"
