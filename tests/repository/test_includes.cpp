#include "tests/repository/include_graph.h"
#include "tests/repository/source_tree.h"

#include <QtTest>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;

/// Which files may know each other: the table of arrows in docs/architecture.md, and no circle anywhere.
class TestIncludes : public QObject
{
    Q_OBJECT

    const SourceTree tree;
    QList<ArrowRow> table;

    /// Calls `seen` with every source and every file of the repository that it includes.
    template <typename Seen> void forEachInclude(Seen seen) const
    {
        for (const QString& path : tree.paths()) {
            if (!SourceTree::isProgramText(path))
                continue;
            for (const QString& included : includesIn(tree.textOf(path)))
                seen(path, included);
        }
    }

    static bool allows(const ArrowRow& row, const QString& folder)
    {
        return row.anything || row.folder == folder || row.mayInclude.contains(folder);
    }

private Q_SLOTS:
    void initTestCase()
    {
        table = arrowTableIn(tree.textOf(u"docs/architecture.md"_s));
        QVERIFY(table.size() > 10);
    }

    void everyRowOfTheTableNamesFoldersOfEarlierRows()
    {
        QStringList wrong;
        QStringList earlier;
        for (const ArrowRow& row : std::as_const(table)) {
            for (const QString& folder : row.mayInclude) {
                if (!earlier.contains(folder))
                    wrong << u"`%1` may include `%2`, which has no earlier row"_s.arg(row.folder, folder);
            }
            if (earlier.contains(row.folder))
                wrong << u"`%1` has two rows"_s.arg(row.folder);
            earlier << row.folder;
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    void everyIncludeNamesAFileFromTheRoot()
    {
        QStringList wrong;
        int checked = 0;
        forEachInclude([&](const QString& path, const QString& included) {
            ++checked;
            if (!tree.contains(included))
                wrong << path + u" names no file from the root: "_s + included;
        });
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QVERIFY(checked > 100);
    }

    void everyIncludeFollowsAnArrowOfTheTable()
    {
        QStringList wrong;
        int checked = 0;
        forEachInclude([&](const QString& path, const QString& included) {
            ++checked;
            const qsizetype from = rowOf(table, path);
            const qsizetype to = rowOf(table, included);
            if (from < 0)
                wrong << path + u" lies in no folder of the table"_s;
            else if (to < 0)
                wrong << path + u" includes a file of no folder of the table: "_s + included;
            else if (!allows(table[from], table[to].folder))
                wrong << path + u" may not include "_s + included;
        });
        wrong.removeDuplicates();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QVERIFY(checked > 100);
    }

    void everyArrowOfTheTableIsFollowed()
    {
        QStringList followed;
        forEachInclude([&](const QString& path, const QString& included) {
            const qsizetype from = rowOf(table, path);
            const qsizetype to = rowOf(table, included);
            if (from >= 0 && to >= 0)
                followed << table[from].folder + u' ' + table[to].folder;
        });
        QStringList wrong;
        for (const ArrowRow& row : std::as_const(table)) {
            for (const QString& folder : row.mayInclude) {
                if (!followed.contains(row.folder + u' ' + folder))
                    wrong << u"`%1` no longer includes `%2`: strike it from its row"_s.arg(row.folder,
                                                                                           folder);
            }
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    void noFilesIncludeEachOtherInACircle()
    {
        IncludeGraph graph;
        forEachInclude([&](const QString& path, const QString& included) {
            const QString from = roomOf(path);
            const QString to = roomOf(included);
            if (from != to && !graph[from].contains(to))
                graph[from] << to;
        });
        QVERIFY(graph.size() > 100);
        const QStringList circles = circlesIn(graph);
        QVERIFY2(circles.isEmpty(), qPrintable(circles.join(u'\n')));
    }

    void circlesAreFoundOnceAndInTheirOrder_data()
    {
        QTest::addColumn<IncludeGraph>("graph");
        QTest::addColumn<QStringList>("circles");
        const auto row = [](const char* name, const IncludeGraph& graph, const QStringList& circles) {
            QTest::newRow(name) << graph << circles;
        };
        row("two ways down", {{u"a"_s, {u"b"_s, u"c"_s}}, {u"b"_s, {u"d"_s}}, {u"c"_s, {u"d"_s}}}, {});
        row("each other", {{u"a"_s, {u"b"_s}}, {u"b"_s, {u"a"_s}}}, {u"a -> b -> a"_s});
        row("three, entered from outside",
            {{u"a"_s, {u"b"_s}}, {u"b"_s, {u"c"_s}}, {u"c"_s, {u"d"_s}}, {u"d"_s, {u"b"_s}}},
            {u"b -> c -> d -> b"_s});
        row("a short one inside a long one",
            {{u"a"_s, {u"b"_s}}, {u"b"_s, {u"a"_s, u"c"_s}}, {u"c"_s, {u"a"_s}}},
            {u"a -> b -> a"_s, u"c -> a -> b -> c"_s});
    }

    void circlesAreFoundOnceAndInTheirOrder()
    {
        QFETCH(IncludeGraph, graph);
        QFETCH(QStringList, circles);
        QCOMPARE(circlesIn(graph), circles);
    }

    void filesBelongToTheNearestFolderOfTheTable()
    {
        const QList<ArrowRow> rows = arrowTableIn(u"`no row`\n"
                                                  "<!-- arrows begin -->\n"
                                                  "| A file of | may include |\n|---|---|\n"
                                                  "| `store/sqlite` | nothing |\n"
                                                  "| `store` | `store/sqlite` |\n"
                                                  "| `tests` | `*` |\n"
                                                  "<!-- arrows end -->\n"
                                                  "| `after` | `store` |\n"_s);
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[1].mayInclude, QStringList(u"store/sqlite"_s));
        QVERIFY(!rows[1].anything && rows[2].anything && rows[2].mayInclude.isEmpty());
        QCOMPARE(rowOf(rows, u"store/sqlite/statement.h"_s), 0);
        QCOMPARE(rowOf(rows, u"store/lookup/names.h"_s), 1);
        QCOMPARE(rowOf(rows, u"stores/shop.h"_s), -1);
    }

    void includesAreReadLineByLine()
    {
        QCOMPARE(includesIn(u"#pragma once\n#include \"a/b.h\"\n  #  include \"c.h\"\n#include <d>\n"
                            "// #include \"e.h\"\n#include \"f.moc\"\n"_s),
                 QStringList({u"a/b.h"_s, u"c.h"_s}));
    }
};

QTEST_GUILESS_MAIN(TestIncludes)
#include "test_includes.moc"
