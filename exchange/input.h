#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QString>

namespace quillon::exchange
{

/// An ordinary file that is being read from its beginning, in one pass, whatever its size.
/// Errors, which tell the path: 53, 70, 75.
class InputFile
{
public:
    explicit InputFile(const QString& path);

    qint64 size() const { return m_file.size(); }
    /// How many bytes have been handed out.
    qint64 done() const { return m_done; }
    /// The next bytes, at most as many; empty at the end.
    QByteArray read(qint64 atMost);
    /// The next line without its line feed; false at the end. Both kinds of reading must not be mixed.
    bool readLine(QByteArray& line);
    /// Whether the last line read was ended by a line feed.
    bool lineEnded() const { return m_lineEnded; }
    /// SHA-256 of everything that has been handed out, in hexadecimal digits.
    QByteArray sha256() const { return m_hash.result().toHex(); }

private:
    QByteArray block();

    QString m_path;
    QFile m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    QByteArray m_block;
    qsizetype m_at = 0; // in the block
    qint64 m_done = 0;
    bool m_lineEnded = false;
};

} // namespace quillon::exchange
