#include "store/record_set.h"
#include "store/sqlite/connection.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_world.h"
#include "ui/auxiliary/frmEntryInfo.h"
#include "ui/widgets/window_registry.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestEntryInfo : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    std::unique_ptr<WindowRegistry> registry;

    frmEntryInfo& open()
    {
        registry->showAuxiliary(u"frmEntryInfo"_s);
        return *dynamic_cast<frmEntryInfo*>(registry->loaded().back());
    }
    static QString caption(const QWidget& form, const QString& label)
    {
        return form.findChild<QLabel*>(label)->text();
    }
    static QStringList counts(const QWidget& form)
    {
        return {caption(form, u"lblMainCount"_s), caption(form, u"lblRefDocCount"_s),
                caption(form, u"lblRefFileCount"_s), caption(form, u"lblAllCount"_s)};
    }
    void fill(const std::shared_ptr<RecordSet>& table, const QString& kind, int rows)
    {
        sqlite::Transaction transaction(world->session.OpenDb->connection());
        const auto insert = world->session.OpenDb->connection().prepareOwn(
            u"INSERT INTO "_s + table->table().name +
            u" (Name, Object_ID, Explanation) VALUES ('n', ?, 'e')"_s);
        for (int row = 0; row < rows; ++row) {
            insert->bind(1, kind + u'-' + QString::number(row));
            insert->run();
        }
        transaction.commit();
    }
    void openDatabase() { world->openDatabase(world->createDatabase()); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        registry = std::make_unique<WindowRegistry>();
        registry->setFactory(u"frmEntryInfo"_s,
                             [this] { return new frmEntryInfo(world->session, *registry); });
    }

    void cleanup()
    {
        for (LoadedWindow* window : registry->loaded())
            delete dynamic_cast<FormWindow*>(window);
        // Unloaded windows leave the registry when they are deleted, so they must go first.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QVERIFY(world->eventLog.lines.isEmpty());
        registry.reset();
        world.reset();
    }

    void windowHasItsTexts()
    {
        const frmEntryInfo& form = open();
        QCOMPARE(form.windowTitle(), u"Quillon データ登録状況表示画面"_s);
        QVERIFY(compareText(caption(form, u"lblMain"_s), u"定義データ 登録数      :"));
        QVERIFY(compareText(caption(form, u"lblRefDoc"_s), u"文献データ 登録数      :"));
        QVERIFY(compareText(caption(form, u"lblRefFile"_s), u"ファイルデータ 登録数 :"));
        QVERIFY(compareText(caption(form, u"lblAll"_s), u"全データ 登録数        :"));
        for (const QLabel* label : form.findChildren<QLabel*>())
            QCOMPARE(label->textFormat(), Qt::PlainText);
    }

    void captionsAndCountsAreReadInPairs()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 3);
        QAccessibleInterface* middle =
            QAccessible::queryAccessibleInterface(open().findChild<QLabel*>(u"lblMain"_s)->parentWidget());
        QStringList texts;
        for (int child = 0; child < middle->childCount(); ++child) {
            QAccessibleInterface* label = middle->child(child);
            if (label->role() != QAccessible::StaticText)
                continue;
            texts << label->text(QAccessible::Name);
            const auto captions = label->relations(QAccessible::Label);
            if (texts.size() % 2 == 0) {
                QCOMPARE(captions.size(), 1);
                QCOMPARE(captions[0].first->text(QAccessible::Name), texts[texts.size() - 2]);
            }
        }
        QCOMPARE(texts,
                 QStringList({u"定義データ 登録数      :"_s, u"3"_s, u"文献データ 登録数      :"_s, u"0"_s,
                              u"ファイルデータ 登録数 :"_s, u"0"_s, u"全データ 登録数        :"_s, u"3"_s}));
    }

    void lineStandsAboveTheTotal()
    {
        const frmEntryInfo& form = open();
        QCoreApplication::processEvents();
        const auto* line = form.findChild<QFrame*>(u"Line1"_s);
        QCOMPARE(line->frameShape(), QFrame::HLine);
        QVERIFY(line->y() > form.findChild<QLabel*>(u"lblRefFile"_s)->y());
        QVERIFY(line->y() < form.findChild<QLabel*>(u"lblAll"_s)->y());
    }

    void colonsStandBelowEachOther()
    {
        frmEntryInfo& form = open();
        QCoreApplication::processEvents();
        QSet<int> columns;
        for (const QString& name : {u"lblMain"_s, u"lblRefDoc"_s, u"lblRefFile"_s, u"lblAll"_s}) {
            auto* label = form.findChild<QLabel*>(name);
            const QImage image = label->grab().toImage();
            // The last column that has ink is the colon's.
            int last = image.width() - 1;
            const auto isEmpty = [&](int x) {
                for (int y = 0; y < image.height(); ++y) {
                    if (image.pixel(x, y) != image.pixel(0, 0))
                        return false;
                }
                return true;
            };
            while (last > 0 && isEmpty(last))
                --last;
            columns.insert(label->x() + last);
        }
        QCOMPARE(columns.size(), 1);
        QVERIFY(*columns.cbegin() > 0);
    }

    void newDatabaseShowsZeros()
    {
        openDatabase();
        QCOMPARE(counts(open()), QStringList({u"0"_s, u"0"_s, u"0"_s, u"0"_s}));
    }

    void noDatabaseLeavesTheCountsBlankSilently()
    {
        QCOMPARE(counts(open()), QStringList({u""_s, u""_s, u""_s, u""_s}));
    }

    void countsAndTotalAreShown()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 3);
        fill(world->session.RsRefDoc, u"R"_s, 2);
        fill(world->session.RsRefFile, u"F"_s, 1);
        QCOMPARE(counts(open()), QStringList({u"3"_s, u"2"_s, u"1"_s, u"6"_s}));
        // The record sets have been moved to their last rows.
        QCOMPARE(world->session.RsMain->field(1), u"M-2"_s);
        QCOMPARE(world->session.RsRefDoc->field(1), u"R-1"_s);
        QCOMPARE(world->session.RsRefFile->field(1), u"F-0"_s);
    }

    void missingTableLeavesTheOthersCounted()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 3);
        fill(world->session.RsRefFile, u"F"_s, 1);
        world->session.RsRefDoc.reset();
        QCOMPARE(counts(open()), QStringList({u"3"_s, u""_s, u"1"_s, u"4"_s}));
    }

    void largestTotalIsShown()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 32000);
        fill(world->session.RsRefDoc, u"R"_s, 700);
        fill(world->session.RsRefFile, u"F"_s, 67);
        QCOMPARE(counts(open()), QStringList({u"32000"_s, u"700"_s, u"67"_s, u"32767"_s}));
    }

    void totalBeyondSixteenBitsIsBlank()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 32000);
        fill(world->session.RsRefDoc, u"R"_s, 700);
        fill(world->session.RsRefFile, u"F"_s, 68);
        QCOMPARE(counts(open()), QStringList({u"32000"_s, u"700"_s, u"68"_s, u""_s}));
    }

    void countBeyondSixteenBitsIsShownWithoutATotal()
    {
        openDatabase();
        fill(world->session.RsMain, u"M"_s, 32768);
        QCOMPARE(counts(open()), QStringList({u"32768"_s, u"0"_s, u"0"_s, u""_s}));
    }

    void openWindowDoesNotFollow()
    {
        openDatabase();
        frmEntryInfo& form = open();
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        QCOMPARE(&open(), &form);
        QCOMPARE(counts(form), QStringList({u"0"_s, u"0"_s, u"0"_s, u"0"_s}));
        QVERIFY(form.unload());
        QCOMPARE(counts(open()), QStringList({u"1"_s, u"0"_s, u"0"_s, u"1"_s}));
    }

    void escapeCloses()
    {
        const QPointer<frmEntryInfo> form(&open());
        QTest::keyClick(form.data(), Qt::Key_Return);
        QVERIFY(!registry->loaded().empty());
        QTest::keyClick(form.data(), Qt::Key_Escape);
        QVERIFY(registry->loaded().empty());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(form.isNull());
    }
};

QTEST_MAIN(TestEntryInfo)
#include "test_entry_info.moc"
