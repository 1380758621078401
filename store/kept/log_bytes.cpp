#include "store/kept/log_bytes.h"

#include <algorithm>
#include <utility>

namespace quillon::kept
{

namespace
{

constexpr qint64 BlockSize = qint64{1} << 20;
constexpr std::size_t MostBlocks = 32;

} // namespace

HeldBytes LogBytes::read(quint32 number, const QString& path, qint64 place, qsizetype size)
{
    const qint64 first = place / BlockSize;
    const qint64 inBlock = place % BlockSize;
    if (inBlock + size <= BlockSize) {
        const Block& block = blockAt(number, path, first);
        const qsizetype there = std::max(qsizetype{0}, block.content->size() - inBlock);
        return {.bytes = there == 0 ? QByteArrayView()
                                    : QByteArrayView(*block.content).sliced(inBlock, std::min(size, there)),
                .owner = block.content};
    }
    auto joined = std::make_shared<QByteArray>();
    for (qint64 at = place; joined->size() < size;) {
        const QByteArray& content = *blockAt(number, path, at / BlockSize).content;
        const auto from = std::min(static_cast<qsizetype>(at % BlockSize), content.size());
        const qsizetype count = std::min(size - joined->size(), content.size() - from);
        if (count == 0)
            break;
        joined->append(content.constData() + from, count);
        at += count;
    }
    return {.bytes = *joined, .owner = joined};
}

const LogBytes::Block& LogBytes::blockAt(quint32 number, const QString& path, qint64 block)
{
    const auto known = std::find_if(m_blocks.begin(), m_blocks.end(), [&](const Block& one) {
        return one.file == number && one.number == block;
    });
    if (known != m_blocks.end()) {
        m_blocks.splice(m_blocks.begin(), m_blocks, known);
        return m_blocks.front();
    }
    if (!m_file || m_fileNumber != number) {
        m_file = std::make_unique<QFile>(path);
        m_fileNumber = number;
        if (!m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            m_hasFailed = m_hasFailed || m_file->exists();
    }
    auto content = std::make_shared<QByteArray>();
    if (m_file->isOpen() && m_file->seek(block * BlockSize)) {
        *content = m_file->read(BlockSize);
        m_hasFailed = m_hasFailed || m_file->error() != QFileDevice::NoError;
    }
    m_blocks.push_front({.file = number, .number = block, .content = std::move(content)});
    if (m_blocks.size() > MostBlocks)
        m_blocks.pop_back();
    return m_blocks.front();
}

} // namespace quillon::kept
