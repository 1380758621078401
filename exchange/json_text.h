#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

namespace quillon::exchange
{

/// Appends a text in quotation marks to JSON in UTF-8. Every text comes back to the last code unit: half characters
/// are written as escapes. Neither a line break nor the end of a script can stand in it.
void appendJsonText(QByteArray& json, QStringView text);

/// Reads JSON from its beginning, a part at a time. What is not there leaves it where it stands.
class JsonReader
{
public:
    explicit JsonReader(QByteArrayView json) : m_rest(json) {}

    /// Passes a sign or a word such as "{" or "null", with blanks before it.
    bool skip(QByteArrayView token);
    /// Reads a text in quotation marks; nothing when there is none or it is not valid.
    std::optional<QString> text();
    /// Reads a whole number that is not negative.
    std::optional<qint64> number();
    /// Whether nothing follows but blanks.
    bool atEnd();

private:
    void skipBlanks();

    QByteArrayView m_rest;
};

} // namespace quillon::exchange
