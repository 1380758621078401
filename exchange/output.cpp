#include "exchange/output.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/renaming.h"
#include "app/base/platform/system_error.h"
#include "exchange/refused.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSaveFile>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

[[noreturn]] void cannotWrite(const QString& path, int failure)
{
    const Error reason = platform::errorOfSystem(failure, errors::PathNotFound);
    throw Error(reason.number,
                u"「%1」に書き込めません。%2"_s.arg(QDir::toNativeSeparators(path), reason.description));
}

[[noreturn]] void isThere(const QString& path)
{
    throw Refused(
        u"「%1」は既に存在します。別の名前を指定してください。"_s.arg(QDir::toNativeSeparators(path)));
}

bool stands(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

OutputFile::OutputFile(const QString& path, Care care) : m_path(path), m_care(care)
{
    bool opened = false;
    if (care == Care::Durable) {
        auto file = std::make_unique<QSaveFile>(path);
        opened = file->open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        m_file = std::move(file);
    } else {
        auto file = std::make_unique<QFile>(path);
        opened = file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
        m_file = std::move(file);
    }
    if (!opened)
        fail();
}

OutputFile::~OutputFile() = default;

void OutputFile::fail() const
{
    cannotWrite(m_path, platform::lastSystemError());
}

void OutputFile::put(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const qint64 written = m_file->write(bytes.data(), bytes.size());
        if (written <= 0)
            fail();
        bytes = bytes.sliced(written);
    }
}

void OutputFile::write(QByteArrayView bytes)
{
    constexpr qsizetype Much = qsizetype{1} << 18;
    m_waiting.append(bytes);
    if (m_waiting.size() >= Much) {
        put(m_waiting);
        m_waiting.resize(0);
    }
}

void OutputFile::finish()
{
    put(m_waiting);
    m_waiting.clear();
    if (m_care == Care::Durable) {
        if (!static_cast<QSaveFile&>(*m_file).commit())
            fail();
        // It passes over a disk that does not take what it was given.
        platform::syncFile(m_path);
    } else {
        m_file->close();
        if (m_file->error() != QFileDevice::NoError)
            fail();
    }
}

void writeFile(const QString& path, QByteArrayView bytes, OutputFile::Care care)
{
    OutputFile file(path, care);
    file.write(bytes);
    file.finish();
}

StagedOutput::StagedOutput(const QString& target)
    : m_target(QDir::cleanPath(QDir::current().absoluteFilePath(target)))
{
    if (target.isEmpty())
        throw Refused(u"書き出し先が指定されていません。"_s);
    if (stands(m_target))
        isThere(target);
    const QString beside = QFileInfo(m_target).path();
    do {
        constexpr quint64 Names = 2'176'782'336; // of six characters
        m_path = beside + u"/.quillon-export-"_s +
                 QString::number(QRandomGenerator::system()->generate64() % Names, 36);
    } while (stands(m_path));
}

StagedOutput::~StagedOutput()
{
    if (m_placed)
        return;
    if (QFileInfo(m_path).isDir())
        QDir(m_path).removeRecursively();
    else
        QFile::remove(m_path);
}

void StagedOutput::makeFolder() const
{
    if (!QDir().mkdir(m_path))
        cannotWrite(m_target, platform::lastSystemError());
}

void StagedOutput::makeFolder(const QString& name) const
{
    if (!QDir(m_path).mkpath(name))
        cannotWrite(m_target, platform::lastSystemError());
}

QString StagedOutput::inside(const QString& name) const
{
    return m_path + u'/' + name;
}

void StagedOutput::place()
{
    const QFileInfo info(m_path);
    if (info.isDir())
        platform::syncFolder(m_path);
    // What has come meanwhile is not replaced.
    const bool placed = info.isDir() ? !stands(m_target) && platform::renameFolder(m_path, m_target)
                                     : QFile::rename(m_path, m_target);
    if (!placed) {
        const int failure = platform::lastSystemError();
        if (stands(m_target))
            isThere(m_target);
        cannotWrite(m_target, failure);
    }
    m_placed = true;
    platform::syncFolder(QFileInfo(m_target).path());
}

} // namespace quillon::exchange
