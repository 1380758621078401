#include "exchange/archive_format.h"

#include "app/base/platform/files.h"
#include "exchange/json_text.h"
#include "exchange/refused.h"
#include "store/schema.h"

#include <QCryptographicHash>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange::archive
{

namespace
{

constexpr const char* Format = "quillon-archive";
constexpr qint64 Version = 1;
constexpr qsizetype DigitsOfHash = 64;

// The manifest ends in its own hash, over everything before this.
constexpr QByteArrayView BeforeOwnHash = "\"sha256\":";

void appendMembers(QByteArray& json, qint64 bytes, const QByteArray& sha256)
{
    json += ",\"bytes\":" + QByteArray::number(bytes) + ",\"sha256\":\"" + sha256 + "\"}";
}

/// The hash of a member that is one.
std::optional<QByteArray> hashIn(JsonReader& json)
{
    const std::optional<QString> text = json.text();
    if (!text || text->size() != DigitsOfHash)
        return std::nullopt;
    return text->toLatin1();
}

bool skipAll(JsonReader& json, std::initializer_list<QByteArrayView> tokens)
{
    return std::all_of(tokens.begin(), tokens.end(), [&](QByteArrayView token) { return json.skip(token); });
}

bool readMembers(JsonReader& json, qint64& bytes, QByteArray& sha256)
{
    if (!skipAll(json, {",", "\"bytes\"", ":"}))
        return false;
    const auto number = json.number();
    if (!number || !skipAll(json, {",", "\"sha256\"", ":"}))
        return false;
    const auto hash = hashIn(json);
    if (!hash || !json.skip("}"))
        return false;
    bytes = *number;
    sha256 = *hash;
    return true;
}

bool readTable(JsonReader& json, Table& table)
{
    if (!skipAll(json, {"{", "\"name\"", ":"}) || json.text() != table.schema->name ||
        !skipAll(json, {",", "\"rows\"", ":"}))
        return false;
    const auto rows = json.number();
    table.rows = rows.value_or(0);
    return rows && readMembers(json, table.bytes, table.sha256);
}

bool readFile(JsonReader& json, File& file)
{
    if (!skipAll(json, {"{", "\"name\"", ":"}))
        return false;
    const auto name = json.text();
    // A name that led out of the folder would have files written anywhere.
    if (!name || !platform::isBareName(*name))
        return false;
    file.name = *name;
    return readMembers(json, file.bytes, file.sha256);
}

bool readList(JsonReader& json, Manifest& manifest)
{
    if (!skipAll(json, {",", "\"tables\"", ":", "["}))
        return false;
    for (const TableSchema* const schema : schema::all()) {
        if (!manifest.tables.empty() && !json.skip(","))
            return false;
        if (!readTable(json, manifest.tables.emplace_back(Table{.schema = schema, .sha256 = {}})))
            return false;
    }
    if (!skipAll(json, {"]", ",", "\"files\"", ":", "["}))
        return false;
    while (!json.skip("]")) {
        if (!manifest.files.empty() && !json.skip(","))
            return false;
        if (!readFile(json, manifest.files.emplace_back()))
            return false;
    }
    return true;
}

QByteArray hashOf(QByteArrayView bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(bytes);
    return hash.result().toHex();
}

} // namespace

QString fileOf(const TableSchema& table)
{
    return TablesFolder + u'/' + table.name + u".jsonl"_s;
}

QByteArray manifestText(const Manifest& manifest)
{
    QByteArray json = "{\"format\":\"" + QByteArray(Format) +
                      "\",\"version\":" + QByteArray::number(Version) + ",\n\"tables\":[";
    for (const Table& table : manifest.tables) {
        json += &table == manifest.tables.data() ? "\n{\"name\":" : ",\n{\"name\":";
        appendJsonText(json, table.schema->name);
        json += ",\"rows\":" + QByteArray::number(table.rows);
        appendMembers(json, table.bytes, table.sha256);
    }
    json += "],\n\"files\":[";
    for (const File& file : manifest.files) {
        json += &file == manifest.files.data() ? "\n{\"name\":" : ",\n{\"name\":";
        appendJsonText(json, file.name);
        appendMembers(json, file.bytes, file.sha256);
    }
    json += "],\n";
    const QByteArray hash = hashOf(json);
    return json + BeforeOwnHash.toByteArray() + '"' + hash + "\"}\n";
}

Manifest readManifest(QByteArrayView text)
{
    JsonReader json(text);
    if (!skipAll(json, {"{", "\"format\"", ":"}) || json.text() != QString::fromLatin1(Format))
        throw Refused(u"Quillon の書庫ではありません。"_s);
    const bool hasVersion = skipAll(json, {",", "\"version\"", ":"});
    const auto version = hasVersion ? json.number() : std::nullopt;
    if (version && *version > Version)
        throw Refused(u"新しい版の Quillon が作成した書庫のため読み取れません。"_s);
    Manifest manifest;
    const qsizetype own = text.lastIndexOf(BeforeOwnHash);
    if (version && readList(json, manifest) && skipAll(json, {",", BeforeOwnHash})) {
        const auto hash = hashIn(json);
        if (hash && json.skip("}") && json.atEnd() && *hash == hashOf(text.first(own)))
            return manifest;
    }
    throw Refused(u"書庫が壊れています。目録 (manifest.json) を読み取れません。"_s);
}

void appendRow(QByteArray& lines, const TableSchema& table, const StoredRow& row)
{
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
        lines += i == 0 ? '{' : ',';
        appendJsonText(lines, table.fields[i].name);
        lines += ':';
        if (row[i])
            appendJsonText(lines, *row[i]);
        else
            lines += "null";
    }
    lines += "}\n";
}

std::optional<StoredRow> readRow(QByteArrayView line, const TableSchema& table)
{
    JsonReader json(line);
    StoredRow row;
    for (const FieldSchema& field : table.fields) {
        if (!json.skip(row.empty() ? "{" : ",") || json.text() != field.name || !json.skip(":"))
            return std::nullopt;
        if (json.skip("null")) {
            row.emplace_back(std::nullopt);
            continue;
        }
        auto text = json.text();
        if (!text)
            return std::nullopt;
        row.push_back(std::move(text));
    }
    if (!json.skip("}") || !json.atEnd())
        return std::nullopt;
    return row;
}

} // namespace quillon::exchange::archive
