#pragma once

#include "app/base/reporting.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"
#include "ui/widgets/report_list.h"

#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

namespace quillon::testing
{

inline const std::vector<ReportModel::Column> ReportColumns = {
    {QStringLiteral("名称"), ReportModel::Storage::Text},
    {QStringLiteral("種別"), ReportModel::Storage::Dictionary},
    {QStringLiteral("ＩＤ"), ReportModel::Storage::Text},
};

inline void fill(ReportList& list, const QStringList& names)
{
    ReportModel::Fill rows(list.rows());
    int number = 0;
    for (const QString& name : names)
        rows.append({name, u"定義", QStringLiteral("M-%1").arg(++number)});
    rows.finish();
}

inline QStringList selectedNames(const ReportList& list)
{
    QStringList names;
    for (const int row : list.selectedRows())
        names << list.rows().text(row, 0).toString();
    return names;
}

/// A window that writes down what its controls did not handle.
class KeyNotingWindow : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys << event->key(); }
};

/// What tests of a report list have in common: a window with a list of five rows and another control.
class ReportListFixture : public QObject
{
protected:
    void makeList()
    {
        m_window = std::make_unique<KeyNotingWindow>();
        m_list = new ReportList(m_reporting, ReportColumns);
        m_other = new QLineEdit;
        auto* layout = new QVBoxLayout(m_window.get());
        layout->addWidget(m_list);
        layout->addWidget(m_other);
        m_list->setColumnCharacters({20, 10, 14});
        m_window->resize(600, 400);
        m_window->show();
        m_window->activateWindow();
        m_list->setFocus();
        fill(*m_list, {QStringLiteral("りんご"), QStringLiteral("apple"), QStringLiteral("Banana"),
                       QStringLiteral("avocado"), QStringLiteral("水")});
    }

    /// Fails the test when a box has come that nobody expected, or has not come.
    void takeDown()
    {
        QCOMPARE(m_dialogs.takeComplaints(), QStringList());
        m_eventLog.lines.clear();
        m_window.reset();
    }

    QPoint at(int row, int column = 0) const
    {
        return m_list->visualRect(m_list->rows().index(row, column)).center();
    }
    void click(int row, Qt::KeyboardModifiers modifiers = {}, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(m_list->viewport(), button, modifiers, at(row));
    }
    /// A key with modifiers that have been down before; keyClick would press them too.
    void sendKey(int key, Qt::KeyboardModifiers modifiers)
    {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, modifiers);
            QCoreApplication::sendEvent(m_list, &event);
        }
    }
    void moveWithLeftButton(const QPoint& position)
    {
        QMouseEvent move(QEvent::MouseMove, position, m_list->viewport()->mapToGlobal(position), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_list->viewport(), &move);
    }

    ScriptedDialogs m_dialogs;
    MemoryEventLog m_eventLog;
    FixedClock m_clock;
    Reporting m_reporting{m_dialogs, m_eventLog, m_clock};
    std::unique_ptr<KeyNotingWindow> m_window;
    ReportList* m_list = nullptr;
    QLineEdit* m_other = nullptr;
};

} // namespace quillon::testing
