#include "core/name_lookup.h"

#include "app/base/titles.h"
#include "core/categories.h"
#include "core/data_records.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

NameLookup::NameLookup(const std::shared_ptr<RecordSet>& recordSet, int nameField, int identifierField)
{
    if (!recordSet)
        return;
    const auto quoted = [&](int field) {
        return u'"' + recordSet->table().fields[static_cast<std::size_t>(field)].name + u'"';
    };
    m_statement = recordSet->database().connection().prepareOwn(
        u"SELECT "_s + quoted(nameField) + u" FROM \""_s + recordSet->table().name + u"\" WHERE "_s +
        quoted(identifierField) + u" = ? ORDER BY rowid LIMIT 1"_s);
}

bool NameLookup::canLookUp(const QString& identifier) const
{
    return m_statement != nullptr && !identifier.contains(u'\'');
}

QString NameLookup::name(const QString& identifier)
{
    const sqlite::ResetAtEnd reset(*m_statement);
    m_statement->bind(1, identifier);
    return m_statement->step() ? m_statement->text(0).toString() : titles::Unknown;
}

DataNameLookup::DataNameLookup(Session& session)
    : m_session(session), m_main(session.RsMain, 0, 1), m_refDoc(session.RsRefDoc, 0, 1),
      m_refFile(session.RsRefFile, 0, 1)
{
}

QString DataNameLookup::name(const QString& identifier)
{
    NameLookup& names = identifier.startsWith(u'F')   ? m_refFile
                        : identifier.startsWith(u'R') ? m_refDoc
                                                      : m_main;
    return names.canLookUp(identifier) ? names.name(identifier) : GetDataName(m_session, identifier);
}

CategoryNameLookup::CategoryNameLookup(Session& session)
    : m_session(session), m_categories(session.RsCategoryID, 1, 0)
{
}

QString CategoryNameLookup::name(const QString& categoryIdentifier)
{
    return m_categories.canLookUp(categoryIdentifier) ? m_categories.name(categoryIdentifier)
                                                      : GetCategoryName(m_session, categoryIdentifier);
}

} // namespace quillon
