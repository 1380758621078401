// A database with its files in a folder of lines, and back.
#include "app/base/ports/files.h"
#include "exchange/archive.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/sqlite/connection.h"
#include "tests/exchange/folder_content.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRandomGenerator>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

namespace
{

/// Texts that come from nobody's keyboard.
class OddTexts
{
public:
    explicit OddTexts(quint32 seed) : m_random(seed) {}

    std::optional<QString> fieldOf(int width)
    {
        const int longest = width > 0 ? width : 3000;
        switch (m_random.bounded(8)) {
        case 0:
            return std::nullopt;
        case 1:
            return u""_s;
        default: {
            QString text;
            const int length = m_random.bounded(m_random.bounded(3) == 0 ? longest : qMin(longest, 12)) + 1;
            while (text.size() < length)
                text += unit();
            return text;
        }
        }
    }
    int below(int most) { return static_cast<int>(m_random.bounded(static_cast<quint32>(most))); }

private:
    QChar unit()
    {
        static const QString rare =
            u"\0\r\n\t\u0001\u007F\u0080\u2028\u2029\uFEFF\uFFFE\uFFFF\uFFFD\"\\/<&'-;*?[]"_s;
        switch (m_random.bounded(6)) {
        case 0:
            return rare[below(static_cast<int>(rare.size()))];
        case 1:
            return QChar(0xD800 + m_random.bounded(0x800U)); // halves, now and then a pair
        case 2:
            return QChar(m_random.bounded(0x10000U));
        case 3:
            return QChar(0x20 + m_random.bounded(0x5FU));
        default:
            return QChar(0x3041 + m_random.bounded(0x53U));
        }
    }

    QRandomGenerator m_random;
};

class EndingAfter : public Progress
{
public:
    explicit EndingAfter(int steps) : m_steps(steps) {}
    void at(qint64, qint64) override { --m_steps; }
    bool cancelled() override { return m_steps < 0; }

private:
    int m_steps;
};

} // namespace

class TestArchive : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;  // where an archive comes from
    std::unique_ptr<TestWorld> target; // where it goes to

    static inline const QString Water = u"M-991231-001"_s;

    static std::unique_ptr<TestWorld> newWorld()
    {
        auto fresh = std::make_unique<TestWorld>();
        fresh->openDatabase(fresh->createDatabase());
        return fresh;
    }
    QString archive() const { return world->folder.filePath(u"書庫"_s); }
    static QString fileIn(const TestWorld& where, const QString& name)
    {
        return where.folder.filePath(u"RefFile/"_s + name);
    }
    static void addFile(TestWorld& where, const QString& name, const QByteArray& content)
    {
        QDir(where.folder.path()).mkpath(u"RefFile"_s);
        writeContent(fileIn(where, name), content);
    }
    static std::array<std::shared_ptr<RecordSet>, 7> tables(TestWorld& of)
    {
        return {of.session.RsMain, of.session.RsRefDoc,     of.session.RsRefFile, of.session.RsOpenApp,
                of.session.RsLink, of.session.RsCategoryID, of.session.RsCategory};
    }
    static QStringList everything(TestWorld& of)
    {
        QStringList rows;
        for (const auto& table : tables(of))
            rows << table->table().name + u':' << TestWorld::rowsOf(table);
        return rows;
    }
    void exportIt() { exportArchive(world->session, archive()); }
    ImportReport importIt(const ImportOptions& options = {})
    {
        return importArchive(target->session, archive(), options);
    }
    QString refusal()
    {
        const QStringList before = everything(*target);
        const auto files = contentBelow(target->folder.filePath(u"RefFile"_s));
        QString text = u"(taken)"_s;
        try {
            importIt();
        } catch (const Refused& refused) {
            text = refused.description;
        }
        return everything(*target) == before && contentBelow(target->folder.filePath(u"RefFile"_s)) == files
                   ? text
                   : u"(something has been written)"_s;
    }
    static QStringList textsOf(const ImportReport& report)
    {
        QStringList texts;
        for (const Note& note : report.notes)
            texts << QString(note.where).remove(QRegularExpression(u"^.*/(?=RefFile)"_s)) + u": "_s +
                         note.text;
        return texts;
    }
    /// Water, a document that leads to it and stands in a category, a file, and an application.
    void fill()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"川"_s, u"R-991231-001"_s, u"長い\r\n文章"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsOpenApp, {u"編集"_s, u"/usr/bin/ed"_s});
        TestWorld::addRow(world->session.RsLink, {u"R-991231-001"_s, Water});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"地形"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, u"R-991231-001"_s});
        addFile(*world, u"図.txt"_s, "picture");
    }

private Q_SLOTS:
    void init()
    {
        world = newWorld();
        target = newWorld();
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QCOMPARE(target->dialogs.takeComplaints(), QStringList());
        world.reset();
        target.reset();
    }

    void whatComesBackIsExportedToTheSameBytes()
    {
        const quint32 seed = QRandomGenerator::system()->generate();
        constexpr int Rounds = 40;
        for (int round = 0; round < Rounds; ++round) {
            const quint32 own = seed + static_cast<quint32>(round);
            OddTexts texts(own);
            world = newWorld();
            target = newWorld();
            QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
            const auto write = std::make_unique<sqlite::Transaction>(world->session.OpenDb->connection());
            for (const auto& table : tables(*world)) {
                for (int i = texts.below(12); i > 0; --i) {
                    table->addNew();
                    for (std::size_t field = 0; field < table->table().fields.size(); ++field) {
                        if (const auto text = texts.fieldOf(table->table().fields[field].width))
                            table->setField(static_cast<int>(field), *text);
                    }
                    const qint32 failure = errorOf([&] { table->update(); });
                    QVERIFY(failure == 0 || failure == errors::DuplicateKey);
                }
            }
            write->commit();
            for (int i = texts.below(3); i > 0; --i)
                addFile(*world, u"file %1"_s.arg(i), QByteArray(texts.below(100'000), 'x'));
            exportIt();
            importIt();
            const QString again = target->folder.filePath(u"again"_s);
            exportArchive(target->session, again);
            QVERIFY2(contentBelow(archive()) == contentBelow(again), qPrintable(u"seed %1"_s.arg(own)));
        }
    }

    void formatIsAsDocumented()
    {
        fill();
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.written, 3);
        QCOMPARE(report.files, 9);
        QVERIFY(report.notes.empty());
        const auto content = contentBelow(archive());
        QCOMPARE(
            QStringList(content.keys()),
            QStringList({u"RefFile/図.txt"_s, u"manifest.json"_s, u"tables/Category.jsonl"_s,
                         u"tables/Category_ID.jsonl"_s, u"tables/Link.jsonl"_s, u"tables/Main.jsonl"_s,
                         u"tables/OpenApp.jsonl"_s, u"tables/RefDoc.jsonl"_s, u"tables/RefFile.jsonl"_s}));
        QCOMPARE(content[u"tables/Main.jsonl"_s],
                 QByteArray("{\"Name\":\"水\",\"Object_ID\":\"M-991231-001\",\"Explanation\":\"H2O\"}\n"));
        QCOMPARE(
            content[u"tables/RefDoc.jsonl"_s],
            QByteArray(
                "{\"Name\":\"川\",\"Object_ID\":\"R-991231-001\",\"Explanation\":\"長い\\r\\n文章\"}\n"));
        QCOMPARE(content[u"tables/Link.jsonl"_s],
                 QByteArray("{\"Link_Object_ID\":\"R-991231-001\",\"Object_ID\":\"M-991231-001\"}\n"));
        QCOMPARE(content[u"RefFile/図.txt"_s], QByteArray("picture"));
        const QByteArray manifest = content[u"manifest.json"_s];
        QVERIFY(manifest.startsWith("{\"format\":\"quillon-archive\",\"version\":1,\n\"tables\":[\n"
                                    "{\"name\":\"Main\",\"rows\":1,\"bytes\":" +
                                    QByteArray::number(content[u"tables/Main.jsonl"_s].size()) +
                                    ",\"sha256\":\""));
        const auto hash = [](const QByteArray& bytes) {
            return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
        };
        QVERIFY(manifest.contains("\"files\":[\n{\"name\":\"図.txt\",\"bytes\":7,\"sha256\":\"" +
                                  hash("picture") + "\"}],\n"));
        const qsizetype own = manifest.lastIndexOf("\"sha256\"");
        QCOMPARE(manifest.sliced(own), "\"sha256\":\"" + hash(manifest.first(own)) + "\"}\n");
    }

    void importedIsWhatWasExported()
    {
        fill();
        exportIt();
        const ImportReport report = importIt();
        QCOMPARE(everything(*target), everything(*world));
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s)),
                 contentBelow(world->folder.filePath(u"RefFile"_s)));
        QCOMPARE(report.added, 3);
        QCOMPARE(report.linked, 1);
        QCOMPARE(report.filed, 1);
        QCOMPARE(report.categories, 2);
        QVERIFY(report.notes.empty());
    }

    void whatIsThereAlreadyIsSkipped()
    {
        fill();
        exportIt();
        importIt();
        const QStringList before = everything(*target);
        const ImportReport report = importIt();
        QCOMPARE(everything(*target), before);
        QCOMPARE(report.skipped, 3);
        QCOMPARE(report.added + report.linked + report.filed + report.categories + report.renamed, 0);
        QVERIFY(report.notes.empty());
    }

    void otherContentGetsAnotherIdentifierAndWhatLeadsToItFollows()
    {
        fill();
        TestWorld::addRow(world->session.RsMain, {u"霧"_s, u"M-991231-002"_s, u"-"_s});
        exportIt();
        TestWorld::addRow(target->session.RsMain, {u"火"_s, Water, u"熱い"_s});
        TestWorld::addRow(target->session.RsCategoryID, {u"A"_s, u"芸術"_s});
        TestWorld::addRow(target->session.RsRefDoc, {u"川"_s, u"R-991231-001"_s, u"別の文章"_s});
        addFile(*target, u"図.txt"_s, "another");
        TestWorld::addRow(target->session.RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        const ImportReport report = importIt();
        QCOMPARE(TestWorld::rowsOf(target->session.RsMain),
                 QStringList({u"火|M-991231-001|熱い"_s, u"水|M-991231-003|H2O"_s, u"霧|M-991231-002|-"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsRefFile),
                 QStringList({u"図.txt|F-991231-001|未入力"_s, u"図 (2).txt|F-991231-002|未入力"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsLink), QStringList(u"R-991231-002|M-991231-003"_s));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategoryID),
                 QStringList({u"A|芸術"_s, u"B|自然"_s, u"B-A|地形"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategory), QStringList(u"B-A|R-991231-002"_s));
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s)),
                 (QMap<QString, QByteArray>{{u"図.txt"_s, "another"}, {u"図 (2).txt"_s, "picture"}}));
        QCOMPARE(report.added, 4);
        QCOMPARE(report.renamed, 3);
        const QStringList told = textsOf(report);
        QCOMPARE(told.size(), 6);
        QVERIFY(compareText(
            told[0],
            u"RefFile/図.txt: 同じ名前の別のファイルがあるため、「図 (2).txt」という名前で取り込みました。"_s));
        QVERIFY(compareText(told[1],
                            u"tables/Main.jsonl:1: 識別符号 M-991231-001 は別のデータが使用しているため、"
                            u"M-991231-003 として取り込みました。"_s));
        QVERIFY(
            compareText(told[4], u"tables/Category_ID.jsonl:1: カテゴリ A は、B として取り込みました。"_s));
    }

    void emptyIdentifiersMeetLikeOthers()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u""_s, u"H2O"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"川"_s, u"R-991231-001"_s, u"流れる"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u""_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategory, {u""_s, u"R-991231-001"_s});
        TestWorld::addRow(world->session.RsLink, {u"R-991231-001"_s, u""_s});
        exportIt();
        TestWorld::addRow(target->session.RsMain, {u"火"_s, u""_s, u"熱い"_s});
        TestWorld::addRow(target->session.RsCategoryID, {u""_s, u"芸術"_s});
        TestWorld::addRow(target->session.RsLink, {u"R-991231-001"_s, u""_s});
        QCOMPARE(importIt().added, 2);
        QCOMPARE(TestWorld::rowsOf(target->session.RsMain),
                 QStringList({u"火||熱い"_s, u"水|M-991231-001|H2O"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategoryID), QStringList({u"|芸術"_s, u"A|自然"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategory), QStringList(u"A|R-991231-001"_s));
        QCOMPARE(TestWorld::rowsOf(target->session.RsLink).size(), 1);
    }

    void fullDayGivesWayToTheDayBefore()
    {
        fill();
        exportIt();
        for (int i = 1; i <= 999; ++i)
            TestWorld::addRow(target->session.RsMain,
                              {u"別"_s, u"M-991231-%1"_s.arg(i, 3, 10, QChar(u'0')), u"別"_s});
        importIt();
        QCOMPARE(TestWorld::rowsOf(target->session.RsMain).last(), u"水|M-991230-001|H2O"_s);
    }

    void nothingIsLetLeadToAStranger()
    {
        fill();
        TestWorld::addRow(world->session.RsLink, {Water, u"M-991231-009"_s});
        TestWorld::addRow(world->session.RsLink, {Water, u"M-991231-008"_s});
        TestWorld::addRow(world->session.RsCategory, {u"Z"_s, Water});
        TestWorld::addRow(world->session.RsCategoryID, {u"Y-A"_s, u"親のない"_s});
        exportIt();
        TestWorld::addRow(target->session.RsMain, {u"他"_s, u"M-991231-009"_s, u"-"_s});
        TestWorld::addRow(target->session.RsCategoryID, {u"Z"_s, u"他"_s});
        TestWorld::addRow(target->session.RsCategoryID, {u"Y"_s, u"他"_s});
        const ImportReport report = importIt();
        QCOMPARE(TestWorld::rowsOf(target->session.RsLink),
                 QStringList({u"R-991231-001|M-991231-001"_s, u"M-991231-001|M-991231-008"_s}));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategory), QStringList(u"A-A|R-991231-001"_s));
        QCOMPARE(TestWorld::rowsOf(target->session.RsCategoryID),
                 QStringList({u"Z|他"_s, u"Y|他"_s, u"A|自然"_s, u"A-A|地形"_s, u"B|親のない"_s}));
        const QStringList told = textsOf(report);
        QCOMPARE(told.size(), 3);
        QVERIFY(compareText(told[1],
                            u"tables/Link.jsonl:2: リンク先のないリンク M-991231-001 - M-991231-009 は、"
                            u"別のデータを指すことになるため取り込みませんでした。"_s));
        QVERIFY(compareText(told[2], u"tables/Category.jsonl:2: 相手のない分類 Z - M-991231-001 は、"
                                     u"別のものを指すことになるため取り込みませんでした。"_s));
    }

    void rowsWithoutTheirFileTakeNobodyElses()
    {
        fill();
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-002"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-003"_s, u"図.txt"_s});
        exportIt();
        addFile(*target, u"無い.txt"_s, "of somebody else");
        addFile(*target, u"未入力"_s, "of somebody else");
        addFile(*target, u"図.txt"_s, "another");
        TestWorld::addRow(target->session.RsRefFile, {u"無い.txt"_s, u"F-991231-009"_s, u"未入力"_s});
        const ImportReport report = importIt();
        // The last one leads to its file by the third field, and may keep its name.
        QCOMPARE(
            TestWorld::rowsOf(target->session.RsRefFile),
            QStringList({u"無い.txt|F-991231-009|未入力"_s, u"図 (2).txt|F-991231-001|未入力 (2)"_s,
                         u"無い (2).txt|F-991231-002|未入力 (2)"_s, u"無い.txt|F-991231-003|図 (2).txt"_s}));
        const QStringList told = textsOf(report);
        QCOMPARE(told.size(), 5);
        QVERIFY(compareText(told[3], u"RefFile.jsonl:2: 同じ名前の別のファイルがあるため、"
                                     u"ファイルの名前「無い.txt」を「無い (2).txt」としました。"_s));
        QVERIFY(compareText(told[4], u": ファイルデータ 1 件のファイルがありません。"_s));
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s))[u"無い.txt"_s],
                 QByteArray("of somebody else"));
    }

    void rowsThatAreThereKeepTheFileThatHasComeSince()
    {
        fill();
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-002"_s, u"未入力"_s});
        exportIt();
        importIt();
        addFile(*target, u"無い.txt"_s, "found again");
        QCOMPARE(importIt().skipped, 4);
        QCOMPARE(TestWorld::rowsOf(target->session.RsRefFile).last(), u"無い.txt|F-991231-002|未入力"_s);
    }

    void linkThatIsThereTheOtherWayRoundIsOne()
    {
        fill();
        exportIt();
        importIt();
        target->session.RsLink->deleteEveryRow();
        TestWorld::addRow(target->session.RsLink, {Water, u"R-991231-001"_s});
        QCOMPARE(importIt().linked, 0);
        QCOMPARE(TestWorld::rowsOf(target->session.RsLink), QStringList(u"M-991231-001|R-991231-001"_s));
    }

    void dryRunSaysTheSameAndWritesNothing()
    {
        fill();
        exportIt();
        TestWorld::addRow(target->session.RsMain, {u"火"_s, Water, u"熱い"_s});
        const auto before = contentBelow(target->folder.path());
        const ImportReport dry = importIt({.dryRun = true});
        QCOMPARE(contentBelow(target->folder.path()), before);
        const ImportReport wet = importIt();
        QCOMPARE(dry.notes, wet.notes);
        QCOMPARE(dry.added, wet.added);
        QCOMPARE(dry.renamed, 1);
        QCOMPARE(dry.filed, wet.filed);
        QCOMPARE(wet.linked, 1);
    }

    void damagedIsRefused_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("refusal");
        const QString manifest = u"書庫が壊れています。目録 (manifest.json) を読み取れません。"_s;
        const QString table = u"書庫が壊れています。tables/Main.jsonl の内容が目録と一致しません。"_s;
        const QString line = u"書庫が壊れています。tables/Main.jsonl:1 行目を読み取れません。"_s;
        const auto row = [](const char* name, const QString& file, const QByteArray& from,
                            const QByteArray& to,
                            const QString& refusal) { QTest::newRow(name) << file << from << to << refusal; };
        const QString main = u"tables/Main.jsonl"_s;
        row("another text", main, "H2O", "H3O", table);
        row("a line more", main, "}\n", "}\n{\"Name\":null,\"Object_ID\":null,\"Explanation\":null}\n",
            table);
        row("no line", main, "{\"Name\":\"水\",\"Object_ID\":\"M-991231-001\",\"Explanation\":\"H2O\"}\n", "",
            table);
        row("cut", main, "\"}\n", "", line);
        row("without its end", main, "}\n", "}", line);
        row("another field", main, "\"Name\"", "\"name\"", line);
        row("no JSON", main, "{", "", line);
        row("no UTF-8", main, "水", "\xE6\xB0", line);
        row("a number", main, "\"H2O\"", "12", line);
        row("a wrong escape", main, "H2O", "\\x", line);
        row("another file", u"RefFile/図.txt"_s, "picture", "pictures",
            u"書庫が壊れています。ファイル 図.txt の内容が目録と一致しません。"_s);
        row("another count", u"manifest.json"_s, "\"rows\":1", "\"rows\":2", manifest);
        row("no files", u"manifest.json"_s, "\"files\"", "\"file\"", manifest);
        row("a name that leads elsewhere", u"manifest.json"_s, "図.txt", "../図.txt", manifest);
        row("no end", u"manifest.json"_s, "\"}\n", "", manifest);
        row("something after it", u"manifest.json"_s, "\"}\n", "\"}\n.", manifest);
        row("of another program", u"manifest.json"_s, "quillon-archive", "other",
            u"Quillon の書庫ではありません。"_s);
        row("of a later program", u"manifest.json"_s, "\"version\":1", "\"version\":2",
            u"新しい版の Quillon が作成した書庫のため読み取れません。"_s);
    }

    void damagedIsRefused()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, refusal);
        fill();
        exportIt();
        QByteArray content = contentBelow(archive())[file];
        const qsizetype at = content.lastIndexOf(from);
        QVERIFY(at >= 0);
        writeContent(archive() + u'/' + file, content.replace(at, from.size(), to));
        QVERIFY(compareText(this->refusal(), refusal));
    }

    void damagedBytesAreFoundOut()
    {
        fill();
        exportIt();
        const auto whole = contentBelow(archive());
        for (auto file = whole.cbegin(); file != whole.cend(); ++file) {
            for (qsizetype i = 0; i < file->size(); i += 3) {
                QByteArray damaged = *file;
                damaged[i] = static_cast<char>(damaged[i] ^ 1);
                writeContent(archive() + u'/' + file.key(), damaged);
                const QString text = refusal();
                QVERIFY2(!text.startsWith(u'('), qPrintable(file.key() + u" %1 "_s.arg(i) + text));
            }
            writeContent(archive() + u'/' + file.key(), *file);
        }
        QVERIFY(compareText(refusal(), u"(something has been written)"_s)); // as it should be of a whole one
    }

    void missingFileIsRefused()
    {
        fill();
        exportIt();
        QVERIFY(QFile::remove(archive() + u"/RefFile/図.txt"_s));
        QVERIFY(compareText(refusal(), u"書庫が壊れています。ファイル 図.txt がありません。"_s));
        QVERIFY(QFile::remove(archive() + u"/tables/Link.jsonl"_s));
        QCOMPARE(errorOf([&] { importIt(); }), errors::InvalidArgument);
        addFile(*world, u"図.txt"_s, "picture");
        QVERIFY(QFile::copy(fileIn(*world, u"図.txt"_s), archive() + u"/RefFile/図.txt"_s));
        QCOMPARE(errorOf([&] { importIt(); }), errors::FileNotFound);
    }

    void whatIsNoArchiveIsRefused()
    {
        QVERIFY(compareText(refusal(), u"「%1」は Quillon の書庫ではありません。"_s.arg(archive())));
        QDir().mkpath(archive());
        QVERIFY(compareText(refusal(), u"「%1」は Quillon の書庫ではありません。"_s.arg(archive())));
        writeContent(archive() + u"/manifest.json"_s, "[]");
        QVERIFY(compareText(refusal(), u"Quillon の書庫ではありません。"_s));
    }

    void textThatIsTooLongForItsFieldComesAsItIs()
    {
        fill();
        const QString wide(51, u'水');
        world->session.OpenDb->connection().execute(u"UPDATE Main SET Name = '%1'"_s.arg(wide));
        world->session.OpenDb->connection().execute(
            u"UPDATE OpenApp SET AppName = '%1'"_s.arg(wide.repeated(9)));
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), 2U);
        QVERIFY(compareText(report.notes[0].text,
                            u"項目の幅を超える行が 1 件あります。そのまま書き出しました。"_s));
        const ImportReport imported = importIt();
        QCOMPARE(everything(*target), everything(*world));
        QCOMPARE(imported.notes.size(), 2U);
        QVERIFY(compareText(textsOf(imported)[0],
                            u"tables/Main.jsonl:1: 項目 Name が 50 文字を超えています。"
                            u"そのまま取り込みましたが、更新するときは短くしてください。"_s));
        QCOMPARE(importIt().notes.size(), 0U);
        exportArchive(target->session, target->folder.filePath(u"again"_s));
        QVERIFY(contentBelow(archive()) == contentBelow(target->folder.filePath(u"again"_s)));
    }

    void whatIsNoTextIsTold()
    {
        world->session.OpenDb->connection().execute(u"INSERT INTO Main (Name) VALUES (x'61006200')"_s);
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), 1U);
        QVERIFY(compareText(report.notes[0].text,
                            u"文字列でない値のある行が 1 件あります。文字列として書き出しました。"_s));
    }

    void fileOfNobodyComesAlongAndIsTold()
    {
        fill();
        addFile(*world, u"other"_s, "x");
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), 1U);
        QVERIFY(compareText(report.notes[0].text, u"このファイルを登録したファイルデータはありません。"_s));
        QCOMPARE(contentBelow(archive())[u"RefFile/other"_s], QByteArray("x"));
    }

    void shortcutComesAlongLikeAnyFile()
    {
        fill();
        TestWorld::addRow(world->session.RsRefFile, {u"近道.lnk"_s, u"F-991231-002"_s, u"未入力"_s});
        addFile(*world, u"近道.lnk"_s, "shortcut");
        QCOMPARE(exportArchive(world->session, archive()).notes.size(), 0U);
        QCOMPARE(contentBelow(archive())[u"RefFile/近道.lnk"_s], QByteArray("shortcut"));
        QCOMPARE(textsOf(importIt()), QStringList());
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s))[u"近道.lnk"_s], QByteArray("shortcut"));
        QCOMPARE(TestWorld::rowsOf(target->session.RsRefFile).last(), u"近道.lnk|F-991231-002|未入力"_s);
    }

    void datumFollowsItsFileInWhateverLettersItIsNamed()
    {
        TestWorld::addRow(world->session.RsRefFile, {u"big.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        addFile(*world, u"BIG.TXT"_s, "its own");
        // That is up to the system.
        const auto contentOf = [](TestWorld& of) {
            const QString folder = of.session.inCurrentFolder(u"RefFile"_s);
            const QString name = TestWorld::rowsOf(of.session.RsRefFile).last().section(u'|', 0, 0);
            const auto path = of.session.files.storedFile(folder, name);
            return path ? of.session.files.readFile(*path, 100) : QByteArray("(none)");
        };
        const QByteArray before = contentOf(*world);
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), before == "its own" ? 0U : 2U);
        addFile(*target, u"big.txt"_s, "of somebody else");
        TestWorld::addRow(target->session.RsRefFile, {u"Big.txt"_s, u"F-991231-009"_s, u"未入力"_s});
        importIt();
        QCOMPARE(contentOf(*target), before);
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s))[u"big.txt"_s],
                 QByteArray("of somebody else"));
    }

    void rowsWithoutTheirFileAreTold()
    {
        fill();
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-002"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-003"_s, u"図.txt"_s});
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), 1U);
        QCOMPARE(report.notes[0].where, u"F-991231-002"_s);
        QVERIFY(compareText(report.notes[0].text, u"登録されたファイル「無い.txt」がありません。"_s));
    }

    void withoutTheFolderOfTheirFilesFileDataDoNotGoOut()
    {
        fill();
        const QString folder = world->session.inCurrentFolder(u"RefFile"_s);
        QVERIFY(QDir(folder).removeRecursively());
        const auto before = contentBelow(world->folder.path());
        try {
            exportIt();
            QFAIL("their files are lost");
        } catch (const Refused& refused) {
            QVERIFY(compareText(
                refused.description,
                u"ファイルデータがありますが、フォルダ「%1」がありません。フォルダの場所を確かめてください。"
                u"ファイルなしで書き出すには、空のフォルダを作成してください。"_s.arg(folder)));
        }
        QCOMPARE(contentBelow(world->folder.path()), before);
        QVERIFY(QDir().mkdir(folder));
        QCOMPARE(exportArchive(world->session, archive()).notes.size(), 1U);
        // So that what came in can go out again.
        importIt();
        QCOMPARE(exportArchive(target->session, target->folder.filePath(u"again"_s)).written, 3);
    }

    void withoutFileDataNoFolderIsNeeded()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        QCOMPARE(exportArchive(world->session, archive()).written, 1);
        importIt();
        QVERIFY(!QDir(target->session.inCurrentFolder(u"RefFile"_s)).exists());
    }

#ifdef Q_OS_UNIX
    void linkOutOfTheFolderDoesNotComeAlong()
    {
        fill();
        QVERIFY(QFile::link(world->folder.filePath(u"QUILLON.mdb"_s), fileIn(*world, u"away"_s)));
        const ExportReport report = exportArchive(world->session, archive());
        QCOMPARE(report.notes.size(), 1U);
        QVERIFY(compareText(report.notes[0].text, u"通常のファイルではないため、書き出しませんでした。"_s));
        QVERIFY(!contentBelow(archive()).contains(u"RefFile/away"_s));
    }
#endif

    void placeThatIsTakenIsRefused()
    {
        QDir().mkpath(archive());
        try {
            exportIt();
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description,
                                u"「%1」は既に存在します。別の名前を指定してください。"_s.arg(archive())));
            QCOMPARE(contentBelow(archive()).size(), 0);
            return;
        }
        QFAIL("something is replaced");
    }

    void brokenOffExportLeavesNothing()
    {
        fill();
        const auto before = contentBelow(world->folder.path());
        EndingAfter end(0);
        try {
            exportArchive(world->session, archive(), &end);
            QFAIL("it goes on");
        } catch (const Cancelled&) {
            QCOMPARE(contentBelow(world->folder.path()), before);
        }
        QCOMPARE(errorOf([&] { exportArchive(world->session, u"/nowhere/at/all"_s); }), errors::PathNotFound);
    }

    void brokenOffImportLeavesNothing()
    {
        fill();
        exportIt();
        const auto before = contentBelow(target->folder.path());
        for (int steps = 0;; ++steps) {
            EndingAfter end(steps);
            try {
                importArchive(target->session, archive(), {}, &end);
                QVERIFY(steps > 1);
                break;
            } catch (const Cancelled&) {
                QCOMPARE(contentBelow(target->folder.path()), before);
                QVERIFY(!QDir(target->folder.filePath(u"RefFile"_s)).exists());
            }
        }
    }

    void fileThatSomebodyElseRegistersMeanwhileIsNotReplaced()
    {
        fill();
        exportIt();
        const QStringList before = everything(*target);
        target->files.whileCopying = [this] { addFile(*target, u"図.txt"_s, "another"); };
        try {
            importIt();
            QFAIL("it is replaced");
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description,
                                u"ファイル「図.txt」が同時に登録されました。やり直してください。"_s));
        }
        QCOMPARE(everything(*target), before);
        QCOMPARE(contentBelow(target->folder.filePath(u"RefFile"_s)),
                 (QMap<QString, QByteArray>{{u"図.txt"_s, "another"}}));
    }

    void withoutPlaceForTheFilesNothingComesIn()
    {
        fill();
        exportIt();
        const QStringList before = everything(*target);
        const QString folder = target->session.inCurrentFolder(u"RefFile"_s);
        writeContent(folder, "no folder");
        try {
            importIt();
            QFAIL("it has a place");
        } catch (const Error& error) {
            QVERIFY(compareText(error.description,
                                u"ファイルデータのフォルダ「%1」を作成できません。"_s.arg(folder)));
        }
        QCOMPARE(everything(*target), before);
    }

    void failureInTheMiddleLeavesNothing()
    {
        fill();
        addFile(*world, u"図 2.txt"_s, "picture 2");
        exportIt();
        const QStringList before = everything(*target);
        target->files.copyFailure = errors::DiskFull;
        QCOMPARE(errorOf([&] { importIt(); }), errors::DiskFull);
        QCOMPARE(everything(*target), before);
        QVERIFY(!QDir(target->folder.filePath(u"RefFile"_s)).exists());
    }
};

QTEST_GUILESS_MAIN(TestArchive)
#include "test_archive.moc"
