#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// Sets what the program does and says beside the tests that hold it.
namespace quillon::traceability
{

/// A file of tests: the behaviours of one window or subject.
struct Subject {
    QString path;
    QString comment;        // the sentence above the tests, if there is one
    QStringList behaviours; // the names of the test functions
};

/// A text that the program shows to people, with holes where it fills in values.
struct Message {
    QString text;
    QStringList shownBy; // files
    QStringList heldBy;  // "folder/program: test", those that assert it
};

struct Findings {
    std::vector<Subject> subjects;
    std::vector<Message> messages;
};

/// Reads the program and its tests below the folder `root`.
Findings findingsIn(const QString& root);

/// Whether a text of a test contains all of a message, and not as a part of another word or caption.
bool holds(const QString& text, const QString& message);

/// A name in camel case as the sentence it is: "cancelKeepsTheRow" becomes "Cancel keeps the row".
QString sentenceOf(const QString& name);

/// The messages that no test asserts, one to a line with the files that show it.
QString untestedMessages(const Findings& findings);

/// The document that tells the findings.
QString documentOf(const Findings& findings);

} // namespace quillon::traceability
