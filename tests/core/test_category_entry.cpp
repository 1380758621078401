// Adding and renaming categories, without a window.
#include "app/base/ports/data_window.h"
#include "core/category_entry.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestCategoryEntry : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    QStringList categories() { return TestWorld::rowsOf(world->session.RsCategoryID); }
    /// Renames a category that is asked about under its present name.
    void rename(const QString& identifier, const QString& name)
    {
        RenameCategory(world->session, presentCategory(world->session, identifier), name);
    }
    static QString firstFree(const QString& beginning, const QStringList& taken)
    {
        return newCategoryIdentifier(beginning,
                                     [&](const QString& identifier) { return taken.contains(identifier); });
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        RegisterCategory(world->session, u"A"_s, u"自然"_s);
        RegisterCategory(world->session, u"A-A"_s, u"水"_s);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void registeredCategoryHasItsRow() { QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|水"_s})); }

    void identifierThatIsTakenIsRefused()
    {
        QCOMPARE(errorOf([&] { RegisterCategory(world->session, u"A"_s, u"人"_s); }), errors::DuplicateKey);
        QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|水"_s}));
    }

    void newCategoryPassesOverWhatTheWindowsAndTheDatabaseKnow()
    {
        RegisterCategory(world->session, u"A-C"_s, u"氷"_s); // by another program
        const auto isShown = [](const QString& identifier) { return identifier == u"A-B"; };
        const CategoryRow parent = presentCategory(world->session, u"A"_s);
        QCOMPARE(RegisterNewCategory(world->session, u"A-"_s, isShown, u"湯"_s, &parent), u"A-D"_s);
        QCOMPARE(categories().last(), u"A-D|湯"_s);
    }

    void nameOfMoreThanFiftyCharactersIsRefused()
    {
        const QString fits(50, u'名');
        rename(u"A"_s, fits);
        QCOMPARE(errorOf([&] { rename(u"A-A"_s, fits + u'名'); }), errors::FieldTooSmall);
        QCOMPARE(errorOf([&] { RegisterCategory(world->session, u"B"_s, fits + u'名'); }),
                 errors::FieldTooSmall);
        QCOMPARE(categories(), QStringList({u"A|"_s + fits, u"A-A|水"_s}));
    }

    void renamingChangesNothingElse()
    {
        rename(u"A-A"_s, u"'海' <洋>"_s);
        QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|'海' <洋>"_s}));
    }

    void missingCategoryIsNotRenamedAndNoOtherInItsPlace()
    {
        world->session.RsCategoryID->moveFirst();
        QCOMPARE(errorOf([&] { rename(u"B"_s, u"新"_s); }), errors::NoCurrentRecord);
        QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|水"_s}));
    }

    void categoryWithTheIdentifierOfTheOneAskedAboutIsLeftAlone()
    {
        const CategoryRow asked = presentCategory(world->session, u"A-A"_s);
        rename(u"A-A"_s, u"海"_s);
        QCOMPARE(errorOf([&] { requireCategory(world->session, asked); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { RenameCategory(world->session, asked, u"新"_s); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { RegisterCategory(world->session, u"A-A-A"_s, u"新"_s, &asked); }),
                 errors::NoCurrentRecord);
        QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|海"_s}));
    }

    void categoryOfTheSameNameInItsPlaceIsAnother()
    {
        const CategoryRow asked = presentCategory(world->session, u"A-A"_s);
        world->session.OpenDb->connection().execute(u"DELETE FROM Category_ID WHERE Category_ID = 'A-A'"_s);
        RegisterCategory(world->session, u"A-A"_s, u"水"_s);
        QCOMPARE(errorOf([&] { requireCategory(world->session, asked); }), errors::NoCurrentRecord);
    }

    void categoryIsRegisteredBelowTheOneAskedAbout()
    {
        const CategoryRow asked = presentCategory(world->session, u"A-A"_s);
        RegisterCategory(world->session, u"A-A-A"_s, u"海"_s, &asked);
        QCOMPARE(categories().last(), u"A-A-A|海"_s);
    }

    void lockedDatabaseKeepsEveryName()
    {
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            QCOMPARE(errorOf([&] { RegisterCategory(world->session, u"B"_s, u"人"_s); }), errors::Locked);
            QCOMPARE(errorOf([&] { rename(u"A"_s, u"新"_s); }), errors::Locked);
        }
        QCOMPARE(categories(), QStringList({u"A|自然"_s, u"A-A|水"_s}));
        rename(u"A"_s, u"新"_s); // nothing is left of the attempts
        QCOMPARE(categories().first(), u"A|新"_s);
    }

    void withoutDatabaseNothingCanBeWritten()
    {
        world->session.RsCategoryID.reset();
        QCOMPARE(errorOf([&] { RegisterCategory(world->session, u"B"_s, u"人"_s); }), errors::ObjectNotSet);
        QCOMPARE(errorOf([&] { rename(u"A"_s, u"新"_s); }), errors::ObjectNotSet);
    }

    void firstFreeLetterIsTaken()
    {
        QCOMPARE(firstFree({}, {}), u"A"_s);
        QCOMPARE(firstFree({}, {u"A"_s, u"C"_s}), u"B"_s);
        QCOMPARE(firstFree(u"A-"_s, {u"A"_s, u"A-A"_s}), u"A-B"_s);
        QCOMPARE(firstFree({}, {u"a"_s}), u"A"_s);
    }

    void lettersGoOnAfterZ()
    {
        QStringList taken;
        for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
            taken << QString(QChar(letter));
        QCOMPARE(firstFree({}, taken), u"["_s);
        QCOMPARE(firstFree({}, taken << u"["_s), u"\\"_s);
    }

    void halfCharactersAreNoLetters()
    {
        const QString found = newCategoryIdentifier(
            {}, [&](const QString& identifier) { return identifier.front().unicode() < 0xD800; });
        QCOMPARE(found.front().unicode(), char16_t(0xE000));
        QCOMPARE(errorOf([] { newCategoryIdentifier({}, [](const QString&) { return true; }); }),
                 errors::Overflow);
    }
};

QTEST_GUILESS_MAIN(TestCategoryEntry)
#include "test_category_entry.moc"
