#include "tests/main/main_window_fixture.h"
#include "tests/support/held_key.h"

#include <QApplication>
#include <QFile>
#include <QLabel>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What a person sees before any database has been opened, and what the desktop hears of those that are.
class TestFirstStart : public MainWindowFixture
{
    Q_OBJECT

    const QString TreeText =
        u"初めての方は、［ファイル(F)］→［新規データベース作成(N)］でデータベースを作成してください。"_s;
    const QString ListText =
        u"データベースがあるときは、［ファイル(F)］→［既存データベース展開(O)］で展開してください。"_s;

    QLabel* hint(const QString& name) const { return WindowWorld::control<QLabel>(*window, name); }

private Q_SLOTS:
    void init() { makeWindow(); }
    void cleanup() { endWorld(); }

    void emptyPanesSayWhatToDo()
    {
        QVERIFY(hint(u"lblTreeHint"_s)->isVisible());
        QVERIFY(compareText(hint(u"lblTreeHint"_s)->text(), TreeText));
        QVERIFY(compareText(hint(u"lblListHint"_s)->text(), ListText));
        // Each in its pane, whole, and neither a row nor in the way of anything.
        const auto isIn = [](const QLabel& label, const QAbstractItemView& view) {
            const QRect room(view.viewport()->mapTo(view.parentWidget(), QPoint(0, 0)),
                             view.viewport()->size());
            return room.contains(label.geometry()) && label.heightForWidth(label.width()) <= label.height() &&
                   label.testAttribute(Qt::WA_TransparentForMouseEvents) &&
                   label.focusPolicy() == Qt::NoFocus;
        };
        QVERIFY(isIn(*hint(u"lblTreeHint"_s), *tree));
        QVERIFY(isIn(*hint(u"lblListHint"_s), *list));
        QCOMPARE(window->nodeCount(), 0);
        QCOMPARE(list->rows().rowCount(), 0);
    }

    void panesAreDescribedForScreenReaders()
    {
        QCOMPARE(tree->accessibleDescription(), TreeText);
        QCOMPARE(list->accessibleDescription(), ListText);
    }

    void sentencesFollowTheirPanes()
    {
        window->resize(window->size() + QSize(120, 80));
        WindowWorld::processEvents();
        float x = 4000;
        window->SizeControls(x);
        QCOMPARE(hint(u"lblTreeHint"_s)->size(), tree->viewport()->size());
        QCOMPARE(hint(u"lblListHint"_s)->size(), list->viewport()->size());
        QCOMPARE(hint(u"lblListHint"_s)->mapToGlobal(QPoint()), list->viewport()->mapToGlobal(QPoint()));
    }

    void firstDatabaseTakesThemAway_data()
    {
        QTest::addColumn<bool>("isNew");
        QTest::newRow("created") << true;
        QTest::newRow("opened") << false;
    }

    void firstDatabaseTakesThemAway()
    {
        QFETCH(bool, isNew);
        const QString path = isNew ? world->folder.filePath(u"新.mdb"_s) : world->createDatabase();
        if (isNew) {
            world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Save,
                                             .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                             .fileName = {},
                                             .folder = world->folder.path(),
                                             .promptBeforeOverwriting = true},
                                  path);
            expectNotice(u"Quillon 用のデータベースを作成しました。"_s);
            QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        } else {
            world->open(path);
        }
        QVERIFY(hint(u"lblTreeHint"_s) == nullptr);
        QVERIFY(hint(u"lblListHint"_s) == nullptr);
        QCOMPARE(tree->accessibleDescription(), QString());
        QCOMPARE(list->accessibleDescription(), QString());
        QCOMPARE(world->desktop.recent, QStringList({path}));
    }

    void databaseThatCannotBeOpenedChangesNothing()
    {
        const QString path = world->folder.filePath(u"壊.mdb"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no database at all");
        file.close();
        expectFailure(u"OpenDbFile"_s, errors::NotADatabase);
        world->open(path);
        QVERIFY(hint(u"lblTreeHint"_s) != nullptr);
        QVERIFY(hint(u"lblListHint"_s) != nullptr);
        QCOMPARE(world->desktop.recent, QStringList());
    }

    void everyOpeningIsTold()
    {
        const QString first = world->createDatabase();
        const QString second = world->createDatabase(u"二.mdb"_s);
        world->open(first);
        world->open(second);
        world->open(first);
        QCOMPARE(world->desktop.recent, QStringList({first, second, first}));
    }
};

QTEST_MAIN(TestFirstStart)
#include "test_first_start.moc"
