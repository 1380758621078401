#pragma once

#include "store/sqlite/statement.h"

#include <QString>

#include <memory>

namespace quillon
{

class RecordSet;
class Session;

/// Answers the names of one table's rows by identifier, many times in a row and without moving a cursor.
/// For filling lists; the answers are those of a search with a criteria text.
class NameLookup
{
public:
    /// `nameField` and `identifierField`: positions in the table of `recordSet`, which may be null.
    NameLookup(const std::shared_ptr<RecordSet>& recordSet, int nameField, int identifierField);

    /// Whether this way of looking up is open: not without a table, and not for an identifier that no criteria text
    /// can hold. The caller then takes the ordinary way with its ordinary failure.
    bool canLookUp(const QString& identifier) const;
    /// The name, "不明" when there is no such row.
    QString name(const QString& identifier);

private:
    std::unique_ptr<sqlite::Statement> m_statement;
};

/// `GetDataName` for many identifiers.
class DataNameLookup
{
public:
    explicit DataNameLookup(Session& session);
    QString name(const QString& identifier);

private:
    Session& m_session;
    NameLookup m_main;
    NameLookup m_refDoc;
    NameLookup m_refFile;
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
