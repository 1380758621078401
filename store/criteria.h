#pragma once

#include "store/schema.h"

#include <QString>

#include <memory>
#include <variant>

namespace quillon
{

/// One comparison: field = 'text' or field Like 'pattern'.
struct Comparison {
    enum class Kind { Equal, Like };

    int field = 0; // position in the table
    Kind kind = Kind::Equal;
    QString text;
};

/// A criteria text as a tree: comparisons joined by AND and OR, AND binding tighter.
struct Criteria {
    enum class Joint { And, Or };
    struct Junction {
        Joint joint = Joint::And;
        std::unique_ptr<Criteria> left;
        std::unique_ptr<Criteria> right;
    };

    std::variant<Comparison, Junction> node;
};

/// Reads a criteria text such as "Object_ID ='M-991231-001' OR Name Like '*水*'".
/// Keywords in any case, any spacing, no escapes: a quote inside a text ends it.
/// Errors: 3075 for anything that is no such text, 3061 for a field that the table lacks.
Criteria parseCriteria(const QString& text, const TableSchema& table);

} // namespace quillon
