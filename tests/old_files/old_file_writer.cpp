#include "tests/old_files/old_file_writer.h"

#include "app/base/platform/code_page.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

using Use = OldFile::Use;

/// Bytes with the use of each.
class Piece
{
public:
    Piece() = default;
    Piece(qsizetype size, Use use) : m_bytes(size, '\0'), m_uses(size, use) {}
    explicit Piece(const QByteArray& bytes, Use use = OldFile::Structure)
        : m_bytes(bytes), m_uses(bytes.size(), use)
    {
    }

    qsizetype size() const { return m_bytes.size(); }
    const QByteArray& bytes() const { return m_bytes; }
    const QByteArray& uses() const { return m_uses; }
    Piece& operator+=(const Piece& other)
    {
        m_bytes += other.m_bytes;
        m_uses += other.m_uses;
        return *this;
    }
    void put(qsizetype at, const Piece& piece)
    {
        m_bytes.replace(at, piece.size(), piece.m_bytes);
        m_uses.replace(at, piece.size(), piece.m_uses);
    }
    Piece first(qsizetype count) const { return part(0, count); }
    Piece part(qsizetype at, qsizetype count) const
    {
        Piece piece;
        piece.m_bytes = m_bytes.mid(at, count);
        piece.m_uses = m_uses.mid(at, count);
        return piece;
    }

private:
    QByteArray m_bytes;
    QByteArray m_uses;
};

Piece number(quint64 value, int width, Use use = OldFile::Structure)
{
    QByteArray bytes;
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return Piece(bytes, use);
}

/// A text in code page 932, by the program's own table read backwards.
QByteArray encoded932(const QString& text)
{
    static const QHash<char16_t, QByteArray> codes = [] {
        QHash<char16_t, QByteArray> table;
        const auto note = [&table](const QByteArray& bytes) {
            const auto decoded = platform::decode932(bytes);
            if (decoded && decoded->size() == 1 && !table.contains(decoded->front().unicode()))
                table.insert(decoded->front().unicode(), bytes);
        };
        for (int first = 0; first < 0x100; ++first)
            note(QByteArray(1, static_cast<char>(first)));
        for (int first = 0x81; first < 0x100; ++first) {
            for (int second = 0x40; second < 0x100; ++second)
                note(QByteArray(1, static_cast<char>(first)) + static_cast<char>(second));
        }
        return table;
    }();
    QByteArray bytes;
    for (const QChar unit : text) {
        const auto found = codes.constFind(unit.unicode());
        if (found == codes.constEnd())
            qFatal("not in code page 932: U+%04X", unit.unicode());
        bytes += *found;
    }
    return bytes;
}

QByteArray encodedUtf16(QStringView text)
{
    if (text.isEmpty())
        return {}; // there may be no units to point at
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    if (!text.isEmpty())
        qToLittleEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

/// The compressed form, or nothing where a character of two bytes begins with the byte that ends it.
std::optional<QByteArray> compressed(const QString& text)
{
    QByteArray bytes("\xFF\xFE", 2);
    bool isNarrow = true;
    for (const QChar unit : text) {
        const bool canBeNarrow = unit.unicode() > 0 && unit.unicode() < 0x100;
        if (!canBeNarrow && unit.cell() == 0)
            return std::nullopt;
        if (canBeNarrow != isNarrow) {
            bytes += '\0';
            isNarrow = canBeNarrow;
        }
        if (isNarrow)
            bytes += static_cast<char>(unit.unicode());
        else
            bytes += encodedUtf16(QStringView(&unit, 1));
    }
    return bytes;
}

QByteArray underCipher(QByteArray bytes)
{
    const QByteArray key = QByteArray::fromHex("C7DA396B");
    std::array<int, 256> state = {};
    std::iota(state.begin(), state.end(), 0);
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + state.at(static_cast<std::size_t>(i)) + static_cast<unsigned char>(key[i % 4])) % 256;
        std::swap(state.at(static_cast<std::size_t>(i)), state.at(static_cast<std::size_t>(j)));
    }
    int i = 0;
    int j = 0;
    for (char& byte : bytes) {
        i = (i + 1) % 256;
        int& a = state.at(static_cast<std::size_t>(i));
        j = (j + a) % 256;
        int& b = state.at(static_cast<std::size_t>(j));
        std::swap(a, b);
        byte = static_cast<char>(byte ^ state.at(static_cast<std::size_t>((a + b) % 256)));
    }
    return bytes;
}

/// A column as a definition describes it.
struct StoredColumn {
    QString name;
    int type = 10;
    bool isFixed = false;
    int fixedOffset = 0;
    int size = 0;
};

class Writer
{
public:
    explicit Writer(const OldFileForm& form) : m_form(form)
    {
        m_pages.push_back(header());
        m_pages.push_back(emptyDataPage(0));
        m_pages.emplace_back(pageSize(), OldFile::Free); // the definition of the catalogue comes in the end
    }

    void write(const OldTable& table)
    {
        std::vector<StoredColumn> columns;
        for (const OldTable::Column& column : table.columns)
            columns.push_back({.name = column.name,
                               .type = column.width == 0 ? 12 : 10,
                               .size = isThree() ? column.width : 2 * column.width});
        const auto definitionPage = static_cast<quint32>(m_pages.size());
        m_pages.push_back(definition(columns, static_cast<int>(table.rows.size()) + m_form.rowCountError));
        std::vector<Piece> rows;
        for (const OldTable::Row& row : table.rows) {
            std::vector<std::optional<Piece>> fields;
            for (std::size_t i = 0; i < row.size(); ++i)
                fields.push_back(field(row[i], table.columns[i].width == 0));
            rows.push_back(storedRow({}, fields));
        }
        writeRows(definitionPage, rows);
        finishLongTexts();
        m_catalogue.push_back(catalogueRow(table.name, definitionPage, 1, 0));
    }

    OldFile finish()
    {
        const std::vector<StoredColumn> columns = {
            {.name = u"Id"_s, .type = 4, .isFixed = true, .fixedOffset = 0, .size = 4},
            {.name = u"ParentId"_s, .type = 4, .isFixed = true, .fixedOffset = 4, .size = 4},
            {.name = u"Name"_s, .type = 10, .size = 255},
            {.name = u"Type"_s, .type = 3, .isFixed = true, .fixedOffset = 8, .size = 2},
            {.name = u"Flags"_s, .type = 4, .isFixed = true, .fixedOffset = 10, .size = 4}};
        // What is no table, and what is none of the user's.
        m_catalogue.push_back(catalogueRow(u"Tables"_s, 1, 3, 0));
        m_catalogue.push_back(catalogueRow(u"System"_s, 2, 1, 0x8000'0000));
        m_pages[2] = definition(columns, static_cast<int>(m_catalogue.size()));
        const bool moves = std::exchange(m_form.hasMovedRows, false);
        writeRows(2, m_catalogue);
        m_form.hasMovedRows = moves;
        OldFile file;
        for (const Piece& page : m_pages) {
            file.bytes += page.bytes();
            file.uses += page.uses();
        }
        return file;
    }

private:
    bool isThree() const { return m_form.format == 3; }
    qsizetype pageSize() const { return isThree() ? 2048 : 4096; }
    int widthOfCount() const { return isThree() ? 1 : 2; }

    Piece header() const
    {
        Piece page(pageSize(), OldFile::Free);
        page.put(0, Piece(QByteArray::fromHex("000100005374616E64617264204A6574204442")));
        page.put(0x14, number(isThree() ? 0 : 1, 1));
        Piece hidden(isThree() ? 126 : 128, OldFile::Free);
        hidden.put(0x3C - 0x18, number(static_cast<quint64>(m_form.codePage), 2));
        hidden.put(0x3E - 0x18, number(m_form.encryptionKey, 4));
        for (qsizetype i = 0; i < hidden.size(); ++i)
            page.put(0x18 + i,
                     Piece(underCipher(hidden.bytes()).mid(i, 1), static_cast<Use>(hidden.uses()[i])));
        return page;
    }

    Piece emptyDataPage(quint32 owner) const
    {
        Piece page(pageSize(), OldFile::Free);
        page.put(0, number(1, 1));
        page.put(4, number(owner, 4));
        page.put(isThree() ? 8 : 12, number(0, 2));
        return page;
    }

    QByteArray encoded(const QString& text) const
    {
        if (isThree())
            return encoded932(text);
        if (m_form.isCompressed) {
            if (const auto bytes = compressed(text))
                return *bytes;
        }
        return encodedUtf16(text);
    }

    Piece definition(const std::vector<StoredColumn>& columns, int rowCount) const
    {
        Piece page(pageSize(), OldFile::Free);
        page.put(0, number(2, 1));
        page.put(4, number(0, 4));
        page.put(isThree() ? 12 : 16, number(static_cast<quint64>(rowCount), 4));
        page.put(isThree() ? 25 : 45, number(columns.size(), 2));
        constexpr int Indexes = 1; // what it says of them is passed over
        page.put(isThree() ? 31 : 51, number(Indexes, 4));
        qsizetype at = isThree() ? 43 + 8 * Indexes : 63 + 12 * Indexes;
        quint64 position = 0;
        quint64 variable = 0;
        for (const StoredColumn& column : columns) {
            page.put(at, number(static_cast<quint64>(column.type), 1));
            page.put(at + (isThree() ? 1 : 5), number(position++, 2));
            page.put(at + (isThree() ? 3 : 7), number(variable, 2));
            page.put(at + (isThree() ? 13 : 15), number(column.isFixed ? 19 : 18, 1));
            page.put(at + (isThree() ? 14 : 21), number(static_cast<quint64>(column.fixedOffset), 2));
            page.put(at + (isThree() ? 16 : 23), number(static_cast<quint64>(column.size), 2));
            at += isThree() ? 18 : 25;
            variable += column.isFixed ? 0 : 1;
        }
        for (const StoredColumn& column : columns) {
            const QByteArray name = isThree() ? encoded932(column.name) : encodedUtf16(column.name);
            page.put(at, number(static_cast<quint64>(name.size()), widthOfCount()));
            page.put(at + widthOfCount(), Piece(name));
            at += widthOfCount() + name.size();
        }
        if (at > pageSize())
            qFatal("a definition of one page has no room for these columns");
        return page;
    }

    Piece catalogueRow(const QString& name, quint32 page, int type, quint32 flags) const
    {
        Piece fixed = number(page, 4);
        fixed += number(0, 4, OldFile::Free);
        fixed += number(static_cast<quint64>(type), 2);
        fixed += number(flags, 4);
        // The names of tables are structure: under another one a table is not found.
        const QByteArray bytes = isThree() ? encoded932(name) : encodedUtf16(name);
        return storedRow(fixed, {Piece(bytes)}, 5);
    }

    /// `columns`: how many there are with those of fixed length, whose bytes are `fixed`.
    Piece storedRow(const Piece& fixed, const std::vector<std::optional<Piece>>& fields,
                    std::size_t columns = 0) const
    {
        const bool allVary = columns == 0;
        columns = allVary ? fields.size() : columns;
        Piece row = number(columns, widthOfCount());
        row += fixed;
        std::vector<qsizetype> offsets;
        QByteArray nulls(static_cast<qsizetype>(columns + 7) / 8, '\0');
        for (std::size_t i = 0; i < columns; ++i) {
            if (!allVary || fields[i])
                nulls[static_cast<qsizetype>(i / 8)] =
                    static_cast<char>(nulls[static_cast<qsizetype>(i / 8)] | 1 << i % 8);
        }
        for (const std::optional<Piece>& field : fields) {
            offsets.push_back(row.size());
            row += field.value_or(Piece());
        }
        offsets.push_back(row.size());
        const auto count = static_cast<qsizetype>(offsets.size());
        // In format 3 the length decides how long the table of jumps is, which is a part of it.
        qsizetype jumps = 0;
        const auto length = [&] {
            return row.size() + count * widthOfCount() + jumps + widthOfCount() + nulls.size();
        };
        while (isThree() && (length() - 1) / 256 > jumps)
            ++jumps;
        for (qsizetype i = count - 1; i >= 0; --i) {
            const bool isBetween = i > 0 && i < count - 1;
            row += number(static_cast<quint64>(offsets[static_cast<std::size_t>(i)]), widthOfCount(),
                          isBetween ? OldFile::Boundary : OldFile::Structure);
        }
        for (qsizetype jump = jumps - 1; jump >= 0; --jump) {
            const auto first = std::find_if(offsets.begin(), offsets.end(),
                                            [&](qsizetype offset) { return offset >= 256 * (jump + 1); });
            row += number(first == offsets.end() ? 0xFF : static_cast<quint64>(first - offsets.begin()), 1,
                          OldFile::Boundary);
        }
        row += number(static_cast<quint64>(count - 1), widthOfCount());
        row += Piece(nulls, allVary ? OldFile::Boundary : OldFile::Structure);
        return row;
    }

    std::optional<Piece> field(const std::optional<QString>& text, bool isLong)
    {
        if (!text)
            return std::nullopt;
        Piece bytes(encoded(*text), OldFile::Text);
        if (!isLong)
            return bytes;
        constexpr qsizetype MostInline = 64;
        const auto length = static_cast<quint64>(bytes.size());
        if (bytes.size() <= MostInline) {
            Piece field = number(length | 0x8000'0000, 4);
            field += number(0, 8, OldFile::Free);
            field += bytes;
            return field;
        }
        const qsizetype room = isThree() ? 2032 : 4072;
        const bool isOneRow = bytes.size() <= room;
        quint32 next = 0;
        if (isOneRow) {
            next = addLongTextRow(bytes);
        } else {
            // From the end, so that each part knows where the next one lies.
            for (qsizetype at = (bytes.size() - 1) / room * room; at >= 0; at -= room) {
                Piece part = number(next, 4);
                part += bytes.part(at, std::min(room, bytes.size() - at));
                next = addLongTextRow(part);
            }
        }
        Piece field = number(length | (isOneRow ? 0x4000'0000U : 0U), 4);
        field += number(next, 4);
        field += number(0, 4, OldFile::Free);
        return field;
    }

    quint32 addLongTextRow(const Piece& row)
    {
        const bool fits = m_longTexts && m_longTexts->used + row.size() + 2 <= roomOfPage() &&
                          m_longTexts->rows.size() < 255;
        if (!fits) {
            finishLongTexts();
            m_longTexts = RowsOfPage{.page = m_pages.size(), .rows = {}, .used = 0};
            m_pages.emplace_back(pageSize(), OldFile::Free);
        }
        m_longTexts->rows.push_back({.bytes = row, .flags = 0});
        m_longTexts->used += row.size() + 2;
        return static_cast<quint32>(m_longTexts->page << 8 | (m_longTexts->rows.size() - 1));
    }

    void finishLongTexts()
    {
        if (m_longTexts)
            m_pages[m_longTexts->page] = dataPage(0x4C41'564C, m_longTexts->rows);
        m_longTexts.reset();
    }

    struct RowOfPage {
        Piece bytes;
        quint64 flags;
    };
    struct RowsOfPage {
        std::size_t page;
        std::vector<RowOfPage> rows;
        qsizetype used;
    };

    qsizetype roomOfPage() const { return pageSize() - (isThree() ? 10 : 14); }

    Piece dataPage(quint32 owner, const std::vector<RowOfPage>& rows) const
    {
        Piece page = emptyDataPage(owner);
        const qsizetype offsetsAt = isThree() ? 10 : 14;
        page.put(offsetsAt - 2, number(rows.size(), 2));
        qsizetype end = page.size();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            end -= rows[i].bytes.size();
            page.put(end, rows[i].bytes);
            page.put(offsetsAt + 2 * static_cast<qsizetype>(i),
                     number(static_cast<quint64>(end) | rows[i].flags, 2));
        }
        return page;
    }

    void writeRows(quint32 owner, const std::vector<Piece>& rows)
    {
        std::vector<RowOfPage> page;
        std::vector<RowOfPage>
            moved; // on a page behind, whose number is known when the page before it is full
        qsizetype used = 0;
        qsizetype usedByMoved = 0;
        const auto flush = [&] {
            if (!page.empty())
                m_pages.push_back(dataPage(owner, page));
            if (!moved.empty())
                m_pages.push_back(dataPage(owner, moved));
            page.clear();
            moved.clear();
            used = usedByMoved = 0;
        };
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const qsizetype size = rows[i].size() + 2;
            constexpr qsizetype MostOfMoving = 64; // the pointer, and a deleted row
            if (used + size + MostOfMoving > roomOfPage() || usedByMoved + size > roomOfPage() ||
                page.size() > 200)
                flush();
            if (m_form.hasMovedRows && i % 5 == 1) {
                page.push_back({.bytes = Piece("a row that is deleted", OldFile::Free), .flags = 0x8000});
                used += page.back().bytes.size() + 2;
            }
            if (m_form.hasMovedRows && i % 3 == 2) {
                const quint64 pointer = (m_pages.size() + 1) << 8 | moved.size();
                page.push_back({.bytes = number(pointer, 4), .flags = 0x4000});
                moved.push_back({.bytes = rows[i], .flags = 0x8000});
                used += 4 + 2;
                usedByMoved += size;
                continue;
            }
            page.push_back({.bytes = rows[i], .flags = 0});
            used += size;
        }
        flush();
    }

    OldFileForm m_form;
    std::vector<Piece> m_pages;
    std::vector<Piece> m_catalogue;
    std::optional<RowsOfPage> m_longTexts;
};

} // namespace

std::vector<OldTable> oldTables(int count)
{
    const std::vector<OldTable> tables = {
        {u"Main"_s, {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 255}}, {}},
        {u"RefDoc"_s, {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 0}}, {}},
        {u"RefFile"_s, {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 255}}, {}},
        {u"OpenApp"_s, {{u"AppName"_s, 50}, {u"Path"_s, 255}}, {}},
        {u"Link"_s, {{u"Link_Object_ID"_s, 12}, {u"Object_ID"_s, 12}}, {}},
        {u"Category_ID"_s, {{u"Category_ID"_s, 50}, {u"Name"_s, 50}}, {}},
        {u"Category"_s, {{u"Category_ID"_s, 50}, {u"Object_ID"_s, 50}}, {}}};
    return {tables.begin(), tables.begin() + count};
}

OldFile writeOldFile(const std::vector<OldTable>& tables, const OldFileForm& form)
{
    Writer writer(form);
    for (const OldTable& table : tables)
        writer.write(table);
    return writer.finish();
}

} // namespace quillon::testing
