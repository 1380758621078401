#include "store/lookup/name_lookup.h"

#include "app/base/error.h"
#include "app/base/titles.h"
#include "store/record_set.h"

#include <algorithm>
#include <cstring>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr qsizetype LengthUnits = sizeof(quint32) / sizeof(char16_t);

bool canStandInCriteria(QStringView identifier)
{
    // Identifiers are short; asking a function that is made for long texts takes longer.
    return std::none_of(identifier.begin(), identifier.end(), [](QChar unit) { return unit == u'\''; });
}

} // namespace

NameLookup::NameLookup(const std::shared_ptr<RecordSet>& recordSet, int nameField, int identifierField)
{
    if (!recordSet)
        return;
    m_statement = recordSet->prepareLookUp(identifierField, nameField);
}

bool NameLookup::canLookUp(QStringView identifier) const
{
    return m_statement != nullptr && canStandInCriteria(identifier);
}

QString NameLookup::name(QStringView identifier)
{
    const sqlite::ResetAtEnd reset(*m_statement);
    m_statement->bind(1, identifier);
    const bool found = m_statement->step() && m_statement->text(0) == identifier;
    return found ? m_statement->text(1).toString() : titles::Unknown;
}

TableNames::TableNames(const RecordSet& recordSet)
{
    recordSet.forEachRow({0, 1}, [this](const RecordSet::Row& row) {
        if (!row.isText(1)) {
            // Nothing at all is equal to no identifier.
            m_isComplete = m_isComplete && row.isNull(1);
            return;
        }
        const QStringView identifier = row.text(1);
        if (canStandInCriteria(identifier))
            m_places.insert(identifier, kept(row.text(0)));
    });
}

quint32 TableNames::kept(QStringView name)
{
    const std::size_t place = m_texts.size();
    if (place + static_cast<std::size_t>(LengthUnits + name.size()) > std::numeric_limits<quint32>::max())
        throw Error(errors::OutOfMemory);
    char16_t* const start = m_texts.roomFor(static_cast<std::size_t>(LengthUnits + name.size()));
    const auto length = static_cast<quint32>(name.size());
    std::memcpy(start, &length, sizeof length);
    std::copy_n(name.utf16(), name.size(), start + LengthUnits);
    m_texts.added(static_cast<std::size_t>(LengthUnits + name.size()));
    return static_cast<quint32>(place);
}

std::optional<QStringView> TableNames::find(QStringView identifier) const
{
    const quint32* const place = m_places.find(identifier);
    if (place == nullptr)
        return std::nullopt;
    const char16_t* const start = m_texts.data() + *place;
    quint32 length = 0;
    std::memcpy(&length, start, sizeof length);
    return QStringView(start + LengthUnits, static_cast<qsizetype>(length));
}

} // namespace quillon
