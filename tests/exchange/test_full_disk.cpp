// Imports into a disk that is full at any moment.
#include "exchange/archive.h"
#include "exchange/delimited.h"
#include "store/record_set.h"
#include "tests/exchange/folder_content.h"
#include "tests/faults/faulty_disk.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

class TestFullDisk : public QObject
{
    Q_OBJECT

    using Import = std::function<void(Session& session, const QString& folder)>;

private Q_SLOTS:
    void initTestCase()
    {
        FaultyDisk::instance(); // below every database of this program
    }

    void cleanup() { FaultyDisk::instance().heal(); }

    void importIsWholeOrLeavesEverythingAsItWas_data()
    {
        QTest::addColumn<Import>("import");
        QTest::newRow("archive") << Import(
            [](Session& session, const QString& folder) { importArchive(session, folder + u"/archive"_s); });
        QTest::newRow("table") << Import([](Session& session, const QString& folder) {
            importDelimited(session, folder + u"/table.csv"_s);
        });
    }

    void importIsWholeOrLeavesEverythingAsItWas()
    {
        QFETCH(Import, import);
        TestWorld source;
        source.openDatabase(source.createDatabase());
        writeContent(source.folder.filePath(u"RefFile/図.txt"_s), "picture");
        TestWorld::addRow(source.session.RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        for (int i = 1; i < 60; ++i)
            TestWorld::addRow(source.session.RsMain,
                              {u"水"_s, u"M-991231-%1"_s.arg(i, 3, 10, QChar(u'0')), QString(200, u'水')});
        exportArchive(source.session, source.folder.filePath(u"archive"_s));
        exportDelimited(source.session, source.folder.filePath(u"table.csv"_s));
        int failures = 0;
        for (int number = 1;; ++number) {
            TestWorld target;
            target.openDatabase(target.createDatabase());
            const auto before = contentBelow(target.folder.path());
            FaultyDisk::instance().failAt(number, DiskFailure::Full, FaultyDisk::Duration::Once);
            const qint32 failure = errorOf([&] { import(target.session, source.folder.path()); });
            const int calls = FaultyDisk::instance().heal();
            if (failure == 0) {
                QCOMPARE(target.session.RsMain->recordCount(), 59);
            } else {
                ++failures;
                QVERIFY2(contentBelow(target.folder.path()) == before, qPrintable(QString::number(number)));
                QVERIFY(!QDir(target.folder.filePath(u"RefFile"_s)).exists());
            }
            QCOMPARE(target.dialogs.takeComplaints(), QStringList());
            if (number > calls)
                break;
        }
        QVERIFY(failures > 5);
    }
};

QTEST_GUILESS_MAIN(TestFullDisk)
#include "test_full_disk.moc"
