#pragma once

#include "store/old_format/page_rows.h"
#include "store/old_format/pages.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QSet>

namespace quillon::old_format
{

/// Long texts, which lie outside their rows when they are longer than a few words.
class LongTexts
{
public:
    explicit LongTexts(const Pages& pages) : m_pages(pages) {}

    struct Found {
        QByteArray bytes;
        bool isWhole = true; // else this is as much of the text as could be reached
    };
    /// The bytes of the text that a field leads to.
    Found follow(QByteArrayView field);

private:
    /// The bytes of a part; nothing where there is none, or where another text has it.
    std::optional<QByteArrayView> part(RowPointer pointer);

    const Pages& m_pages;
    QSet<quint32>
        m_taken; // parts that a text consists of already: none belongs to two, and no chain comes back
};

} // namespace quillon::old_format
