#pragma once

#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QTest>
#include <QWindow>

#include <memory>

namespace quillon::testing
{

/// What tests of the main window have in common: the window over a small database, and what a person sees and does
/// there.
///
/// Definitions 水 001 (in A and A-A), 火 002 (in A), 土 003, 金 004, 木 005; the document 論文 (in A-B); the file
/// 図.png. Categories A 甲 with A-A 甲の一 and A-B 甲の二, B 乙.
class MainWindowFixture : public QObject
{
protected:
    void makeWindow()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        tree = WindowWorld::control<KeyedTree>(*window, QStringLiteral("tvwCategory"));
        list = WindowWorld::control<ReportList>(*window, QStringLiteral("lsvData"));
    }

    void openSampleDatabase()
    {
        const QString path = world->createDatabase();
        {
            const auto database = Database::open(path);
            sqlite::Transaction transaction(database->connection());
            const auto add = [&](const TableSchema& schema, const QStringList& rows) {
                const auto table = RecordSet::openTable(database, schema);
                for (const QString& row : rows)
                    WindowWorld::addRow(table, row.split(u'|'));
            };
            add(schema::Main(), {QStringLiteral("水|M-991231-001|H2O"), QStringLiteral("火|M-991231-002|炎"),
                                 QStringLiteral("土|M-991231-003|地"), QStringLiteral("金|M-991231-004|Au"),
                                 QStringLiteral("木|M-991231-005|樹")});
            add(schema::RefDoc(), {QStringLiteral("論文|R-991231-001|本文")});
            add(schema::RefFile(), {QStringLiteral("図.png|F-991231-001|図.png")});
            add(schema::Category_ID(), {QStringLiteral("A|甲"), QStringLiteral("A-A|甲の一"),
                                        QStringLiteral("A-B|甲の二"), QStringLiteral("B|乙")});
            add(schema::Category(), {QStringLiteral("A|M-991231-001"), QStringLiteral("A-A|M-991231-001"),
                                     QStringLiteral("A|M-991231-002"), QStringLiteral("A-B|R-991231-001")});
            transaction.commit();
        }
        world->open(path);
    }

    Session& session() { return world->session(); }
    Database& database() { return *world->session().OpenDb; }

    QStringList memberships() { return WindowWorld::rowsOf(session().RsCategory); }
    QStringList categories() { return WindowWorld::rowsOf(session().RsCategoryID); }
    QStringList definitions() { return WindowWorld::rowsOf(session().RsMain); }

    /// The rows of the data list, each as its cells joined by "|".
    QStringList rows() const
    {
        QStringList lines;
        for (int row = 0; row < list->rows().rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < list->rows().columnCount(); ++column)
                cells << list->rows().text(row, column).toString();
            lines << cells.join(u'|');
        }
        return lines;
    }
    /// The names in the data list.
    QStringList names() const
    {
        QStringList found;
        for (int row = 0; row < list->rows().rowCount(); ++row)
            found << list->rows().text(row, 0).toString();
        return found;
    }
    /// The mode text of a data window.
    QString modeOf(const QString& designName) const
    {
        return WindowWorld::control<StatusPanels>(*world->window<FormWindow>(designName),
                                                  QStringLiteral("sbStatus"))
            ->text(1);
    }
    QString count() const
    {
        return WindowWorld::control<StatusPanels>(*window, QStringLiteral("sbStatus"))->text(2);
    }
    QStringList nodeTexts() const
    {
        QStringList texts;
        for (int position = 10; position <= window->nodeCount(); ++position)
            texts << window->nodeKey(position) + u'=' + window->nodeText(position);
        return texts;
    }
    QString selectedKey() const
    {
        return tree->selectedPosition() == 0 ? QString() : window->nodeKey(tree->selectedPosition());
    }

    /// Selects a node and lists its data, as a click on it does.
    void chooseNode(const QString& key)
    {
        const int node = tree->nodes().position(key);
        tree->select(node);
        window->tvwCategory_NodeClick(node);
    }
    void selectRows(const std::vector<int>& wanted)
    {
        list->clearSelection();
        for (const int row : wanted)
            list->selectionModel()->setCurrentIndex(list->rows().index(row, 0),
                                                    QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    /// The middle of a node or row, in the coordinates of the view's viewport.
    QPoint nodeAt(const QString& key) const
    {
        const QModelIndex index = tree->nodes().indexOf(tree->nodes().position(key));
        tree->scrollTo(index);
        return tree->visualRect(index).center();
    }
    QPoint rowAt(int row) const { return list->visualRect(list->rows().index(row, 0)).center(); }

    /// A press and release of a key in a view; `keyClick` would press the modifiers as keys, too.
    static void pressKey(QWidget* view, int key, Qt::KeyboardModifiers modifiers = {})
    {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, modifiers);
            QCoreApplication::sendEvent(view, &event);
        }
    }
    void expectNotice(const QString& text, const QString& title = QStringLiteral("Quillon"))
    {
        world->dialogs.expect(MessageBox{.text = text, .title = title});
    }
    void expectQuestion(const QString& text, Answer answer)
    {
        world->dialogs.expect(MessageBox{.text = text, .buttons = Buttons::OkCancel}, answer);
    }
    /// The box of the reporter.
    void expectFailure(const QString& location, qint32 number)
    {
        world->dialogs.expect(
            MessageBox{.text = QStringLiteral("対処不能なエラーが発生しました。\r\nLOCATION : ") + location +
                               QStringLiteral("\r\nEXPLANATION : ") + standardDescription(number),
                       .title = QStringLiteral("Quillon 障害対策部")});
    }
    /// The box for a failure that nothing has trapped, or of a handler with an answer of its own.
    void expectPlainFailure(qint32 number, const QString& title = QStringLiteral("Quillon 障害対策部"))
    {
        world->dialogs.expect(
            MessageBox{.text = QStringLiteral("対処不能なエラーが発生しました。\r\n説明：") +
                               standardDescription(number),
                       .title = title});
    }
    /// Fails the test when a box has come that nobody expected, or has not come.
    void endWorld()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    KeyedTree* tree = nullptr;
    ReportList* list = nullptr;
};

} // namespace quillon::testing
