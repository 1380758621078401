// Filing by the clipboard: rows that are copied or cut in the data list and pasted on a category.
#include "store/record_set.h"
#include "tests/main/main_window_fixture.h"

#include <QClipboard>
#include <QMimeData>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainPasting : public MainWindowFixture
{
    Q_OBJECT

    const QString NotFound = u"指定されたデータが見つかりませんでした。"_s;
    const QString DataResearch = u"Quillon データ調査分析部"_s;

    void rename(const QString& from, const QString& to)
    {
        RecordSet& rows = *session().RsMain;
        rows.findFirst(u"Name = '%1'"_s.arg(from));
        rows.edit();
        rows.setField(0, to);
        rows.update();
    }
    void press(QWidget* view, Qt::Key key) const { QTest::keyClick(view, key, Qt::ControlModifier); }
    /// Selects a node as the arrow keys do, and pastes.
    void pasteOn(const QString& key) const
    {
        tree->select(tree->nodes().position(key));
        press(tree, Qt::Key_V);
    }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
        chooseNode(u"M_DIV"_s);
        QGuiApplication::clipboard()->clear();
    }
    void cleanup() { endWorld(); }

    void oneRowIsFiledAfterTheQuestion_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("copied") << int(Qt::Key_C);
        QTest::newRow("cut") << int(Qt::Key_X);
    }

    void oneRowIsFiledAfterTheQuestion()
    {
        QFETCH(int, key);
        const QStringList listed = names();
        selectRows({2});
        press(list, static_cast<Qt::Key>(key));
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok); // sic: no full stop
        pasteOn(u"B"_s);
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
        QCOMPARE(names(), listed);
    }

    void whatIsPastedOnTheListedCategoryIsListed()
    {
        selectRows({2});
        press(list, Qt::Key_C);
        chooseNode(u"B"_s);
        const QStringList before = names();
        QVERIFY(!before.contains(u"土"_s));
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Cancel);
        press(tree, Qt::Key_V);
        QCOMPARE(names(), before);
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        press(tree, Qt::Key_V);
        QCOMPARE(names().size(), before.size() + 1);
        QVERIFY(names().contains(u"土"_s));
    }

    void severalRowsAreFiledTogether()
    {
        selectRows({0, 2, 4});
        press(list, Qt::Key_C);
        expectQuestion(u"選択された複数のデータを [ 乙 ] に分類してもよろしいですか。"_s, Answer::Ok);
        pasteOn(u"B"_s);
        QCOMPARE(memberships().mid(4),
                 QStringList({u"B|M-991231-001"_s, u"B|M-991231-003"_s, u"B|M-991231-005"_s}));
    }

    void cancelFilesNothing()
    {
        const QStringList before = memberships();
        selectRows({2});
        press(list, Qt::Key_C);
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Cancel);
        pasteOn(u"B"_s);
        QCOMPARE(memberships(), before);
    }

    void fixedNodesAreRefused()
    {
        const QStringList before = memberships();
        selectRows({2});
        press(list, Qt::Key_C);
        for (const QString& key : {u"DIV"_s, u"M_DIV"_s, u"CATEGORY"_s}) {
            expectNotice(u"選択された項目はカテゴリではありません｡"_s); // sic: a half-width full stop
            pasteOn(key);
        }
        QCOMPARE(memberships(), before);
    }

    void whatWasCopiedIsFiledWhateverIsSelectedByThen()
    {
        selectRows({2});
        press(list, Qt::Key_C);
        selectRows({0, 1});
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        pasteOn(u"B"_s);
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
    }

    void questionReadsTheNameWhenItAsks()
    {
        selectRows({2});
        press(list, Qt::Key_C);
        rename(u"土"_s, u"砂"_s);
        chooseNode(u"M_DIV"_s);
        const QStringList listed = names();
        QVERIFY(listed.contains(u"砂"_s));
        expectQuestion(u"[ 砂 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        pasteOn(u"B"_s);
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
        QCOMPARE(names(), listed);
    }

    void datumThatIsAnotherByNowIsNotFiledUnasked()
    {
        const QStringList before = memberships();
        selectRows({2});
        press(list, Qt::Key_C);
        database().connection().execute(u"DELETE FROM Main WHERE Name = '土'"_s);
        database().connection().execute(u"INSERT INTO Main VALUES ('別', 'M-991231-003', '')"_s);
        expectQuestion(u"[ 別 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Cancel);
        pasteOn(u"B"_s);
        QCOMPARE(memberships(), before);
    }

    void datumThatIsAnotherByTheAnswerIsNotFiled()
    {
        const QStringList before = memberships();
        selectRows({2});
        press(list, Qt::Key_C);
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        world->dialogs.meanwhile([&] { rename(u"土"_s, u"砂"_s); });
        expectNotice(NotFound, DataResearch);
        pasteOn(u"B"_s);
        QCOMPARE(memberships(), before);
        QVERIFY(!names().contains(u"土"_s)); // the row does not say so any longer
    }

    void datumThatIsGoneIsNotFiled()
    {
        const QStringList before = memberships();
        selectRows({2});
        press(list, Qt::Key_C);
        database().connection().execute(u"DELETE FROM Main WHERE Name = '土'"_s);
        expectQuestion(u"[ 不明 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        expectNotice(NotFound, DataResearch);
        pasteOn(u"B"_s);
        QCOMPARE(memberships(), before);
        QVERIFY(!names().contains(u"土"_s));
    }

    void ofSeveralRowsThoseThatAreOthersByNowArePassedOver_data()
    {
        QTest::addColumn<bool>("isListedAnew");
        QTest::newRow("the list shows what they were") << false;
        QTest::newRow("the list shows what they are") << true;
    }

    void ofSeveralRowsThoseThatAreOthersByNowArePassedOver()
    {
        QFETCH(const bool, isListedAnew);
        const qsizetype before = memberships().size();
        selectRows({2, 4});
        press(list, Qt::Key_C);
        rename(u"土"_s, u"砂"_s);
        if (isListedAnew)
            chooseNode(u"M_DIV"_s);
        QStringList listed = names();
        expectQuestion(u"選択された複数のデータを [ 乙 ] に分類してもよろしいですか。"_s, Answer::Ok);
        expectNotice(NotFound, DataResearch);
        pasteOn(u"B"_s);
        QCOMPARE(memberships().mid(before), QStringList(u"B|M-991231-005"_s));
        listed.removeAll(u"土"_s);
        QCOMPARE(names(), listed);
    }

    void otherProgramsGetTheRowsAsText()
    {
        selectRows({0, 2});
        press(list, Qt::Key_C);
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 u"%1\t定義\tM-991231-001\t\n土\t定義\tM-991231-003\t\n"_s.arg(names().front()));
    }

    void textOfOtherProgramsFilesNothing()
    {
        const QStringList before = memberships();
        QGuiApplication::clipboard()->setText(u"M-991231-003"_s);
        pasteOn(u"B"_s);
        auto* torn = new QMimeData;
        torn->setData(u"application/x-quillon-rows"_s, QByteArray::fromHex("000000106162"));
        QGuiApplication::clipboard()->setMimeData(torn);
        pasteOn(u"B"_s);
        QCOMPARE(memberships(), before);
    }

    void noSelectionLeavesTheClipboardAlone()
    {
        QGuiApplication::clipboard()->setText(u"前"_s);
        list->clearSelection();
        press(list, Qt::Key_C);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"前"_s);
    }
};

QTEST_MAIN(TestMainPasting)
#include "test_main_pasting.moc"
