#include "tests/widgets/report_list_fixture.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QMainWindow>
#include <QScrollBar>
#include <QToolTip>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// How the columns of a list follow what they hold.
class TestFittedColumns : public ReportListFixture
{
    Q_OBJECT

private:
    /// The room for the text of a cell, and what the text needs.
    int roomIn(int column) const
    {
        const int margin = m_list->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_list) + 1;
        return m_list->columnWidth(column) - 2 * margin;
    }
    int needOf(const QString& text) const { return QFontMetrics(m_list->font()).horizontalAdvance(text); }

    void fillWithIdentifiers(int rows, const QString& usual, int unusualRow, const QString& unusual)
    {
        m_list->rows().clear();
        ReportModel::Fill fill(m_list->rows());
        for (int row = 0; row < rows; ++row)
            fill.append({u"名", u"定義", row == unusualRow ? unusual : usual});
        fill.finish();
        QCoreApplication::processEvents();
    }
    void drag(QTableView& list, int column, int by)
    {
        QWidget* header = list.horizontalHeader()->viewport();
        const int edge =
            list.horizontalHeader()->sectionViewportPosition(column) + list.columnWidth(column) - 1;
        QTest::mousePress(header, Qt::LeftButton, {}, QPoint(edge, 5));
        QTest::mouseMove(header, QPoint(edge + by, 5));
        QTest::mouseRelease(header, Qt::LeftButton, {}, QPoint(edge + by, 5));
    }

    ReportList& listIn(QMainWindow& window)
    {
        auto* list = new ReportList(m_reporting, ReportColumns);
        list->setObjectName(u"lsvSome"_s);
        list->setColumnCharacters({20, 10, 14});
        list->giveRoomTo({0});
        window.setCentralWidget(list);
        window.resize(700, 300);
        window.show();
        return *list;
    }

private Q_SLOTS:
    void init()
    {
        makeList();
        m_list->giveRoomTo({0});
    }
    void cleanup() { takeDown(); }

    void identifiersAreNotShortened_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("points");
        for (const int points : {9, 18, 40}) {
            QTest::addRow("wide letters, %d", points) << u"WWWW-MMMMMM-WWW"_s << points;
            QTest::addRow("full width, %d", points) << u"Ｍ－９９１２３１－００１"_s << points;
        }
    }
    void identifiersAreNotShortened()
    {
        QFETCH(QString, identifier);
        QFETCH(int, points);
        fillWithIdentifiers(3, identifier, -1, {});
        QFont font = m_list->font();
        font.setPointSize(points);
        m_list->setFont(font);
        QVERIFY(roomIn(2) >= needOf(identifier));
        fillWithIdentifiers(3, identifier, -1, {});
        QVERIFY(roomIn(2) >= needOf(identifier));
    }

    void aWideIdentifierFarBelowIsWholeWhereItIsSeen()
    {
        const QString wide(40, u'W');
        fillWithIdentifiers(1'000'000, u"M-991231-001"_s, 777'777, wide);
        QVERIFY(roomIn(2) < needOf(wide)); // nobody goes through a million rows
        m_list->scrollTo(m_list->rows().index(777'777, 0));
        QCoreApplication::processEvents();
        QVERIFY(roomIn(2) >= needOf(wide));
    }

    void aNewFillHasItsOwnWidths()
    {
        const int before = m_list->columnWidth(2);
        fillWithIdentifiers(3, QString(60, u'W'), -1, {});
        QVERIFY(m_list->columnWidth(2) > before);
        fillWithIdentifiers(3, u"M-1"_s, -1, {});
        QCOMPARE(m_list->columnWidth(2), before);
    }

    void namesGetTheRoomThatOthersLeave()
    {
        m_window->resize(1000, 400);
        QCoreApplication::processEvents();
        QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
        const int names = m_list->columnWidth(0);
        fillWithIdentifiers(3, QString(30, u'W'), -1, {});
        QVERIFY(m_list->columnWidth(0) < names); // for the identifiers
        QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    }

    void whoNeedsMoreRoomGetsIt()
    {
        m_list->giveRoomTo({0, 2});
        m_window->resize(1200, 400);
        const QString longName(60, u'名');
        m_list->rows().clear();
        ReportModel::Fill rows(m_list->rows());
        rows.append({longName, u"定義", u"M-1"});
        rows.finish();
        QCoreApplication::processEvents();
        QVERIFY(roomIn(0) >= needOf(longName));
        QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    }

    void anEmptyColumnTakesNoRoomFromNames()
    {
        m_list->giveRoomTo({0, 2});
        m_list->rows().clear();
        ReportModel::Fill rows(m_list->rows());
        rows.append({u"名", u"定義", u""});
        rows.finish();
        const int empty = m_list->columnWidth(2);
        m_window->resize(1300, 400);
        QCoreApplication::processEvents();
        QCOMPARE(m_list->columnWidth(2), empty);
        QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    }

    void aWidthChosenByThePersonStays()
    {
        const int before = m_list->columnWidth(2);
        drag(*m_list, 2, -30);
        QCOMPARE(m_list->columnWidth(2), before - 30);
        fillWithIdentifiers(3, QString(60, u'W'), -1, {});
        QVERIFY(qAbs(m_list->columnWidth(2) - (before - 30)) <= 1);
    }

    void aChosenWidthIsThatOfLaterWindowsToo()
    {
        int chosen = 0;
        for (const bool isFirst : {true, false}) {
            QMainWindow window;
            window.setObjectName(u"frmSome"_s);
            ReportList& list = listIn(window);
            if (isFirst) {
                drag(list, 1, 37);
                chosen = list.columnWidth(1);
            }
            QCOMPARE(list.columnWidth(1), chosen);
            QCOMPARE(list.horizontalHeader()->length() >= list.viewport()->width(), true);
        }
        // A list of another name has its own.
        QMainWindow window;
        window.setObjectName(u"frmSome"_s);
        auto* list = new ReportList(m_reporting, ReportColumns);
        list->setObjectName(u"lsvOther"_s);
        list->setColumnCharacters({20, 10, 14});
        window.setCentralWidget(list);
        window.show();
        QVERIFY(list->columnWidth(1) < chosen);
    }

    void fittingAnEmptyListLeavesItsLaterTextsWhole()
    {
        const QString wide(40, u'W');
        const auto identifiersAreWhole = [&](ReportList& list) {
            ReportModel::Fill fill(list.rows());
            fill.append({u"名", u"定義", wide});
            fill.finish();
            QCoreApplication::processEvents();
            return list.columnWidth(2) >= needOf(wide);
        };
        for (const bool isFirst : {true, false}) {
            QMainWindow window;
            window.setObjectName(u"frmEmpty"_s);
            ReportList& list = listIn(window);
            if (isFirst)
                list.fitColumns();
            QVERIFY(identifiersAreWhole(list));
        }
    }

    void fittingForgetsTheWidthThatThePersonChose()
    {
        const QString wide(40, u'W');
        for (const bool isFirst : {true, false}) {
            QMainWindow window;
            window.setObjectName(u"frmDragged"_s);
            ReportList& list = listIn(window);
            fill(list, {u"水"_s});
            const int usual = list.columnWidth(2);
            if (isFirst) {
                drag(list, 2, -30);
                QCOMPARE(list.columnWidth(2), usual - 30);
                list.fitColumns();
            }
            QCOMPARE(list.columnWidth(2), usual);
            list.rows().clear();
            ReportModel::Fill fill(list.rows());
            fill.append({u"名", u"定義", wide});
            fill.finish();
            QVERIFY(list.columnWidth(2) >= needOf(wide));
        }
    }

    void aDoubleClickOnAnEdgeFitsTheColumn()
    {
        const int usual = m_list->columnWidth(2);
        drag(*m_list, 2, -30);
        drag(*m_list, 1, 30);
        const int chosen = m_list->columnWidth(1);
        const QHeaderView* header = m_list->horizontalHeader();
        const int edge = header->sectionViewportPosition(2) + m_list->columnWidth(2) - 1;
        QTest::mouseDClick(header->viewport(), Qt::LeftButton, {}, QPoint(edge, 5));
        QCOMPARE(m_list->columnWidth(2), usual);
        QCOMPARE(m_list->columnWidth(1), chosen);
        const QString wide(40, u'W');
        fillWithIdentifiers(3, wide, -1, {});
        QVERIFY(roomIn(2) >= needOf(wide));
    }

    void aHeaderThatIsCutTellsItsText()
    {
        QWidget* header = m_list->horizontalHeader()->viewport();
        const QPoint inside(m_list->horizontalHeader()->sectionViewportPosition(1) + 4, 5);
        const auto hover = [&] {
            QHelpEvent help(QEvent::ToolTip, inside, header->mapToGlobal(inside));
            QCoreApplication::sendEvent(header, &help);
            return QToolTip::text();
        };
        QVERIFY(hover() != u"種別"_s);
        drag(*m_list, 1, 20 - m_list->columnWidth(1));
        QCOMPARE(hover(), u"種別"_s);
        QToolTip::hideText();
    }
};

QTEST_MAIN(TestFittedColumns)
#include "test_fitted_columns.moc"
