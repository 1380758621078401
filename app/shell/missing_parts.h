#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QFont;

namespace quillon
{

class Dialogs;

/// What the program lacks where it runs, without which it starts all the same.
struct MissingParts {
    bool japaneseFont = false;
    QString inputMethod = {}; // the one that the person has chosen; empty: none is missing

    bool operator==(const MissingParts&) const = default;
};

/// What is missing for a person who reads in `font` and types by the input method of the environment.
MissingParts missingParts(const QFont& font);

/// Whether the toolkit has a plugin for an input method, as the variable QT_IM_MODULE names it, in one of these folders.
bool hasInputMethod(const QString& name, const QStringList& pluginFolders);

/// Tells what is missing, if anything; in English, too, where no Japanese can be read.
void tellMissingParts(Dialogs* dialogs, const MissingParts& missing);

/// Tells, if so, that nothing can be written where what was overwritten or deleted is to be kept. `keptFolder`: nothing
/// when nothing is to be kept.
void tellUnwritableKeptFolder(Dialogs* dialogs, const std::optional<QString>& keptFolder);

/// Tells something at the start: on the standard error stream, for where no window can be read, and in a box.
/// `dialogs`, here and above: null for no box, as in a run that nobody has started from a menu.
void tellAtStart(Dialogs* dialogs, const QStringList& texts);

/// While it lives, a toolkit that finds no display ends the program with a sentence and the status 1 instead of
/// aborting it.
class DisplayWatch
{
public:
    DisplayWatch();
    ~DisplayWatch();
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;
};

} // namespace quillon
