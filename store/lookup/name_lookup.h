#pragma once

#include "store/lookup/identifier_table.h"
#include "store/sqlite/statement.h"
#include "store/text_buffer.h"

#include <QString>
#include <QStringView>

#include <memory>
#include <optional>

namespace quillon
{

class RecordSet;

/// Answers the names of one table's rows by identifier, many times in a row and without moving a cursor.
/// For filling lists; the answers are those of `RecordSet::goTo`.
class NameLookup
{
public:
    NameLookup() = default;
    /// `nameField` and `identifierField`: positions in the table of `recordSet`, which may be null.
    NameLookup(const std::shared_ptr<RecordSet>& recordSet, int nameField, int identifierField);

    /// Whether an identifier can be looked up here: not without a table, and not one that no criteria text can hold. The
    /// caller then searches with criteria, which fails as usual.
    bool canLookUp(QStringView identifier) const;
    /// The name, "不明" when there is no such row.
    QString name(QStringView identifier);

private:
    std::unique_ptr<sqlite::Statement> m_statement;
};

/// The names of a whole data table by identifier, read in one pass; those of identifiers that no criteria text can
/// hold are left out, and those that are no texts.
class TableNames
{
public:
    explicit TableNames(const RecordSet& recordSet);

    /// The name of the first row with this identifier. It lives as long as this.
    std::optional<QStringView> find(QStringView identifier) const;
    /// Whether an identifier that can stand in a criteria text is in no row when it is not found here. Otherwise there
    /// are numbers or bytes in place of identifiers, and the table itself knows which texts these are equal to.
    bool isComplete() const { return m_isComplete; }

private:
    quint32 kept(QStringView name);

    // Of each name its length, in `LengthUnits`, and then its text; by identifier, where this begins.
    TextBuffer m_texts;
    IdentifierTable<quint32> m_places;
    bool m_isComplete = true;
};

} // namespace quillon
