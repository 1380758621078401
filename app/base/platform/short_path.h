#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillon::platform
{

/// Another name of a file, for libraries that can only take a short one. Where it has to hold on to the folder, it does
/// so as long as it lives.
class ShortPath
{
public:
    /// `path`: from the root on and without links; the file need not be there.
    explicit ShortPath(const QString& path);
    ~ShortPath();
    ShortPath(const ShortPath&) = delete;
    ShortPath& operator=(const ShortPath&) = delete;

    /// Whether a library that takes names of less than `most` bytes needs another name for `path`, so that it also can
    /// put up to `ending` characters behind it.
    static bool isNeeded(const QString& path, qsizetype ending, qsizetype most);

    /// In UTF-8; nothing where there is no such name.
    std::optional<QByteArray> name() const;

    /// Whether a name is one of these. What stands in it must not be resolved.
    static bool isOne(const char* name);

private:
    QString m_fileName;
    int m_folder = -1;
};

} // namespace quillon::platform
