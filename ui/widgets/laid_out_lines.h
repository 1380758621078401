#pragma once

#include <QFont>
#include <QHash>
#include <QString>

#include <memory>

class QTextLayout;

namespace quillon
{

/// A text from left to right whose glyphs have been found and placed on one line, which costs more than drawing them.
struct LaidOutLine {
    std::unique_ptr<QTextLayout> layout;
    qreal width = 0; // pixels
    qreal height = 0;
    bool compact = false; // its glyphs stay within width and height
    QString shortened;    // what of it fits the width `shortenedTo`
    int shortenedTo = 0;
};

/// The lines that were drawn last, by their texts; `OneLineDelegate` says what they are worth.
class LaidOutLines
{
public:
    LaidOutLines();
    ~LaidOutLines();
    LaidOutLines(const LaidOutLines&) = delete;
    LaidOutLines& operator=(const LaidOutLines&) = delete;

    /// The line of a text in this font; it stays as it is until the next call.
    LaidOutLine& line(const QString& text, const QFont& font);
    qsizetype count() const { return m_young.size() + m_old.size(); }

private:
    using Generation = QHash<QString, std::shared_ptr<LaidOutLine>>;

    // Lines that have been asked for since the younger generation began, and those of before.
    Generation m_young;
    Generation m_old;
    QFont m_font; // of all lines
};

} // namespace quillon
