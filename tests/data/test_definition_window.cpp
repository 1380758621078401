#include "tests/data/form_world.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"
#include "ui/data/digit_letter_key.h"

#include <QMenuBar>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Warning{.text = u"名称が最大入力値を超えています。最大入力値は全角127文字です。"_s,
                         .title = u"Quillon システム監査部"_s};
const MessageBox Registered{.text = u"本データを登録しました。"_s};
const MessageBox Updated{.text = u"本データを更新しました。"_s, .title = u"定義"_s};
const MessageBox AskUndefined{
    .text = u"未定義登録を行いますか。"_s, .title = u"定義"_s, .buttons = Buttons::OkCancel};
const MessageBox RegisteredUndefined{.text = u"未定義登録を行いました。"_s, .title = u"定義"_s};
const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};

} // namespace

/// In what the window of a definition differs from that of a document.
class TestDefinitionWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    static void fill(frmMainData& form, const QString& name, const QString& content)
    {
        FormWorld::enter(FormWorld::name(form), name);
        FormWorld::enter(FormWorld::definition(form), content);
    }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void menusHaveTheirCaptions()
    {
        auto* form = new frmMainData(world->session, world->registry);
        QCOMPARE(menuBarOf(*form->menuBar()), QStringList({u"データ&D)"_s, u"リンク(&L)"_s, u"分類(&C)"_s}));
        QCOMPARE(
            entriesOf(*form->findChild<QMenu*>(u"mnuData"_s)),
            QStringList({u"mnuDataDelete 削除(&D)"_s, u"mnuDataUpdate 更新(&U)"_s,
                         u"-mnuDataEntry 登録(&E)"_s, u"-mnuDataNoDef 未定義登録(&N)"_s, u"mnuDataLine |"_s,
                         u"mnuDataChange 画面の切り替え(&F2)"_s, u"mnuDataCloseAll 全画面を閉じる(&A)"_s,
                         u"mnuDataLine2 |"_s, u"mnuDataClose 本画面を閉じる(&C)"_s}));
        QCOMPARE(entriesOf(*form->findChild<QMenu*>(u"mnuLink"_s)),
                 QStringList({u"mnuLinkMain 定義データ(&M)"_s, u"mnuLinkRefDoc 文献データ(&R)"_s,
                              u"mnuLinkRefFile ファイルデータ(&F)"_s, u"mnuLinkCategory 分類先を指定"_s,
                              u"mnuLinkLine |"_s, u"mnuLinkView リンク先表示(&V)"_s,
                              u"mnuLinkDelete リンク削除(&D)"_s}));
        QCOMPARE(
            entriesOf(*form->findChild<QMenu*>(u"mnuCategory"_s)),
            QStringList({u"mnuCategoryEntry カテゴリに分類(&E)"_s, u"mnuCategoryDelete 分類を解除(&D)"_s}));
    }

    void undefinedRegistrationBelongsToRegistrationMode()
    {
        frmMainData& form = world->beginRegistration();
        const QAction* entry = FormWorld::entry(form, u"mnuDataNoDef"_s);
        QVERIFY(entry->isEnabled());
        fill(form, u"水"_s, u"液体"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(!entry->isEnabled());
    }

    void longTextWarnsWhileTypingAndTakesTheKey_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("warns");
        QTest::newRow("126 in the name") << 0 << 126 << false;
        QTest::newRow("127 in the name") << 0 << 127 << true;
        QTest::newRow("126 in the definition") << 2 << 126 << false;
        QTest::newRow("127 in the definition") << 2 << 127 << true;
    }

    void longTextWarnsWhileTypingAndTakesTheKey()
    {
        QFETCH(int, index);
        QFETCH(int, length);
        QFETCH(bool, warns);
        frmMainData& form = world->beginRegistration();
        const QString text(length, u'水');
        form.setFieldText(index, text);
        auto* field = form.findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        // To the end of the text: the End key would stop at the end of a wrapped line.
        FormWorld::name(form).end(false);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        if (warns) {
            world->dialogs.expect(Warning);
            world->dialogs.meanwhile([&] { QCOMPARE(form.fieldText(index), text); }); // before the key acts
        }
        QTest::keyClick(field, Qt::Key_A);
        QCOMPARE(form.fieldText(index), text + u'a');
        QTest::keyClick(field, Qt::Key_Backspace); // no digit and no letter
        QTest::keyClick(field, Qt::Key_Space);
    }

    void digitsAndLettersAreToldByTheirKey_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("scanCode");
        QTest::addColumn<bool>("counts");
        const int plain = Qt::NoModifier;
        const int shift = Qt::ShiftModifier;
        const int control = Qt::ControlModifier;
        const int pad = Qt::KeypadModifier;
        QTest::newRow("0") << int(Qt::Key_0) << plain << 0 << true;
        QTest::newRow("9") << int(Qt::Key_9) << plain << 18 << true;
        QTest::newRow("a") << int(Qt::Key_A) << plain << 38 << true;
        QTest::newRow("Z") << int(Qt::Key_Z) << shift << 52 << true;
        QTest::newRow("Ctrl+V") << int(Qt::Key_V) << control << 55 << true;
        QTest::newRow("Shift+1") << int(Qt::Key_Exclam) << shift << 10 << true;
        QTest::newRow("Shift+1, place unknown") << int(Qt::Key_Exclam) << shift << 0 << true;
        QTest::newRow("Shift+2, Japanese") << int(Qt::Key_QuoteDbl) << shift << 11 << true;
        QTest::newRow("Shift+colon, Japanese") << int(Qt::Key_Asterisk) << shift << 48 << false;
        QTest::newRow("at, Japanese") << int(Qt::Key_At) << plain << 34 << false;
        QTest::newRow("number pad") << int(Qt::Key_5) << pad << 84 << false;
        QTest::newRow("blank") << int(Qt::Key_Space) << plain << 65 << false;
        QTest::newRow("minus") << int(Qt::Key_Minus) << plain << 20 << false;
        QTest::newRow("Enter") << int(Qt::Key_Return) << plain << 36 << false;
        QTest::newRow("F2") << int(Qt::Key_F2) << plain << 68 << false;
    }

    void digitsAndLettersAreToldByTheirKey()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, scanCode);
        const QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers),
                              static_cast<quint32>(scanCode), 0, 0);
        QTEST(isDigitOrLetterKey(event), "counts");
    }

    void failedFilingIsToldAfterAnUpdate()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        frmMainData& form = world->show(Water);
        fill(form, u"水"_s, u"H2O"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s)});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        world->dialogs.meanwhile([&] { QVERIFY(othersMayWrite(world->path)); });
        world->dialogs.expect(Updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
        QCOMPARE(world->memberships(), QStringList({u"A|M-991231-001"_s}));
    }

    void updateThatIsUndoneKeepsWhatWasTyped()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        frmMainData& form = world->show(Water);
        fill(form, u"水"_s, u"H2O"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s)});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        world->dialogs.expect(untrapped(5));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 5));
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(world->memberships(), QStringList({u"A|M-991231-001"_s}));
        QCOMPARE(form.fieldText(2), u"H2O"_s);
    }

    void nextRegistrationInTheSameWindowTellsNothing()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(&world->beginRegistration(), &form);
        QCOMPARE(form.fieldText(1), Ice);
        fill(form, u"氷"_s, u"固体"_s);
        QVERIFY(
            FormWorld::choose(form, u"mnuDataEntry"_s)); // sic: what was saved before keeps the notice away
        QCOMPARE(world->definitions(), QStringList({u"水|M-991231-001|液体"_s, u"氷|M-991231-002|固体"_s}));
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

    void definitionBeforeAnUndefinedRegistrationComesBack()
    {
        frmMainData& form = world->beginRegistration();
        fill(form, QString(), u"途中まで"_s);
        world->dialogs.expect(AskUndefined, Answer::Ok);
        world->dialogs.expect(Missing);
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QCOMPARE(form.fieldText(2), u"未定義"_s);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(form.fieldText(2), u"途中まで"_s);
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
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
        world->dialogs.expect(AskUndefined, Answer::Ok);
        world->dialogs.expect(untrapped(3260));
        QVERIFY(FormWorld::choose(form, u"mnuDataNoDef"_s));
        QVERIFY(world->loggedUnder(u"mnuDataNoDef_Click"_s, 3260));
        QCOMPARE(form.modeText(), u"登録モード"_s);
    }
};

QTEST_MAIN(TestDefinitionWindow)
#include "test_definition_window.moc"
