#include "tests/data/twin_fixture.h"
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

/// What the windows of definitions and of documents ask before they close.
class TestDataWindowClosing : public TwinFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void unchangedWindowClosesWithoutAsking_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        const auto both = [](const QString& what, const QString& name, const QString& content) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, what)) << identifier << name << content;
        };
        both(u"plain"_s, u"水"_s, u"液体"_s);
        both(u"line breaks"_s, u"一\n二\r\n三"_s, u"一\r\n二\r三\u2028四\u2029五"_s);
        both(u"line break at the end"_s, u"水"_s, u"一\r\n二\r三\u2028四\u2029五\n"_s);
        both(u"NUL"_s, u"一"_s + QChar(0), u"二"_s + QChar(0) + u"三"_s);
        both(u"digits that begin with zeros"_s, u"0012"_s, u"0012"_s);
        both(u"empty"_s, {}, {});
        for (const Twin* kind : {&DefinitionTwin, &DocumentTwin})
            QTest::newRow(tag(kind->first, u"too long for the checks"_s))
                << kind->first << QString(50, u'水') << QString(kind->longest, u'液');
    }

    void unchangedWindowClosesWithoutAsking()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        QVERIFY(FormWorld::closes(show(name, content)));
        QCOMPARE(data(), QStringList(firstDatum(name, content)));
    }

    void changedWindowAsksBeforeClosing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"yes"_s)) << identifier << int(Answer::Yes) << true << true;
            QTest::newRow(tag(identifier, u"no"_s)) << identifier << int(Answer::No) << true << false;
            QTest::newRow(tag(identifier, u"cancel"_s))
                << identifier << int(Answer::Cancel) << false << false;
        }
    }

    void changedWindowAsksBeforeClosing()
    {
        QFETCH(int, answer);
        QFETCH(bool, written);
        DataForm& form = show();
        QTest::keyClicks(&FormWorld::definition(form), u"x"_s);
        world->dialogs.expect(AskUpdate, static_cast<Answer>(answer));
        if (written)
            world->dialogs.expect(twin().updated);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, written ? u"x液体"_s : u"液体"_s)));
    }

    void registrationAsksBeforeClosing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        const auto both = [](const QString& what, const QString& name, const QString& content, Answer answer,
                             bool closes, bool written) {
            for (const QString& identifier : {Water, Book})
                QTest::newRow(tag(identifier, what))
                    << identifier << name << content << int(answer) << closes << written;
        };
        both(u"yes"_s, u"水"_s, u"液体"_s, Answer::Yes, true, true);
        both(u"no"_s, u"水"_s, u"液体"_s, Answer::No, true, false);
        both(u"cancel"_s, u"水"_s, u"液体"_s, Answer::Cancel, false, false);
        both(u"name only, no"_s, u"水"_s, {}, Answer::No, true, false);
        both(u"content only, no"_s, {}, u"液体"_s, Answer::No, true, false);
    }

    void registrationAsksBeforeClosing()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        QFETCH(int, answer);
        QFETCH(bool, written);
        DataForm& form = beginRegistration();
        fill(form, name, content);
        world->dialogs.expect(AskRegister, static_cast<Answer>(answer));
        if (written)
            expectRegistered();
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(data().size(), written ? 1 : 0);
    }

    void emptyRegistrationClosesWithoutAsking_data() { bothKinds(); }

    void emptyRegistrationClosesWithoutAsking()
    {
        DataForm& form = beginRegistration();
        form.setCategoryRows({{u"川"_s, u"A"_s}}); // a category alone is no input
        QVERIFY(FormWorld::closes(form));
    }

    void refusedRegistrationKeepsTheWindowOpen_data() { bothKinds(); }

    void refusedRegistrationKeepsTheWindowOpen()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, QString());
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(Missing);
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(0), u"水"_s);
    }

    void refusedUpdateKeepsTheWindowOpen_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("savedBefore");
        QTest::addColumn<bool>("cancelledBetween");
        for (const QString& identifier : {Water, Book}) {
            for (const bool savedBefore : {false, true}) {
                const QString rest = savedBefore ? u", saved before"_s : QString();
                QTest::newRow(tag(identifier, u"no name"_s + rest))
                    << identifier << QString() << savedBefore << false;
                QTest::newRow(tag(identifier, u"long name"_s + rest))
                    << identifier << QString(25, u'水') << savedBefore << false;
            }
            QTest::newRow(tag(identifier, u"saved before, then cancelled"_s))
                << identifier << QString() << true << true;
        }
    }

    void refusedUpdateKeepsTheWindowOpen()
    {
        QFETCH(QString, name);
        QFETCH(bool, savedBefore);
        QFETCH(bool, cancelledBetween);
        DataForm& form = show();
        if (savedBefore) {
            fill(form, u"お湯"_s, u"熱い"_s);
            world->dialogs.expect(twin().updated);
            QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        }
        const QStringList before = data();
        fill(form, name, u"冷たい"_s);
        if (cancelledBetween) {
            world->dialogs.expect(AskUpdate, Answer::Cancel);
            QVERIFY(!FormWorld::closes(form));
        }
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(name.isEmpty() ? Missing : NameTooLong);
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(0), name);
        QCOMPARE(form.fieldText(2), u"冷たい"_s);
        QCOMPARE(data(), before);
    }

    void failedSaveOnClosingKeepsAWindowOpenThatSavedBefore_data() { bothKinds(); }

    void failedSaveOnClosingKeepsAWindowOpenThatSavedBefore()
    {
        DataForm& form = show();
        fill(form, u"お湯"_s, u"熱い"_s);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        fill(form, u"湯"_s, u"熱い"_s);
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            world->dialogs.expect(AskUpdate, Answer::Yes);
            world->dialogs.expect(untrapped(3260));
            QVERIFY(!FormWorld::closes(form));
        }
        QCOMPARE(form.fieldText(0), u"湯"_s);
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::closes(form));
        QCOMPARE(data(), QStringList(firstDatum(u"湯"_s, u"熱い"_s)));
    }

    void failedRegistrationOnClosingKeepsTheWindowOpen_data() { bothKinds(); }

    void failedRegistrationOnClosingKeepsTheWindowOpen()
    {
        DataForm& form = beginRegistration();
        fill(form, u"水"_s, u"液体"_s);
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(untrapped(3260));
        QVERIFY(!FormWorld::closes(form));
        QVERIFY(world->loggedUnder(u"mnuDataEntry_Click"_s, 3260));
        QCOMPARE(form.fieldText(0), u"水"_s);
        QCOMPARE(form.fieldText(2), u"液体"_s);
        QCOMPARE(data().size(), 0);
    }

    void datumThatCannotBeReadIsComparedAsItWasSeen_data() { bothKinds(); }

    void datumThatCannotBeReadIsComparedAsItWasSeen()
    {
        world->add(u"氷"_s, twin().second, u"固体"_s);
        DataForm& form = show();
        auto& unchanged = world->show<DataForm>(twin().second);
        fill(form, u"湯"_s, u"熱い"_s);
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Exclusive);
        QVERIFY(FormWorld::closes(unchanged));
        world->dialogs.expect(AskUpdate, Answer::Cancel);
        QVERIFY(!FormWorld::closes(form));
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(form));
    }

    void menuClosesTheWindow_data() { bothKinds(); }

    void menuClosesTheWindow()
    {
        const QPointer<DataForm> form(&show());
        QVERIFY(FormWorld::choose(*form, u"mnuDataClose"_s));
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->windowCount(), 0);
    }

    void closingAllAsksEveryChangedWindow_data() { bothKinds(); }

    void closingAllAsksEveryChangedWindow()
    {
        show();
        world->add(u"氷"_s, twin().second, u"固体"_s);
        auto& changed = world->show<DataForm>(twin().second);
        beginRegistration();
        QTest::keyClicks(&FormWorld::definition(changed), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::choose(changed, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 0);
        QCOMPARE(world->registry.loaded().front(), static_cast<LoadedWindow*>(world->first));
    }

    void closingAllGoesThroughBothKinds()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
        world->show(Water);
        auto& book = world->show<frmRefDoc>(Book);
        world->beginRegistration<frmRefFileEntry>();
        QTest::keyClicks(&FormWorld::definition(book), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::choose(book, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 0);
    }

    void cancelWhileClosingAllAsksAgain_data() { bothKinds(); }

    void cancelWhileClosingAllAsksAgain()
    {
        DataForm& changed = show();
        world->add(u"氷"_s, twin().second, u"固体"_s);
        world->show<DataForm>(twin().second);
        QTest::keyClicks(&FormWorld::definition(changed), u"x"_s);
        world->dialogs.expect(AskUpdate, Answer::Cancel);
        world->dialogs.expect(AskUpdate, Answer::Cancel); // in place of the second window
        QVERIFY(FormWorld::choose(changed, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 2);
    }
};

QTEST_MAIN(TestDataWindowClosing)
#include "test_data_window_closing.moc"
