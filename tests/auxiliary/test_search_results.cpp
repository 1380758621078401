// What the search finds: as a Japanese reader compares, with wildcards, and while data change here and elsewhere.
#include "core/data_records.h"
#include "store/database.h"
#include "store/schema.h"
#include "tests/auxiliary/search_world.h"
#include "tests/support/compare_text.h"
#include "tests/support/troubled_database.h"
#include "ui/data/frmMainData.h"
#include "ui/data/frmRefDoc.h"
#include "ui/data/frmRefFileEntry.h"

#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestSearchResults : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SearchWorld> world;

    Session& session() const { return world->session(); }
    QStringList found(const QString& text, const QString& kinds = u"MRF"_s) const
    {
        return world->found(text, kinds);
    }
    /// The boxes of a kind whose search fails.
    void expectFailedKind(qint32 number) const
    {
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, number));
        world->dialogs.expect(failureBox(u"CreateDataList"_s, errors::ObjectNotSet));
    }
    /// Opens the first result of this name; returns what is selected in the content of its window.
    QString openedAt(const QString& name) const
    {
        const auto row = static_cast<int>(world->names().indexOf(name));
        world->resultList().setCurrentIndex(world->resultList().rows().index(row, 0));
        WindowWorld::control<QPushButton>(*world->results(), u"cmdOK"_s)->click();
        WindowWorld::processEvents();
        auto& document = *world->window<FormWindow>(u"frmRefDoc"_s);
        auto* content = WindowWorld::control<QPlainTextEdit>(document, u"txtFields(2)"_s);
        QString selected = content->textCursor().selectedText();
        document.unload();
        WindowWorld::processEvents();
        return selected;
    }
    template <class Form> Form& opened(const QString& designName) const
    {
        WindowWorld::processEvents();
        return *world->window<Form>(designName);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<SearchWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void namesAndTextsAreSearchedInEveryKind()
    {
        world->addDefinition(u"xabcx"_s, u"M-991231-001"_s, u"-"_s);
        world->addDefinition(u"-"_s, u"M-991231-002"_s, u"abc"_s);
        world->addDefinition(u"ab"_s, u"M-991231-003"_s, u"c"_s); // not from the one into the other
        world->addDocument(u"abcの本"_s, u"R-991231-001"_s, u"-"_s);
        world->addDocument(u"本"_s, u"R-991231-002"_s, QString(100'000, u'あ') + u"abc"_s);
        world->addFile(u"abc.txt"_s, u"F-991231-001"_s, u"未入力"_s);
        world->addFile(u"図.png"_s, u"F-991231-002"_s, u"abc.png"_s);
        QCOMPARE(found(u"abc"_s),
                 QStringList({u"xabcx"_s, u"-"_s, u"abcの本"_s, u"本"_s, u"abc.txt"_s, u"図.png"_s}));
        QCOMPARE(found(u"M-991231"_s), QStringList()); // identifiers are not searched
    }

    void blankIsATextToo()
    {
        world->addDefinition(u"a b"_s, u"M-991231-001"_s, u"-"_s);
        world->addDefinition(u"c"_s, u"M-991231-002"_s, u"全角　空白"_s);
        world->addDefinition(u"d"_s, u"M-991231-003"_s, u"-"_s);
        QCOMPARE(found(u" "_s), QStringList({u"a b"_s, u"c"_s}));
        QCOMPARE(found(u"　"_s), QStringList({u"a b"_s, u"c"_s}));
        QCOMPARE(found(u" b"_s), QStringList({u"a b"_s}));
        QCOMPARE(found(u"b "_s), QStringList()); // nothing is trimmed
    }

    void readerFindsWhatReadsAlike_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("searched");
        QTest::newRow("case") << u"Water"_s << u"wATER"_s;
        QTest::newRow("full-width letters") << u"ＡＢＣ"_s << u"abc"_s;
        QTest::newRow("half-width letters") << u"abc"_s << u"ＡＢＣ"_s;
        QTest::newRow("digits") << u"１２３"_s << u"123"_s;
        QTest::newRow("half-width katakana") << u"ﾃﾞｰﾀﾍﾞｰｽ"_s << u"データベース"_s;
        QTest::newRow("full-width katakana") << u"データベース"_s << u"ﾃﾞｰﾀﾍﾞｰｽ"_s;
        QTest::newRow("hiragana") << u"みず"_s << u"ミズ"_s;
        QTest::newRow("katakana") << u"ミズ"_s << u"みず"_s;
        QTest::newRow("hiragana and half-width") << u"がっこう"_s << u"ｶﾞｯｺｳ"_s;
        QTest::newRow("voice mark of its own") << u"か\u3099"_s << u"が"_s;
        QTest::newRow("voice mark searched") << u"ガ"_s << u"ｶﾞ"_s;
        QTest::newRow("half-voiced") << u"ぱ"_s << u"ﾊﾟ"_s;
        QTest::newRow("signs") << u"（水）！"_s << u"(水)!"_s;
        QTest::newRow("question mark that is no wildcard") << u"?"_s << u"？"_s;
        QTest::newRow("star that is no wildcard") << u"*"_s << u"＊"_s;
        QTest::newRow("outside the basic plane") << u"𠮷"_s << u"𠮷"_s;
        const QStringList pairs = {u"—―"_s, u"〜～"_s, u"‖∥"_s, u"−－"_s, u"¢￠"_s, u"£￡"_s, u"¬￢"_s};
        for (const QString& pair : pairs) {
            const QString one = pair.left(1);
            const QString other = pair.right(1);
            QTest::addRow("U+%04X for U+%04X", one[0].unicode(), other[0].unicode()) << one << other;
            QTest::addRow("U+%04X for U+%04X", other[0].unicode(), one[0].unicode()) << other << one;
        }
    }

    void readerFindsWhatReadsAlike()
    {
        QFETCH(QString, text);
        QFETCH(QString, searched);
        world->addDefinition(u"前"_s + text + u"後"_s, u"M-991231-001"_s, u"-"_s);
        world->addDocument(u"題"_s, u"R-991231-001"_s, u"前"_s + text + u"後"_s);
        QCOMPARE(found(searched).size(), 2);
        QCOMPARE(found(u"前"_s + searched + u"後"_s).size(), 2);
        // The ordinary way of matching, which a search takes inside a text with a wildcard.
        QCOMPARE(found(u"前*"_s + searched).size(), 2);
    }

    void readerTellsTheseApart_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("searched");
        QTest::newRow("voiced") << u"かき"_s << u"がき"_s;
        QTest::newRow("unvoiced") << u"ガキ"_s << u"カキ"_s;
        QTest::newRow("unvoiced, half-width") << u"ｶﾞｷ"_s << u"ｶｷ"_s;
        QTest::newRow("first half of a voiced kana") << u"ｶﾞ"_s << u"ｶ"_s;
        QTest::newRow("half-voiced") << u"ば"_s << u"ぱ"_s;
        QTest::newRow("small") << u"つ"_s << u"っ"_s;
        QTest::newRow("small, half-width") << u"ﾔ"_s << u"ｬ"_s;
        QTest::newRow("long vowel and dash") << u"データ"_s << u"デ―タ"_s;
        QTest::newRow("Han and katakana") << u"二"_s << u"ニ"_s;
        QTest::newRow("half of a character") << u"𠮷"_s << QString(u"𠮷"_s).left(1);
    }

    void readerTellsTheseApart()
    {
        QFETCH(QString, text);
        QFETCH(QString, searched);
        world->addDefinition(text, u"M-991231-001"_s, text);
        QCOMPARE(found(searched), QStringList());
        QCOMPARE(found(text), QStringList({text}));
    }

    void wildcardsWork_data()
    {
        QTest::addColumn<QString>("searched");
        QTest::addColumn<QStringList>("expected");
        const QStringList all{u"水1"_s, u"水車"_s, u"水"_s, u"[x]"_s, u"水を入れる"_s};
        QTest::newRow("any run") << u"*"_s << all;
        QTest::newRow("one character") << u"?"_s << all;
        QTest::newRow("run inside") << u"水*る"_s << QStringList({u"水を入れる"_s}); // within one field
        QTest::newRow("one character after")
            << u"水?"_s << QStringList({u"水1"_s, u"水車"_s, u"水を入れる"_s});
        QTest::newRow("one character inside") << u"回?る"_s << QStringList({u"水車"_s});
        QTest::newRow("digit") << u"水#"_s << QStringList({u"水1"_s});
        QTest::newRow("list") << u"水[車船]"_s << QStringList({u"水車"_s});
        QTest::newRow("range") << u"水[0-9]"_s << QStringList({u"水1"_s});
        QTest::newRow("list of others") << u"水[!0-9]"_s << QStringList({u"水車"_s, u"水を入れる"_s});
        QTest::newRow("bracket that is never closed") << u"[x"_s << QStringList({u"[x]"_s});
        QTest::newRow("closing bracket alone") << u"x]"_s << QStringList({u"[x]"_s});
        QTest::newRow("bracket in brackets") << u"[[]x"_s << QStringList({u"[x]"_s});
        QTest::newRow("empty list") << u"水[]車"_s << QStringList({u"水車"_s});
        QTest::newRow("other signs") << u"%"_s << QStringList();
        QTest::newRow("underscore") << u"_"_s << QStringList();
    }

    void wildcardsWork()
    {
        QFETCH(QString, searched);
        QFETCH(QStringList, expected);
        world->addDefinition(u"水1"_s, u"M-991231-001"_s, u"-"_s);
        world->addDefinition(u"水車"_s, u"M-991231-002"_s, u"回転る"_s);
        world->addDefinition(u"水"_s, u"M-991231-003"_s, u"-"_s);
        world->addDefinition(u"[x]"_s, u"M-991231-004"_s, u"-"_s);
        world->addDefinition(u"水を入れる"_s, u"M-991231-005"_s, u"-"_s);
        QCOMPARE(found(searched), expected);
    }

    void fieldThatHoldsNothingIsNotFound()
    {
        session().OpenDb->execute(u"INSERT INTO Main (Object_ID) VALUES ('M-991231-001')"_s);
        world->addDefinition(u"水"_s, u"M-991231-002"_s, QString());
        QCOMPARE(found(u"*"_s), QStringList({u"水"_s}));
    }

    void quoteIsToldOncePerKind_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kinds");
        QTest::addColumn<qint32>("number");
        QTest::newRow("one kind") << u"don't"_s << u"R"_s << qint32(3075);
        QTest::newRow("all kinds") << u"don't"_s << u"MRF"_s << qint32(3075);
        QTest::newRow("quote alone") << u"'"_s << u"MF"_s << qint32(3075);
        QTest::newRow("two quotes") << u"''"_s << u"M"_s << qint32(3075);
        QTest::newRow("field that nobody knows") << u"a' OR Price = 'b"_s << u"M"_s << qint32(3061);
    }

    void quoteIsToldOncePerKind()
    {
        QFETCH(QString, text);
        QFETCH(QString, kinds);
        QFETCH(qint32, number);
        world->addDefinition(u"don't"_s, u"M-991231-001"_s, u"'"_s);
        for (qsizetype kind = 0; kind < kinds.size(); ++kind)
            expectFailedKind(number);
        world->search(text, kinds);
        // The window is there, with its title, but has never been shown.
        QVERIFY(world->results() != nullptr);
        QVERIFY(!world->results()->isVisible());
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
        QCOMPARE(world->resultRows(), QStringList());
        QCOMPARE(world->eventLog.lines.size(), 2 * kinds.size());
        QVERIFY(world->eventLog.lines.first().contains(
            u", LOCATION : GetFilterResult, ErrorNumber : %1, "_s.arg(number)));
        QVERIFY(world->eventLog.lines.last().contains(u", LOCATION : CreateDataList, ErrorNumber : 91, "_s));
    }

    void quoteLeavesEarlierResultsAlone()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"-"_s);
        world->search(u"水"_s, u"M"_s);
        world->results()->setCaption(u"前"_s);
        expectFailedKind(3075);
        world->search(u"水'"_s, u"M"_s);
        QCOMPARE(world->resultRows(), QStringList({u"水|定義|M-991231-001|"_s}));
        QVERIFY(world->results()->isVisible());
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：1"));
        // The next search is as good as ever.
        world->search(u"水"_s, u"M"_s);
        QCOMPARE(world->names().size(), 2);
    }

    void quotesCanOnlySelectOtherRows()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"-"_s);
        world->addDefinition(u"火"_s, u"M-991231-002"_s, u"-"_s);
        QCOMPARE(found(u"zz' OR Name Like '火"_s, u"M"_s), QStringList({u"火"_s}));
        QCOMPARE(WindowWorld::rowsOf(session().RsMain).size(), 2);
    }

    void lockedDatabaseIsTold()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"-"_s);
        {
            const ForeignLock lock(*session().OpenDb, ForeignLock::Kind::Exclusive);
            expectFailedKind(3260);
            world->search(u"水"_s, u"M"_s);
        }
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s}));
    }

    void registeredDataAreFound()
    {
        QCOMPARE(found(u"水"_s), QStringList());
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryMain"_s));
        auto& definition = opened<frmMainData>(u"frmMainData"_s);
        definition.setFieldText(0, u"水"_s);
        definition.setFieldText(2, u"液体"_s);
        world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s});
        QVERIFY(WindowWorld::choose(definition, u"mnuDataEntry"_s));
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s}));

        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryRefDoc"_s));
        auto& document = opened<frmRefDoc>(u"frmRefDoc"_s);
        document.setFieldText(0, u"本"_s);
        document.setFieldText(2, u"水について"_s);
        QVERIFY(WindowWorld::choose(document, u"mnuDataEntry"_s));
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s, u"本"_s}));

        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        QFile outside(world->folder.filePath(u"水車.txt"_s));
        QVERIFY(outside.open(QIODevice::WriteOnly));
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryRefFile"_s));
        auto& file = opened<frmRefFileEntry>(u"frmRefFileEntry"_s);
        file.setFieldText(0, outside.fileName());
        world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s, .title = u"FILE"_s});
        QVERIFY(WindowWorld::choose(file, u"mnuDataEntry"_s));
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s, u"本"_s, u"水車.txt"_s}));
        QCOMPARE(found(u"未入力"_s), QStringList({u"水車.txt"_s}));
    }

    void updatedDataAreFoundByTheirNewTexts()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"液体"_s);
        world->addDefinition(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        world->addDocument(u"本"_s, u"R-991231-001"_s, u"液体について"_s);
        QCOMPARE(found(u"液体"_s), QStringList({u"水"_s, u"本"_s}));

        ShowData(session(), u"M-991231-001"_s);
        auto& definition = opened<frmMainData>(u"frmMainData"_s);
        definition.setFieldText(0, u"湯"_s);
        definition.setFieldText(2, u"熱い固体ではない"_s);
        world->dialogs.expect(MessageBox{.text = u"本データを更新しました。"_s, .title = u"定義"_s});
        QVERIFY(WindowWorld::choose(definition, u"mnuDataUpdate"_s));
        ShowData(session(), u"R-991231-001"_s);
        auto& document = opened<frmRefDoc>(u"frmRefDoc"_s);
        document.setFieldText(2, u"気体について"_s);
        world->dialogs.expect(
            MessageBox{.text = u"本データを更新しました。"_s, .title = u"Quillon 文献データ管理部"_s});
        QVERIFY(WindowWorld::choose(document, u"mnuDataUpdate"_s));

        QCOMPARE(found(u"液体"_s), QStringList());
        QCOMPARE(found(u"水"_s), QStringList());
        QCOMPARE(found(u"固体"_s), QStringList({u"湯"_s, u"氷"_s})); // still in the order of the table
        QCOMPARE(found(u"気体"_s), QStringList({u"本"_s}));
    }

    void openedResultShowsWhereTheTextStands()
    {
        world->addDocument(u"随筆"_s, u"R-991231-009"_s, u"山と川と、ヤマ"_s);
        world->search(u"やま"_s, u"R"_s);
        world->resultList().setCurrentIndex(world->resultList().rows().index(0, 0));
        WindowWorld::control<QPushButton>(*world->results(), u"cmdOK"_s)->click();
        WindowWorld::processEvents();
        auto* document = world->window<FormWindow>(u"frmRefDoc"_s);
        QVERIFY(document != nullptr);
        QCOMPARE(WindowWorld::control<QLineEdit>(*document, u"txtFindInText"_s)->text(), u"やま"_s);
        auto* content = WindowWorld::control<QPlainTextEdit>(*document, u"txtFields(2)"_s);
        QCOMPARE(content->textCursor().selectedText(), u"ヤマ"_s);
        QVERIFY(WindowWorld::control<QLabel>(*document, u"lblFindCount"_s)->isVisible());
    }

    void everyResultShowsTheTextItWasFoundBy()
    {
        world->addDocument(u"随筆"_s, u"R-991231-001"_s, u"山と川"_s);
        world->addDocument(u"紀行"_s, u"R-991231-002"_s, u"川と山"_s);
        world->addDocument(u"歌集"_s, u"R-991231-003"_s, u"川と雲"_s);
        world->addDocument(u"暦"_s, u"R-991231-004"_s, u"月と雲"_s);
        world->search(u"山"_s, u"R"_s);
        world->search(u"雲"_s, u"R"_s);
        world->enter(u"川"_s, u"R"_s); // it is not searched
        QCOMPARE(world->names(), QStringList({u"随筆"_s, u"紀行"_s, u"歌集"_s, u"暦"_s}));
        QCOMPARE(openedAt(u"随筆"_s), u"山"_s);
        QCOMPARE(openedAt(u"歌集"_s), u"雲"_s);
        // Wherever the rows have moved to.
        world->resultList().rows().sortByColumn(0);
        world->resultList().rows().removeRowsAt({static_cast<int>(world->names().indexOf(u"随筆"_s))});
        QCOMPARE(openedAt(u"紀行"_s), u"山"_s);
        QCOMPARE(openedAt(u"暦"_s), u"雲"_s);
    }

    void deletedDataAreNotFound()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"-"_s);
        world->addDefinition(u"水車"_s, u"M-991231-002"_s, u"-"_s);
        world->addDocument(u"水の本"_s, u"R-991231-001"_s, u"-"_s);
        world->open(world->path);
        QCOMPARE(found(u"水"_s).size(), 3);

        auto& list = *WindowWorld::control<ReportList>(world->mainWindow(), u"lsvData"_s);
        selectRow(list, 0);
        world->dialogs.expect(MessageBox{.text = u"<水> を削除しますか。"_s, .buttons = Buttons::OkCancel},
                              Answer::Ok);
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuDataDelete"_s));
        // The results keep what they held.
        QCOMPARE(world->names(), QStringList({u"水"_s, u"水車"_s, u"水の本"_s}));
        QCOMPARE(found(u"水"_s), QStringList({u"水車"_s, u"水の本"_s}));

        selectRow(world->resultList(), 1);
        world->dialogs.expect(
            MessageBox{.text = u"<水の本> を削除しますか。"_s, .buttons = Buttons::OkCancel}, Answer::Ok);
        QVERIFY(WindowWorld::choose(*world->results(), u"mnuDelete"_s));
        world->search(u"水"_s);
        QCOMPARE(world->names(), QStringList({u"水車"_s, u"水車"_s}));
    }

    void changesOfAnotherProgramAreFound()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"液体"_s);
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s}));
        const auto other = Database::open(world->path);
        const auto definitions = RecordSet::openTable(other, schema::Main());

        WindowWorld::addRow(definitions, {u"水車"_s, u"M-991231-002"_s, u"回る"_s});
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s, u"水車"_s}));

        definitions->findFirst(u"Object_ID ='M-991231-001'"_s);
        definitions->edit();
        definitions->setField(0, u"湯"_s);
        definitions->update();
        QCOMPARE(found(u"水"_s), QStringList({u"水車"_s}));
        QCOMPARE(found(u"湯"_s), QStringList({u"湯"_s}));

        definitions->findFirst(u"Object_ID ='M-991231-002'"_s);
        definitions->deleteRow();
        QCOMPARE(found(u"水"_s), QStringList());
        // Both by turns.
        world->addDefinition(u"水時計"_s, u"M-991231-003"_s, u"-"_s);
        WindowWorld::addRow(definitions, {u"水力"_s, u"M-991231-004"_s, u"-"_s});
        QCOMPARE(found(u"水"_s), QStringList({u"水時計"_s, u"水力"_s}));
    }

    void anotherDatabaseIsSearchedOnceItIsOpen()
    {
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"-"_s);
        QCOMPARE(found(u"水"_s), QStringList({u"水"_s}));
        world->open(world->createDatabase(u"別.mdb"_s));
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 0); // it showed rows of the one before
        world->addDefinition(u"水車"_s, u"M-991231-001"_s, u"-"_s);
        QCOMPARE(found(u"水"_s), QStringList({u"水車"_s}));
    }
};

QTEST_MAIN(TestSearchResults)
#include "test_search_results.moc"
