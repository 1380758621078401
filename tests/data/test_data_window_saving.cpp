#include "core/categories.h"
#include "tests/data/twin_fixture.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};
const MessageBox NameTooLong{.text = u"名称が最大入力値を超えています。最大入力値は全角25文字です。"_s,
                             .title = u"Quillon システム監査部"_s};

} // namespace

/// Registering and updating in the windows of definitions and of documents, and what fails in it.
class TestDataWindowSaving : public TwinFixture
{
    Q_OBJECT

private:
    /// Another datum takes the identifier of the registration window.
    void takeIdentifier() const { world->add(u"先客"_s, twin().first, u"…"_s); }

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void registrationAddsTheRowAndShowsIt_data() { bothKinds(); }

    void registrationAddsTheRowAndShowsIt()
    {
        DataForm& form = beginRegistration();
        fill(form, u"<水>"_s, u"一行目\n二行目 ｱ😀"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"<水>"_s, u"一行目\n二行目 ｱ😀"_s)));
        QCOMPARE(world->definitions() + world->documents() + world->registeredFiles(), data());
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QVERIFY(FormWorld::closes(form)); // nothing has changed since
    }

    void registrationFilesTheDatumAndCleansTheAncestors_data() { bothKinds(); }

    void registrationFilesTheDatumAndCleansTheAncestors()
    {
        DataForm& form = beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, twin().first});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s), world->addCategory(u"海"_s, u"C"_s)});
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList({membership(u"A-B"_s), membership(u"C"_s)}));
    }

    void datumAndMembershipsAreWrittenAtOnce_data() { bothKinds(); }

    void datumAndMembershipsAreWrittenAtOnce()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        const CategoryRow river = world->addCategory(u"川"_s, u"A-B"_s);
        const CategoryRow sea = world->addCategory(u"海"_s, u"C"_s);
        const CategoryRow lake = world->addCategory(u"湖"_s, u"D"_s);
        form.setCategoryRows({river, sea});
        const WriteCounter writes(*world->session.OpenDb);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(writes.count, 1);
        QCOMPARE(world->memberships().size(), 2);
        fill(form, u"水"_s, u"H2O"_s);
        form.setCategoryRows({river, sea, lake});
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(writes.count, 2);
        QCOMPARE(world->memberships().size(), twin().updateFiles ? 3 : 2);
    }

    void failedFilingIsToldAfterTheWriteAndLeavesTheRest_data() { bothKinds(); }

    void failedFilingIsToldAfterTheWriteAndLeavesTheRest()
    {
        DataForm& form = beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, twin().first});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s), world->addCategory(u"海"_s, u"C"_s)});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        world->dialogs.meanwhile([&] {
            QVERIFY(othersMayWrite(world->path));
            QCOMPARE(data().size(), 1);
            QCOMPARE(world->memberships().size(), 2);
            // A definition is filed before the change of mode, a document after it.
            QCOMPARE(form.modeText(), twin().modeOnFailure);
        });
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
        // Not filed and not taken out of the category above.
        QCOMPARE(world->memberships(), QStringList({membership(u"A"_s), membership(u"C"_s)}));
        QVERIFY(FormWorld::closes(form));
    }

    void categoriesThatNoSearchCanNameAreToldAfterTheWrite_data() { bothKinds(); }

    void categoriesThatNoSearchCanNameAreToldAfterTheWrite()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A'B"_s), world->addCategory(u"海"_s, u"C"_s),
                              world->addCategory(u"湖"_s, u"D'E"_s)});
        const auto nobodyWaits = [&] {
            QVERIFY(othersMayWrite(world->path));
            QCOMPARE(data().size(), 1);
        };
        for (int category = 0; category < 2; ++category) {
            world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
            world->dialogs.meanwhile(nobodyWaits);
            world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 91));
            world->dialogs.meanwhile(nobodyWaits);
        }
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList(membership(u"C"_s)));
    }

    void categoryThatIsGoneLeavesTheListWithTheNextSave_data() { bothKinds(); }

    void categoryThatIsGoneLeavesTheListWithTheNextSave()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A"_s), world->addCategory(u"海"_s, u"B"_s)});
        const auto deleteCategory = [this](const QString& identifier) {
            DeleteCategory(world->session, identifier, 0);
        };
        deleteCategory(u"A"_s);
        world->addCategory(u"別の川"_s, u"A"_s); // gets its identifier
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList(membership(u"B"_s)));
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList(u"海|B|"_s));
        deleteCategory(u"B"_s);
        fill(form, u"水"_s, u"H2O"_s);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(world->memberships(), QStringList());
        // An update of a document files it nowhere and leaves its list alone.
        QCOMPARE(FormWorld::rows(form, u"lsvCategory"_s).rowCount(), twin().updateFiles ? 0 : 1);
    }

    void categoryThatWasRenamedIsStillTheSame_data() { bothKinds(); }

    void categoryThatWasRenamedIsStillTheSame()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        const CategoryRow river = world->addCategory(u"川"_s, u"A"_s);
        form.setCategoryRows({river});
        RenameCategory(world->session, river, u"大河"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(world->memberships(), QStringList(membership(u"A"_s)));
    }

    void registrationInAWindowInUseAsksItsClosingQuestionFirst_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("registered"); // before, and then changed
        QTest::addColumn<int>("answer");
        for (const QString& identifier : {Water, Book}) {
            for (const bool registered : {false, true}) {
                const QString before = registered ? u"registered, "_s : u"not registered, "_s;
                for (const auto& [word, answer] :
                     {std::pair(u"yes"_s, Answer::Yes), {u"no"_s, Answer::No}, {u"cancel"_s, Answer::Cancel}})
                    QTest::newRow(tag(identifier, before + word)) << identifier << registered << int(answer);
            }
        }
    }

    void registrationInAWindowInUseAsksItsClosingQuestionFirst()
    {
        QFETCH(bool, registered);
        QFETCH(int, answer);
        DataForm& form = beginRegistration();
        form.setCategoryRows({world->addCategory(u"川"_s, u"A"_s)});
        fill(form, u"水"_s, u"液体"_s);
        if (registered) {
            expectRegistered();
            QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
            fill(form, u"水"_s, u"H2O"_s);
        }
        const QStringList before = data();
        const QString question =
            registered ? u"現在のデータを更新しますか。"_s : u"現在のデータを登録しますか。"_s;
        world->dialogs.expect(MessageBox{.text = question, .buttons = Buttons::YesNoCancel},
                              static_cast<Answer>(answer));
        if (answer == int(Answer::Yes)) {
            if (registered)
                world->dialogs.expect(twin().updated);
            else
                expectRegistered();
        }
        CreateRegisterForm(world->session, twin().kind);
        QCOMPARE(world->windowCount(), 1);
        if (answer == int(Answer::Cancel)) {
            QCOMPARE(form.fieldText(0), u"水"_s);
            QCOMPARE(form.fieldText(1), twin().first);
            QCOMPARE(data(), before);
            return;
        }
        if (answer == int(Answer::Yes))
            QCOMPARE(data(), QStringList(firstDatum(u"水"_s, registered ? u"H2O"_s : u"液体"_s)));
        else
            QCOMPARE(data(), before);
        QCOMPARE(form.fieldText(0), QString());
        QCOMPARE(form.fieldText(1), data().isEmpty() ? twin().first : twin().second);
        QCOMPARE(form.fieldText(2), QString());
        QCOMPARE(FormWorld::rows(form, u"lsvCategory"_s).rowCount(), 0);
        QCOMPARE(FormWorld::rows(form, u"lsvLink"_s).rowCount(), 0);
        QCOMPARE(form.modeText(), u"登録モード"_s);
        FormWorld::definition(form).undo(); // brings nothing of the other datum back
        QCOMPARE(form.fieldText(2), QString());
        QVERIFY(FormWorld::closes(form));
    }

    void remainingCountIsThatOfTheEmptiedField_data() { bothKinds(); }

    void remainingCountIsThatOfTheEmptiedField()
    {
        DataForm& form = beginRegistration();
        FormWorld::definition(form).setFocus();
        FormWorld::enter(FormWorld::definition(form), u"五文字です"_s);
        form.ShowInputCount(2); // as the focus tells it that comes back from the question
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::No);
        CreateRegisterForm(world->session, twin().kind);
        QCOMPARE(FormWorld::panel(form, 2),
                 twin().label + u"：残り全角%1文字"_s.arg(static_cast<int>(twin().room)));
        QVERIFY(FormWorld::closes(form));
    }

    void refusedSaveKeepsTheWindowFromANewRegistration_data() { bothKinds(); }

    void refusedSaveKeepsTheWindowFromANewRegistration()
    {
        DataForm& form = beginRegistration();
        fill(form, QString(25, u'水'), u"液体"_s);
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::Yes);
        world->dialogs.expect(NameTooLong);
        CreateRegisterForm(world->session, twin().kind);
        QCOMPARE(form.fieldText(0), QString(25, u'水'));
        QCOMPARE(data(), QStringList());
    }

    void commitThatFailsKeepsTheInput_data() { bothKinds(); }

    void commitThatFailsKeepsTheInput()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"海"_s, u"C"_s)});
        {
            const ForeignLock reader(*world->session.OpenDb, ForeignLock::Kind::Reading);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        }
        QCOMPARE(data(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(0), u"水"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
        QCOMPARE(world->memberships(), QStringList(membership(u"C"_s)));
    }

    void failureThatUndoesEverythingKeepsTheInput_data() { bothKinds(); }

    void failureThatUndoesEverythingKeepsTheInput()
    {
        DataForm& form = beginRegistration();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, twin().first});
        fill(form, u"水"_s, u"液体"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s)});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        world->dialogs.expect(untrapped(5));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 5));
        QCOMPARE(data(), QStringList());
        QCOMPARE(world->memberships(), QStringList(membership(u"A"_s)));
        QCOMPARE(form.modeText(), u"登録モード"_s);
        QCOMPARE(form.fieldText(2), u"液体"_s);
        world->dialogs.expect(AskRegister, Answer::Cancel);
        QVERIFY(!FormWorld::closes(form)); // nothing counts as saved
        allowDeletion(*world->session.OpenDb, u"Category"_s);
        expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
        QCOMPARE(world->memberships(), QStringList(membership(u"A-B"_s)));
    }

    void inputIsChecked_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("boxes"); // 1 name too long, 2 missing, 4 content too long
        const auto both = [](const QString& what, const QString& name, const QString& content, int boxes) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, what)) << identifier << name << content << boxes;
        };
        both(u"24 full-width"_s, QString(24, u'水'), u"液体"_s, 0);
        both(u"25 full-width"_s, QString(25, u'水'), u"液体"_s, 1);
        both(u"49 half-width"_s, QString(49, u'a'), u"液体"_s, 0);
        both(u"50 half-width"_s, QString(50, u'a'), u"液体"_s, 1);
        both(u"49 half-width kana"_s, QString(49, u'ｱ'), u"液体"_s, 0);
        both(u"50 half-width kana"_s, QString(50, u'ｱ'), u"液体"_s, 1);
        both(u"24 emoji"_s, u"😀"_s.repeated(24), u"液体"_s, 0);
        both(u"25 emoji"_s, u"😀"_s.repeated(25), u"液体"_s, 1);
        both(u"no name"_s, {}, u"液体"_s, 2);
        both(u"no content"_s, u"水"_s, {}, 2);
        both(u"neither: the content is not looked at"_s, {}, {}, 2);
        both(u"blanks count as filled"_s, u" "_s, u" "_s, 0);
        const auto content = [](const QString& identifier, const QString& what, const QString& text,
                                int boxes) {
            QTest::newRow(tag(identifier, what)) << identifier << u"水"_s << text << boxes;
        };
        content(Water, u"126 in it"_s, QString(126, u'液'), 0);
        content(Water, u"127 in it"_s, QString(127, u'液'), 4);
        content(Water, u"253 half-width in it"_s, QString(253, u'a'), 0);
        content(Water, u"254 half-width in it"_s, QString(254, u'a'), 4);
        content(Book, u"31999 in it"_s, QString(31999, u'内'), 0);
        content(Book, u"31999 and a half in it"_s, QString(31999, u'内') + u'a', 0);
        content(Book, u"32000 in it"_s, QString(32000, u'内'), 4);
        QTest::newRow("definition, both too long: the content is not looked at")
            << Water << QString(25, u'水') << QString(127, u'液') << 1;
        QTest::newRow("document, both too long: the content is not looked at")
            << Book << QString(25, u'水') << QString(32000, u'液') << 1;
    }

    void inputIsChecked()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        QFETCH(int, boxes);
        DataForm& form = beginRegistration();
        fill(form, name, content);
        if (boxes & 1)
            world->dialogs.expect(NameTooLong);
        if (boxes & 2)
            world->dialogs.expect(Missing);
        if (boxes & 4)
            world->dialogs.expect(twin().contentTooLong);
        if (boxes == 0)
            expectRegistered();
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data().size(), boxes == 0 ? 1 : 0);
        QCOMPARE(form.modeText(), boxes == 0 ? u"表示モード"_s : u"登録モード"_s);
        QCOMPARE(form.fieldText(0), name);
        QCOMPARE(form.fieldText(2), content);
    }

    void identifierTakenMeanwhileIsReplacedByTheNextAndShown_data() { bothKinds(); }

    void identifierTakenMeanwhileIsReplacedByTheNextAndShown()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        takeIdentifier();
        if (twin().registered)
            world->dialogs.expect(*twin().registered);
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(form.modeText(), u"表示モード"_s);
        QCOMPARE(form.fieldText(1), twin().second);
        QCOMPARE(data().last(), u"水|"_s + twin().second + u"|液体"_s);
        QCOMPARE(data().size(), 2);
        // It is the new datum that the window now shows and changes.
        fill(form, u"湯"_s, u"熱い"_s);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data().last(), u"湯|"_s + twin().second + u"|熱い"_s);
    }

    void identifierBeyondTheDayIsRefusedByTheTable_data() { bothKinds(); }

    void identifierBeyondTheDayIsRefusedByTheTable()
    {
        DataForm& form = beginRegistration();
        form.setFieldText(1, twin().kind + u"-991231-1000"_s);
        fill(form, u"水"_s, u"液体"_s);
        world->dialogs.expect(untrapped(3163));
        QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
        QCOMPARE(data(), QStringList());
        QCOMPARE(form.modeText(), u"登録モード"_s);
    }

    void updateWritesTheRowAndNoOther_data() { bothKinds(); }

    void updateWritesTheRowAndNoOther()
    {
        DataForm& form = show();
        world->add(u"氷"_s, twin().second, u"固体"_s);
        fill(form, u"お湯"_s, u"熱い\n水"_s);
        form.setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s)});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, twin().first});
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data(),
                 QStringList({firstDatum(u"お湯"_s, u"熱い\n水"_s), u"氷|"_s + twin().second + u"|固体"_s}));
        // Only a definition is filed again, which takes it out of the ancestors, too.
        QCOMPARE(world->memberships(),
                 QStringList(twin().updateFiles ? membership(u"A-B"_s) : membership(u"A"_s)));
        QCOMPARE(form.windowTitle(), twin().shownCaption + u"水"_s); // the caption stays as it was opened
        QVERIFY(FormWorld::closes(form));
    }

    void updateOfRefusedInputWritesNothing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("missing"); // the content; otherwise the name is too long
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"long name"_s)) << identifier << false;
            QTest::newRow(tag(identifier, u"no content"_s)) << identifier << true;
        }
    }

    void updateOfRefusedInputWritesNothing()
    {
        QFETCH(bool, missing);
        DataForm& form = show();
        if (missing)
            fill(form, u"お湯"_s, QString());
        else
            fill(form, QString(25, u'水'), u"H2O"_s);
        world->dialogs.expect(missing ? Missing : NameTooLong);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
    }

    void updateOfADeletedDatumIsReportedAndWritesNothing_data() { bothKinds(); }

    void updateOfADeletedDatumIsReportedAndWritesNothing()
    {
        DataForm& form = show();
        world->add(u"氷"_s, twin().second, u"固体"_s);
        fill(form, u"お湯"_s, u"熱い"_s);
        world->deleteElsewhere(twin().first);
        world->tableOf(twin().first)->moveFirst(); // stands on another row
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3021));
        QCOMPARE(data(), QStringList(u"氷|"_s + twin().second + u"|固体"_s));
    }

    void updateOfADeletedDatumIsReportedAsThatWhoeverWrites_data() { bothKinds(); }

    void updateOfADeletedDatumIsReportedAsThatWhoeverWrites()
    {
        DataForm& form = show();
        fill(form, u"お湯"_s, u"熱い"_s);
        world->deleteElsewhere(twin().first);
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
    }

    void lockedFileKeepsTheInput_data() { bothKinds(); }

    void lockedFileKeepsTheInput()
    {
        DataForm& form = show();
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
            QVERIFY(world->loggedUnder(u"mnuDataUpdate_Click"_s, 3260));
        }
        QCOMPARE(form.fieldText(2), u"H2O"_s);
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"H2O"_s)));
    }
};

QTEST_MAIN(TestDataWindowSaving)
#include "test_data_window_saving.moc"
