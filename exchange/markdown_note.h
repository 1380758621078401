#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

#include <vector>

namespace quillon::exchange
{

/// A file of Markdown with a head between two lines of "---", as notes have it.
struct MarkdownNote {
    bool isOurs = false; // its head tells an identifier and a kind of ours: then nothing is guessed
    QString title = {};  // empty: that of the file
    QString identifier = {};
    QString kind = {}; // the short name of one
    QDate day = {};
    QString text = {};
    QStringList tags = {};  // each a way of names
    QStringList links = {}; // what the note leads to: a title, or a path of the folder without its ending
    QStringList unknown =
        {}; // what the head tells besides, each once; all that stands at the beginning of the text
};

/// Reads a note.
MarkdownNote readMarkdown(const QString& source);

/// Writes a note of ours, which reads as the same.
QString markdownOf(const MarkdownNote& note);

} // namespace quillon::exchange
