#include "core/category_entry.h"

#include "app/base/error.h"
#include "store/record_set.h"
#include "store/session.h"

#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString newCategoryIdentifier(const QString& beginning, const std::function<bool(const QString&)>& isTaken)
{
    for (char32_t code = U'A'; code < std::numeric_limits<char16_t>::max(); ++code) {
        const QChar letter(static_cast<char16_t>(code));
        if (letter.isSurrogate())
            continue; // half a character
        QString candidate = beginning + letter;
        if (!isTaken(candidate))
            return candidate;
    }
    throw Error(errors::Overflow);
}

void RegisterCategory(Session& session, const QString& categoryIdentifier, const QString& name)
{
    RecordSet& categories = required(session.RsCategoryID);
    categories.addNew();
    categories.setField(category_field::Category_ID, categoryIdentifier);
    categories.setField(category_field::Name, name);
    categories.update();
}

void RenameCategory(Session& session, const QString& categoryIdentifier, const QString& name)
{
    RecordSet& categories = required(session.RsCategoryID);
    if (!categories.goTo(category_field::Category_ID, categoryIdentifier))
        throw Error(errors::NoCurrentRecord);
    categories.edit();
    categories.setField(category_field::Category_ID, categoryIdentifier);
    categories.setField(category_field::Name, name);
    categories.update();
}

} // namespace quillon
