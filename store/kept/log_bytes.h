#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QString>

#include <list>
#include <memory>

namespace quillon::kept
{

/// Bytes of a file, for as long as somebody holds them.
struct HeldBytes {
    QByteArrayView bytes; // fewer than were asked for when the file has no more, or cannot be read
    std::shared_ptr<const QByteArray> owner;
};

/// Reads files in blocks, of which it holds on to a few. They are read and not mapped: a mapped file that is cut short, or
/// whose disk fails, ends the program.
class LogBytes
{
public:
    /// `number`: tells the files apart. `place`: an even one, so that texts can be read where they lie.
    HeldBytes read(quint32 number, const QString& path, qint64 place, qsizetype size);
    /// Whether a file was there and could not be read.
    bool hasFailed() const { return m_hasFailed; }

private:
    struct Block {
        quint32 file = 0;
        qint64 number = 0;
        std::shared_ptr<const QByteArray> content;
    };

    const Block& blockAt(quint32 number, const QString& path, qint64 block);

    std::list<Block> m_blocks; // the one used last in front
    std::unique_ptr<QFile> m_file;
    quint32 m_fileNumber = 0;
    bool m_hasFailed = false;
};

} // namespace quillon::kept
