#pragma once

#include <QByteArrayView>
#include <QString>

#include <memory>

class QFileDevice;

namespace quillon::exchange
{

/// A file that is being written where nothing stands. Not finished, it is worth nothing.
/// Errors, which tell the path: 61, 70, 75, 76.
class OutputFile
{
public:
    enum class Care {
        Durable, // on the disk when it is finished
        Quick    // when the system gets round to it: for files by the thousand
    };
    explicit OutputFile(const QString& path, Care care = Care::Durable);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(QByteArrayView bytes);
    void finish();

private:
    [[noreturn]] void fail() const;
    void put(QByteArrayView bytes);

    QString m_path;
    Care m_care;
    std::unique_ptr<QFileDevice> m_file;
    QByteArray m_waiting; // many small writes are one large one
};

/// Writes a whole file.
void writeFile(const QString& path, QByteArrayView bytes, OutputFile::Care care = OutputFile::Care::Durable);

/// A place beside the one where something is to stand, so that it stands there whole or not at all. What has not been
/// placed is gone with this object. What is to be placed may be a file or a folder.
class StagedOutput
{
public:
    /// Throws `Refused` when something stands at `target`.
    explicit StagedOutput(const QString& target);
    ~StagedOutput();
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    /// Where it is to be written.
    const QString& path() const { return m_path; }
    /// Makes this a folder.
    void makeFolder() const;
    /// Makes a folder in this, with those on the way to it.
    void makeFolder(const QString& name) const;
    /// The path of something in this folder.
    QString inside(const QString& name) const;
    /// Gives it its name. Throws `Refused` when something has come to stand there.
    void place();

private:
    QString m_target;
    QString m_path;
    bool m_placed = false;
};

} // namespace quillon::exchange
