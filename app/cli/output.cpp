#include "app/cli/output.h"

#include "app/base/platform/system_error.h"
#include "app/cli/status.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

QByteArray utf8Of(QStringView text)
{
    QByteArray bytes(mostBytes(text), Qt::Uninitialized);
    const char* const begin = bytes.constData();
    bytes.truncate(writeUtf8(bytes.data(), text) - begin);
    return bytes;
}

} // namespace

Output::Output()
    : m_isTerminal(platform::isTerminal(platform::Stream::Output)),
      m_hasColours(m_isTerminal && qEnvironmentVariable("NO_COLOR").isEmpty() &&
                   qEnvironmentVariable("TERM") != u"dumb" &&
                   platform::takesEscapeSequences(platform::Stream::Output)),
      m_columns(m_isTerminal ? platform::terminalColumns(platform::Stream::Output) : 0)
{
}

char* Output::room(qsizetype bytes)
{
    if (m_capacity - m_size < bytes) {
        const qsizetype capacity = std::max(2 * m_capacity, m_size + bytes);
        decltype(m_bytes) larger(new char[static_cast<std::size_t>(capacity)]);
        if (m_size > 0)
            std::memcpy(larger.get(), m_bytes.get(), static_cast<std::size_t>(m_size));
        m_bytes = std::move(larger);
        m_capacity = capacity;
    }
    return m_bytes.get() + m_size;
}

void Output::write(QByteArrayView utf8)
{
    if (utf8.isEmpty())
        return;
    std::memcpy(room(utf8.size()), utf8.data(), static_cast<std::size_t>(utf8.size()));
    m_size += utf8.size();
}

void Output::write(QStringView text)
{
    char* const begin = room(mostBytes(text));
    m_size += writeUtf8(begin, text) - begin;
}

void Output::writeJson(QStringView text)
{
    char* const begin = room(mostBytes(text));
    m_size += cli::writeJson(begin, text) - begin;
}

void Output::writeNumber(qint64 number)
{
    write(QByteArrayView(QByteArray::number(number)));
}

void Output::flush()
{
    const QByteArrayView bytes(m_bytes.get(), m_size);
    m_size = 0;
    if (m_isClosed || bytes.isEmpty())
        return;
    switch (platform::writeTo(platform::Stream::Output, bytes)) {
    case platform::Written::Whole:
        break;
    case platform::Written::Closed:
        m_isClosed = true;
        break;
    case platform::Written::Failed:
        m_isClosed = true;
        throw Refusal{
            Status::HalfWay,
            u"結果を最後まで出力できませんでした。"_s +
                platform::errorOfSystem(platform::lastSystemError(), errors::PathFileAccess).description};
    }
}

void complain(QStringView text)
{
    tell(u"quillon-cli: "_s + text.toString());
}

void tell(QStringView text)
{
    // Where nothing can be written, nothing can be said about it either.
    static_cast<void>(
        platform::writeTo(platform::Stream::Errors, utf8Of(text.toString().remove(u'\r') + u'\n')));
}

} // namespace quillon::cli
