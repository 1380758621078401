#pragma once

#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/failure_box.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/auxiliary/frmFind.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/status_panels.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

namespace quillon::testing
{

/// The program with an open database, and what a person does with its search.
class SearchWorld : public WindowWorld
{
public:
    SearchWorld() : path(createDatabase()) { open(path); }

    /// The search window, opened from the Find menu when it is not open yet.
    frmFind& searchWindow()
    {
        if (windowCount(QStringLiteral("frmFind")) == 0)
            choose(mainWindow(), QStringLiteral("mnuFindName"));
        return *window<frmFind>(QStringLiteral("frmFind"));
    }
    QLineEdit& textBox() { return *control<QLineEdit>(searchWindow(), QStringLiteral("txtFind")); }
    QCheckBox& checkBox(const QString& name) { return *control<QCheckBox>(searchWindow(), name); }

    /// Types a text and checks the boxes of these kinds ("M", "R", "F"), without searching.
    void enter(const QString& text, const QString& kinds = QStringLiteral("MRF"))
    {
        textBox().selectAll();
        textBox().insert(text);
        if (text.isEmpty())
            textBox().clear();
        checkBox(QStringLiteral("chkMain")).setChecked(kinds.contains(u'M'));
        checkBox(QStringLiteral("chkRefDoc")).setChecked(kinds.contains(u'R'));
        checkBox(QStringLiteral("chkRefFile")).setChecked(kinds.contains(u'F'));
    }
    void pressSearch()
    {
        control<QPushButton>(searchWindow(), QStringLiteral("cmdFind"))->click();
        processEvents();
    }
    void search(const QString& text, const QString& kinds = QStringLiteral("MRF"))
    {
        enter(text, kinds);
        pressSearch();
    }

    /// The window with the results; null when it is not loaded.
    frmDataSelect* results() { return window<frmDataSelect>(QStringLiteral("frmDataSelect")); }
    ReportList& resultList() { return *control<ReportList>(*results(), QStringLiteral("lsvData")); }
    /// The rows of the results, each as its cells joined by "|".
    QStringList resultRows() { return testing::rowsOf(resultList().rows()); }
    /// The names in the results.
    QStringList names()
    {
        QStringList found;
        for (int row = 0; row < resultList().rows().rowCount(); ++row)
            found << resultList().rows().text(row, 0).toString();
        return found;
    }
    QString resultPanel(int number)
    {
        return control<StatusPanels>(*results(), QStringLiteral("sbStatus"))->text(number);
    }
    void closeResults()
    {
        if (results() != nullptr)
            results()->unload();
        processEvents();
    }
    /// The names that a search finds, without those of earlier searches.
    QStringList found(const QString& text, const QString& kinds = QStringLiteral("MRF"))
    {
        closeResults();
        search(text, kinds);
        return names();
    }

    void addDefinition(const QString& name, const QString& identifier, const QString& explanation)
    {
        addRow(session().RsMain, {name, identifier, explanation});
    }
    void addDocument(const QString& name, const QString& identifier, const QString& content)
    {
        addRow(session().RsRefDoc, {name, identifier, content});
    }
    void addFile(const QString& name, const QString& identifier, const QString& fileName)
    {
        addRow(session().RsRefFile, {name, identifier, fileName});
    }

    const QString path; // of the database
};

} // namespace quillon::testing
