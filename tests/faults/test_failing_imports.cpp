// Every call to the system fails while something comes in from outside: it is in as a whole or not at all, and that is
// told.
#include "exchange/archive.h"
#include "exchange/delimited.h"
#include "exchange/markdown.h"
#include "exchange/old_file.h"
#include "exchange/text_folder.h"
#include "store/creation.h"
#include "tests/faults/failing_attempts.h"
#include "tests/old_files/old_file_writer.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <map>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestFailingImports : public QObject, private FailingAttempts
{
    Q_OBJECT

public:
    /// From where something comes.
    enum class Source { Archive, Rows, Notes, Texts, OldFile };
    Q_ENUM(Source)

private:
    /// What is there when nothing fails.
    struct Reference {
        Model model;
        QString told;
    };

    QTemporaryDir m_sources;
    Model m_before; // in the database into which it comes
    Model m_converted;
    std::map<Source, Reference> m_expected;

    static QString textsOf(const exchange::ImportReport& report)
    {
        QString texts;
        for (const exchange::Note& note : report.notes)
            texts += note.where + u": "_s + note.text + u'\n';
        return texts;
    }

    void makeSources()
    {
        QTemporaryDir folder;
        prepareFolder(folder.path());
        FaultWorld world(folder.path());
        QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
        exchange::exportArchive(world.session, m_sources.filePath(u"archive"_s));
        exchange::exportDelimited(world.session, m_sources.filePath(u"rows.csv"_s));
        exchange::exportMarkdown(world.session, m_sources.filePath(u"notes"_s));
        QVERIFY(QDir(m_sources.path()).mkpath(u"texts/自然/川"_s));
        put(m_sources.filePath(u"texts/水.txt"_s), "きれいな水");
        put(m_sources.filePath(u"texts/自然/山.txt"_s), "\x8E\x52");
        put(m_sources.filePath(u"texts/自然/川/長.txt"_s), QByteArray("長い川").repeated(3000));
        auto tables = oldTables();
        tables[0].rows = {{u"水"_s, u"M-001231-001"_s, u"液体"_s}, {u"火"_s, u"M-001231-002"_s, u"熱"_s}};
        tables[1].rows = {{u"長い文献"_s, u"R-001231-001"_s, u"本文です。"_s.repeated(2000)}};
        tables[4].rows = {{u"M-001231-002"_s, u"M-001231-001"_s}};
        tables[5].rows = {{u"A"_s, u"歴史"_s}, {u"A-A"_s, u"日本史"_s}};
        tables[6].rows = {{u"A-A"_s, u"M-001231-001"_s}};
        put(m_sources.filePath(u"old.mdb"_s), writeOldFile(tables).bytes);
        const auto converted = exchange::convertOldFile(m_sources.filePath(u"old.mdb"_s));
        QString why;
        m_converted = readModel(converted.path, why).value_or(Model());
        QVERIFY2(m_converted.data.size() == 3, qPrintable(why));
    }

    exchange::ImportReport comeIn(Session& session, Source source) const
    {
        switch (source) {
        case Source::Archive:
            return exchange::importArchive(session, m_sources.filePath(u"archive"_s));
        case Source::Rows:
            return exchange::importDelimited(session, m_sources.filePath(u"rows.csv"_s));
        case Source::Notes:
            return exchange::importMarkdown(session, m_sources.filePath(u"notes"_s));
        case Source::Texts: {
            exchange::TextImportOptions options;
            options.longTexts = exchange::LongTexts::Split;
            return exchange::importTexts(session, m_sources.filePath(u"texts"_s), options);
        }
        case Source::OldFile:
            return exchange::importOldFile(session, m_sources.filePath(u"old.mdb"_s));
        }
        return {};
    }

    /// A database that holds a little already.
    static void begin(FaultWorld& world)
    {
        QCOMPARE(world.create(u"QUILLON.mdb"_s), Outcome::Done);
        const Step step{.kind = Step::Kind::Register,
                        .identifier = u"M-001231-001"_s,
                        .other = {},
                        .name = u"金"_s,
                        .content = u"堅い"_s,
                        .many = {}};
        QCOMPARE(world.perform(step), Outcome::Done);
    }

private Q_SLOTS:
    void initTestCase()
    {
        makeSources();
        for (const Source source :
             {Source::Archive, Source::Rows, Source::Notes, Source::Texts, Source::OldFile}) {
            QTemporaryDir folder;
            FaultWorld world(folder.path());
            begin(world);
            m_before = world.seen();
            const auto report = comeIn(world.session, source);
            m_expected[source] = {.model = world.seen(), .told = textsOf(report)};
            QVERIFY(m_expected[source].model.data.size() >= m_before.data.size() + 3);
        }
    }
    void cleanupTestCase() const { qInfo("%d calls failed", m_failures); }

    void itComesInWholeOrNotAtAll_data()
    {
        QTest::addColumn<Source>("source");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("stays");
        for (const auto& [name, source] :
             {std::pair("archive", Source::Archive), std::pair("rows", Source::Rows),
              std::pair("notes", Source::Notes), std::pair("texts", Source::Texts),
              std::pair("old file", Source::OldFile)}) {
            for (const Failure& failure : failures())
                QTest::addRow("%s, %s", name, qPrintable(failure.name))
                    << source << failure.error << failure.stays;
        }
    }
    void itComesInWholeOrNotAtAll()
    {
        QFETCH(const Source, source);
        if (!isLong() && m_random() % 3 != 0)
            return; // one of three is enough for every day
        const Reference& expected = m_expected.at(source);
        atEveryCall([&](int n) {
            QTemporaryDir folder;
            FaultWorld world(folder.path());
            bool isOver = false;
            [&] {
                begin(world);
                exchange::ImportReport report;
                const Attempt result = attempt(n, world, [&] {
                    return world.perform([&] {
                        report = comeIn(world.session, source);
                        return true;
                    });
                });
                isOver = result.isOver;
                const QString about = result.about + textsOf(report);
                QVERIFY2(isDoneOrTold(result), qPrintable(about));
                const auto actual = modelOf(world, about);
                QVERIFY(actual);
                const bool isIn = *actual == expected.model;
                QVERIFY2(isIn || (*actual == m_before && result.outcome != Outcome::Done),
                         qPrintable(about + difference(*actual, expected.model)));
                if (result.outcome == Outcome::Done)
                    QVERIFY2(textsOf(report) == expected.told, qPrintable(about));
                QVERIFY2(world.seen() == *actual, qPrintable(about));
                const QString files = filesProblem(folder.path(), *actual);
                QVERIFY2(files.isEmpty(), qPrintable(about + files));
                // What did not come in can come in the next time.
                if (!isIn) {
                    const Outcome again = world.perform([&] {
                        comeIn(world.session, source);
                        return true;
                    });
                    QVERIFY2(again == Outcome::Done,
                             qPrintable(about + u" / "_s + world.told().join(u" / "_s)));
                    const auto later = modelOf(world, about);
                    QVERIFY2(later && *later == expected.model, qPrintable(about));
                    QCOMPARE(filesProblem(folder.path(), expected.model), QString());
                }
            }();
            return isOver;
        });
    }

    void anOldFileIsConvertedWholeOrNotAtAll_data() { addFailures(); }
    void anOldFileIsConvertedWholeOrNotAtAll()
    {
        const QByteArray old = contentOf(m_sources.filePath(u"old.mdb"_s));
        atEveryCall([&](int n) {
            QTemporaryDir folder;
            put(folder.filePath(u"old.mdb"_s), old);
            FaultWorld world(folder.path());
            const Attempt result = attempt(n, world, [&] {
                return world.perform([&] {
                    exchange::convertOldFile(folder.filePath(u"old.mdb"_s));
                    return true;
                });
            });
            [&] {
                QVERIFY2(isDoneOrTold(result), qPrintable(result.about));
                QCOMPARE(contentOf(folder.filePath(u"old.mdb"_s)), old);
                const QString converted = folder.filePath(u"old-変換.mdb"_s);
                QVERIFY2(result.outcome != Outcome::Done || QFile::exists(converted),
                         qPrintable(result.about));
                if (!QFile::exists(converted))
                    return;
                QString why;
                const auto actual = readModel(converted, why);
                // Where it cannot be removed either, it is known as a creation that was broken off.
                QVERIFY2(actual ? *actual == m_converted
                                : result.outcome == Outcome::Failed && isUnfinishedFile(converted),
                         qPrintable(result.about + why));
            }();
            return result.isOver;
        });
    }
};

QTEST_GUILESS_MAIN(TestFailingImports)
#include "test_failing_imports.moc"
