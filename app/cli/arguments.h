#pragma once

#include "app/cli/verbs.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace quillon::cli
{

/// The words of a command, understood.
struct Arguments {
    enum class Request { Run, Help, Version };

    Request request = Request::Run;
    const Verb* verb = nullptr;       // null: none was named, which only Help and Version allow
    QStringList words;                // without the verb
    QMap<QString, QStringList> given; // by the name of the option

    bool has(const QString& option) const { return given.contains(option); }
    /// The value of an option that was given.
    QString value(const QString& option) const { return given.value(option).value(0); }
    QStringList values(const QString& option) const { return given.value(option); }
};

/// A command that cannot be understood.
struct WrongUsage {
    QString complaint;
    const Verb* verb = nullptr; // if that much was understood
};

/// Understands the words after the program's name, or throws `WrongUsage`.
Arguments understood(const QStringList& words);

} // namespace quillon::cli
