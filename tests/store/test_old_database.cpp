// Files of the older engine are read exactly, and what cannot be read of them is told.
#include "store/old_format/old_database.h"

#include "app/base/error.h"
#include "app/base/platform/code_page.h"
#include "tests/old_files/old_file_writer.h"
#include "tests/support/compare_text.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <random>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::old_format;
using namespace quillon::testing;

namespace
{

/// What a file gives: its tables, what is told of it, or why it is refused.
struct Content {
    std::vector<OldTable> tables;
    std::vector<Loss> losses;
    QString refusal;

    bool isTold() const { return !refusal.isEmpty() || !losses.empty(); }
};

Content contentOf(const QByteArray& bytes)
{
    Content content;
    try {
        OldDatabase database(bytes);
        for (const QString& name : database.tableNames()) {
            const auto definition = database.table(name);
            if (!definition)
                continue;
            OldTable table{.name = name, .columns = {}, .rows = {}};
            for (const Column& column : definition->columns)
                table.columns.push_back({column.name, column.type == Column::LongText ? 0 : 1});
            database.forEachRow(name, *definition,
                                [&](const OldTable::Row& row, bool) { table.rows.push_back(row); });
            content.tables.push_back(table);
        }
        content.losses = database.losses().kept();
    } catch (const Error& error) {
        content.refusal = error.description;
    }
    return content;
}

bool sameColumns(const OldTable& a, const OldTable& b)
{
    return std::equal(a.columns.begin(), a.columns.end(), b.columns.begin(), b.columns.end(),
                      [](const OldTable::Column& x, const OldTable::Column& y) {
                          return x.name == y.name && (x.width == 0) == (y.width == 0);
                      });
}

const OldTable* tableOf(const Content& content, const QString& name)
{
    for (const OldTable& table : content.tables) {
        if (table.name == name)
            return &table;
    }
    return nullptr;
}

/// Whether a file gave all these tables, row by row.
bool gives(const Content& content, const std::vector<OldTable>& tables)
{
    return std::all_of(tables.begin(), tables.end(), [&](const OldTable& table) {
        const OldTable* const found = tableOf(content, table.name);
        return found != nullptr && sameColumns(*found, table) && found->rows == table.rows;
    });
}

/// Whether the tables that a program would look for are there, with their columns.
bool seemsWhole(const Content& content, const std::vector<OldTable>& tables)
{
    return !content.isTold() && std::all_of(tables.begin(), tables.end(), [&](const OldTable& table) {
        const OldTable* const found = tableOf(content, table.name);
        return found != nullptr && sameColumns(*found, table);
    });
}

/// Two tables with everything that can be in a row.
std::vector<OldTable> smallTables()
{
    auto tables = oldTables(2);
    tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s},
                      {u"火"_s, u"M-991231-002"_s, std::nullopt},
                      {u""_s, u"M-991231-003"_s, u"長い"_s.repeated(60)}};
    tables[1].rows = {{u"文献"_s, u"R-991231-001"_s, u"短い本文"_s},
                      {u"一行"_s, u"R-991231-002"_s, u"本文です。"_s.repeated(40)},
                      {std::nullopt, u"R-991231-003"_s, u"長い本文です。"_s.repeated(320)},
                      {u"無"_s, u"R-991231-004"_s, std::nullopt}};
    return tables;
}

QString randomText(std::mt19937& random, int format, qsizetype length)
{
    static const QString inPage = [] {
        QString characters;
        for (int first = 0x81; first < 0xFD; ++first) {
            for (int second = 0x40; second < 0xFD; ++second) {
                const auto text =
                    platform::decode932(QByteArray(1, static_cast<char>(first)) + static_cast<char>(second));
                if (text && text->size() == 1)
                    characters += *text;
            }
        }
        return characters;
    }();
    QString text;
    for (qsizetype i = 0; i < length; ++i) {
        switch (random() % (format == 3 ? 3 : 5)) {
        case 0:
            text += QChar(static_cast<char16_t>(0x20 + random() % 0x5F));
            break;
        case 1:
            text += random() % 4 == 0 ? u"\r\n"_s : QString(u'ｱ');
            break;
        case 2:
            text += inPage[static_cast<qsizetype>(random() % static_cast<unsigned>(inPage.size()))];
            break;
        case 3:
            text += QChar(static_cast<char16_t>(0x80 + random() % 0x80));
            break;
        default: // whatever a unit can be, half a character included, but nothing that looks like a mark
            text += QChar(static_cast<char16_t>(random() % 0xFE00));
            break;
        }
    }
    return text;
}

std::vector<OldTable> randomTables(std::mt19937& random, int format)
{
    auto tables = oldTables(random() % 2 == 0 ? 5 : 7);
    for (OldTable& table : tables) {
        for (unsigned i = 0, count = random() % 60; i < count; ++i) {
            OldTable::Row row;
            for (const OldTable::Column& column : table.columns) {
                const auto most = static_cast<unsigned>(column.width == 0 ? 1U << (random() % 14)
                                                        : format == 3     ? column.width / 2
                                                                          : column.width);
                const qsizetype length =
                    random() % 5 == 0 ? 0 : static_cast<qsizetype>(random() % (most + 1));
                row.push_back(random() % 8 == 0
                                  ? std::nullopt
                                  : std::optional(randomText(random, format, length).left(most)));
            }
            table.rows.push_back(row);
        }
    }
    return tables;
}

unsigned seed()
{
    static const unsigned chosen =
        qEnvironmentVariableIsSet("QUILLON_SEED") ? qgetenv("QUILLON_SEED").toUInt() : std::random_device()();
    return chosen;
}

} // namespace

class TestOldDatabase : public QObject
{
    Q_OBJECT

    static void addForms()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("isCompressed");
        QTest::addColumn<bool>("hasMovedRows");
        QTest::newRow("format 3") << 3 << false << false;
        QTest::newRow("format 3, moved rows") << 3 << false << true;
        QTest::newRow("format 4") << 4 << false << false;
        QTest::newRow("format 4, moved rows") << 4 << false << true;
        QTest::newRow("format 4, compressed") << 4 << true << false;
        QTest::newRow("format 4, compressed, moved rows") << 4 << true << true;
    }
    static OldFileForm form()
    {
        QFETCH(int, format);
        QFETCH(bool, isCompressed);
        QFETCH(bool, hasMovedRows);
        return {.format = format, .isCompressed = isCompressed, .hasMovedRows = hasMovedRows};
    }
    static void addFormats()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("format 3") << 3;
        QTest::newRow("format 4") << 4;
    }
    static void refused(const QByteArray& bytes, const QString& why)
    {
        QVERIFY(compareText(contentOf(bytes).refusal, why));
    }

private Q_SLOTS:
    void initTestCase() { qInfo("QUILLON_SEED=%u repeats this run", seed()); }

    void randomTablesComeBackAsTheyWere_data() { addForms(); }
    void randomTablesComeBackAsTheyWere()
    {
        std::mt19937 random(seed());
        for (int i = 0; i < 8; ++i) {
            const auto tables = randomTables(random, form().format);
            const Content content = contentOf(writeOldFile(tables, form()).bytes);
            QVERIFY2(!content.isTold(),
                     qPrintable(content.refusal + (content.losses.empty()
                                                       ? QString()
                                                       : content.losses[0].table + content.losses[0].text)));
            QVERIFY(gives(content, tables));
        }
    }

    void nothingAndAnEmptyTextAreNotTheSame_data() { addForms(); }
    void nothingAndAnEmptyTextAreNotTheSame()
    {
        auto tables = oldTables();
        tables[1].rows = {{std::nullopt, u""_s, std::nullopt}, {u""_s, std::nullopt, u""_s}};
        const Content content = contentOf(writeOldFile(tables, form()).bytes);
        QVERIFY(!content.isTold());
        QVERIFY(gives(content, tables));
    }

    void longTextsComeWhole_data() { addFormats(); }
    void longTextsComeWhole()
    {
        QFETCH(int, format);
        auto tables = oldTables();
        // Around what fits into a row, into a page, into some pages.
        for (const int length :
             {31, 32, 33, 64, 65, 1015, 1016, 1017, 2031, 2032, 2033, 2036, 2037, 4072, 100'000})
            tables[1].rows.push_back(
                {u"x"_s, u"R-%1"_s.arg(length), u"長"_s.repeated(length / 2) + u"い文"_s});
        const Content content = contentOf(writeOldFile(tables, {.format = format}).bytes);
        QVERIFY(!content.isTold());
        QVERIFY(gives(content, tables));
    }

    void everyDamagedByteIsToldOrHarmless_data() { addForms(); }
    void everyDamagedByteIsToldOrHarmless()
    {
        const auto tables = smallTables();
        const OldFile whole = writeOldFile(tables, form());
        QVERIFY(gives(contentOf(whole.bytes), tables));
        std::mt19937 random(seed());
        qint64 told = 0;
        for (qsizetype at = 0; at < whole.bytes.size(); ++at) {
            const char use = whole.uses[at];
            // What belongs to nothing is much, and all alike; so are long texts.
            if ((use == OldFile::Free && at % 61 != 0) || (use == OldFile::Text && at % 13 != 0))
                continue;
            // One change each, another one in another run.
            const int change = std::array{0x01, 0x40, 0xFF}.at(random() % 3);
            QByteArray bytes = whole.bytes;
            bytes[at] = static_cast<char>(bytes[at] ^ change);
            const Content content = contentOf(bytes);
            told += content.isTold() ? 1 : 0;
            const bool isRight = use == OldFile::Free ? !content.isTold() && gives(content, tables)
                                 : use == OldFile::Structure
                                     ? !seemsWhole(content, tables) || gives(content, tables)
                                     : true; // another text is a text
            QVERIFY2(isRight,
                     qPrintable(u"byte %1 of use %2, changed by %3"_s.arg(at).arg(int(use)).arg(change)));
        }
        QVERIFY(told > 150);
    }

    void everyCutIsTold_data() { addFormats(); }
    void everyCutIsTold()
    {
        QFETCH(int, format);
        const QByteArray whole = writeOldFile(smallTables(), {.format = format, .hasMovedRows = true}).bytes;
        for (qsizetype size = 0; size < whole.size(); size += size < 200 ? 1 : 97)
            QVERIFY2(contentOf(whole.first(size)).isTold(), qPrintable(QString::number(size)));
        QVERIFY(contentOf(whole + "x").isTold());
    }

    void wreckedPagesEndWithAReport_data() { addFormats(); }
    void wreckedPagesEndWithAReport()
    {
        QFETCH(int, format);
        std::mt19937 random(seed());
        const auto tables = randomTables(random, format);
        const QByteArray whole = writeOldFile(tables, {.format = format, .hasMovedRows = true}).bytes;
        QElapsedTimer timer;
        timer.start();
        int runs = 0;
        for (; runs < 200 && timer.elapsed() < 1000; ++runs) {
            QByteArray bytes = whole;
            for (unsigned i = 0, count = 1 + random() % 30; i < count; ++i) {
                const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()));
                const auto length = std::min<qsizetype>(random() % 64, bytes.size() - at);
                for (qsizetype k = 0; k < length; ++k)
                    bytes[at + k] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
            }
            contentOf(bytes);
        }
        QVERIFY(runs > 10);
    }

    void largeDamagedFilesGiveNoMoreThanTheyHold_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("damage");
        for (const int format : {3, 4}) {
            for (const QString& damage :
                 {u"a byte of every page"_s, u"pages without anything"_s, u"pages in another order"_s,
                  u"one page again and again"_s, u"numbers of other pages"_s, u"a large hole"_s})
                QTest::addRow("format %d, %s", format, qPrintable(damage)) << format << damage;
        }
    }
    void largeDamagedFilesGiveNoMoreThanTheyHold()
    {
        QFETCH(int, format);
        QFETCH(QString, damage);
        auto tables = oldTables();
        constexpr int Rows = 8000;
        for (int i = 0; i < Rows; ++i) {
            tables[0].rows.push_back({u"名%1"_s.arg(i), u"M-%1"_s.arg(i), u"文です。"_s.repeated(5)});
            if (i % 20 == 0)
                tables[1].rows.push_back({u"本%1"_s.arg(i), u"R-%1"_s.arg(i), u"長い文。"_s.repeated(i / 8)});
        }
        QByteArray bytes = writeOldFile(tables, {.format = format}).bytes;
        const qsizetype pageSize = format == 3 ? 2048 : 4096;
        const auto pages = static_cast<std::uint32_t>(bytes.size() / pageSize);
        std::mt19937 random(seed());
        // Not the first table's definition, nor what stands last: the catalogue.
        const auto page = [&] { return pageSize * (8 + random() % (pages - 12)); };
        if (damage == u"a large hole") {
            const qsizetype hole = pages / 3 * pageSize;
            bytes.replace(hole, hole, QByteArray(hole, '\0'));
        } else {
            const QByteArray one = bytes.sliced(page(), pageSize);
            for (std::uint32_t i = 8; i < pages - 4; ++i) {
                if (damage == u"a byte of every page")
                    bytes[page() + random() % pageSize] = static_cast<char>(random());
                else if (damage == u"pages without anything" && i % 5 == 0)
                    bytes.replace(page(), pageSize, QByteArray(pageSize, '\0'));
                else if (damage == u"pages in another order")
                    bytes.replace(page(), pageSize, bytes.sliced(page(), pageSize));
                else if (damage == u"one page again and again" && i % 2 == 0)
                    bytes.replace(page(), pageSize, one);
                else if (damage == u"numbers of other pages")
                    for (int k = 0; k < 20; ++k)
                        bytes[page() + random() % 64] = static_cast<char>(random() % pages);
            }
        }
        const Content content = contentOf(bytes);
        QVERIFY(content.isTold());
        qsizetype rows = 0;
        qsizetype units = 0;
        for (const OldTable& table : content.tables) {
            for (const OldTable::Row& row : table.rows) {
                ++rows;
                for (const auto& field : row)
                    units += field ? field->size() : 0;
            }
        }
        QVERIFY(rows > 0);
        QVERIFY(rows <= bytes.size() / 16);
        QVERIFY(units <= 2 * bytes.size());
    }

    void rowsThatTheDefinitionDoesNotCountAreTold_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("text");
        QTest::newRow("fewer counted")
            << -1
            << u"行の数が合いません (記録では 1 行、ファイルにあるのは 2 行)。ある行はすべて読み取りました。"_s;
        QTest::newRow("more counted")
            << 1
            << u"行の数が合いません (記録では 3 行、ファイルにあるのは 2 行)。ないものは読み取れません。"_s;
    }
    void rowsThatTheDefinitionDoesNotCountAreTold()
    {
        QFETCH(int, error);
        QFETCH(QString, text);
        auto tables = oldTables(1);
        tables[0].rows = {{u"水"_s, u"M-1"_s, u""_s}, {u"火"_s, u"M-2"_s, u""_s}};
        const Content content = contentOf(writeOldFile(tables, {.rowCountError = error}).bytes);
        QVERIFY(gives(content, tables));
        QCOMPARE(content.losses.size(), 1U);
        QVERIFY(compareText(content.losses[0].table, u"Main"));
        QVERIFY(compareText(content.losses[0].text, text));
    }

    void eachDamageHasItsSentence_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("at"); // behind the end when negative
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("text");
        // Page 3 defines the one table, page 4 holds its one row at its end, the last page the catalogue.
        constexpr int Definition = 3 * 4096;
        constexpr int EndOfRow = 5 * 4096;
        const QByteArray all("\xFF\xFF", 2);
        QTest::newRow("definition goes on nowhere")
            << 4 << Definition + 4 << QByteArray("\x7F") << u"Main"_s
            << u"テーブルの定義の続きがありません。このテーブルは読み取れません。"_s;
        QTest::newRow("more columns than there can be")
            << 4 << Definition + 45 << all << u"Main"_s
            << u"テーブルの定義が壊れています。このテーブルは読み取れません。"_s;
        QTest::newRow("text of fixed length")
            << 4 << Definition + 63 + 12 + 15 << QByteArray("\x13") << u"Main"_s
            << u"長さの決まった文字項目があります。このテーブルは読み取れません。"_s;
        QTest::newRow("more rows than a page has room for")
            << 4 << EndOfRow - 4096 + 12 << all << u"Main"_s
            << u"ページ 4 が壊れていて、その行を読み取れません。"_s;
        QTest::newRow("fields that end early")
            << 4 << EndOfRow - 11 << QByteArray("\x1E") << u"Main"_s
            << u"ページ 4 の 1 番目の行に、どの項目のものでもないバイトがあります。"_s;
        QTest::newRow("bytes where nothing is said to be")
            << 4 << EndOfRow - 1 << QByteArray("\x03") << u"Main"_s
            << u"項目が壊れていて、読み取れません。"_s;
        QTest::newRow("half a character") << 4 << EndOfRow - 7 << QByteArray("\x05") << u"Main"_s
                                          << u"文字として読み取れないバイトがあります。"_s;
        QTest::newRow("nothing where the catalogue needs something")
            << 4 << -1 << QByteArray("\x1B") << u"目録"_s << u"目録の項目の一つを読み取れません。"_s;
        QTest::newRow("half a character in the catalogue")
            << 3 << -5 << QByteArray("\x81") << u"目録"_s << u"テーブルの名前の一部を読み取れません。"_s;
    }
    void eachDamageHasItsSentence()
    {
        QFETCH(int, format);
        QFETCH(int, at);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, table);
        QFETCH(QString, text);
        auto tables = oldTables(1);
        tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s}};
        QByteArray content = writeOldFile(tables, {.format = format}).bytes;
        content.replace(at < 0 ? content.size() + at : at, bytes.size(), bytes);
        const auto losses = contentOf(content).losses;
        QVERIFY(!losses.empty());
        QVERIFY(compareText(losses[0].table, table));
        QVERIFY(compareText(losses[0].text, text));
    }

    void damagedRowsOfAPageAreToldTogether()
    {
        auto tables = oldTables(1);
        for (int i = 0; i < 6; ++i)
            tables[0].rows.push_back({u"水"_s, u"M-%1"_s.arg(i), u""_s});
        QByteArray bytes = writeOldFile(tables).bytes;
        // The numbers of columns of the rows, which all have one length.
        const qsizetype length = bytes.indexOf("M\0-\0000"_ba) - bytes.indexOf("M\0-\0001"_ba);
        for (const int row : {1, 2, 3, 5})
            bytes[5 * 4096 - length * (row + 1)] = '\xFF';
        const auto losses = contentOf(bytes).losses;
        QCOMPARE(losses.size(), 1U);
        QVERIFY(compareText(losses[0].text, u"ページ 4 の 2～4、6 番目の行が壊れていて、読み取れません。"));
    }

    void endsThatLackAreTold()
    {
        const auto losses = contentOf(writeOldFile(smallTables()).bytes + "xy").losses;
        QCOMPARE(losses.size(), 1U);
        QVERIFY(compareText(losses[0].text,
                            u"ファイルの終わりが欠けています (最後の 2 バイトは読み取れません)。"));
    }

    void filesThatChangeWhileTheyAreReadAreTold()
    {
#ifdef Q_OS_LINUX
        try {
            contentOfFile(u"/proc/self/status"_s); // longer than it says
            QFAIL("It is another file than at the beginning.");
        } catch (const Error& error) {
            QVERIFY(compareText(error.description,
                                u"読み取っている間にファイルが変更されました。"
                                u"ファイルを使用している他のプログラムを終了してからやり直してください。"));
        }
#else
        QSKIP("There are no such files here.");
#endif
    }

    void rowsThatTwoPointersClaimAreGivenOnce()
    {
        auto tables = oldTables(1);
        for (int i = 0; i < 6; ++i)
            tables[0].rows.push_back({u"水"_s, u"M-%1"_s.arg(i), u""_s});
        OldFile file = writeOldFile(tables, {.hasMovedRows = true});
        QVERIFY(gives(contentOf(file.bytes), tables));
        // The third and the sixth row were moved to the page behind; the sixth pointer becomes the third.
        const qsizetype at = file.bytes.indexOf(QByteArray::fromHex("01050000"));
        QVERIFY(at > 0);
        file.bytes[at] = 0;
        const Content content = contentOf(file.bytes);
        QCOMPARE(content.losses.size(), 1U);
        QVERIFY(compareText(content.losses[0].text, u"ページ 4 の 7 番目の行が壊れていて、読み取れません。"));
        QCOMPARE(tableOf(content, u"Main"_s)->rows.size(), 5U);
    }

    void textsThatTwoRowsClaimAreGivenToOne()
    {
        auto tables = oldTables(2);
        tables[1].rows = {{u"甲"_s, u"R-1"_s, u"同じ長さの文"_s.repeated(50)},
                          {u"乙"_s, u"R-2"_s, u"違う中身の文"_s.repeated(50)}};
        OldFile file = writeOldFile(tables);
        // The second row's pointer, to the second row of the page of long texts, becomes that to the first.
        const auto pointers = [&](char row) { return QByteArray::fromHex("58020040") + row; };
        const qsizetype at = file.bytes.indexOf(pointers(1));
        QVERIFY(at > 0);
        file.bytes[at + 4] = 0;
        const Content content = contentOf(file.bytes);
        QCOMPARE(content.losses.size(), 1U);
        QVERIFY(compareText(content.losses[0].text, u"本文が壊れていて、読み取れません。"));
        QCOMPARE(tableOf(content, u"RefDoc"_s)->rows[0], tables[1].rows[0]);
        QCOMPARE(tableOf(content, u"RefDoc"_s)->rows[1][2], std::nullopt);
    }

    void partsThatLeadBackToThemselvesEnd()
    {
        auto tables = oldTables(2);
        tables[1].rows = {{u"甲"_s, u"R-1"_s, u"長"_s.repeated(5000)}};
        OldFile file = writeOldFile(tables, {.format = 3});
        // Each part has a page of its own; the last row of the file's pages for long texts is the first part.
        const QByteArray firstPage = QByteArray::fromHex("4C56414C");
        const qsizetype owner = file.bytes.lastIndexOf(firstPage);
        QVERIFY(owner > 0);
        const qsizetype page = owner - 4;
        const auto offsetOfRow = static_cast<unsigned char>(file.bytes[page + 10]) |
                                 static_cast<unsigned char>(file.bytes[page + 11]) << 8;
        const QByteArray itself = QByteArray(1, '\0') + static_cast<char>(page / 2048) + QByteArray(2, '\0');
        file.bytes.replace(page + offsetOfRow, 4, itself);
        const Content content = contentOf(file.bytes);
        QCOMPARE(content.losses.size(), 1U);
        QVERIFY(compareText(content.losses[0].text,
                            u"本文が壊れていて、一部しか読み取れません (読み取れたのは 1016 文字)。"));
    }

    void definitionsThatLeadBackToThemselvesEnd()
    {
        QByteArray bytes = writeOldFile(smallTables()).bytes;
        bytes[3 * 4096 + 4] = 3; // the next page of the first table's definition
        const Content content = contentOf(bytes);
        QCOMPARE(content.losses.size(), 1U);
        QVERIFY(compareText(content.losses[0].table, u"Main"));
        QVERIFY(compareText(content.losses[0].text,
                            u"テーブルの定義に終わりがありません。このテーブルは読み取れません。"));
        QVERIFY(tableOf(content, u"RefDoc"_s) != nullptr);
    }

    void tablesOfOneNameAreNotGuessed()
    {
        auto tables = oldTables(2);
        tables.push_back(tables[0]);
        const Content content = contentOf(writeOldFile(tables).bytes);
        QVERIFY(tableOf(content, u"Main"_s) == nullptr);
        QVERIFY(compareText(content.losses[0].text,
                            u"目録が壊れていて、どのテーブルか分からないため、読み取れません。"));
    }

    void encryptedFilesAreRefused()
    {
        refused(writeOldFile(smallTables(), {.encryptionKey = 0x1234}).bytes,
                u"ファイルは暗号化されているため、読み取れません。"
                u"作成したプログラムで暗号化を解除してからやり直してください。"_s);
    }

    void laterVersionsAreRefused()
    {
        QByteArray bytes = writeOldFile(smallTables()).bytes;
        bytes[0x14] = 2;
        refused(bytes,
                u"以前のデータベースエンジンのファイルですが、対応していない版のものです (版の番号は 2)。"
                u"形式 3 または 4 のファイルを指定してください。"_s);
    }

    void otherFilesAreRefused()
    {
        refused({}, u"以前のデータベースエンジンのファイルではありません。"_s);
        refused(QByteArray(8192, 'x'), u"以前のデータベースエンジンのファイルではありません。"_s);
    }

    void beginningsOfFilesAreRefused()
    {
        const QString text =
            u"ファイルの先頭しか残っていないため、読み取れません。控えのファイルを指定してください。"_s;
        const QByteArray whole = writeOldFile(smallTables()).bytes;
        refused(whole.first(19), text);
        refused(whole.first(8192), text);
    }

    void filesWithoutACatalogueAreRefused()
    {
        QByteArray bytes = writeOldFile(smallTables()).bytes;
        bytes[8192] = 0;
        refused(bytes, u"ファイルの目録を読み取れません。控えのファイルを指定してください。"
                       u"(テーブルの定義がありません。)"_s);
    }

    void filesAreToldByTheirBeginning()
    {
        const QTemporaryDir folder;
        const auto write = [&](const QString& name, const QByteArray& bytes) {
            QFile file(folder.filePath(name));
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? file.fileName()
                                                                                        : QString();
        };
        QVERIFY(isOldFile(write(u"旧.mdb"_s, writeOldFile(smallTables()).bytes)));
        QVERIFY(isOldFile(write(u"旧3.mdb"_s, writeOldFile(smallTables(), {.format = 3}).bytes)));
        QVERIFY(!isOldFile(write(u"短い.mdb"_s, writeOldFile(smallTables()).bytes.first(18))));
        QVERIFY(!isOldFile(write(u"空.mdb"_s, {})));
        QVERIFY(!isOldFile(write(u"他.mdb"_s, "SQLite format 3")));
        QVERIFY(!isOldFile(folder.filePath(u"ない.mdb"_s)));
        QVERIFY(!isOldFile(folder.path()));
#ifdef Q_OS_UNIX
        const QString pipe = folder.filePath(u"管"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!isOldFile(pipe));
#endif
    }

    void filesAreReadAsTheyAre()
    {
        const QTemporaryDir folder;
        const QByteArray bytes = writeOldFile(smallTables()).bytes;
        QFile file(folder.filePath(u"旧.mdb"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
        file.close();
        QCOMPARE(contentOfFile(file.fileName()), bytes);
        try {
            contentOfFile(folder.filePath(u"ない.mdb"_s));
            QFAIL("There is no such file.");
        } catch (const Error& error) {
            QCOMPARE(error.number, errors::DatabaseNotFound);
        }
    }

    void hugeFilesAreNotReadAtAll()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"大.mdb"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize((qint64{1} << 30) + 1)); // all of it a hole
        try {
            contentOfFile(file.fileName());
            QFAIL("It is larger than is taken.");
        } catch (const Error& error) {
            QVERIFY(compareText(
                error.description,
                u"以前のデータベースエンジンのファイルのうち、1 GB を超えるものは読み取れません。"));
        }
    }
};

QTEST_GUILESS_MAIN(TestOldDatabase)
#include "test_old_database.moc"
