#include "store/old_format/pages.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"
#include "store/old_format/little_endian.h"
#include "store/old_format/losses.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <numeric>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::old_format
{

namespace
{

constexpr std::array<unsigned char, 19> Beginning = {0x00, 0x01, 0x00, 0x00, 0x53, 0x74, 0x61,
                                                     0x6E, 0x64, 0x61, 0x72, 0x64, 0x20, 0x4A,
                                                     0x65, 0x74, 0x20, 0x44, 0x42};
constexpr qsizetype VersionAt = 0x14;

constexpr qsizetype HiddenAt = 0x18; // what is disguised in the header, by a key that is in every program
constexpr qsizetype CodePageAt = 0x3C;
constexpr qsizetype EncryptionKeyAt = 0x3E;

constexpr char DataPage = 1;
constexpr char DefinitionPage = 2;
constexpr qsizetype OwnerAt = 4;

constexpr qint64 LargestFile = qint64{1} << 30;

bool beginsLikeOldFile(QByteArrayView bytes)
{
    return bytes.startsWith(QByteArrayView(Beginning));
}

/// The same bytes under the cipher, or out of it again.
QByteArray ciphered(QByteArrayView bytes)
{
    static constexpr std::array<unsigned char, 4> Key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<unsigned char, 256> state = {};
    std::iota(state.begin(), state.end(), static_cast<unsigned char>(0));
    unsigned int j = 0;
    for (unsigned int i = 0; i < state.size(); ++i) {
        j = (j + state[i] + Key[i % Key.size()]) % state.size();
        std::swap(state[i], state[j]);
    }
    QByteArray result(bytes.size(), Qt::Uninitialized);
    j = 0;
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        const auto i = static_cast<unsigned int>(at + 1) % state.size();
        j = (j + state[i]) % state.size();
        std::swap(state[i], state[j]);
        result[at] = static_cast<char>(byteAt(bytes, at) ^ state[(state[i] + state[j]) % state.size()]);
    }
    return result;
}

Error unreadable(const QString& why)
{
    return {errors::NotADatabase, why};
}

} // namespace

bool isOldFile(const QString& path)
{
    // A pipe would wait for ever.
    if (!platform::isOrdinaryFile(path))
        return false;
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
           beginsLikeOldFile(file.read(Beginning.size()));
}

QByteArray contentOfFile(const QString& path)
{
    QFile file(path);
    const auto tell = [&file] {
        if (file.error() == QFileDevice::ResourceError)
            return Error(errors::OutOfMemory);
        return platform::errorOfSystem(platform::lastSystemError(), errors::DatabaseNotFound);
    };
    if (!platform::isOrdinaryFile(path))
        throw platform::whyNotFound(path, errors::DatabaseNotFound);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw tell();
    const qint64 size = file.size();
    if (size > LargestFile)
        throw unreadable(
            u"以前のデータベースエンジンのファイルのうち、1 GB を超えるものは読み取れません。"_s);
    const QDateTime written = QFileInfo(path).lastModified();
    QByteArray content(size, Qt::Uninitialized);
    qint64 done = 0;
    while (done < size) {
        const qint64 count = file.read(content.data() + done, size - done);
        if (count < 0)
            throw tell();
        if (count == 0)
            break;
        done += count;
    }
    char more = 0;
    if (done != size || file.read(&more, 1) != 0 || QFileInfo(path).lastModified() != written)
        throw Error(errors::Locked,
                    u"読み取っている間にファイルが変更されました。"
                    u"ファイルを使用している他のプログラムを終了してからやり直してください。"_s);
    return content;
}

Pages::Pages(QByteArray content, Losses& losses) : m_content(std::move(content))
{
    readHeader();
    if (const qint64 rest = m_content.size() % m_pageSize; rest != 0)
        losses.add(
            {.table = {},
             .column = {},
             .text = u"ファイルの終わりが欠けています (最後の %1 バイトは読み取れません)。"_s.arg(rest)});
    sortPages();
}

void Pages::readHeader()
{
    if (!beginsLikeOldFile(m_content))
        throw unreadable(u"以前のデータベースエンジンのファイルではありません。"_s);
    if (!holds(m_content, VersionAt, 1))
        throw unreadable(
            u"ファイルの先頭しか残っていないため、読み取れません。控えのファイルを指定してください。"_s);
    const quint8 version = byteAt(m_content, VersionAt);
    if (version > 1)
        throw unreadable(
            u"以前のデータベースエンジンのファイルですが、対応していない版のものです (版の番号は %1)。"
            u"形式 3 または 4 のファイルを指定してください。"_s.arg(version));
    m_format = version == 0 ? Format::Three : Format::Four;
    m_pageSize = isFormatThree() ? 2048 : 4096;
    constexpr qint64 Fewest = 3; // the header, one page more, and the definition of the catalogue
    if (count() < Fewest)
        throw unreadable(
            u"ファイルの先頭しか残っていないため、読み取れません。控えのファイルを指定してください。"_s);
    const QByteArray header =
        ciphered(QByteArrayView(m_content).sliced(HiddenAt, isFormatThree() ? 126 : 128));
    m_codePage = numberAt<quint16>(header, CodePageAt - HiddenAt);
    if (numberAt<quint32>(header, EncryptionKeyAt - HiddenAt) != 0)
        throw unreadable(u"ファイルは暗号化されているため、読み取れません。"
                         u"作成したプログラムで暗号化を解除してからやり直してください。"_s);
}

void Pages::sortPages()
{
    for (qint64 number = 1; number < count(); ++number) {
        const QByteArrayView bytes = page(number);
        if (bytes[0] == DataPage)
            m_dataPages[numberAt<quint32>(bytes, OwnerAt)].push_back(static_cast<quint32>(number));
    }
}

QByteArrayView Pages::page(qint64 number) const
{
    if (number < 0 || number >= count())
        return {};
    return QByteArrayView(m_content).sliced(number * m_pageSize, m_pageSize);
}

QByteArrayView Pages::definitionPage(qint64 number) const
{
    const QByteArrayView bytes = page(number);
    return !bytes.isEmpty() && bytes[0] == DefinitionPage ? bytes : QByteArrayView();
}

QByteArrayView Pages::dataPage(qint64 number, quint32 owner) const
{
    const QByteArrayView bytes = page(number);
    const bool isOne = !bytes.isEmpty() && bytes[0] == DataPage && numberAt<quint32>(bytes, OwnerAt) == owner;
    return isOne ? bytes : QByteArrayView();
}

const std::vector<quint32>& Pages::dataPagesOf(quint32 owner) const
{
    static const std::vector<quint32> none;
    const auto found = m_dataPages.constFind(owner);
    return found == m_dataPages.constEnd() ? none : *found;
}

} // namespace quillon::old_format
