#pragma once

#include "ui/widgets/report_list.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

/// What a person sees of a window, and does in it.
namespace quillon::testing
{

/// The captions of the menu bar.
inline QStringList menuBarOf(const QMenuBar& bar)
{
    QStringList captions;
    for (const QAction* menu : bar.actions())
        captions << menu->text();
    return captions;
}

/// The entries of a menu as "name caption", disabled ones with a "-" in front, separators as "name |".
inline QStringList entriesOf(const QMenu& menu)
{
    QStringList entries;
    for (const QAction* entry : menu.actions()) {
        const QString line = entry->objectName() + QStringLiteral(" ") +
                             (entry->isSeparator() ? QStringLiteral("|") : entry->text());
        entries << (entry->isEnabled() ? line : QStringLiteral("-") + line);
    }
    return entries;
}

inline QStringList headersOf(const ReportModel& model)
{
    QStringList headers;
    for (int column = 0; column < model.columnCount(); ++column)
        headers << model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    return headers;
}

/// The rows of a list in their order on the screen, each as its cells joined by "|".
inline QStringList rowsOf(const ReportModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells << model.text(row, column).toString();
        rows << cells.join(QStringLiteral("|"));
    }
    return rows;
}

/// The texts of the labels that name a control.
inline QStringList labelsOf(const QWidget& control)
{
    QStringList labels;
    for (const QLabel* label : control.window()->findChildren<QLabel*>()) {
        if (label->buddy() == &control)
            labels << label->text();
    }
    return labels;
}

/// The names of the controls through which the Tab key goes, from the one that has the focus, once round.
inline QStringList tabRound(QWidget& window)
{
    QStringList names;
    const QWidget* const start = window.focusWidget();
    for (int presses = 0; presses < 30; ++presses) {
        QWidget* focused = window.focusWidget();
        if (focused == nullptr || (presses > 0 && focused == start))
            break;
        names << focused->objectName();
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    return names;
}

/// Selects a row as a click on it does.
inline void selectRow(ReportList& list, int row)
{
    const QPoint inRow = list.visualRect(list.rows().index(row, 0)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, inRow);
}

inline void doubleClickRow(ReportList& list, int row)
{
    const QPoint inRow = list.visualRect(list.rows().index(row, 0)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, inRow);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, inRow);
}

/// Double-clicks below the last row.
inline void doubleClickBesideRows(ReportList& list)
{
    const QPoint below(5, list.viewport()->height() - 2);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, below);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, below);
}

/// Clicks the header of a column.
inline void clickHeader(const ReportList& list, int column)
{
    const QHeaderView& header = *list.horizontalHeader();
    const QPoint inSection(header.sectionViewportPosition(column) + header.sectionSize(column) / 2,
                           header.height() / 2);
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, inSection);
}

/// The name of the menu that a right click on a control brings up, empty when none comes. The menu is closed again.
inline QString menuOfRightClick(QWidget& control)
{
    const QPoint place = control.rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, control.mapToGlobal(place));
    QCoreApplication::sendEvent(&control, &event);
    QWidget* menu = QApplication::activePopupWidget();
    if (menu == nullptr)
        return {};
    QString name = menu->objectName();
    menu->close();
    return name;
}

/// An input method shows text in a field that is not confirmed yet; an empty one takes it back.
inline void compose(QWidget& field, const QString& preedit)
{
    QInputMethodEvent event(preedit, {});
    QCoreApplication::sendEvent(&field, &event);
}

/// An input method confirms text.
inline void commit(QWidget& field, const QString& text)
{
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&field, &event);
}

} // namespace quillon::testing
