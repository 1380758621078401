#include "tests/data/form_world.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Updated{.text = u"本データを更新しました。"_s, .title = u"Quillon 文献データ管理部"_s};
const MessageBox AskUpdate{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel};
const MessageBox AskRegister{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel};
const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};
const MessageBox NameTooLong{.text = u"名称が最大入力値を超えています。最大入力値は全角25文字です。"_s,
                             .title = u"Quillon システム監査部"_s};
// sic: a document's content is called a definition here.
const MessageBox ContentTooLong{.text = u"定義が最大入力値を超えています。最大入力値は全角32000文字です。"_s,
                                .title = u"Quillon システム監査部"_s};

} // namespace

class TestDocumentSaving : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    static void fill(frmRefDoc& form, const QString& name, const QString& content)
    {
        FormWorld::enter(FormWorld::name(form), name);
        FormWorld::enter(FormWorld::definition(form), content);
    }
    frmRefDoc& showBook(const QString& content = u"内容"_s)
    {
        world->add(u"本"_s, Book, content);
        return world->show<frmRefDoc>(Book);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void registrationIsSilentAndShowsTheDocument()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        fill(form, u"<本>"_s, u"一行目\n二行目 ｱ😀"_s);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents(), QStringList({u"<本>|R-991231-001|一行目\n二行目 ｱ😀"_s}));
        QCOMPARE(world->definitions(), QStringList());
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QVERIFY(FormWorld::closes(form)); // nothing has changed since
    }

    void registrationFilesTheDocumentInEveryListedCategory()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Book});
        fill(form, u"本"_s, u"内容"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList({u"A-B|R-991231-001"_s, u"C|R-991231-001"_s}));
    }

    void documentAndMembershipsAreWrittenAtOnce()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        fill(form, u"本"_s, u"内容"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        const WriteCounter writes(*world->session.OpenDb);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(writes.count, 1);
        QCOMPARE(world->memberships().size(), 2);
    }

    void failedFilingIsToldAfterTheChangeOfMode()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Book});
        fill(form, u"本"_s, u"内容"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        world->dialogs.meanwhile([&] {
            QVERIFY(othersMayWrite(world->path));
            QCOMPARE(form.modeText(), u"表示モード"_s);
            QCOMPARE(world->documents().size(), 1);
        });
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(),
                 QStringList({u"A|R-991231-001"_s, u"A-B|R-991231-001"_s, u"C|R-991231-001"_s}));
        QVERIFY(FormWorld::closes(form));
    }

    void fullDiskKeepsTheInput()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        const QString content = QString(20'000, u'内');
        fill(form, u"本"_s, content);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}});
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1"_s); // the file may not grow any more
        world->dialogs.expect(untrapped(61));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 61));
        QCOMPARE(world->documents(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        QVERIFY(othersMayWrite(world->path));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(2), content);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1000000"_s);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + content));
        QCOMPARE(world->memberships(), QStringList(u"A-B|R-991231-001"_s));
        // An update that no longer fits leaves the old text.
        const QString longer = QString(31'000, u'長');
        fill(form, u"本"_s, longer);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1"_s);
        world->dialogs.expect(untrapped(61));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + content));
        QCOMPARE(form.fieldText(2), longer);
        world->session.OpenDb->execute(u"PRAGMA max_page_count = 1000000"_s);
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList(u"本|R-991231-001|"_s + longer));
    }

    void failureThatUndoesEverythingKeepsTheInput()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Book});
        fill(form, u"本"_s, u"内容"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        world->dialogs.expect(untrapped(5));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents(), QStringList());
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(2), u"内容"_s);
        world->dialogs.expect(AskRegister, Answer::No);
        QVERIFY(FormWorld::closes(form)); // nothing counts as saved
    }

    void inputIsChecked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("boxes"); // 1 name too long, 2 missing, 4 content too long
        QTest::newRow("24 full-width") << QString(24, u'本') << u"内容"_s << 0;
        QTest::newRow("25 full-width") << QString(25, u'本') << u"内容"_s << 1;
        QTest::newRow("31999 in the content") << u"本"_s << QString(31999, u'内') << 0;
        QTest::newRow("31999 and a half") << u"本"_s << (QString(31999, u'内') + u'a') << 0;
        QTest::newRow("32000 in the content") << u"本"_s << QString(32000, u'内') << 4;
        QTest::newRow("no name") << QString() << u"内容"_s << 2;
        QTest::newRow("no content") << u"本"_s << QString() << 2;
        QTest::newRow("neither: the content is not looked at") << QString() << QString() << 2;
        QTest::newRow("both too long: the content is not looked at")
            << QString(25, u'本') << QString(32000, u'内') << 1;
    }

    void inputIsChecked()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        QFETCH(int, boxes);
        auto& form = world->beginRegistration<frmRefDoc>();
        form.setFieldText(0, name);
        form.setFieldText(2, content);
        if (boxes & 1)
            world->dialogs.expect(NameTooLong);
        if (boxes & 2)
            world->dialogs.expect(Missing);
        if (boxes & 4)
            world->dialogs.expect(ContentTooLong);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents().size(), boxes == 0 ? 1 : 0);
        QCOMPARE(form.modeText(), boxes == 0 ? u"表示モード"_s : u"登録モード"_s);
        QCOMPARE(form.fieldText(2), content);
    }

    void refusedContentStillShowsRoomForMore()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        form.setFieldText(0, u"本"_s);
        form.setFieldText(2, QString(32001, u'内'));
        form.ShowInputCount(2);
        world->dialogs.expect(ContentTooLong);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角767文字"_s);
    }

    void updateWritesTheRowAndFilesNothing()
    {
        frmRefDoc& form = showBook();
        fill(form, u"書"_s, u"新しい\n内容"_s);
        form.setCategoryRows({{u"川"_s, u"A"_s}});
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList({u"書|R-991231-001|新しい\n内容"_s}));
        QCOMPARE(world->memberships(), QStringList());
        QCOMPARE(form.windowTitle(), u"文献画面-本"_s); // the caption stays as it was opened
        QVERIFY(FormWorld::closes(form));
    }

    void updateOfRefusedInputWritesNothing()
    {
        frmRefDoc& form = showBook();
        fill(form, u"本"_s, QString());
        world->dialogs.expect(Missing);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList({u"本|R-991231-001|内容"_s}));
    }

    void updateOfADeletedDocumentIsReportedAndWritesNothing()
    {
        world->add(u"紙"_s, Paper, u"薄い"_s);
        frmRefDoc& form = showBook();
        fill(form, u"書"_s, u"新しい"_s);
        world->deleteElsewhere(Book);
        world->session.RsRefDoc->moveFirst(); // stands on another row
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QCOMPARE(world->documents(), QStringList({u"紙|R-991231-002|薄い"_s}));
        QVERIFY(FormWorld::closes(form)); // asks nothing
    }

    void failedRegistrationKeepsTheInput()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        fill(form, u"本"_s, u"内容"_s);
        world->add(u"先客"_s, Book, u"…"_s);
        world->dialogs.expect(untrapped(3022));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 3022));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(untrapped(3022));
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(2), u"内容"_s);
        QCOMPARE(world->documents().size(), 1);
    }

    void lockedFileKeepsTheWindowOpen()
    {
        frmRefDoc& form = showBook();
        fill(form, u"本"_s, u"新しい"_s);
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            world->dialogs.expect(AskUpdate, Answer::Yes);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(!FormWorld::closes(form));
            QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3260));
        }
        QCOMPARE(form.fieldText(2), u"新しい"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::closes(form));
        QCOMPARE(world->documents(), QStringList({u"本|R-991231-001|新しい"_s}));
    }

    void unchangedWindowClosesWithoutAsking_data()
    {
        QTest::addColumn<QString>("content");
        QTest::newRow("plain") << u"内容"_s;
        QTest::newRow("line breaks") << u"一\r\n二\r三\u2028四\u2029五\n"_s;
        QTest::newRow("NUL") << (u"二"_s + QChar(0) + u"三"_s);
        QTest::newRow("longer than the checks allow") << QString(100'000, u'内');
        QTest::newRow("digits that begin with zeros") << u"0012"_s;
        QTest::newRow("empty") << QString();
    }

    void unchangedWindowClosesWithoutAsking()
    {
        QFETCH(QString, content);
        QVERIFY(FormWorld::closes(showBook(content)));
        QCOMPARE(world->documents(), QStringList({u"本|R-991231-001|"_s + content}));
    }

    void changedWindowAsksBeforeClosing_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        QTest::newRow("yes") << int(Answer::Yes) << true << true;
        QTest::newRow("no") << int(Answer::No) << true << false;
        QTest::newRow("cancel") << int(Answer::Cancel) << false << false;
    }

    void changedWindowAsksBeforeClosing()
    {
        QFETCH(int, answer);
        QFETCH(bool, written);
        frmRefDoc& form = showBook();
        QTest::keyClicks(&FormWorld::definition(form), u"x"_s);
        world->dialogs.expect(AskUpdate, static_cast<Answer>(answer));
        if (written)
            world->dialogs.expect(Updated);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->documents(),
                 QStringList({written ? u"本|R-991231-001|x内容"_s : u"本|R-991231-001|内容"_s}));
    }

    void registrationAsksBeforeClosing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        QTest::newRow("yes") << u"本"_s << u"内容"_s << int(Answer::Yes) << true << true;
        QTest::newRow("no") << u"本"_s << u"内容"_s << int(Answer::No) << true << false;
        QTest::newRow("cancel") << u"本"_s << u"内容"_s << int(Answer::Cancel) << false << false;
        QTest::newRow("name only, no") << u"本"_s << QString() << int(Answer::No) << true << false;
        QTest::newRow("content only, no") << QString() << u"内容"_s << int(Answer::No) << true << false;
    }

    void registrationAsksBeforeClosing()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        QFETCH(int, answer);
        QFETCH(bool, written);
        auto& form = world->beginRegistration<frmRefDoc>();
        fill(form, name, content);
        world->dialogs.expect(AskRegister, static_cast<Answer>(answer));
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->documents().size(), written ? 1 : 0);
    }

    void emptyRegistrationClosesWithoutAsking()
    {
        QVERIFY(FormWorld::closes(world->beginRegistration<frmRefDoc>()));
    }

    void refusedSaveOnClosingKeepsTheWindowOpen()
    {
        auto& form = world->beginRegistration<frmRefDoc>();
        fill(form, u"本"_s, QString());
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(Missing);
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(0), u"本"_s);
    }

    void refusedUpdateKeepsAWindowOpenThatNeverSaved()
    {
        frmRefDoc& form = showBook();
        fill(form, QString(25, u'本'), u"内容"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(NameTooLong);
        QVERIFY(!FormWorld::closes(form));
    }

    void comparisonThatFailsKeepsTheWindowOpen()
    {
        frmRefDoc& form = showBook();
        const auto table = std::exchange(world->session.RsRefDoc, nullptr);
        world->dialogs.expect(untrapped(91));
        QVERIFY(!FormWorld::closes(form));
        QVERIFY(world->loggedUnder(u"Form_Unload"_s, 91));
        world->session.RsRefDoc = table;
        QVERIFY(FormWorld::closes(form));
    }

    void menuClosesTheWindow()
    {
        const QPointer<frmRefDoc> form(&showBook());
        QVERIFY(FormWorld::choose(*form, u"mnuDataClose"_s));
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void closingAllGoesThroughBothKinds()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->show(Water);
        frmRefDoc& book = showBook();
        world->beginRegistration<frmRefFileEntry>();
        QTest::keyClicks(&FormWorld::definition(book), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::choose(book, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 0);
    }
};

QTEST_MAIN(TestDocumentSaving)
#include "test_document_saving.moc"
