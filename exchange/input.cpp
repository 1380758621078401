#include "exchange/input.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

constexpr qint64 BlockSize = qint64{1} << 18;

[[noreturn]] void cannotRead(const QString& path, const Error& reason)
{
    throw Error(reason.number,
                u"「%1」を読み取れません。%2"_s.arg(QDir::toNativeSeparators(path), reason.description));
}

} // namespace

InputFile::InputFile(const QString& path) : m_path(path), m_file(path)
{
    // A folder cannot be read; a pipe or a device might never end.
    if (!platform::isOrdinaryFile(path))
        cannotRead(path, QFile::exists(path) ? Error(errors::PathFileAccess)
                                             : platform::whyNotFound(path, errors::FileNotFound));
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        cannotRead(path, platform::errorOfSystem(platform::lastSystemError(), errors::FileNotFound));
}

QByteArray InputFile::block()
{
    QByteArray bytes = m_file.read(BlockSize);
    if (m_file.error() != QFileDevice::NoError)
        cannotRead(m_path, platform::errorOfSystem(platform::lastSystemError(), errors::FileNotFound));
    return bytes;
}

QByteArray InputFile::read(qint64 atMost)
{
    QByteArray bytes = m_file.read(atMost);
    if (m_file.error() != QFileDevice::NoError)
        cannotRead(m_path, platform::errorOfSystem(platform::lastSystemError(), errors::FileNotFound));
    m_hash.addData(bytes);
    m_done += bytes.size();
    return bytes;
}

bool InputFile::readLine(QByteArray& line)
{
    line.resize(0);
    m_lineEnded = false;
    bool any = false;
    while (!m_lineEnded) {
        if (m_at == m_block.size()) {
            m_block = block();
            m_at = 0;
            if (m_block.isEmpty())
                return any;
            m_hash.addData(m_block);
        }
        any = true;
        const qsizetype feed = m_block.indexOf('\n', m_at);
        const qsizetype end = feed < 0 ? m_block.size() : feed;
        line.append(m_block.constData() + m_at, end - m_at);
        m_lineEnded = feed >= 0;
        m_done += end - m_at + (m_lineEnded ? 1 : 0);
        m_at = m_lineEnded ? end + 1 : end;
    }
    return true;
}

} // namespace quillon::exchange
