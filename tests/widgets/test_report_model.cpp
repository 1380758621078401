#include "app/base/error.h"
#include "app/base/platform/collation.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "ui/widgets/report_model.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::ReportModel;
using quillon::testing::compareText;
using quillon::testing::errorOf;

namespace
{

using Rows = QList<QStringList>;

const std::vector<ReportModel::Column> Columns = {
    {u"名称"_s, ReportModel::Storage::Text},
    {u"種別"_s, ReportModel::Storage::Dictionary},
    {u"ＩＤ"_s, ReportModel::Storage::Text},
};

std::unique_ptr<ReportModel> filled(const Rows& rows)
{
    auto model = std::make_unique<ReportModel>(Columns);
    ReportModel::Fill fill(*model);
    for (const QStringList& row : rows)
        fill.append({row.value(0), row.value(1), row.value(2)});
    fill.finish();
    return model;
}

Rows rowsOf(const ReportModel& model)
{
    Rows rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells << model.index(row, column).data().toString();
        rows << cells;
    }
    return rows;
}

QStringList column(const ReportModel& model, int number)
{
    QStringList texts;
    for (const QStringList& row : rowsOf(model))
        texts << row[number];
    return texts;
}

std::string key(const QString& text)
{
    static const quillon::platform::Collator collator;
    std::string bytes;
    collator.appendKey(text, bytes);
    return bytes;
}

/// The same list without any cleverness.
struct PlainList {
    Rows rows;

    void sort(int by)
    {
        std::stable_sort(rows.begin(), rows.end(), [by](const QStringList& left, const QStringList& right) {
            return key(left[by]) < key(right[by]);
        });
    }
    void remove(std::vector<int> numbers)
    {
        std::sort(numbers.begin(), numbers.end(), std::greater<>());
        for (const int number : numbers)
            rows.removeAt(number);
    }
};

class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) {}

    int below(int bound) { return static_cast<int>(m_random.bounded(static_cast<quint32>(bound))); }

    QStringList row()
    {
        static const QString letters = u"あアいガが漢字水火abABＡＢ1２-ー "_s;
        static const QStringList kinds = {u"定義"_s, u"文献"_s, u"FILE"_s, u""_s};
        QString name;
        for (int length = below(4); length > 0; --length)
            name += letters[below(static_cast<int>(letters.size()))];
        return {name, kinds[below(4)], u"M-%1"_s.arg(below(1000))};
    }

    std::vector<int> rows(int count, int outOf)
    {
        std::vector<int> all(static_cast<std::size_t>(outOf));
        std::iota(all.begin(), all.end(), 0);
        std::shuffle(all.begin(), all.end(), m_random);
        all.resize(static_cast<std::size_t>(std::min(count, outOf)));
        return all;
    }

private:
    QRandomGenerator m_random;
};

} // namespace

class TestReportModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void behavesLikeAPlainList_data();
    void behavesLikeAPlainList();
    void sortsAsAJapaneseReader();
    void equalTextsKeepTheirOrder();
    void aSecondClickDoesNotTurnTheOrder();
    void everyTextComesBackWhole_data();
    void everyTextComesBackWhole();
    void textsFillManyChunks();
    void missingCellsAreEmpty();
    void aFillTellsTheViewsOnce();
    void aFillWithoutRowsTellsNothing();
    void aFillThatAFailureEndsShowsTheRowsBefore();
    void rowsAppendedAfterSortingStandAtTheEnd();
    void clearingEndsTheSorting();
    void selectionFollowsTheRowsThroughASort();
    void selectionSurvivesRemovingManyScatteredRows();
    void aFewRangesAreRemovedOneByOne();
    void unknownRowNumbersAreLeftAlone();
    void theFirstDraggedRowGivesItsText();
    void withoutADragColumnNothingIsDragged();
    void headersAreTheGivenOnes();
    void columnThatIsNotShownStaysWithItsRows();
    void memoryStaysNearTheTexts();
    void tooManyWordsLeaveNoHalfRow();
};

void TestReportModel::behavesLikeAPlainList_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestReportModel::behavesLikeAPlainList()
{
    QFETCH(const quint32, seed);
    Dice dice(seed);
    ReportModel model(Columns);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    PlainList plain;
    for (int step = 0; step < 40; ++step) {
        switch (dice.below(5)) {
        case 0: {
            ReportModel::Fill fill(model);
            for (int count = dice.below(300); count > 0; --count) {
                const QStringList row = dice.row();
                plain.rows << row;
                fill.append({row[0], row[1], row[2]});
            }
            fill.finish();
            break;
        }
        case 1:
        case 2: {
            const int by = dice.below(3);
            plain.sort(by);
            model.sortByColumn(by);
            break;
        }
        case 3: {
            const std::vector<int> rows = dice.rows(dice.below(200), model.rowCount());
            plain.remove(rows);
            model.removeRowsAt(rows);
            break;
        }
        case 4:
            if (dice.below(6) == 0) {
                plain.rows.clear();
                model.clear();
            }
            break;
        }
        QCOMPARE(rowsOf(model), plain.rows);
    }
}

void TestReportModel::sortsAsAJapaneseReader()
{
    const auto model = filled({{u"水"_s},
                               {u"ん"_s},
                               {u"B"_s},
                               {u"イ"_s},
                               {u"Ａ"_s},
                               {u"あ"_s},
                               {u"a"_s},
                               {u"う"_s},
                               {u"A"_s},
                               {u"ア"_s},
                               {u"1"_s},
                               {u"亜"_s},
                               {u""_s}});
    model->sortByColumn(0);
    const QStringList sorted = column(*model, 0);
    const auto place = [&sorted](const QString& text) { return sorted.indexOf(text); };
    QCOMPARE(place(u""_s), 0);
    QCOMPARE(place(u"1"_s), 1);
    // Latin before kana before kanji; full and half width, hiragana and katakana side by side.
    QCOMPARE(std::abs(place(u"Ａ"_s) - place(u"A"_s)), 1);
    QVERIFY(place(u"a"_s) < place(u"B"_s) && place(u"Ａ"_s) < place(u"B"_s));
    QVERIFY(place(u"B"_s) < place(u"あ"_s));
    QCOMPARE(std::abs(place(u"あ"_s) - place(u"ア"_s)), 1);
    QVERIFY(place(u"ア"_s) < place(u"イ"_s) && place(u"イ"_s) < place(u"う"_s) &&
            place(u"う"_s) < place(u"ん"_s));
    QVERIFY(place(u"ん"_s) < place(u"亜"_s) && place(u"亜"_s) < place(u"水"_s));
}

void TestReportModel::equalTextsKeepTheirOrder()
{
    const auto model = filled({{u"う"_s, u"文献"_s, u"1"_s},
                               {u"い"_s, u"定義"_s, u"2"_s},
                               {u"う"_s, u"定義"_s, u"3"_s},
                               {u"い"_s, u"文献"_s, u"4"_s}});
    model->sortByColumn(1);
    QCOMPARE(column(*model, 2), QStringList({u"2"_s, u"3"_s, u"1"_s, u"4"_s}));
    model->sortByColumn(0);
    QCOMPARE(column(*model, 2), QStringList({u"2"_s, u"4"_s, u"3"_s, u"1"_s}));
}

void TestReportModel::aSecondClickDoesNotTurnTheOrder()
{
    const auto model = filled({{u"b"_s}, {u"c"_s}, {u"a"_s}});
    model->sortByColumn(0);
    model->sortByColumn(0);
    QCOMPARE(column(*model, 0), QStringList({u"a"_s, u"b"_s, u"c"_s}));
}

void TestReportModel::everyTextComesBackWhole_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << u""_s;
    QTest::newRow("line breaks") << u"一行目\r\n二行目\n三行目\t終"_s;
    QTest::newRow("markup") << u"<b>水</b> &amp; <img src=x>"_s;
    QTest::newRow("zero characters") << QString(u"a\0b\0"_s);
    QTest::newRow("outside the basic plane") << u"𠮷野家𩸽"_s;
    QTest::newRow("half a pair") << QString(QChar(0xD842));
    QTest::newRow("one unit less than long") << QString(65534, u'水');
    QTest::newRow("just long") << QString(65535, u'火');
    QTest::newRow("100,000 characters") << QString(100000, u'木');
    QTest::newRow("longer than a chunk") << QString(700001, u'金');
}

void TestReportModel::everyTextComesBackWhole()
{
    QFETCH(const QString, text);
    const auto model =
        filled({{u"前"_s, u"定義"_s, u"1"_s}, {text, text, text}, {u"後"_s, u"文献"_s, u"2"_s}});
    QVERIFY(compareText(model->text(1, 0), text));
    QVERIFY(compareText(model->index(1, 1).data().toString(), text));
    QVERIFY(compareText(model->index(1, 2).data().toString(), text));
    QCOMPARE(column(*model, 0).first(), u"前"_s);
    QCOMPARE(column(*model, 0).last(), u"後"_s);
    model->sortByColumn(0);
    model->removeRowsAt({0});
    QCOMPARE(model->rowCount(), 2);
}

void TestReportModel::textsFillManyChunks()
{
    ReportModel model(Columns);
    ReportModel::Fill fill(model);
    for (int row = 0; row < 60000; ++row)
        fill.append({QString::number(row).repeated(1 + row % 7), u"定義", QString::number(row)});
    fill.finish();
    for (int row = 0; row < 60000; ++row) {
        QCOMPARE(model.text(row, 0), QString::number(row).repeated(1 + row % 7));
        QCOMPARE(model.text(row, 2), QString::number(row));
    }
}

void TestReportModel::missingCellsAreEmpty()
{
    ReportModel model(Columns);
    ReportModel::Fill fill(model);
    fill.append({u"名"});
    fill.finish();
    QCOMPARE(rowsOf(model), Rows({{u"名"_s, u""_s, u""_s}}));
}

void TestReportModel::aFillTellsTheViewsOnce()
{
    ReportModel model(Columns);
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    ReportModel::Fill fill(model);
    fill.append({u"一"});
    {
        ReportModel::Fill inner(model);
        inner.append({u"二"});
    }
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(inserted.size(), 0);
    fill.finish();
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(inserted.size(), 1);
}

void TestReportModel::aFillWithoutRowsTellsNothing()
{
    ReportModel model(Columns);
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    ReportModel::Fill fill(model);
    fill.finish();
    QCOMPARE(inserted.size(), 0);
}

void TestReportModel::aFillThatAFailureEndsShowsTheRowsBefore()
{
    const auto model = filled({{u"b"_s}, {u"a"_s}});
    model->sortByColumn(0);
    const qint32 number = errorOf([&] {
        ReportModel::Fill fill(*model);
        fill.append({u"c"});
        throw quillon::Error(quillon::errors::RecordDeleted);
    });
    QCOMPARE(number, quillon::errors::RecordDeleted);
    QCOMPARE(column(*model, 0), QStringList({u"a"_s, u"b"_s, u"c"_s}));
}

void TestReportModel::rowsAppendedAfterSortingStandAtTheEnd()
{
    const auto model = filled({{u"b"_s}, {u"a"_s}});
    model->sortByColumn(0);
    ReportModel::Fill fill(*model);
    fill.append({u"A0"});
    fill.append({u"0"});
    fill.finish();
    QCOMPARE(column(*model, 0), QStringList({u"a"_s, u"b"_s, u"A0"_s, u"0"_s}));
    model->sortByColumn(0);
    QCOMPARE(column(*model, 0), QStringList({u"0"_s, u"a"_s, u"A0"_s, u"b"_s}));
}

void TestReportModel::clearingEndsTheSorting()
{
    const auto model = filled({{u"b"_s}, {u"a"_s}});
    model->sortByColumn(0);
    model->clear();
    ReportModel::Fill fill(*model);
    fill.append({u"d"});
    fill.append({u"c"});
    fill.finish();
    QCOMPARE(column(*model, 0), QStringList({u"d"_s, u"c"_s}));
}

void TestReportModel::selectionFollowsTheRowsThroughASort()
{
    const auto model = filled({{u"c"_s}, {u"b"_s}, {u"a"_s}});
    QItemSelectionModel selection(model.get());
    selection.select(model->index(0, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    selection.setCurrentIndex(model->index(1, 0), QItemSelectionModel::NoUpdate);
    model->sortByColumn(0);
    QCOMPARE(selection.selectedRows().size(), 1);
    QCOMPARE(selection.selectedRows().first().data().toString(), u"c"_s);
    QCOMPARE(selection.currentIndex().data().toString(), u"b"_s);
}

void TestReportModel::selectionSurvivesRemovingManyScatteredRows()
{
    Rows rows;
    for (int row = 0; row < 1000; ++row)
        rows << QStringList{QString::number(row)};
    const auto model = filled(rows);
    const QAbstractItemModelTester tester(model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QSignalSpy resets(model.get(), &QAbstractItemModel::modelReset);
    QItemSelectionModel selection(model.get());
    selection.select(model->index(501, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    std::vector<int> even;
    for (int row = 0; row < 1000; row += 2)
        even.push_back(row);
    model->removeRowsAt(even);
    QCOMPARE(resets.size(), 0);
    QCOMPARE(model->rowCount(), 500);
    QCOMPARE(model->text(499, 0), u"999"_s);
    QCOMPARE(selection.selectedRows().size(), 1);
    QCOMPARE(selection.selectedRows().first().data().toString(), u"501"_s);
}

void TestReportModel::aFewRangesAreRemovedOneByOne()
{
    Rows rows;
    for (int row = 0; row < 10; ++row)
        rows << QStringList{QString::number(row)};
    const auto model = filled(rows);
    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    model->removeRowsAt({8, 2, 3, 2, 4});
    QCOMPARE(removed.size(), 2);
    QCOMPARE(removed[0][1].toInt(), 8);
    QCOMPARE(removed[1][1].toInt(), 2);
    QCOMPARE(removed[1][2].toInt(), 4);
    QCOMPARE(column(*model, 0), QStringList({u"0"_s, u"1"_s, u"5"_s, u"6"_s, u"7"_s, u"9"_s}));
}

void TestReportModel::unknownRowNumbersAreLeftAlone()
{
    const auto model = filled({{u"a"_s}, {u"b"_s}});
    model->removeRowsAt({-1, 2, 99});
    QCOMPARE(column(*model, 0), QStringList({u"a"_s, u"b"_s}));
}

void TestReportModel::theFirstDraggedRowGivesItsText()
{
    const auto model = filled({{u"b"_s, u""_s, u"M-2"_s}, {u"a"_s, u""_s, u"M-1"_s}});
    model->setDragColumn(2);
    model->sortByColumn(0);
    QVERIFY(model->flags(model->index(0, 0)) & Qt::ItemIsDragEnabled);
    const std::unique_ptr<QMimeData> data(model->mimeData({model->index(1, 0), model->index(0, 0)}));
    QCOMPARE(data->text(), u"M-2"_s);
    QCOMPARE(data->formats(), QStringList(u"text/plain"_s));
}

void TestReportModel::withoutADragColumnNothingIsDragged()
{
    const auto model = filled({{u"a"_s}});
    QVERIFY(!(model->flags(model->index(0, 0)) & Qt::ItemIsDragEnabled));
    QCOMPARE(model->mimeData({model->index(0, 0)}), nullptr);
}

void TestReportModel::headersAreTheGivenOnes()
{
    const ReportModel model(Columns);
    QCOMPARE(model.headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), u"名称"_s);
    QCOMPARE(model.headerData(2, Qt::Horizontal, Qt::DisplayRole).toString(), u"ＩＤ"_s);
    QVERIFY(!model.headerData(3, Qt::Horizontal, Qt::DisplayRole).isValid());
}

void TestReportModel::columnThatIsNotShownStaysWithItsRows()
{
    ReportModel model({{u"名称"_s, ReportModel::Storage::Text},
                       {.header = {}, .storage = ReportModel::Storage::Dictionary, .isShown = false}});
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ReportModel::Fill fill(model);
    for (const QStringView name : {u"う", u"い", u"あ"})
        fill.append({name, name});
    fill.finish();
    model.sortByColumn(0);
    model.removeRowsAt({1});
    QCOMPARE(rowsOf(model), Rows({{u"あ"_s}, {u"う"_s}}));
    QVERIFY(!model.headerData(1, Qt::Horizontal, Qt::DisplayRole).isValid());
    QCOMPARE(model.text(0, 1), u"あ"_s);
    QCOMPARE(model.text(1, 1), u"う"_s);
}

void TestReportModel::memoryStaysNearTheTexts()
{
    ReportModel model({{u"名称"_s, ReportModel::Storage::Text},
                       {u"種別"_s, ReportModel::Storage::Dictionary},
                       {u"ＩＤ"_s, ReportModel::Storage::Text},
                       {u"下位分類"_s, ReportModel::Storage::Dictionary}});
    constexpr int count = 1'000'000;
    qsizetype units = 0;
    ReportModel::Fill fill(model);
    const QString name = u"十二文字の名称であります"_s;
    for (int row = 0; row < count; ++row) {
        const QStringView kind = row % 3 == 0 ? u"定義" : u"FILE";
        fill.append({name, kind, u"M-991231-001", u"YES"});
        units += name.size() + kind.size() + 12 + 3;
    }
    fill.finish();
    QCOMPARE(model.rowCount(), count);
    QVERIFY2(model.bytesHeld() <= units * 2 * 13 / 10, qPrintable(QString::number(model.bytesHeld())));
}

void TestReportModel::tooManyWordsLeaveNoHalfRow()
{
    ReportModel model(Columns);
    qint32 number = 0;
    ReportModel::Fill fill(model);
    for (int word = 0; word < 65536; ++word)
        fill.append({u"名", QString::number(word), u"番号"});
    try {
        fill.append({u"余", u"余", u"余"});
    } catch (const quillon::Error& error) {
        number = error.number;
    }
    fill.append({u"名", u"7", u"次"});
    fill.finish();
    QCOMPARE(number, quillon::errors::Overflow);
    QCOMPARE(model.rowCount(), 65537);
    QCOMPARE(model.text(65536, 0), u"名"_s);
    QCOMPARE(model.text(65536, 1), u"7"_s);
    QCOMPARE(model.text(65536, 2), u"次"_s);
}

QTEST_GUILESS_MAIN(TestReportModel)
#include "test_report_model.moc"
