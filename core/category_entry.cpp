#include "core/category_entry.h"

#include "app/base/error.h"
#include "app/base/ports/data_window.h"
#include "app/base/reporting.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/connection.h"

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

void RegisterCategory(Session& session, const QString& categoryIdentifier, const QString& name,
                      const CategoryRow* parent)
{
    RecordSet& categories = required(session.RsCategoryID);
    sqlite::Transaction write(categories.database().connection());
    if (parent != nullptr)
        requireCategory(session, *parent);
    categories.addNew();
    categories.setField(category_field::Category_ID, categoryIdentifier);
    categories.setField(category_field::Name, name);
    categories.update();
    write.commit();
}

QString RegisterNewCategory(Session& session, const QString& beginning,
                            const std::function<bool(const QString&)>& isShown, const QString& name,
                            const CategoryRow* parent)
{
    RecordSet& categories = required(session.RsCategoryID);
    sqlite::Transaction write(categories.database().connection());
    QString identifier = newCategoryIdentifier(beginning, [&](const QString& candidate) {
        // Another program may have added some that no window here shows.
        return isShown(candidate) || categories.goTo(category_field::Category_ID, candidate);
    });
    RegisterCategory(session, identifier, name, parent);
    write.commit();
    return identifier;
}

void RenameCategory(Session& session, const CategoryRow& category, const QString& name)
{
    RecordSet& categories = required(session.RsCategoryID);
    sqlite::Transaction write(categories.database().connection());
    requireCategory(session, category);
    categories.edit();
    categories.setField(category_field::Category_ID, category.identifier);
    categories.setField(category_field::Name, name);
    categories.update();
    write.commit();
}

CategoryRow presentCategory(Session& session, const QString& categoryIdentifier)
{
    RecordSet& categories = required(session.RsCategoryID);
    if (!categories.goTo(category_field::Category_ID, categoryIdentifier))
        throw Error(errors::NoCurrentRecord);
    return {.name = categories.field(category_field::Name),
            .identifier = categoryIdentifier,
            .number = categories.rowNumber()};
}

void requireCategory(Session& session, const CategoryRow& asked)
{
    const CategoryRow present = presentCategory(session, asked.identifier);
    if (present.name != asked.name || (asked.number != 0 && present.number != asked.number))
        throw Error(errors::NoCurrentRecord);
}

CategoryRow listedCategory(Session& session, const QString& name, const QString& categoryIdentifier)
{
    CategoryRow listed{.name = name, .identifier = categoryIdentifier};
    const auto unknown = [](const Error&) {};
    guardedBy(unknown, [&] {
        RecordSet& categories = required(session.RsCategoryID);
        if (categories.goTo(category_field::Category_ID, categoryIdentifier))
            listed.number = categories.rowNumber();
    });
    return listed;
}

bool isCategory(Session& session, const CategoryRow& listed)
{
    RecordSet& categories = required(session.RsCategoryID);
    try {
        return categories.goTo(category_field::Category_ID, listed.identifier) &&
               (listed.number == 0 || listed.number == categories.rowNumber());
    } catch (const Error& error) {
        // No criteria text can hold such an identifier. Filing in it says so.
        if (error.number != errors::CriteriaSyntax)
            throw;
        return true;
    }
}

} // namespace quillon
