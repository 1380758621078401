#pragma once

#include "bench/painted.h"
#include "bench/quiet_program.h"

#include <QStringList>

#include <functional>
#include <memory>

class QWidget;

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
    explicit Everyday(const QString& path);

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
    /// Back to the main window alone.
    void closeOtherWindows();
    /// The main window alone, with all data listed and nothing else to be painted.
    void listEverything();
    void prepareSearch();
    void search();
    void checkFound();
    /// The only window of this name. Throws when there is none.
    QWidget& window(const QString& name);
    DataWindow& definitionWindow();
    template <class Control> Control& control(const QString& windowName, const QString& name);
    Session& session() { return m_program->session(); }
    /// Throws unless the list has rows and has been painted.
    void requireList(const ReportList& list, const char* what);

    QString m_path;
    Painted m_painted;
    std::unique_ptr<QuietProgram> m_program;
    QStringList m_items; // some definitions from all over the table
    qsizetype m_nextItem = 0;
};

} // namespace quillon::bench
