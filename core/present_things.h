#pragma once

#include <QString>

#include <optional>

namespace quillon
{

class Session;
class Whereabouts;

namespace kept
{
struct Event;
struct StoredRow;
} // namespace kept

/// What of the open database is the very thing that was lost, or that hung on it. None of this is trapped, and all of it
/// moves the cursors of items or categories: to what was found, if anything was.
class PresentThings
{
public:
    PresentThings(Session& session, const Whereabouts& whereabouts)
        : m_session(session), m_whereabouts(whereabouts)
    {
    }

    /// The present identifier of the item that bore another one when something was lost; nothing when it is gone.
    std::optional<QString> item(const QString& identifier, const kept::Event& lost) const;
    /// The same of a category.
    std::optional<QString> category(const QString& identifier, const kept::Event& lost) const;
    /// The same of the item or category of which a row of an event is a former state.
    std::optional<QString> ofRow(const kept::StoredRow& row, const kept::Event& event) const;

    /// Whether anything bears an identifier now.
    bool itemExists(const QString& identifier) const;
    bool categoryExists(const QString& identifier) const;

private:
    Session& m_session;
    const Whereabouts& m_whereabouts;
};

} // namespace quillon
