// What a list does when there is no memory for its rows.
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/scarce_memory.h"
#include "tests/widgets/report_list_fixture.h"

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QSignalSpy>

#include <new>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestScarceMemory : public ReportListFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        makeList();
        m_list->setObjectName(u"lsvData"_s);
        m_list->rows().clear();
        QStringList names;
        while (names.size() < Rows)
            names << QString::number(Rows - names.size());
        fill(*m_list, names);
    }
    void cleanup() { takeDown(); }

    void aHeaderClickWithoutMemoryIsToldAndChangesNothing();
    void aFillWithoutMemoryAtItsEndLeavesTheRowsBefore();
    void aFillEndedByAFailureDropsItsRowsWithoutMemory();

private:
    static constexpr int Rows = 2000;
    static constexpr std::size_t RowsInBytes = Rows * sizeof(quint32);

    QString firstName() const { return m_list->rows().text(0, 0).toString(); }
    void clickHeader()
    {
        QHeaderView* header = m_list->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(10, header->height() / 2));
    }
};

void TestScarceMemory::aHeaderClickWithoutMemoryIsToldAndChangesNothing()
{
    m_dialogs.expect(untrapped(errors::OutOfMemory));
    QSignalSpy clicked(m_list, &ReportList::columnClicked);
    {
        const ScarceMemory scarce(RowsInBytes);
        clickHeader();
    }
    QVERIFY(m_eventLog.lines.value(0).contains(u"LOCATION : lsvData_ColumnClick, ErrorNumber : 7, "_s));
    QVERIFY(QApplication::overrideCursor() == nullptr);
    QVERIFY(!m_list->horizontalHeader()->isSortIndicatorShown());
    QCOMPARE(clicked.size(), 0);
    QCOMPARE(firstName(), QString::number(Rows));
    clickHeader();
    QCOMPARE(firstName(), u"1"_s);
}

void TestScarceMemory::aFillWithoutMemoryAtItsEndLeavesTheRowsBefore()
{
    const QAbstractItemModelTester tester(&m_list->rows(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_list->rows().sortByColumn(0); // a sorted list keeps an order that grows with the rows
    ReportModel::Fill fill(m_list->rows());
    fill.append({u"余"});
    {
        const ScarceMemory scarce(RowsInBytes);
        QVERIFY_THROWS_EXCEPTION(std::bad_alloc, fill.finish());
    }
    QCOMPARE(m_list->rows().rowCount(), Rows);
    QCOMPARE(firstName(), u"1"_s);
    ReportModel::Fill next(m_list->rows());
    next.append({u"次"});
    next.finish();
    QCOMPARE(m_list->rows().rowCount(), Rows + 1);
    QCOMPARE(m_list->rows().text(Rows, 0), u"次"_s);
}

void TestScarceMemory::aFillEndedByAFailureDropsItsRowsWithoutMemory()
{
    m_list->rows().sortByColumn(0);
    const qint32 number = errorOf([&] {
        std::optional<ScarceMemory> scarce;
        ReportModel::Fill fill(m_list->rows());
        fill.append({u"余"});
        scarce.emplace(RowsInBytes);
        throw Error(errors::RecordDeleted);
    });
    QCOMPARE(number, errors::RecordDeleted);
    QCOMPARE(m_list->rows().rowCount(), Rows);
}

QTEST_MAIN(TestScarceMemory)
#include "test_scarce_memory.moc"
