// What comes in from others: notes, tables, lines and manifests of archives, texts in any encoding.
// The first byte says what the rest is.
#include "exchange/archive_format.h"
#include "exchange/delimited_rows.h"
#include "exchange/markdown_note.h"
#include "exchange/readable_text.h"
#include "exchange/refused.h"
#include "store/schema.h"
#include "tests/fuzz/fuzz.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

namespace
{

void takeNote(const QString& text)
{
    const MarkdownNote note = readMarkdown(text);
    require(note.text.size() <= text.size() + 1, "no text grows out of nothing");
    const MarkdownNote ours{.isOurs = true,
                            .title = text.left(20),
                            .identifier = u"R-991231-001"_s,
                            .kind = u"文献"_s,
                            .text = text,
                            .tags = {u"自然/地形"_s},
                            .links = {u"川"_s}};
    const MarkdownNote again = readMarkdown(markdownOf(ours));
    require(again.isOurs && again.title == ours.title && again.text == ours.text && again.tags == ours.tags &&
                again.links == ours.links && again.unknown.isEmpty(),
            "a note of ours comes back as it was");
}

std::vector<QStringList> rowsOf(const QString& text, qsizetype pieces)
{
    std::vector<QStringList> all;
    DelimitedRows rows([&](const QStringList& fields, qint64 line, const QString& wrong) {
        require(line >= 1 && line <= text.size() + 1, "a line is one of the text");
        require(!fields.isEmpty(), "a row has fields");
        all.push_back(fields + QStringList(wrong));
    });
    for (qsizetype i = 0; i < text.size(); i += pieces)
        rows.take(QStringView(text).sliced(i, std::min(pieces, text.size() - i)));
    rows.end();
    return all;
}

void takeTable(const QString& text)
{
    const auto whole = rowsOf(text, std::max(qsizetype(1), text.size()));
    require(whole == rowsOf(text, 1), "it does not matter how a text is cut");
    QString row = u"x"_s;
    const QStringList fields = text.split(u'|');
    for (const QString& field : fields)
        row += u',' + delimitedField(field, u',');
    // A tab in the first line is the separator.
    if (!row.section(u'\n', 0, 0).section(u'\r', 0, 0).contains(u'\t'))
        require(rowsOf(row, 7) ==
                    std::vector<QStringList>{QStringList(u"x"_s) + fields + QStringList(QString())},
                "a row comes back as it was");
}

void takeArchive(QByteArrayView bytes)
{
    if (const auto row = archive::readRow(bytes, schema::Main())) {
        QByteArray line;
        archive::appendRow(line, schema::Main(), *row);
        require(archive::readRow(QByteArrayView(line).chopped(1), schema::Main()) == row,
                "a line comes back as it was");
    }
    try {
        const archive::Manifest manifest = archive::readManifest(bytes);
        const QByteArray text = archive::manifestText(manifest);
        require(archive::manifestText(archive::readManifest(text)) == text,
                "a manifest comes back as it was");
    } catch (const Refused& refused) {
        require(!refused.description.isEmpty(), "a refusal says why");
    }
}

void takeBytes(QByteArrayView bytes)
{
    const ReadableText look = lookAtText([&](const auto& take) {
        for (qsizetype begin = 0; begin < bytes.size();) {
            const qsizetype feed = bytes.indexOf('\n', begin);
            const qsizetype end = feed < 0 ? bytes.size() : feed + 1;
            if (!take(bytes.sliced(begin, end - begin)))
                return;
            begin = end;
        }
    });
    require(look.encoding != TextEncoding::NoneOfThese || look.badLine, "what cannot be read has its place");
    require(!look.badLine || (*look.badLine >= 1 && *look.badLine <= bytes.size()),
            "a line is one of the text");
    if (look.encoding == TextEncoding::Utf8 && !look.badLine) {
        const QByteArrayView unmarked = bytes.sliced(markLength(bytes, look.encoding));
        require(decodeText(unmarked, look.encoding).toUtf8() == unmarked, "nothing is lost");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    switch (data[0] % 4) {
    case 0:
        takeNote(QString::fromUtf8(bytes));
        break;
    case 1:
        takeTable(QString::fromUtf8(bytes));
        break;
    case 2:
        takeArchive(bytes);
        break;
    default:
        takeBytes(bytes);
        break;
    }
    return 0;
}
