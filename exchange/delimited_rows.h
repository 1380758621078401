#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace quillon::exchange
{

/// Splits a text that comes in pieces into rows of fields.
class DelimitedRows
{
public:
    /// `line`: the number of the row's first line; `wrong`: what is wrong with it, empty when nothing is.
    using Visit = std::function<void(const QStringList& fields, qint64 line, const QString& wrong)>;
    explicit DelimitedRows(Visit visit) : m_visit(std::move(visit)) {}

    /// The separator is told by the first line: a tab when there is one.
    void take(QStringView text);
    /// Gives the last row, which no line break needs to end.
    void end();

private:
    enum class State { FieldBegins, Plain, Quoted, QuoteInQuoted, AfterReturn };

    void takeUnit(QChar unit);
    void endField();
    void endRow();

    Visit m_visit;
    QChar m_separator;   // null: not yet known
    QString m_firstLine; // until then
    State m_state = State::FieldBegins;
    QString m_field;
    QStringList m_fields;
    QString m_wrong;
    qint64 m_line = 1;
    qint64 m_rowBegan = 1;
};

/// A field as it stands in a row.
QString delimitedField(const QString& text, QChar separator);

} // namespace quillon::exchange
