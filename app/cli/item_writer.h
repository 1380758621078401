#pragma once

#include "app/cli/output.h"
#include "app/cli/relations.h"
#include "app/cli/status.h"

#include <QStringView>

#include <optional>

namespace quillon
{
struct DataKind;
}

namespace quillon::cli
{

struct Run;

/// An item as it is written; the views are valid for as long as its row is.
struct Item {
    const DataKind& kind;
    QStringView identifier;
    std::optional<QStringView> name; // nothing: null
    std::optional<QStringView> text;
};

/// Writes items in the form that a command asks for: for people, as JSON, or their identifiers.
class ItemWriter
{
public:
    explicit ItemWriter(Run& run);

    /// Whether the texts of items are wanted at all.
    bool wantsTexts() const;
    void write(const Item& item);
    /// Gives away what has been written when it is much. Nothing may be locked. False when nobody wants more.
    bool pause();
    /// `NothingFound`, and a line that says so, when nothing was written.
    Status finish();

private:
    void writeForPeople(const Item& item);
    void writeObject(const Item& item);

    Run& m_run;
    std::optional<char> m_identifierEnd;
    std::optional<Relations> m_relations; // of JSON
    qint64 m_count = 0;
};

/// Writes the fields of the JSON of an item, up to its relations.
void writeItemFields(Output& output, const Item& item);

} // namespace quillon::cli
