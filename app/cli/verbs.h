#pragma once

#include "app/cli/status.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quillon::cli
{

struct Run;

/// An option as everybody is told of it. Its name says the same with every verb.
struct Option {
    QString name;
    QString shortName = {}; // also understood
    QString value = {};     // what its value is called; empty: it takes none
    QString japanese;
    QString english;
    bool repeats = false;
    QStringList choices = {}; // the values there are; empty: any
};

/// What a verb needs of the database.
enum class Needs {
    Nothing,
    Place,   ///< its name; the file need not be there
    Reading, ///< it is opened
    Kept,    ///< the same, and what is overwritten and deleted is kept
    Writing, ///< the same, and a copy is made when it is time
    Filling  ///< the same, but a database that is not there is made
};

/// A verb: all that is known of it. From these the words of a command are understood, and the help, the manual pages and
/// the completions are made.
struct Verb {
    QString name; // of one or two words
    QString arguments;
    int fewest = 0; // words
    int most = 0;   // negative: any number
    QStringList options = {};
    Needs needs = Needs::Reading;
    QString japanese;
    QString english;
    QString example;             // the words after the program's name
    QStringList firstWords = {}; // what the first word can be; empty: anything
    bool takesPath = false;      // one of the words names a file
    Status (*run)(Run& run) = nullptr;
};

const std::vector<Verb>& verbs();
const Verb* verbNamed(QStringView name);

/// All options; the first ones stand before or after every verb.
const std::vector<Option>& options();
const Option& optionNamed(QStringView name);
const QStringList& commonOptions();

} // namespace quillon::cli
