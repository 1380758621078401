// A file of the older engine becomes a database of today beside it: the same rows, and a word about what is lost.
#include "exchange/old_file.h"

#include "exchange/notes.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "store/session.h"
#include "tests/exchange/folder_content.h"
#include "tests/faults/faulty_disk.h"
#include "tests/old_files/old_file_writer.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

namespace
{

std::vector<OldTable> sampleTables(int count = 7)
{
    auto tables = oldTables();
    tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s},
                      {u"火"_s, u"M-991231-002"_s, std::nullopt},
                      {std::nullopt, u"M-991231-003"_s, u""_s}};
    tables[1].rows = {{u"長い文献"_s, u"R-991231-001"_s, u"本文です。"_s.repeated(2000)},
                      {u"0012"_s, std::nullopt, u"1e5"_s}};
    tables[2].rows = {{u"図.bmp"_s, u"F-991231-001"_s, u"図.bmp"_s}};
    tables[3].rows = {{u"メモ帳"_s, u"C:\\NOTEPAD.EXE"_s}, {u"メモ帳"_s, u"C:\\NOTEPAD.EXE"_s}};
    tables[4].rows = {{u"M-991231-002"_s, u"M-991231-001"_s}, {u"F-000101-999"_s, u"M-991231-001"_s}};
    tables[5].rows = {{u"A"_s, u"歴史"_s}, {u"A-A"_s, u"日本史"_s}, {u"B"_s, std::nullopt}};
    tables[6].rows = {{u"A-A"_s, u"M-991231-001"_s}};
    return {tables.begin(), tables.begin() + count};
}

class Listener : public Progress
{
public:
    void at(qint64 done, qint64 whole) override
    {
        told << u"%1/%2"_s.arg(done).arg(whole);
        ends = ends || told.size() == endsAfter;
    }
    bool cancelled() override { return ends; }

    QStringList told;
    int endsAfter = -1;
    bool ends = false;
};

QStringList textsOf(const std::vector<Note>& notes)
{
    QStringList texts;
    for (const Note& note : notes)
        texts += note.where + u": "_s + note.text;
    return texts;
}

} // namespace

class TestOldFile : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder;

    QString write(const OldFile& file, const QString& name = u"QUILLON.mdb"_s) const
    {
        QFile stored(folder->filePath(name));
        if (!stored.open(QIODevice::WriteOnly) || stored.write(file.bytes) != file.bytes.size())
            qFatal("cannot write the file");
        return stored.fileName();
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList names() const { return QDir(folder->path()).entryList(QDir::Files, QDir::Name); }
    /// The rows of a table as they are there, nothing and empty told apart.
    static std::vector<OldTable::Row> rowsOf(const QString& path, const QString& table)
    {
        const auto database = Database::open(path);
        sqlite::Statement& statement =
            database->connection().prepare(u"SELECT * FROM \""_s + table + u"\" ORDER BY rowid"_s);
        const sqlite::ResetAtEnd reset(statement);
        std::vector<OldTable::Row> rows;
        while (statement.step()) {
            OldTable::Row row;
            for (int i = 0; i < (table == u"Main" || table == u"RefDoc" || table == u"RefFile" ? 3 : 2); ++i)
                row.push_back(statement.isNull(i) ? std::nullopt
                                                  : std::optional(statement.text(i).toString()));
            rows.push_back(row);
        }
        return rows;
    }
    static void holds(const QString& path, const std::vector<OldTable>& tables)
    {
        for (const OldTable& table : tables)
            QVERIFY2(rowsOf(path, table.name) == table.rows, qPrintable(table.name));
    }
    void refused(const OldFile& file, const QString& why)
    {
        const QString path = write(file);
        try {
            convertOldFile(path);
            QFAIL("There is nothing to convert.");
        } catch (const Error& error) {
            QVERIFY(compareText(error.description, why));
        }
        QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
    }

private Q_SLOTS:
    void init()
    {
        FaultyDisk::instance(); // below every database of this program
        folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup() { FaultyDisk::instance().heal(); }

    void copyHoldsTheSameRows_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("tables");
        QTest::newRow("format 3, five tables") << 3 << 5;
        QTest::newRow("format 3, seven tables") << 3 << 7;
        QTest::newRow("format 4, five tables") << 4 << 5;
        QTest::newRow("format 4, seven tables") << 4 << 7;
    }
    void copyHoldsTheSameRows()
    {
        QFETCH(int, format);
        QFETCH(int, tables);
        const auto sample = sampleTables(tables);
        const ConvertedFile converted = convertOldFile(write(writeOldFile(sample, {.format = format})));
        QVERIFY(compareText(converted.path, folder->filePath(u"QUILLON-変換.mdb"_s)));
        holds(converted.path, sample);
        QCOMPARE(textsOf(converted.report.notes), QStringList());
        QCOMPARE(converted.report.added, 6);
        QCOMPARE(converted.report.linked, 2);
        QCOMPARE(converted.report.categories, tables == 7 ? 3 : 0);
        QCOMPARE(converted.report.filed, tables == 7 ? 1 : 0);
        QCOMPARE(converted.report.skipped, 0);
        QCOMPARE(converted.report.renamed, 0);
        const auto database = Database::open(converted.path);
        for (const TableSchema* table : schema::all())
            QVERIFY(database->isAsDeclared(*table));
        QCOMPARE(names(), QStringList({u"QUILLON-変換.mdb"_s, u"QUILLON.mdb"_s}));
    }

    void originalIsOnlyRead()
    {
        const OldFile file = writeOldFile(sampleTables());
        const QString path = write(file);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser));
        const QDateTime before = QFileInfo(path).lastModified();
        convertOldFile(path);
        QCOMPARE(read(path), file.bytes);
        QCOMPARE(QFileInfo(path).lastModified(), before);
    }

    void nothingIsEverOverwritten()
    {
        const OldFile file = writeOldFile(sampleTables());
        const QString path = write(file);
        write({.bytes = "mine", .uses = {}}, u"QUILLON-変換.mdb"_s);
        write({.bytes = "left by another", .uses = {}}, u"QUILLON-変換-2.mdb-journal"_s);
        QVERIFY(compareText(convertOldFile(path).path, folder->filePath(u"QUILLON-変換-3.mdb"_s)));
        QVERIFY(compareText(convertOldFile(path).path, folder->filePath(u"QUILLON-変換-4.mdb"_s)));
        QCOMPARE(read(folder->filePath(u"QUILLON-変換.mdb"_s)), QByteArray("mine"));
        QCOMPARE(read(folder->filePath(u"QUILLON-変換-2.mdb-journal"_s)), QByteArray("left by another"));
    }

    void namesOfCopiesFollowThoseOfTheFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("copy");
        QTest::newRow("capital letters") << u"DB.MDB"_s << u"DB-変換.mdb"_s;
        QTest::newRow("another ending") << u"資料.old"_s << u"資料.old-変換.mdb"_s;
        QTest::newRow("no ending") << u"資料"_s << u"資料-変換.mdb"_s;
        QTest::newRow("as long as a name can be")
            << u"あ"_s.repeated(83) + u".mdb"_s << u"あ"_s.repeated(78) + u"-変換.mdb"_s;
    }
    void namesOfCopiesFollowThoseOfTheFiles()
    {
        QFETCH(QString, name);
        QFETCH(QString, copy);
#ifndef Q_OS_UNIX
        if (name.size() > 80)
            QSKIP("Names are measured otherwise here.");
#endif
        const QString path = write(writeOldFile(sampleTables()), name);
        QVERIFY(compareText(QFileInfo(convertOldFile(path).path).fileName(), copy));
    }

    void lossesAreToldWithTheDatum()
    {
        auto tables = sampleTables();
        OldFile file = writeOldFile(tables, {.format = 3});
        const qsizetype page = file.bytes.lastIndexOf("LVAL") - 4; // where the long text begins
        file.bytes[page] = 0;
        const ConvertedFile converted = convertOldFile(write(file));
        QCOMPARE(
            textsOf(converted.report.notes),
            QStringList(u"文献データ R-991231-001「長い文献」の内容: 本文が壊れていて、読み取れません。"_s));
        tables[1].rows[0][2] = std::nullopt;
        holds(converted.path, tables);
    }

    void lossesOfRowsAreToldWithTheTable()
    {
        const ConvertedFile converted =
            convertOldFile(write(writeOldFile(sampleTables(), {.rowCountError = 1})));
        QCOMPARE(converted.report.notes.size(), 7U);
        QCOMPARE(converted.report.lost, 7);
        QVERIFY(compareText(converted.report.notes[6].where, u"分類情報"));
        QVERIFY(compareText(
            converted.report.notes[6].text,
            u"行の数が合いません (記録では 2 行、ファイルにあるのは 1 行)。ないものは読み取れません。"));
    }

    void whatATableHoldsHasAWord()
    {
        const ConvertedFile converted =
            convertOldFile(write(writeOldFile(sampleTables(), {.rowCountError = -1})));
        QStringList words;
        for (const Note& note : converted.report.notes)
            words += note.where;
        QCOMPARE(words,
                 QStringList({u"定義データ"_s, u"文献データ"_s, u"ファイルデータ"_s,
                              u"アプリケーション情報"_s, u"リンク情報"_s, u"カテゴリ情報"_s, u"分類情報"_s}));
    }

    void tablesOfOthersAreNamed()
    {
        auto tables = sampleTables();
        tables.push_back({.name = u"住所録"_s, .columns = {{u"氏名"_s, 20}}, .rows = {{u"山田"_s}}});
        const ConvertedFile converted = convertOldFile(write(writeOldFile(tables)));
        QCOMPARE(textsOf(converted.report.notes),
                 QStringList(u": テーブル「住所録」は Quillon のものではないため、読み取りませんでした。"_s));
    }

    void anotherCodePageIsTold()
    {
        const QString path = write(writeOldFile(sampleTables(), {.format = 3, .codePage = 1252}));
        QCOMPARE(
            textsOf(convertOldFile(path).report.notes),
            QStringList(
                u": ファイルの文字コードは 1252 と記録されていますが、日本語のもの (932) として読み取りました。"_s));
        const QString other = write(writeOldFile(sampleTables(), {.format = 4, .codePage = 1252}));
        QCOMPARE(textsOf(convertOldFile(other).report.notes), QStringList());
    }

    void widerTextsAreKeptAndTold()
    {
        auto tables = sampleTables();
        tables[0].rows[0][0] = u"水"_s.repeated(51);
        const ConvertedFile converted = convertOldFile(write(writeOldFile(tables)));
        holds(converted.path, tables);
        QCOMPARE(
            textsOf(converted.report.notes),
            QStringList(
                u"定義データ M-991231-001「"_s + u"水"_s.repeated(50) +
                u"」: 項目 Name が 50 文字を超えています。そのまま写しましたが、更新するときは短くしてください。"_s));
    }

    void dataOfOneIdentifierAreAllKept()
    {
        auto tables = sampleTables();
        tables[0].rows.push_back({u"土"_s, u"M-991231-002"_s, u"固体"_s});
        tables[0].rows.push_back({u"金"_s, u"M-991231-004"_s, u"固体"_s}); // not to be given to another
        tables[0].rows.push_back({u"水"_s, u"M-991231-001"_s, u"液体"_s});
        tables[5].rows.push_back({u"A-A"_s, u"世界史"_s});
        tables[6].rows.push_back(tables[6].rows[0]);
        const ConvertedFile converted = convertOldFile(write(writeOldFile(tables)));
        QCOMPARE(
            textsOf(converted.report.notes),
            QStringList(
                {u"定義データ M-991231-002「土」: "
                 u"識別符号が他のデータと重複しているため、M-991231-005 に変えました。"_s,
                 u"定義データ M-991231-001「水」: 同じ内容の行が二つあるため、一つにしました。"_s,
                 u"カテゴリ情報 A-A「世界史」: 識別符号が他のデータと重複しているため、A-B に変えました。"_s,
                 u"分類情報 A-A M-991231-001: 同じ内容の行が二つあるため、一つにしました。"_s}));
        QCOMPARE(converted.report.renamed, 2);
        QCOMPARE(converted.report.skipped, 2);
        QCOMPARE(rowsOf(converted.path, u"Main"_s)[4],
                 OldTable::Row({u"土"_s, u"M-991231-005"_s, u"固体"_s}));
        QCOMPARE(rowsOf(converted.path, u"Category_ID"_s)[3], OldTable::Row({u"A-B"_s, u"世界史"_s}));
    }

    void databasesOfOthersAreRefused()
    {
        std::vector<OldTable> tables = {{u"住所録"_s, {{u"氏名"_s, 20}}, {{u"山田"_s}}}};
        refused(writeOldFile(tables), u"Quillon のデータベースのテーブルを一つも読み取れません。"
                                      u"Quillon のデータベースか確認してください。"_s);
        tables = sampleTables(2);
        refused(writeOldFile(tables),
                u"テーブル RefFile がありません。Quillon のデータベースか確認してください。"_s);
        tables = sampleTables();
        tables[4].columns[1].name = u"Other"_s;
        refused(writeOldFile(tables), u"テーブル Link の項目が Quillon のデータベースのものと違います。"
                                      u"Quillon のデータベースか確認してください。"_s);
        tables = sampleTables();
        tables[0].columns[2].width = 0; // another type
        refused(writeOldFile(tables), u"テーブル Main の項目が Quillon のデータベースのものと違います。"
                                      u"Quillon のデータベースか確認してください。"_s);
    }

    void oneOfTheTablesForCategoriesMayLack()
    {
        const ConvertedFile converted = convertOldFile(write(writeOldFile(sampleTables(6))));
        QCOMPARE(textsOf(converted.report.notes),
                 QStringList(u"分類情報: テーブル Category がありません。空になります。"_s));
        QCOMPARE(rowsOf(converted.path, u"Category"_s).size(), 0U);
    }

    void encryptedFilesAreRefused()
    {
        refused(writeOldFile(sampleTables(), {.encryptionKey = 7}),
                u"ファイルは暗号化されているため、読み取れません。"
                u"作成したプログラムで暗号化を解除してからやり直してください。"_s);
    }

    void filesThatAreNotThereAreTold()
    {
        QCOMPARE(errorOf([&] { convertOldFile(folder->filePath(u"ない.mdb"_s)); }), errors::DatabaseNotFound);
    }

    void filesThatMayNotBeReadAreTold()
    {
#ifdef Q_OS_UNIX
        const QString path = write(writeOldFile(sampleTables()));
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
        QVERIFY(QFile::setPermissions(path, {}));
        const bool administrator = geteuid() == 0;
        if (administrator)
            QCOMPARE(seteuid(65534), 0);
        const qint32 number = errorOf([&] { convertOldFile(path); });
        if (administrator)
            QCOMPARE(seteuid(0), 0);
        QCOMPARE(number, errors::PermissionDenied);
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void foldersThatMayNotBeWrittenAreTold()
    {
#ifdef Q_OS_UNIX
        const QString path = write(writeOldFile(sampleTables()));
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x5555)));
        const bool administrator = geteuid() == 0;
        if (administrator)
            QCOMPARE(seteuid(65534), 0);
        QString told;
        try {
            convertOldFile(path);
        } catch (const Error& error) {
            told = error.description;
        }
        if (administrator)
            QCOMPARE(seteuid(0), 0);
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7755)));
        QVERIFY(compareText(told, u"変換した写し「"_s + folder->filePath(u"QUILLON-変換.mdb"_s) +
                                      u"」を作成できません。"_s + standardDescription(errors::CannotOpen)));
        QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void diskThatFailsLeavesNothing_data()
    {
        QTest::addColumn<DiskFailure>("failure");
        QTest::newRow("broken") << DiskFailure::Broken;
        QTest::newRow("full") << DiskFailure::Full;
        QTest::newRow("half written") << DiskFailure::ShortWrite;
    }
    void diskThatFailsLeavesNothing()
    {
        QFETCH(DiskFailure, failure);
        const auto tables = sampleTables();
        const QString path = write(writeOldFile(tables));
        int failures = 0;
        for (int number = 1;; ++number) {
            FaultyDisk::instance().failAt(number, failure, FaultyDisk::Duration::FromThenOn);
            QString converted;
            try {
                converted = convertOldFile(path).path;
            } catch (const Error& error) {
                QVERIFY(!error.description.isEmpty());
            }
            const bool hasFailed = FaultyDisk::instance().hasFailed();
            FaultyDisk::instance().heal();
            if (converted.isEmpty()) {
                ++failures;
                QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
                continue;
            }
            holds(converted, tables);
            if (!hasFailed)
                break;
            QVERIFY(QFile::remove(converted));
        }
        QVERIFY(failures > 3);
    }

    void progressIsToldAndMayEndIt()
    {
        auto tables = sampleTables();
        for (int i = 0; i < 600; ++i)
            tables[0].rows.push_back({u"水"_s, u"M-%1"_s.arg(i), u""_s});
        const QString path = write(writeOldFile(tables));
        Listener listener;
        convertOldFile(path, &listener);
        QCOMPARE(listener.told, QStringList({u"256/614"_s, u"512/614"_s}));
        QVERIFY(QFile::remove(folder->filePath(u"QUILLON-変換.mdb"_s)));
        Listener ending;
        ending.endsAfter = 2;
        try {
            convertOldFile(path, &ending);
            QFAIL("It was to end.");
        } catch (const Cancelled&) {
            QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
        }
    }

    void importIntoAnEmptyDatabaseKeepsTheRows()
    {
        const auto tables = sampleTables();
        const QString path = write(writeOldFile(tables));
        TestWorld world;
        const QString database = world.createDatabase();
        world.openDatabase(database);
        const ImportReport report = importOldFile(world.session, path);
        QCOMPARE(report.added, 6);
        QVERIFY(compareText(textsOf(report.notes).join(u'\n'),
                            u": ファイルデータ 1 件のファイルがありません。"_s));
        holds(database, tables);
    }

    void importMeetsWithWhatIsThere()
    {
        auto tables = sampleTables();
        const QString path = write(writeOldFile(tables, {.rowCountError = 1}));
        TestWorld world;
        const QString database = world.createDatabase();
        world.openDatabase(database);
        TestWorld::addRow(world.session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(world.session.RsMain, {u"木"_s, u"M-991231-002"_s, u"植物"_s});
        Listener listener;
        const ImportReport report = importOldFile(world.session, path, {}, &listener);
        QCOMPARE(report.skipped, 1);
        QCOMPARE(report.lost, 7);
        QCOMPARE(report.renamed, 1);
        QCOMPARE(report.added, 5);
        const QStringList notes = textsOf(report.notes);
        QCOMPARE(notes.size(), 9); // each loss once, although everything is read twice
        QCOMPARE(notes[7],
                 u"定義データ M-991231-002「火」: 識別符号 M-991231-002 は別のデータが使用しているため、"
                 u"M-991231-004 として取り込みました。"_s);
        QCOMPARE(rowsOf(database, u"Link"_s)[0], OldTable::Row({u"M-991231-004"_s, u"M-991231-001"_s}));
    }

    void whatADamagedFileHoldsTwiceMeetsInAnImport()
    {
        auto tables = oldTables();
        tables[0].rows = {{u"水"_s, u""_s, u"液体"_s},
                          {u"火"_s, u""_s, u"熱い"_s},
                          {u"木"_s, u"M-991231-001"_s, u"植物"_s},
                          {u"木"_s, u"M-991231-001"_s, u"植物"_s},
                          {u"金"_s, u"M-991231-001"_s, u"鉱物"_s}};
        tables[4].rows = {{u"M-991231-001"_s, u""_s}, {u"M-991231-001"_s, u""_s}};
        tables[5].rows = {{u""_s, u"自然"_s}, {u""_s, u"地形"_s}};
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const ImportReport report = importOldFile(world.session, write(writeOldFile(tables)));
        QCOMPARE(report.added, 4);
        QCOMPARE(report.skipped, 1);
        QCOMPARE(report.renamed, 2);
        QCOMPARE(report.linked, 1);
        QCOMPARE(report.categories, 2);
    }

    void fileDataLeadToTheirOwnFiles_data()
    {
        QTest::addColumn<bool>("isHome");
        QTest::addColumn<bool>("isRegistered");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("note");
        QTest::newRow("beside the old file") << true << true << u"水.txt"_s << QString();
        QTest::newRow("a file of another datum")
            << false << true << u"水 (2).txt"_s
            << u"ファイルデータ F-991231-001「水.txt」: 同じ名前の別のファイルがあるため、"
               u"ファイルの名前「水.txt」を「水 (2).txt」としました。\n"
               u": ファイルデータ 1 件のファイルがありません。"_s;
        QTest::newRow("a file that nobody has registered")
            << false << false << u"水.txt"_s
            << u"ファイルデータ F-991231-001「水.txt」: "
               u"フォルダにあるファイル「水.txt」を、このデータのファイルとします。"_s;
    }

    void fileDataLeadToTheirOwnFiles()
    {
        QFETCH(bool, isHome);
        QFETCH(bool, isRegistered);
        QFETCH(QString, name);
        QFETCH(QString, note);
        auto tables = oldTables();
        tables[2].rows = {{u"水.txt"_s, u"F-991231-001"_s, u"未入力"_s}};
        TestWorld world;
        world.openDatabase(world.createDatabase());
        if (isHome)
            world.session.CurrentFolder = folder->path();
        QVERIFY(QDir().mkdir(world.session.inCurrentFolder(u"RefFile"_s)));
        writeContent(world.session.inCurrentFolder(u"RefFile/水.txt"_s), "water");
        if (isRegistered)
            TestWorld::addRow(world.session.RsRefFile, {u"水.txt"_s, u"F-991231-009"_s, u"未入力"_s});
        const ImportReport report = importOldFile(world.session, write(writeOldFile(tables)));
        QCOMPARE(world.rowsOf(world.session.RsRefFile).last(), name + u"|F-991231-001|未入力"_s);
        QVERIFY(compareText(textsOf(report.notes).join(u'\n'), note));
    }

    void dryRunOfAnImportWritesNothing()
    {
        const QString path = write(writeOldFile(sampleTables()));
        TestWorld world;
        const QString database = world.createDatabase();
        world.openDatabase(database);
        const ImportReport report = importOldFile(world.session, path, {.dryRun = true});
        QCOMPARE(report.added, 6);
        QCOMPARE(rowsOf(database, u"Main"_s).size(), 0U);
    }

    void notesAreAsManyAsSomebodyMayRead()
    {
        Notes notes;
        for (std::size_t i = 0; i < Notes::Most + 2; ++i)
            notes.add(u"行"_s, u"壊れています。"_s);
        notes.addBeyond(3);
        const auto taken = notes.take();
        QCOMPARE(taken.size(), Notes::Most + 1);
        QVERIFY(compareText(taken.back().text, u"ほかに 5 件あります。"));
    }
};

QTEST_GUILESS_MAIN(TestOldFile)
#include "test_old_file.moc"
