#include "app/base/platform/code_page.h"
#include "bench/corpus/category_plan.h"
#include "bench/corpus/corpus.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

namespace
{

/// A corpus in memory: the rows of each table.
class CollectedRows : public corpus::RowSink
{
public:
    void beginTable(const TableSchema& table) override { m_current = &tables[table.name]; }
    void addRow(std::initializer_list<QStringView> fields) override
    {
        QStringList row;
        for (const QStringView field : fields)
            row << field.toString();
        m_current->append(row);
    }

    QMap<QString, QList<QStringList>> tables;

private:
    QList<QStringList>* m_current = nullptr;
};

constexpr corpus::Options Small{.definitions = 3'000,
                                .documents = 60,
                                .documentMegabytes = 1,
                                .files = 200,
                                .categories = 900,
                                .links = 4'000,
                                .memberships = 3'500,
                                .seed = 7};

QMap<QString, QList<QStringList>> make(const corpus::Options& options)
{
    CollectedRows rows;
    corpus::makeCorpus(options, rows);
    return rows.tables;
}

const QMap<QString, QList<QStringList>>& small()
{
    static const auto tables = make(Small);
    return tables;
}

/// The longest text of a field in bytes of code page 932.
qsizetype longest(const QList<QStringList>& rows, int field)
{
    qsizetype bytes = 0;
    for (const QStringList& row : rows)
        bytes = std::max(bytes, platform::byteLength932(row[field]));
    return bytes;
}

} // namespace

class test_corpus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTableHasTheRowsAskedFor()
    {
        QCOMPARE(small()[u"Main"_s].size(), 3'000);
        QCOMPARE(small()[u"RefDoc"_s].size(), 60);
        QCOMPARE(small()[u"RefFile"_s].size(), 200);
        QCOMPARE(small()[u"Link"_s].size(), 4'000);
        QCOMPARE(small()[u"Category_ID"_s].size(), 900);
        QCOMPARE(small()[u"Category"_s].size(), 3'500);
    }

    void documentsHaveTheBytesAskedFor()
    {
        qsizetype bytes = 0;
        for (const QStringList& row : small()[u"RefDoc"_s])
            bytes += row[2].toUtf8().size();
        QVERIFY2(qAbs(bytes - 1'000'000) < 10'000, qPrintable(QString::number(bytes)));
    }

    void theSameOptionsGiveTheSameRows() { QVERIFY(make(Small) == small()); }

    void anotherSeedGivesOtherRows()
    {
        corpus::Options other = Small;
        other.seed = 8;
        QVERIFY(make(other)[u"Main"_s] != small()[u"Main"_s]);
    }

    void moreFilesLeaveTheOtherDataAsTheyAre()
    {
        corpus::Options more = Small;
        more.files = 300;
        const auto tables = make(more);
        QVERIFY(tables[u"Main"_s] == small()[u"Main"_s]);
        QVERIFY(tables[u"RefDoc"_s] == small()[u"RefDoc"_s]);
        QVERIFY(tables[u"Category_ID"_s] == small()[u"Category_ID"_s]);
    }

    void theFirstRowsAreTheSameOnEveryPlatform()
    {
        corpus::Options few = Small;
        few.seed = 1;
        const auto tables = make(few);
        QCOMPARE(tables[u"Main"_s].first().join(u'|'),
                 u"刑法の中世|M-990104-001|ひかりのうち、湿度を開発するものをいう。"_s);
        QCOMPARE(tables[u"Link"_s].first().join(u'|'), u"F-120629-021|M-101115-002"_s);
        QCOMPARE(tables[u"Category"_s].last().join(u'|'), u"J-A-A-A|M-021127-001"_s);
    }

    void textsFitTheDataWindows()
    {
        for (const QString& table : {u"Main"_s, u"RefDoc"_s, u"RefFile"_s})
            QVERIFY2(longest(small()[table], 0) <= 49, qPrintable(table));
        QVERIFY(longest(small()[u"Main"_s], 2) <= 253);
        QVERIFY(longest(small()[u"RefDoc"_s], 2) <= 63'999);
        QVERIFY(longest(small()[u"Category_ID"_s], 1) <= 50);
    }

    void longDocumentsFitTheDataWindow()
    {
        CollectedRows rows;
        corpus::makeCorpus({.definitions = 0,
                            .documents = 20,
                            .documentMegabytes = 1,
                            .files = 0,
                            .categories = 0,
                            .links = 0,
                            .memberships = 0},
                           rows);
        const qsizetype bytes = longest(rows.tables[u"RefDoc"_s], 2);
        QVERIFY2(bytes > 50'000 && bytes <= 63'999, qPrintable(QString::number(bytes)));
    }

    void everyCharacterIsInCodePage932()
    {
        for (const QString& table : {u"Main"_s, u"RefDoc"_s, u"RefFile"_s, u"Category_ID"_s}) {
            QSet<QChar> characters;
            for (const QStringList& row : small()[table]) {
                for (const QString& text : row)
                    characters.unite(QSet<QChar>(text.begin(), text.end()));
            }
            // A character beyond ASCII that the page lacks counts as the one byte of "?".
            for (const QChar character : characters) {
                const ushort code = character.unicode();
                const bool halfWidth = code < 0x80 || (code >= 0xFF61 && code <= 0xFF9F);
                QVERIFY2(platform::byteLength932(QString(character)) == (halfWidth ? 1 : 2),
                         qPrintable(QString::number(code, 16)));
            }
        }
    }

    void linesOfDocumentsEndInCrLf()
    {
        for (const QStringList& row : small()[u"RefDoc"_s]) {
            QVERIFY(row[2].contains(u"\r\n"_s));
            QCOMPARE(row[2].count(u'\n'), row[2].count(u"\r\n"_s));
            QCOMPARE(row[2].count(u'\r'), row[2].count(u"\r\n"_s));
        }
    }

    void someDefinitionsAreUndefined()
    {
        const auto& rows = small()[u"Main"_s];
        const auto undefined = std::count_if(rows.begin(), rows.end(),
                                             [](const QStringList& row) { return row[2] == u"未定義"; });
        QVERIFY(undefined > 30 && undefined < 90);
    }

    void filesHaveNoExplanationYet()
    {
        for (const QStringList& row : small()[u"RefFile"_s])
            QCOMPARE(row[2], u"未入力"_s);
    }

    void identifiersAreUniqueAndDated()
    {
        static const QRegularExpression form(
            u"^[MRF]-\\d\\d(0[1-9]|1[0-2])(0[1-9]|[12]\\d|3[01])-\\d\\d\\d$"_s);
        QSet<QString> seen;
        for (const QString& table : {u"Main"_s, u"RefDoc"_s, u"RefFile"_s}) {
            for (const QStringList& row : small()[table]) {
                QVERIFY2(form.match(row[1]).hasMatch() && !row[1].endsWith(u"-000"), qPrintable(row[1]));
                QVERIFY2(!seen.contains(row[1]), qPrintable(row[1]));
                seen.insert(row[1]);
            }
        }
    }

    void theLastDayHasOneNumberLeft()
    {
        const auto& rows = small()[u"Main"_s];
        const QString day = rows.last()[1].left(9);
        QCOMPARE(std::count_if(rows.begin(), rows.end(),
                               [&](const QStringList& row) { return row[1].startsWith(day); }),
                 998);
        QCOMPARE(rows.last()[1], day + u"998"_s);
    }

    void noLinkStandsTwiceInEitherDirection()
    {
        QSet<QString> seen;
        for (const QStringList& row : small()[u"Link"_s]) {
            QVERIFY(row[0] != row[1]);
            const QString pair = std::min(row[0], row[1]) + u' ' + std::max(row[0], row[1]);
            QVERIFY2(!seen.contains(pair), qPrintable(pair));
            seen.insert(pair);
        }
    }

    void parentsComeBeforeTheirCategories()
    {
        QSet<QString> seen;
        for (const QStringList& row : small()[u"Category_ID"_s]) {
            const QString& identifier = row[0];
            QVERIFY(identifier.size() <= 2 * corpus::CategoryPlan::DeepestLevel - 1);
            QVERIFY2(!seen.contains(identifier), qPrintable(identifier));
            if (identifier.size() > 1) {
                QCOMPARE(identifier[identifier.size() - 2], u'-');
                QVERIFY2(seen.contains(identifier.chopped(2)), qPrintable(identifier));
            }
            // The letters of one level are taken without a gap.
            if (!identifier.endsWith(u'A'))
                QVERIFY(
                    seen.contains(identifier.chopped(1) + QChar(char16_t(identifier.back().unicode() - 1))));
            seen.insert(identifier);
        }
    }

    void nothingIsFiledAboveAndBelow()
    {
        QMap<QString, QStringList> categories;
        for (const QStringList& row : small()[u"Category"_s])
            categories[row[1]] << row[0];
        for (const QStringList& filed : categories) {
            for (const QString& one : filed) {
                for (const QString& other : filed)
                    QVERIFY2(!other.startsWith(one + u'-'), qPrintable(one + u' ' + other));
                QCOMPARE(filed.count(one), 1);
            }
        }
    }

    void optionsWithoutACorpusAreRefused_data()
    {
        QTest::addColumn<corpus::Options>("options");
        QTest::newRow("negative") << corpus::Options{.files = -1};
        QTest::newRow("more identifiers than days") << corpus::Options{.definitions = 100'000'000};
        QTest::newRow("longer documents than the window") << corpus::Options{.documents = 10};
        QTest::newRow("more links than pairs") << corpus::Options{
            .definitions = 100, .documents = 1, .documentMegabytes = 0, .files = 0, .links = 6'000};
        QTest::newRow("filing without categories") << corpus::Options{.categories = 0};
    }

    void optionsWithoutACorpusAreRefused()
    {
        QFETCH(corpus::Options, options);
        QVERIFY(!corpus::refusal(options).isEmpty());
    }

    void theUsualOptionsAreNotRefused()
    {
        QCOMPARE(corpus::refusal({}), QString());
        QCOMPARE(corpus::refusal(Small), QString());
    }

    void theDatabaseHoldsTheRowsInTheirOrder()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"corpus.mdb"_s);
        corpus::writeCorpus(Small, path);
        const auto database = Database::open(path);
        for (const TableSchema* table : schema::all()) {
            const auto recordSet = RecordSet::openTable(database, *table);
            QList<QStringList> rows;
            if (table->fields.size() == 3) {
                recordSet->forEachRow({0, 1, 2}, [&](const RecordSet::Row& row) {
                    rows << QStringList{row.text(0).toString(), row.text(1).toString(),
                                        row.text(2).toString()};
                });
            } else {
                recordSet->forEachRow({0, 1}, [&](const RecordSet::Row& row) {
                    rows << QStringList{row.text(0).toString(), row.text(1).toString()};
                });
            }
            QVERIFY2(rows == small()[table->name], qPrintable(table->name));
        }
    }
};

QTEST_GUILESS_MAIN(test_corpus)
#include "test_corpus.moc"
