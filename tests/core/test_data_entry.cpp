// Registering and updating data, without a window.
#include "core/data_entry.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001"_s;
const QString Book = u"R-991231-001"_s;

const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};

MessageBox tooLong(const QString& field, const QString& limit)
{
    return {.text = field + u"が最大入力値を超えています。最大入力値は全角"_s + limit + u"文字です。"_s,
            .title = u"Quillon システム監査部"_s};
}

} // namespace

class TestDataEntry : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    QStringList definitions() { return TestWorld::rowsOf(session().RsMain); }
    QStringList documents() { return TestWorld::rowsOf(session().RsRefDoc); }
    QStringList memberships() { return TestWorld::rowsOf(session().RsCategory); }
    /// Registers a definition.
    std::optional<SavedDatum> enter(const QString& name, const QString& content,
                                    const std::vector<CategoryRow>& categories = {},
                                    const QString& identifier = Water)
    {
        return RegisterDatum(session(), data_kinds::definition(), identifier,
                             {.name = name, .content = content}, categories);
    }
    /// Registers "水" and returns it as a window shows it then.
    SeenDatum water()
    {
        const DatumTexts texts{.name = u"水"_s, .content = u"液体"_s};
        return {.place = enter(texts.name, texts.content).value().place, .texts = texts};
    }
    qint32 errorOfUpdating(const SeenDatum& seen, const QString& content)
    {
        return errorOf([&] { UpdateDatum(session(), seen, {.name = u"水"_s, .content = content}, {}); });
    }
    /// Makes categories with these identifiers and returns them as a window lists them.
    std::vector<CategoryRow> categories(const QStringList& identifiers)
    {
        std::vector<CategoryRow> listed;
        for (const QString& identifier : identifiers) {
            const QString name = u"分類"_s + identifier;
            TestWorld::addRow(session().RsCategoryID, {identifier, name});
            listed.push_back({.name = name,
                              .identifier = identifier,
                              .number = session().OpenDb->connection().lastInsertRowid()});
        }
        return listed;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void definitionIsWrittenAndFiledAtOnce()
    {
        TestWorld::addRow(session().RsCategory, {u"A"_s, Water});
        const auto listed = categories({u"A-B"_s, u"C"_s});
        const WriteCounter writes(*session().OpenDb);
        const auto saved = enter(u"<水>"_s, u"一行目\r\n二行目"_s, listed);
        QVERIFY(saved->vanishedCategories.isEmpty());
        QVERIFY(saved.has_value());
        saved->messages.show(session()); // there is none
        QCOMPARE(writes.count, 1);
        QCOMPARE(definitions(), QStringList({u"<水>|M-991231-001|一行目\r\n二行目"_s}));
        QCOMPARE(memberships(), QStringList({u"A-B|M-991231-001"_s, u"C|M-991231-001"_s}));
        QCOMPARE(saved->place.identifier, Water);
        QCOMPARE(saved->place.databaseFile, session().OpenDb->path());
    }

    void documentIsWrittenToItsOwnTable()
    {
        const QString content(31'999, u'内');
        QVERIFY(RegisterDatum(session(), data_kinds::document(), Book, {.name = u"本"_s, .content = content},
                              categories({u"A"_s})));
        QCOMPARE(documents(), QStringList({u"本|R-991231-001|"_s + content}));
        QCOMPARE(definitions(), QStringList());
        QCOMPARE(memberships(), QStringList({u"A|R-991231-001"_s}));
    }

    void refusedTextsAreToldAndNotWritten_data()
    {
        QTest::addColumn<QString>("letter");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("field"); // the one that is too long; none: one is missing
        QTest::addColumn<QString>("limit");
        const QString water = u"水"_s;
        QTest::newRow("no name") << u"M"_s << QString() << water << QString() << QString();
        QTest::newRow("no definition") << u"M"_s << water << QString() << QString() << QString();
        QTest::newRow("name") << u"M"_s << QString(25, u'水') << water << u"名称"_s << u"25"_s;
        QTest::newRow("definition") << u"M"_s << water << QString(127, u'水') << u"定義"_s << u"127"_s;
        QTest::newRow("document's name") << u"R"_s << QString(25, u'水') << water << u"名称"_s << u"25"_s;
        // sic: a document's content is called a definition here.
        QTest::newRow("document") << u"R"_s << water << QString(32'000, u'水') << u"定義"_s << u"32000"_s;
    }

    void refusedTextsAreToldAndNotWritten()
    {
        QFETCH(QString, letter);
        QFETCH(QString, name);
        QFETCH(QString, content);
        QFETCH(QString, field);
        QFETCH(QString, limit);
        const DataKind& kind = *kindOf(letter);
        const QString identifier = letter + u"-991231-001"_s;
        const DatumTexts texts{.name = u"前"_s, .content = u"前の"_s};
        const SeenDatum seen{.place = RegisterDatum(session(), kind, identifier, texts, {})->place,
                             .texts = texts};
        const auto listed = categories({u"A"_s});
        const MessageBox box = field.isEmpty() ? Missing : tooLong(field, limit);
        world->dialogs.expect(box);
        QVERIFY(!RegisterDatum(session(), kind, letter + u"-991231-002"_s, {.name = name, .content = content},
                               listed));
        world->dialogs.expect(box);
        QVERIFY(!UpdateDatum(session(), seen, {.name = name, .content = content}, listed));
        QCOMPARE(definitions() + documents(), QStringList({u"前|"_s + identifier + u"|前の"_s}));
        QCOMPARE(memberships(), QStringList());
    }

    void identifierTakenMeanwhileGivesWayToTheNextFreeOne()
    {
        for (const QString& taken : {u"M-991231-001"_s, u"M-991231-002"_s, u"M-991231-004"_s})
            TestWorld::addRow(world->session.RsMain, {u"先客"_s, taken, u"…"_s});
        const auto saved = RegisterDatum(world->session, data_kinds::definition(), u"M-991231-001"_s,
                                         {.name = u"氷"_s, .content = u"固体"_s}, categories({u"A"_s}));
        QCOMPARE(saved->place.identifier, u"M-991231-003"_s);
        QCOMPARE(definitions().last(), u"氷|M-991231-003|固体"_s);
        QCOMPARE(memberships(), QStringList(u"A|M-991231-003"_s));
    }

    void identifiersOfADayCanRunOut()
    {
        {
            sqlite::Transaction write(world->session.OpenDb->connection());
            for (int i = 1; i < 1000; ++i)
                TestWorld::addRow(world->session.RsMain,
                                  {u"先客"_s, u"M-991231-%1"_s.arg(i, 3, 10, QChar(u'0')), u"…"_s});
            write.commit();
        }
        QCOMPARE(errorOf([&] { enter(u"水"_s, u"液体"_s); }), errors::FieldTooSmall);
        QCOMPARE(definitions().size(), 999);
    }

    void identifierBeyondTheDayIsRefused()
    {
        QCOMPARE(errorOf([&] { enter(u"水"_s, u"液体"_s, {}, u"M-991231-1000"_s); }), errors::FieldTooSmall);
        QCOMPARE(definitions(), QStringList());
    }

    void withoutDatabaseNothingCanBeSaved()
    {
        const SeenDatum seen = water();
        session().RsMain.reset();
        QCOMPARE(errorOf([&] { enter(u"氷"_s, u"固体"_s); }), errors::ObjectNotSet);
        QCOMPARE(errorOfUpdating(seen, u"H2O"_s), errors::ObjectNotSet);
        QCOMPARE(errorOf([&] { StoredTexts(session(), seen.place); }), errors::ObjectNotSet);
    }

    void lockedDatabaseTakesTheDatumLater()
    {
        const auto listed = categories({u"A"_s});
        for (const auto kind : {ForeignLock::Kind::Writing, ForeignLock::Kind::Reading}) {
            const ForeignLock other(*session().OpenDb, kind);
            QCOMPARE(errorOf([&] { enter(u"水"_s, u"液体"_s, listed); }), errors::Locked);
        }
        QCOMPARE(definitions(), QStringList());
        QCOMPARE(memberships(), QStringList());
        QVERIFY(enter(u"水"_s, u"液体"_s, listed));
        QCOMPARE(definitions().size(), 1);
        QCOMPARE(memberships().size(), 1);
    }

    void updateChangesTheRowAndFilesAgain()
    {
        const SeenDatum seen = water();
        enter(u"氷"_s, u"固体"_s, {}, u"M-991231-002"_s);
        TestWorld::addRow(session().RsCategory, {u"A"_s, Water});
        const auto listed = categories({u"A-B"_s});
        const WriteCounter writes(*session().OpenDb);
        const auto saved = UpdateDatum(session(), seen, {.name = u"お湯"_s, .content = u"熱い"_s}, listed);
        QVERIFY(saved.has_value());
        saved->messages.show(session()); // there is none
        QCOMPARE(writes.count, 1);
        QCOMPARE(definitions(), QStringList({u"お湯|M-991231-001|熱い"_s, u"氷|M-991231-002|固体"_s}));
        QCOMPARE(memberships(), QStringList({u"A-B|M-991231-001"_s}));
    }

    void storedTextsAreThoseOfTheRow()
    {
        const SeenDatum seen = water();
        QCOMPARE(StoredTexts(session(), seen.place), (DatumTexts{.name = u"水"_s, .content = u"液体"_s}));
        UpdateDatum(session(), seen, {.name = u"お湯"_s, .content = u"熱い"_s}, {});
        QCOMPARE(StoredTexts(session(), seen.place), (DatumTexts{.name = u"お湯"_s, .content = u"熱い"_s}));
    }

    void datumThatIsGoneIsReportedAsThatWhoeverWrites()
    {
        const SeenDatum seen = water();
        enter(u"氷"_s, u"固体"_s, {}, u"M-991231-002"_s);
        QVERIFY(session().RsMain->goTo(data_field::Object_ID, Water));
        session().RsMain->deleteRow();
        session().RsMain->moveFirst(); // stands on another row
        QVERIFY(!StoredTexts(session(), seen.place));
        const ForeignLock other(*session().OpenDb, ForeignLock::Kind::Writing);
        QCOMPARE(errorOfUpdating(seen, u"H2O"_s), errors::NoCurrentRecord);
        QCOMPARE(definitions(), QStringList({u"氷|M-991231-002|固体"_s}));
    }

    void anotherDatumOfTheSameIdentifierIsNotMistakenForIt()
    {
        const SeenDatum seen = water();
        QVERIFY(session().RsMain->goTo(data_field::Object_ID, Water));
        session().RsMain->deleteRow();
        const SeenDatum other = water(); // the identifier is given out again, the texts are even the same
        QVERIFY(!StoredTexts(session(), seen.place));
        QCOMPARE(errorOfUpdating(seen, u"H2O"_s), errors::NoCurrentRecord);
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QVERIFY(UpdateDatum(session(), other, {.name = u"水"_s, .content = u"H2O"_s}, {}));
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
    }

    void datumThatAnotherHasChangedIsNotOverwritten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("content");
        QTest::newRow("name") << u"お湯"_s << u"液体"_s;
        QTest::newRow("content") << u"水"_s << u"固体"_s;
        QTest::newRow("blank at the end") << u"水"_s << u"液体 "_s;
    }

    void datumThatAnotherHasChangedIsNotOverwritten()
    {
        QFETCH(QString, name);
        QFETCH(QString, content);
        const SeenDatum seen = water();
        const auto listed = categories({u"A"_s});
        QVERIFY(UpdateDatum(session(), seen, {.name = name, .content = content}, {}));
        const DatumTexts ours{.name = u"水"_s, .content = u"H2O"_s};
        QCOMPARE(errorOf([&] { UpdateDatum(session(), seen, ours, listed); }), errors::ChangedMeanwhile);
        QCOMPARE(definitions(), QStringList({name + u"|M-991231-001|"_s + content}));
        QCOMPARE(memberships(), QStringList());
        const SeenDatum now{.place = seen.place, .texts = {.name = name, .content = content}};
        QVERIFY(UpdateDatum(session(), now, ours, listed));
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
    }

    void withoutIdentifierNothingIsRegistered_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("empty") << u""_s;
        QTest::newRow("null") << QString();
    }

    void withoutIdentifierNothingIsRegistered()
    {
        QFETCH(QString, identifier);
        QString told;
        const auto onFailure = [&](const Error& error) {
            QCOMPARE(error.number, errors::InvalidArgument);
            told = error.description;
        };
        guardedBy(onFailure, [&] { enter(u"水"_s, u"液体"_s, {}, identifier); });
        QVERIFY(
            compareText(told, u"識別符号がないため登録できません。画面を閉じて、登録をやり直してください。"));
        QCOMPARE(definitions(), QStringList());
    }

    void categoryThatIsGoneDoesNotComeBack_data()
    {
        QTest::addColumn<bool>("registers");
        QTest::addColumn<bool>("givenOutAgain"); // another category has its identifier now
        QTest::newRow("registering") << true << false;
        QTest::newRow("updating") << false << false;
        QTest::newRow("registering, another of its identifier") << true << true;
        QTest::newRow("updating, another of its identifier") << false << true;
    }

    void categoryThatIsGoneDoesNotComeBack()
    {
        QFETCH(bool, registers);
        QFETCH(bool, givenOutAgain);
        const auto listed = categories({u"A"_s, u"B"_s, u"C"_s});
        QVERIFY(session().RsCategoryID->goTo(category_field::Category_ID, u"B"_s));
        session().RsCategoryID->deleteRow();
        if (givenOutAgain)
            categories({u"B"_s});
        const DatumTexts texts{.name = u"水"_s, .content = u"液体"_s};
        const auto saved = registers
                               ? RegisterDatum(session(), data_kinds::definition(), Water, texts, listed)
                               : UpdateDatum(session(), water(), texts, listed);
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s, u"C|M-991231-001"_s}));
        QCOMPARE(saved->vanishedCategories, QStringList({u"B"_s}));
        saved->messages.show(session()); // there is none
    }

    void datumOfAnotherDatabaseIsNotMistakenForOneOfThisOne()
    {
        const SeenDatum seen = water();
        world->openDatabase(world->createDatabase(u"another.mdb"_s));
        enter(u"火"_s, u"熱い"_s);
        QVERIFY(!StoredTexts(session(), seen.place));
        QCOMPARE(errorOfUpdating(seen, u"H2O"_s), errors::NoCurrentRecord);
        QCOMPARE(definitions(), QStringList({u"火|M-991231-001|熱い"_s}));
    }

    void sameDatabaseUnderAnotherNameIsTheSame()
    {
        SeenDatum seen = water();
        seen.place.databaseFile = world->folder.filePath(u"./QUILLON.mdb"_s);
        QVERIFY(StoredTexts(session(), seen.place));
        QVERIFY(UpdateDatum(session(), seen, {.name = u"水"_s, .content = u"H2O"_s}, {}));
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|H2O"_s}));
    }

    void failedFilingIsToldWhenTheWriteIsOver()
    {
        TestWorld::addRow(session().RsCategory, {u"A"_s, Water});
        refuseDeletion(*session().OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s);
        const auto saved = enter(u"水"_s, u"液体"_s, categories({u"A-B"_s, u"C'D"_s, u"E"_s}));
        QVERIFY(saved.has_value());
        QCOMPARE(definitions().size(), 1);
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s, u"E|M-991231-001"_s}));
        for (const auto& box :
             {failureBox(u"DeleteParentCategory"_s, 5), failureBox(u"GetFilterResult"_s, 3075),
              failureBox(u"ClassifyCategory"_s, 91)}) {
            world->dialogs.expect(box);
            world->dialogs.meanwhile([&] { QVERIFY(othersMayWrite(session().OpenDb->path())); });
        }
        saved->messages.show(session());
    }

    void failureThatUndoesEverythingLeavesTheOldTexts()
    {
        const SeenDatum seen = water();
        TestWorld::addRow(session().RsCategory, {u"A"_s, Water});
        refuseDeletion(*session().OpenDb, u"Category"_s, u"OLD.Category_ID = 'A'"_s,
                       Refusal::OfTheTransaction);
        const DatumTexts texts{.name = u"お湯"_s, .content = u"熱い"_s};
        QCOMPARE(errorOf([&] { UpdateDatum(session(), seen, texts, categories({u"A-B"_s})); }), 5);
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|液体"_s}));
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s}));
    }
};

QTEST_GUILESS_MAIN(TestDataEntry)
#include "test_data_entry.moc"
