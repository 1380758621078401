#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <memory>

class QTemporaryFile;

namespace quillon::exchange
{

/// Texts that are put aside and then read in the same order, as often as need be: in memory as long as they are few,
/// else in a file for the time being. Half characters are kept.
/// Errors, when there is no room for that file: 61, 70, 75, 76.
class SpooledTexts
{
public:
    SpooledTexts();
    ~SpooledTexts();
    SpooledTexts(const SpooledTexts&) = delete;
    SpooledTexts& operator=(const SpooledTexts&) = delete;

    void add(QStringView text);
    /// Goes back to the first one. To be called before reading; nothing is added any more.
    void rewind();
    /// The next one.
    QString next();

private:
    void spill();
    QByteArray take(qsizetype bytes);

    std::unique_ptr<QTemporaryFile> m_file; // null: all are in memory
    QByteArray m_block; // what is not in the file yet; when reading, what has been read ahead
    qsizetype m_at = 0; // in the block
    bool m_isReading = false;
};

} // namespace quillon::exchange
