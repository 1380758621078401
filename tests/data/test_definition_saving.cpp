#include "tests/data/form_world.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Registered{.text = u"本データを登録しました。"_s};
const MessageBox Updated{.text = u"本データを更新しました。"_s, .title = u"定義"_s};
const MessageBox AskUndefined{
    .text = u"未定義登録を行いますか。"_s, .title = u"定義"_s, .buttons = Buttons::OkCancel};
const MessageBox RegisteredUndefined{.text = u"未定義登録を行いました。"_s, .title = u"定義"_s};
const MessageBox AskUpdate{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel};
const MessageBox AskRegister{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel};
const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};
const MessageBox NameTooLong{.text = u"名称が最大入力値を超えています。最大入力値は全角25文字です。"_s,
                             .title = u"Quillon システム監査部"_s};
const MessageBox DefinitionTooLong{.text = u"定義が最大入力値を超えています。最大入力値は全角127文字です。"_s,
                                   .title = u"Quillon システム監査部"_s};

} // namespace

class TestDefinitionSaving : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    static void fill(frmMainData& form, const QString& name, const QString& definition)
    {
        FormWorld::enter(FormWorld::name(form), name);
        FormWorld::enter(FormWorld::definition(form), definition);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void registrationAddsTheRowAndShowsIt()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"<水>"_s, u"一行目\n二行目 ｱ😀"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions(), QStringList({u"<水>|M-991231-001|一行目\n二行目 ｱ😀"_s}));
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QVERIFY(FormWorld::closes(form)); // nothing has changed since
    }

    void registrationFilesTheDatumAndCleansTheAncestors()
    {
        frmMainData& form = world->beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory),
                 QStringList({u"A-B|M-991231-001"_s, u"C|M-991231-001"_s}));
    }

    void datumAndMembershipsAreWrittenAtOnce()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        const WriteCounter writes(*world->session.OpenDb);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(writes.count, 1);
        QCOMPARE(world->memberships().size(), 2);
        fill(form, u"水"_s, u"H2O"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}, {u"湖"_s, u"D"_s}});
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(writes.count, 2);
        QCOMPARE(world->memberships().size(), 3);
    }

    void failedFilingIsToldAfterTheWriteAndLeavesTheRest()
    {
        frmMainData& form = world->beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}, {u"海"_s, u"C"_s}});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        world->dialogs.meanwhile([&] {
            QVERIFY(othersMayWrite(world->path));
            QCOMPARE(world->memberships().size(), 3);
            QCOMPARE(form.modeText(), u"登録モード"_s); // filing comes before the change of mode
        });
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(world->memberships(),
                 QStringList({u"A|M-991231-001"_s, u"A-B|M-991231-001"_s, u"C|M-991231-001"_s}));
        fill(form, u"水"_s, u"H2O"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        world->dialogs.meanwhile([&] { QVERIFY(othersMayWrite(world->path)); });
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
    }

    void categoriesThatNoSearchCanNameAreToldAfterTheWrite()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"川"_s, u"A'B"_s}, {u"海"_s, u"C"_s}, {u"湖"_s, u"D'E"_s}});
        const auto nobodyWaits = [&] {
            QVERIFY(othersMayWrite(world->path));
            QCOMPARE(world->definitions().size(), 1);
        };
        for (int category = 0; category < 2; ++category) {
            world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
            world->dialogs.meanwhile(nobodyWaits);
            world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 91));
            world->dialogs.meanwhile(nobodyWaits);
        }
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList({u"C|M-991231-001"_s}));
    }

    void commitThatFailsKeepsTheInput()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"海"_s, u"C"_s}});
        {
            const ForeignLock reader(*world->session.OpenDb, ForeignLock::Kind::Reading);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        }
        QCOMPARE(world->definitions(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(0), u"水"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(world->memberships(), QStringList({u"C|M-991231-001"_s}));
    }

    void updateThatIsUndoneKeepsWhatWasTyped()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        frmMainData& form = world->show(Water);
        fill(form, u"水"_s, u"H2O"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        world->dialogs.expect(untrapped(5));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 5));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(world->memberships(), QStringList({u"A|M-991231-001"_s}));
        QCOMPARE(form.fieldText(2), u"H2O"_s);
    }

    void updateOfADeletedDatumIsReportedAsThatWhoeverWrites()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"お湯"_s, u"熱い"_s);
        world->deleteElsewhere(Water);
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
    }

    void failureThatUndoesEverythingKeepsTheInput()
    {
        frmMainData& form = world->beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        world->dialogs.expect(untrapped(5));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 5));
        QCOMPARE(world->definitions(), QStringList());
        QCOMPARE(world->memberships(), QStringList({u"A|M-991231-001"_s}));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(2), u"液体"_s);
        allowDeletion(*world->session.OpenDb, u"Category"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(world->memberships(), QStringList({u"A-B|M-991231-001"_s}));
    }

    void nextRegistrationInTheSameWindowTellsNothing()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(&world->beginRegistration(), &form); // its texts stay
        QCOMPARE(form.fieldText(0), u"水"_s);
        QCOMPARE(form.fieldText(1), Ice);
        QVERIFY(
            FormWorld::choose(form, u"mnuDataEntry"_s)); // sic: what was saved before keeps the notice away
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s, u"水|M-991231-002|液体"_s}));
    }

    void inputIsChecked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("definition");
        QTest::addColumn<int>("boxes"); // 1 name too long, 2 missing, 4 definition too long
        QTest::newRow("24 full-width") << QString(24, u'水') << u"液体"_s << 0;
        QTest::newRow("25 full-width") << QString(25, u'水') << u"液体"_s << 1;
        QTest::newRow("49 half-width") << QString(49, u'a') << u"液体"_s << 0;
        QTest::newRow("50 half-width") << QString(50, u'a') << u"液体"_s << 1;
        QTest::newRow("49 half-width kana") << QString(49, u'ｱ') << u"液体"_s << 0;
        QTest::newRow("50 half-width kana") << QString(50, u'ｱ') << u"液体"_s << 1;
        QTest::newRow("24 emoji") << u"😀"_s.repeated(24) << u"液体"_s << 0;
        QTest::newRow("25 emoji") << u"😀"_s.repeated(25) << u"液体"_s << 1;
        QTest::newRow("126 in the definition") << u"水"_s << QString(126, u'液') << 0;
        QTest::newRow("127 in the definition") << u"水"_s << QString(127, u'液') << 4;
        QTest::newRow("253 half-width") << u"水"_s << QString(253, u'a') << 0;
        QTest::newRow("254 half-width") << u"水"_s << QString(254, u'a') << 4;
        QTest::newRow("no name") << QString() << u"液体"_s << 2;
        QTest::newRow("no definition") << u"水"_s << QString() << 2;
        QTest::newRow("neither: the definition is not looked at") << QString() << QString() << 2;
        QTest::newRow("both too long: the definition is not looked at")
            << QString(25, u'水') << QString(127, u'液') << 1;
        QTest::newRow("blanks count as filled") << u" "_s << u" "_s << 0;
    }

    void inputIsChecked()
    {
        QFETCH(QString, name);
        QFETCH(QString, definition);
        QFETCH(int, boxes);
        frmMainData& form = world->beginRegistration();
        fill(form, name, definition);
        if (boxes & 1)
            world->dialogs.expect(NameTooLong);
        if (boxes & 2)
            world->dialogs.expect(Missing);
        if (boxes & 4)
            world->dialogs.expect(DefinitionTooLong);
        if (boxes == 0)
            world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions().size(), boxes == 0 ? 1 : 0);
        QCOMPARE(form.modeText(), boxes == 0 ? u"表示モード"_s : u"登録モード"_s);
        QCOMPARE(form.fieldText(0), name);
        QCOMPARE(form.fieldText(2), definition);
    }

    void identifierTakenMeanwhileLosesNothing()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        world->add(u"先客"_s, Water, u"…"_s);
        world->dialogs.expect(untrapped(3022));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 3022));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(0), u"水"_s);
        QCOMPARE(form.fieldText(2), u"液体"_s);
        QCOMPARE(world->definitions().size(), 1);
    }

    void identifierBeyondTheDayIsRefusedByTheTable()
    {
        frmMainData& form = world->beginRegistration();
        form.setFieldText(1, u"M-991231-1000"_s);
        fill(form, u"水"_s, u"液体"_s);
        world->dialogs.expect(untrapped(3163));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->definitions(), QStringList());
        QCOMPARE(form.modeText(), u"登録モード"_s);
    }

    void lockedFileKeepsTheInput()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"水"_s, u"H2O"_s);
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
            QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3260));
            QCOMPARE(form.fieldText(2), u"H2O"_s);
            world->dialogs.expect(AskUpdate, Answer::Yes);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(!FormWorld::closes(form));
        }
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
    }

    void updateWritesTheRowAndFilesAgain()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"お湯"_s, u"熱い\n水"_s);
        form.setCategoryRows({{u"川"_s, u"A-B"_s}});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->definitions(),
                 QStringList({u"お湯|M-991231-001|熱い\n水"_s, u"氷|M-991231-002|固体"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory), QStringList({u"A-B|M-991231-001"_s}));
        QCOMPARE(form.windowTitle(), u"定義画面 - 水"_s); // the caption stays as it was opened
        QVERIFY(FormWorld::closes(form));
    }

    void updateOfRefusedInputWritesNothing()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, QString(25, u'水'), u"H2O"_s);
        world->dialogs.expect(NameTooLong);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
    }

    void updateOfADeletedDatumIsReportedAndWritesNothing()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"お湯"_s, u"熱い"_s);
        world->session.RsMain->moveFirst();
        world->session.RsMain->deleteRow();
        world->session.RsMain->moveFirst(); // stands on another row
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QCOMPARE(world->definitions(), QStringList({u"氷|M-991231-002|固体"_s}));
        QVERIFY(FormWorld::closes(form)); // asks nothing
    }

    void undefinedRegistrationReplacesTheDefinition()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"謎"_s, u"途中まで"_s);
        world->dialogs.expect(AskUndefined, Answer::Ok);
        world->dialogs.expect(RegisteredUndefined);
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QCOMPARE(world->definitions(), QStringList({u"謎|M-991231-001|未定義"_s}));
        QCOMPARE(form.modeText(), u"表示モード"_s);
    }

    void undefinedRegistrationCanBeCancelled()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"謎"_s, u"途中まで"_s);
        world->dialogs.expect(AskUndefined, Answer::Cancel);
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QCOMPARE(form.fieldText(2), u"途中まで"_s);
        QCOMPARE(world->definitions(), QStringList());
    }

    void undefinedRegistrationNeedsAName()
    {
        frmMainData& form = world->beginRegistration();
        world->dialogs.expect(AskUndefined, Answer::Ok);
        world->dialogs.expect(Missing);
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QCOMPARE(world->definitions(), QStringList());
        QCOMPARE(form.fieldText(2), u"未定義"_s);
        QCOMPARE(form.modeText(), u"登録モード"_s);
    }

    void failedUndefinedRegistrationTellsNoSuccess()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"謎"_s, QString());
        world->add(u"先客"_s, Water, u"…"_s);
        world->dialogs.expect(AskUndefined, Answer::Ok);
        world->dialogs.expect(untrapped(3022));
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QVERIFY(world->loggedUnder(u"mnuDataNoDef_Click"_s, 3022));
        QCOMPARE(form.modeText(), u"登録モード"_s);
    }

    void unchangedWindowClosesWithoutAsking_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("definition");
        QTest::newRow("plain") << u"水"_s << u"液体"_s;
        QTest::newRow("line breaks") << u"一\n二\r\n三"_s << u"一\r\n二\r三\u2028四\u2029五"_s;
        QTest::newRow("NUL") << (u"一"_s + QChar(0)) << (u"二"_s + QChar(0) + u"三"_s);
        QTest::newRow("too long for the checks") << QString(50, u'水') << QString(255, u'液');
        QTest::newRow("empty") << QString() << QString();
    }

    void unchangedWindowClosesWithoutAsking()
    {
        QFETCH(QString, name);
        QFETCH(QString, definition);
        world->add(name, Water, definition);
        QVERIFY(FormWorld::closes(world->show(Water)));
        QCOMPARE(world->definitions(), QStringList({name + u'|' + Water + u'|' + definition}));
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
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        QTest::keyClicks(&FormWorld::definition(form), u"x"_s);
        world->dialogs.expect(AskUpdate, static_cast<Answer>(answer));
        if (written)
            world->dialogs.expect(Updated);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->definitions(),
                 QStringList({written ? u"水|M-991231-001|x液体"_s : u"水|M-991231-001|液体"_s}));
    }

    void registrationAsksBeforeClosing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("definition");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        QTest::newRow("yes") << u"水"_s << u"液体"_s << int(Answer::Yes) << true << true;
        QTest::newRow("no") << u"水"_s << u"液体"_s << int(Answer::No) << true << false;
        QTest::newRow("cancel") << u"水"_s << u"液体"_s << int(Answer::Cancel) << false << false;
        QTest::newRow("name only, no") << u"水"_s << QString() << int(Answer::No) << true << false;
        QTest::newRow("definition only, no") << QString() << u"液体"_s << int(Answer::No) << true << false;
    }

    void registrationAsksBeforeClosing()
    {
        QFETCH(QString, name);
        QFETCH(QString, definition);
        QFETCH(int, answer);
        QFETCH(bool, written);
        frmMainData& form = world->beginRegistration();
        fill(form, name, definition);
        world->dialogs.expect(AskRegister, static_cast<Answer>(answer));
        if (written)
            world->dialogs.expect(Registered);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->definitions().size(), written ? 1 : 0);
    }

    void emptyRegistrationClosesWithoutAsking()
    {
        frmMainData& form = world->beginRegistration();
        form.setCategoryRows({{u"川"_s, u"A"_s}}); // a category alone is no input
        QVERIFY(FormWorld::closes(form));
    }

    void refusedRegistrationKeepsTheWindowOpen()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, QString());
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(Missing);
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(0), u"水"_s);
    }

    void refusedUpdateKeepsAWindowOpenThatNeverSaved()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, QString(), u"液体"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(Missing);
        QVERIFY(!FormWorld::closes(form));
    }

    void refusedUpdateAnswersAsTheLastSaveDid_data()
    {
        QTest::addColumn<bool>("cancelledBetween");
        QTest::addColumn<bool>("closes");
        QTest::newRow("saved before") << false << true;
        QTest::newRow("saved before, then cancelled") << true << false;
    }

    void refusedUpdateAnswersAsTheLastSaveDid()
    {
        QFETCH(bool, cancelledBetween);
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"お湯"_s, u"熱い"_s);
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        fill(form, QString(), u"熱い"_s);
        if (cancelledBetween) {
            world->dialogs.expect(AskUpdate, Answer::Cancel);
            QVERIFY(!FormWorld::closes(form));
        }
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(Missing);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->definitions(), QStringList({u"お湯|M-991231-001|熱い"_s}));
    }

    void failedSaveOnClosingKeepsAWindowOpenThatSavedBefore()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        fill(form, u"お湯"_s, u"熱い"_s);
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        fill(form, u"湯"_s, u"熱い"_s);
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            world->dialogs.expect(AskUpdate, Answer::Yes);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(!FormWorld::closes(form));
        }
        QCOMPARE(form.fieldText(0), u"湯"_s);
    }

    void failedRegistrationOnClosingKeepsTheWindowOpen()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        world->add(u"先客"_s, Water, u"…"_s);
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(untrapped(3022));
        QVERIFY(!FormWorld::closes(form));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 3022));
        QCOMPARE(form.fieldText(0), u"水"_s);
    }

    void comparisonThatFailsKeepsTheWindowOpen()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& form = world->show(Water);
        const auto table = std::exchange(world->session.RsMain, nullptr);
        world->dialogs.expect(untrapped(91));
        QVERIFY(!FormWorld::closes(form));
        world->session.RsMain = table;
        QVERIFY(FormWorld::closes(form));
    }

    void menuClosesTheWindow()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        const QPointer<frmMainData> form(&world->show(Water));
        QVERIFY(FormWorld::choose(*form, u"mnuDataClose"_s));
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->windowCount(), 0);
    }

    void closingAllAsksEveryChangedWindow()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        world->show(Water);
        frmMainData& ice = world->show(u"M-991231-002"_s);
        world->beginRegistration();
        QTest::keyClicks(&FormWorld::definition(ice), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::choose(ice, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 0);
        QCOMPARE(world->registry.loaded().front(), static_cast<LoadedWindow*>(world->first));
    }

    void cancelWhileClosingAllAsksAgain()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, u"M-991231-002"_s, u"固体"_s);
        frmMainData& water = world->show(Water);
        world->show(u"M-991231-002"_s);
        QTest::keyClicks(&FormWorld::definition(water), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::Cancel);
        world->dialogs.expect(AskUpdate, Answer::Cancel); // in place of the second window
        QVERIFY(FormWorld::choose(water, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 2);
    }
};

QTEST_MAIN(TestDefinitionSaving)
#include "test_definition_saving.moc"
