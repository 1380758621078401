#include "exchange/spooled_texts.h"

#include "app/base/error.h"
#include "app/base/platform/system_error.h"

#include <QTemporaryFile>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

constexpr qsizetype Much = qsizetype{32} << 20;
constexpr qsizetype Ahead = qsizetype{1} << 20;

[[noreturn]] void fail()
{
    const Error reason = platform::errorOfSystem(platform::lastSystemError(), errors::PathNotFound);
    throw Error(reason.number, u"一時ファイルを使用できません。"_s + reason.description);
}

} // namespace

SpooledTexts::SpooledTexts() = default;
SpooledTexts::~SpooledTexts() = default;

void SpooledTexts::add(QStringView text)
{
    const qint64 units = text.size();
    m_block.append(reinterpret_cast<const char*>(&units), sizeof units);
    m_block.append(reinterpret_cast<const char*>(text.utf16()),
                   text.size() * static_cast<qsizetype>(sizeof(char16_t)));
    if (m_block.size() >= Much)
        spill();
}

void SpooledTexts::spill()
{
    if (!m_file) {
        m_file = std::make_unique<QTemporaryFile>();
        if (!m_file->open())
            fail();
    }
    if (m_file->write(m_block) != m_block.size() || !m_file->flush())
        fail();
    m_block.resize(0);
}

void SpooledTexts::rewind()
{
    m_at = 0;
    const bool wasReading = std::exchange(m_isReading, true);
    if (!m_file)
        return;
    if (!wasReading)
        spill();
    m_block.clear();
    if (!m_file->seek(0))
        fail();
}

QByteArray SpooledTexts::take(qsizetype bytes)
{
    if (m_block.size() - m_at < bytes && m_file) {
        m_block = m_block.sliced(m_at) + m_file->read(std::max(bytes, Ahead));
        m_at = 0;
    }
    if (m_block.size() - m_at < bytes)
        fail();
    m_at += bytes;
    return QByteArray::fromRawData(m_block.constData() + m_at - bytes, bytes);
}

QString SpooledTexts::next()
{
    qint64 units = 0;
    std::memcpy(&units, take(sizeof units).constData(), sizeof units);
    QString text(units, Qt::Uninitialized);
    const qsizetype bytes = units * static_cast<qsizetype>(sizeof(char16_t));
    std::memcpy(text.data(), take(bytes).constData(), static_cast<std::size_t>(bytes));
    return text;
}

} // namespace quillon::exchange
