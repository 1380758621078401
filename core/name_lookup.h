#pragma once

#include "core/identifier_table.h"
#include "store/sqlite/statement.h"
#include "store/text_buffer.h"

#include <QString>
#include <QStringView>

#include <array>
#include <memory>
#include <optional>

namespace quillon
{

class RecordSet;
class Session;

/// Answers the names of one table's rows by identifier, many times in a row and without moving a cursor.
/// For filling lists; the answers are those of a search with a criteria text.
class NameLookup
{
public:
    NameLookup() = default;
    /// `nameField` and `identifierField`: positions in the table of `recordSet`, which may be null.
    NameLookup(const std::shared_ptr<RecordSet>& recordSet, int nameField, int identifierField);

    /// Whether this way of looking up is open: not without a table, and not for an identifier that no criteria text
    /// can hold. The caller then takes the ordinary way with its ordinary failure.
    bool canLookUp(QStringView identifier) const;
    /// The name, "不明" when there is no such row.
    QString name(QStringView identifier);

private:
    std::unique_ptr<sqlite::Statement> m_statement;
};

/// The names of a whole data table by identifier, read in one pass; those of identifiers that no criteria text can
/// hold are left out.
class TableNames
{
public:
    explicit TableNames(const RecordSet& recordSet);

    /// The name of the first row with this identifier. It lives as long as this.
    std::optional<QStringView> find(QStringView identifier) const;

private:
    quint32 kept(QStringView name);

    // Of each name its length, in `LengthUnits`, and then its text; by identifier, where this begins.
    TextBuffer m_texts;
    IdentifierTable<quint32> m_places;
};

/// `GetDataName` for many identifiers.
class DataNameLookup
{
public:
    /// `lookUps`: about how many there will be, if there may be many of them.
    explicit DataNameLookup(Session& session, qint64 lookUps = 0);
    /// The name, valid as long as this lives.
    QString name(QStringView identifier);

private:
    /// One of the data tables; its names are read all at once where this takes less time than looking them up.
    struct Table {
        NameLookup single;
        std::optional<TableNames> all;
    };
    QString name(Table& table, QStringView identifier);

    Session& m_session;
    std::array<Table, 3> m_tables; // in the order of the kinds
};

/// `GetCategoryName` for many identifiers.
class CategoryNameLookup
{
public:
    explicit CategoryNameLookup(Session& session);
    QString name(const QString& categoryIdentifier);

private:
    Session& m_session;
    NameLookup m_categories;
};

} // namespace quillon
