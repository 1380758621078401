#pragma once

#include "app/base/platform/terminal.h"
#include "app/cli/utf8.h"

#include <QByteArrayView>
#include <QStringView>

#include <memory>

namespace quillon::cli
{

/// The standard output, in pieces of some size.
class Output
{
public:
    Output();

    /// Whether a person looks at it, how many columns there are (0: not known), and whether colours may be used.
    bool isTerminal() const { return m_isTerminal; }
    int columns() const { return m_columns; }
    bool hasColours() const { return m_hasColours; }

    void write(QByteArrayView utf8);
    void write(QStringView text);
    void write(char character) { write(QByteArrayView(&character, 1)); }
    void writeJson(QStringView text);
    void writeNumber(qint64 number);

    /// Whether so much has been written that it is to be given away. Then nothing of the database may be locked, for
    /// the other end takes its time.
    bool isFull() const { return m_size >= Piece; }
    /// Gives away what has been written. A failure is a `Refusal`; a closed pipe is none.
    void flush();
    /// False when nobody reads any more, or the program was interrupted: whoever has more to say need not go on.
    bool goesOn() const { return !m_isClosed && !platform::wasInterrupted(); }

private:
    static constexpr qsizetype Piece = qsizetype{256} * 1024;

    /// Room for so many bytes behind what is there.
    char* room(qsizetype bytes);

    std::unique_ptr<char[]> m_bytes; // NOLINT(modernize-avoid-c-arrays): a vector would fill it first
    qsizetype m_size = 0;
    qsizetype m_capacity = 0;
    bool m_isClosed = false;
    bool m_isTerminal = false;
    bool m_hasColours = false;
    int m_columns = 0;
};

/// Writes lines on the error stream, with the program's name in front.
void complain(QStringView text);
/// The same without the name.
void tell(QStringView text);

} // namespace quillon::cli
