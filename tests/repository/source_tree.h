#pragma once

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace quillon::testing
{

/// The files of the repository as they lie in its folder, without what is built there.
class SourceTree
{
public:
    SourceTree() { collect(QString()); }

    /// All files, named from the root.
    const QStringList& paths() const { return m_paths; }

    bool contains(const QString& path) const { return QFile::exists(m_root.filePath(path)); }

    /// Empty when there is no such file.
    QByteArray contentOf(const QString& path) const
    {
        QFile file(m_root.filePath(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString textOf(const QString& path) const { return QString::fromUtf8(contentOf(path)); }

    /// "path:line: text" of every line of a kind of files that matches.
    QStringList linesThatMatch(const QRegularExpression& pattern, bool (*kind)(const QString&)) const
    {
        QStringList found;
        for (const QString& path : m_paths) {
            if (!kind(path))
                continue;
            const QStringList lines = textOf(path).split(u'\n');
            for (qsizetype i = 0; i < lines.size(); ++i) {
                if (pattern.match(lines[i]).hasMatch())
                    found << QStringLiteral("%1:%2: %3").arg(path, QString::number(i + 1), lines[i]);
            }
        }
        return found;
    }

    static bool isProgramText(const QString& path)
    {
        return path.endsWith(QStringLiteral(".cpp")) || path.endsWith(QStringLiteral(".h"));
    }

private:
    const QDir m_root{QString::fromUtf8(QUILLON_SOURCES)};
    QStringList m_paths;

    void collect(const QString& folder)
    {
        const auto entries = QDir(m_root.filePath(folder))
                                 .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            const QString path = folder.isEmpty() ? entry.fileName() : folder + u'/' + entry.fileName();
            const bool ownFolder = !path.startsWith(u'.') || path == QStringLiteral(".ci");
            // What is built and what the program leaves in its work folder is no source.
            const bool made =
                folder.isEmpty() && (path == QStringLiteral("build") || path == QStringLiteral("workspace"));
            if (entry.isDir() && !entry.isSymLink()) {
                if (ownFolder && !made && entry.fileName() != QStringLiteral("__pycache__"))
                    collect(path);
            } else if (entry.isFile()) {
                m_paths << path;
            }
        }
    }
};

} // namespace quillon::testing
