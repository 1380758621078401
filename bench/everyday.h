#pragma once

#include "bench/painted.h"
#include "bench/quiet_program.h"

#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QPlainTextEdit;

namespace quillon
{
class DataWindow;
}

namespace quillon::bench
{

/// Something a person does with the program and then waits for.
struct Task {
    QString name;
    std::function<void()> prepare; // before each time
    std::function<void()> work;    // up to the painted result
    std::function<void()> check;   // after each time; throws unless the result is there and has been painted
};

/// The program over one database and what a person does with it every day. Tasks may be done in any order and as
/// often as wanted; they stay valid as long as this.
class Everyday
{
public:
    /// `path`: a database of the corpus maker. Registering writes to it.
    explicit Everyday(QString path);

    /// Puts the progress bar of the main window into one that is not shown, as the last step before a task: it paints
    /// itself by the clock, which no count of instructions can repeat.
    void hideProgress();

    Task openingAndListing();
    Task sorting();
    Task buildingTree();
    Task listingUncategorised();
    Task listingNode();
    Task firstSearch();
    Task furtherSearch();
    Task listingLinks();
    Task openingItem();
    Task registeringItem();
    Task typingKey();

private:
    /// Lets everything that waits to be done or painted happen.
    void settle();
    /// Lets events happen until a widget has been painted since everything was settled.
    void awaitPainting(const QWidget& widget);
    /// Back to the main window alone.
    void closeOtherWindows();
    /// The main window alone, with all data listed.
    void listEverything();
    void prepareSearch();
    void search();
    void checkFound();
    /// The only window of this name. Throws when there is none.
    QWidget& window(const QString& name);
    DataWindow& definitionWindow();
    QPlainTextEdit& contentField(); // of that window
    template <class Control> Control& control(const QString& windowName, const QString& name)
    {
        auto* found = window(windowName).findChild<Control*>(name);
        require(found != nullptr, "a control is missing");
        return *found;
    }
    Session& session() { return m_program->session(); }
    static void require(bool holds, const char* what);
    /// Throws unless the list has rows and has been painted.
    void requireList(const ReportList& list, const char* what);

    QString m_path;
    Painted m_painted;
    QWidget m_hidden; // outlives the program, which holds on to its progress bar
    std::unique_ptr<QuietProgram> m_program;
    QStringList m_items; // some definitions from all over the table
    qsizetype m_nextItem = 0;
};

} // namespace quillon::bench
