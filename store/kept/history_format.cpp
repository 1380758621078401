#include "store/kept/history_format.h"

#include <QSysInfo>

#include <array>
#include <cstring>
#include <type_traits>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers and texts lie in the files as they do in memory");

using Type = sqlite::StoredValue::Type;

/// Eight bytes at a time, and four of these beside each other, which the processor does at once: it has to be cheap, and
/// only to tell what is torn or decayed.
quint64 wordwiseSum(QByteArrayView bytes, quint64 sum)
{
    constexpr quint64 Prime = 0x9E3779B97F4A7C15;
    constexpr qsizetype WordSize = sizeof(quint64);
    constexpr qsizetype Lanes = 4;
    const auto mix = [](quint64 before, quint64 word) {
        const quint64 product = (before ^ word) * Prime;
        return product ^ (product >> 29U);
    };
    std::array<quint64, Lanes> lanes{sum, ~sum, sum + Prime, sum - Prime};
    qsizetype position = 0;
    for (; position + Lanes * WordSize <= bytes.size(); position += Lanes * WordSize) {
        std::array<quint64, Lanes> words{};
        std::memcpy(words.data(), bytes.data() + position, sizeof words);
        for (std::size_t lane = 0; lane < words.size(); ++lane)
            lanes.at(lane) = mix(lanes.at(lane), words.at(lane));
    }
    std::array<quint64, Lanes> last{};
    std::memcpy(last.data(), bytes.data() + position, static_cast<std::size_t>(bytes.size() - position));
    quint64 total = mix(sum, static_cast<quint64>(bytes.size()));
    for (std::size_t lane = 0; lane < last.size(); ++lane)
        total = mix(total, mix(lanes.at(lane), last.at(lane)));
    return total;
}

quint32 recordSum(QByteArrayView payload)
{
    const quint64 sum = wordwiseSum(payload, 0);
    return static_cast<quint32>(sum ^ (sum >> 32U));
}

template <class Number> void appendRaw(QByteArray& bytes, Number number)
{
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

QByteArrayView bytesOf(QStringView text)
{
    return {reinterpret_cast<const char*>(text.utf16()), text.size() * qsizetype{sizeof(char16_t)}};
}

} // namespace

std::optional<quint16> tableNumber(const char* name)
{
    static const std::vector<QByteArray> names = [] {
        std::vector<QByteArray> all;
        for (const TableSchema* table : schema::all())
            all.push_back(table->name.toUtf8());
        return all;
    }();
    for (std::size_t number = 0; number < names.size(); ++number) {
        // SQLite knows names of tables in any case.
        if (qstricmp(names[number].constData(), name) == 0)
            return static_cast<quint16>(number);
    }
    return std::nullopt;
}

void appendNumber(QByteArray& bytes, quint16 number)
{
    appendRaw(bytes, number);
}

void appendNumber(QByteArray& bytes, quint32 number)
{
    appendRaw(bytes, number);
}

void appendNumber(QByteArray& bytes, qint64 number)
{
    appendRaw(bytes, number);
}

void appendBytes(QByteArray& bytes, QByteArrayView content)
{
    appendNumber(bytes, static_cast<quint32>(content.size()));
    bytes.append(content.data(), content.size());
    if (content.size() % 2 != 0)
        bytes.append('\0');
}

void appendText(QByteArray& bytes, QStringView text)
{
    appendBytes(bytes, bytesOf(text));
}

void appendChange(QByteArray& bytes, const sqlite::OldRow& row, quint16 table)
{
    // Each field with as few calls as possible: this is what a deletion of many waits for.
    struct Head {
        quint16 fate = 0;
        quint16 table = 0;
        qint64 row = 0;
        quint16 fields = 0;
    };
    constexpr std::size_t HeadBytes = 3 * sizeof(quint16) + sizeof(qint64);
    const int fields = row.fieldCount();
    const Head head{.fate = static_cast<quint16>(row.isDeleted() ? RowFate::Deleted : RowFate::Changed),
                    .table = table,
                    .row = row.row(),
                    .fields = static_cast<quint16>(fields)};
    std::array<char, HeadBytes> raw{};
    char* out = raw.data();
    const auto put = [&out](const auto& number) {
        std::memcpy(out, &number, sizeof number);
        out += sizeof number;
    };
    put(head.fate);
    put(head.table);
    put(head.row);
    put(head.fields);
    bytes.append(raw.data(), HeadBytes);
    for (int i = 0; i < fields; ++i) {
        const sqlite::StoredValue value = row.field(i);
        QByteArrayView content = value.bytes;
        if (value.type == Type::Text)
            content = bytesOf(value.text);
        else if (value.type == Type::Number)
            content = {reinterpret_cast<const char*>(&value.number), sizeof value.number};
        else if (value.type == Type::Real)
            content = {reinterpret_cast<const char*>(&value.real), sizeof value.real};
        out = raw.data();
        put(static_cast<quint16>(value.type));
        put(static_cast<quint32>(content.size()));
        bytes.append(raw.data(), out - raw.data());
        bytes.append(content.data(), content.size());
        if (content.size() % 2 != 0)
            bytes.append('\0');
    }
}

quint64 checksum(QByteArrayView bytes, quint64 sum)
{
    return wordwiseSum(bytes, sum);
}

QByteArray record(QByteArrayView payload)
{
    QByteArray bytes;
    bytes.reserve(RecordHead::Size + payload.size());
    appendNumber(bytes, static_cast<quint32>(payload.size()));
    appendNumber(bytes, recordSum(payload));
    bytes.append(payload.data(), payload.size());
    return bytes;
}

std::optional<RecordHead> readRecordHead(QByteArrayView bytes)
{
    if (bytes.size() != RecordHead::Size)
        return std::nullopt;
    PayloadReader numbers(bytes);
    const qsizetype size = numbers.number32();
    const quint32 sum = numbers.number32();
    if (size % 2 != 0)
        return std::nullopt;
    return RecordHead{.payloadSize = size, .sum = sum};
}

bool isWhole(const RecordHead& head, QByteArrayView payload)
{
    return payload.size() == head.payloadSize && recordSum(payload) == head.sum;
}

template <class Number> Number PayloadReader::number()
{
    Number number = 0;
    if (m_payload.size() - m_position < qsizetype{sizeof number}) {
        m_hasFailed = true;
        m_position = m_payload.size();
        return 0;
    }
    std::memcpy(&number, m_payload.data() + m_position, sizeof number);
    m_position += qsizetype{sizeof number};
    return number;
}

QByteArrayView PayloadReader::bytes()
{
    const qsizetype size = number<quint32>();
    const qsizetype taken = size + size % 2;
    if (taken > m_payload.size() - m_position) {
        m_hasFailed = true;
        m_position = m_payload.size();
        return {};
    }
    const QByteArrayView found = m_payload.sliced(m_position, size);
    m_position += taken;
    return found;
}

QStringView PayloadReader::text()
{
    const QByteArrayView units = bytes();
    return {reinterpret_cast<const char16_t*>(units.data()), units.size() / qsizetype{sizeof(char16_t)}};
}

template quint16 PayloadReader::number<quint16>();
template quint32 PayloadReader::number<quint32>();
template qint64 PayloadReader::number<qint64>();

QString StoredRow::text(int index) const
{
    if (index < 0 || index >= static_cast<int>(fields.size()))
        return {};
    const sqlite::StoredValue& value = fields[static_cast<std::size_t>(index)];
    switch (value.type) {
    case Type::Null:
        return {};
    case Type::Text:
        return value.text.toString();
    case Type::Number:
        return QString::number(value.number);
    case Type::Real:
        return QString::number(value.real, 'g', 15);
    case Type::Bytes:
        return QString::fromUtf8(value.bytes);
    }
    return {};
}

bool StoredRow::isNull(int index) const
{
    return index < 0 || index >= static_cast<int>(fields.size()) ||
           fields[static_cast<std::size_t>(index)].type == Type::Null;
}

std::optional<StoredRow> readChange(PayloadReader& payload)
{
    const quint16 fate = payload.number16();
    const quint16 table = payload.number16();
    const auto tables = schema::all();
    StoredRow row;
    row.row = payload.number64();
    const quint16 count = payload.number16();
    if (payload.hasFailed() || table >= tables.size() ||
        (fate != static_cast<quint16>(RowFate::Changed) && fate != static_cast<quint16>(RowFate::Deleted)))
        return std::nullopt;
    row.fate = static_cast<RowFate>(fate);
    row.table = tables.at(table);
    for (quint16 i = 0; i < count; ++i) {
        sqlite::StoredValue value;
        const quint16 type = payload.number16();
        const QByteArrayView bytes = payload.bytes();
        if (payload.hasFailed() || type > static_cast<quint16>(Type::Bytes))
            return std::nullopt;
        value.type = static_cast<Type>(type);
        if (value.type == Type::Text) {
            value.text = {reinterpret_cast<const char16_t*>(bytes.data()),
                          bytes.size() / qsizetype{sizeof(char16_t)}};
        } else if (value.type == Type::Bytes) {
            value.bytes = bytes;
        } else if (value.type != Type::Null) {
            if (bytes.size() != qsizetype{sizeof(qint64)})
                return std::nullopt;
            std::memcpy(value.type == Type::Number ? static_cast<void*>(&value.number) : &value.real,
                        bytes.data(), sizeof(qint64));
        }
        row.fields.push_back(value);
    }
    return row;
}

std::optional<PassedRow> passChange(PayloadReader& payload)
{
    const QByteArrayView from = payload.rest();
    PassedRow row;
    const quint16 fate = payload.number16();
    row.table = payload.number16();
    payload.number64();
    const quint16 count = payload.number16();
    if (payload.hasFailed() || row.table >= schema::all().size() ||
        (fate != static_cast<quint16>(RowFate::Changed) && fate != static_cast<quint16>(RowFate::Deleted)))
        return std::nullopt;
    row.fate = static_cast<RowFate>(fate);
    for (quint16 i = 0; i < count; ++i) {
        payload.number16();
        const QByteArrayView bytes = payload.bytes();
        if (i == 0)
            row.first = bytes;
        else if (i == 1)
            row.second = bytes;
    }
    if (payload.hasFailed())
        return std::nullopt;
    row.all = from.first(from.size() - payload.rest().size());
    return row;
}

} // namespace quillon::kept
