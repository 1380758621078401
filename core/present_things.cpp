#include "core/present_things.h"

#include "core/whereabouts.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

namespace quillon
{

bool PresentThings::itemExists(const QString& identifier) const
{
    const DataKind* const kind = kindOf(identifier);
    return kind != nullptr && required(m_session.*kind->recordSet).goTo(data_field::Object_ID, identifier);
}

bool PresentThings::categoryExists(const QString& identifier) const
{
    return required(m_session.RsCategoryID).goTo(category_field::Category_ID, identifier);
}

std::optional<QString> PresentThings::item(const QString& identifier, const kept::Event& lost) const
{
    auto there = m_whereabouts.now(Whereabouts::Kind::Item, identifier, lost);
    return there && itemExists(*there) ? there : std::nullopt;
}

std::optional<QString> PresentThings::category(const QString& identifier, const kept::Event& lost) const
{
    auto there = m_whereabouts.now(Whereabouts::Kind::Category, identifier, lost);
    return there && categoryExists(*there) ? there : std::nullopt;
}

std::optional<QString> PresentThings::ofRow(const kept::StoredRow& row, const kept::Event& event) const
{
    using Kind = Whereabouts::Kind;
    RecordSet* rows = nullptr;
    for (const auto* set :
         {&m_session.RsMain, &m_session.RsRefDoc, &m_session.RsRefFile, &m_session.RsCategoryID}) {
        if (*set && &(*set)->table() == row.table)
            rows = set->get();
    }
    if (rows == nullptr)
        return std::nullopt;
    const Kind kind = row.table == &schema::Category_ID() ? Kind::Category : Kind::Item;
    const int field = kind == Kind::Item ? data_field::Object_ID : category_field::Category_ID;
    const QString identifier = row.text(field);
    auto there = m_whereabouts.now(kind, identifier, event);
    if (!there || !rows->goTo(field, *there))
        return std::nullopt;
    // What was never deleted has its row still. Another row was made by a program that keeps no history.
    const bool wasDeleted = m_whereabouts.deletedSince(kind, identifier, event).table != nullptr;
    return wasDeleted || rows->rowNumber() == row.row ? there : std::nullopt;
}

} // namespace quillon
