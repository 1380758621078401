#pragma once

#include <QDir>
#include <QTemporaryDir>

namespace quillon::testing
{

/**
 * A folder for one test, which goes with all that is in it.
 *
 * Its paths are written as the system writes them and as the program tells them, so that a test may compare the two.
 */
class TestFolder : public QTemporaryDir
{
public:
    /** The path of the folder. */
    QString path() const { return QDir::toNativeSeparators(QTemporaryDir::path()); }

    /** The path of what is called @p name in it; folders in @p name are divided by /. */
    QString filePath(const QString& name) const { return QDir::toNativeSeparators(path() + u'/' + name); }
};

} // namespace quillon::testing
