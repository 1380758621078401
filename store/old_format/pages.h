#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <vector>

namespace quillon::old_format
{

class Losses;

/// Whether the file at `path` begins like one of the older engine's, of whatever version; false also when it cannot be
/// read.
bool isOldFile(const QString& path);

/// The content of such a file in memory. The file is only read.
/// Errors: those of reading; 3343 when it is larger than is taken, or when it changes while it is read.
QByteArray contentOfFile(const QString& path);

/// A file as pages of its format.
class Pages
{
public:
    enum class Format {
        Three, // pages of 2 KiB, texts in code page 932
        Four   // pages of 4 KiB, texts in UTF-16
    };

    /// Error 3343, with a description that says why, when the header is not that of a file that can be read.
    Pages(QByteArray content, Losses& losses);

    Format format() const { return m_format; }
    bool isFormatThree() const { return m_format == Format::Three; }
    qsizetype size() const { return m_pageSize; }
    qint64 count() const { return m_content.size() / m_pageSize; }
    /// The code page that the header names.
    int codePage() const { return m_codePage; }

    /// The page of this number, or nothing where the file has none.
    QByteArrayView page(qint64 number) const;
    /// The same when it is of this kind.
    QByteArrayView definitionPage(qint64 number) const;
    QByteArrayView dataPage(qint64 number, quint32 owner) const;
    /// The pages with the rows of a table, by the number of its definition page, in the order of the file.
    const std::vector<quint32>& dataPagesOf(quint32 owner) const;

    /// The owner of pages that hold long texts.
    static constexpr quint32 LongTexts = 0x4C41'564C;

private:
    void readHeader();
    void sortPages();

    QByteArray m_content;
    Format m_format = Format::Three;
    qsizetype m_pageSize = 0;
    int m_codePage = 0;
    QHash<quint32, std::vector<quint32>> m_dataPages;
};

} // namespace quillon::old_format
