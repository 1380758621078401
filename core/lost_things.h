#pragma once

#include "store/kept/history.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace quillon
{

class Session;

using kept::EventKind;

/// What is looked for among the things that were lost.
struct LostQuestion {
    QString text = {}; // in a name, a text or an identifier, as a reader compares; empty: any
    std::optional<EventKind> kind = {}; // nothing: any
};

/// A line of their list.
struct LostEntry {
    EventKind kind = EventKind::Other;
    QDateTime time;     // local
    QString operation;  // by which it came about
    QString name;       // of the item, the category or the file; of the two items of a link
    QString identifier; // of these; empty for a file
};

/// A field of what was lost, and what stands in its place now.
struct LostField {
    QString label;
    QString before;
    std::optional<QString> now; // nothing: it is gone
};

/// All there is to see of it.
struct LostDetails {
    std::vector<LostField> fields;
    // Each as name and identifier, and those of them that are there now.
    QStringList links; // of a deleted item
    QStringList linksNow;
    QStringList categories; // it was filed in
    QStringList categoriesNow;
    QStringList members; // of a deleted category
    QStringList membersNow;
    int notListed = 0; // so many more of all these were there

    /// Whether something stands in its place, and whether that is the same.
    enum class Present { Gone, Same, Different };
    Present present() const;
};

/// The word for a kind of event, for lists and choices.
QString lostKindName(EventKind kind);

/// What was overwritten and deleted in a database, as it stood when this was made, newest first. It is read as far as
/// it is asked for: a million of events take no longer than ten until somebody wants to see the last.
class LostThings
{
public:
    /// Of the open database. Empty when nothing is kept. Error 91 when no database is open.
    explicit LostThings(Session& session);
    ~LostThings();
    LostThings(const LostThings&) = delete;
    LostThings& operator=(const LostThings&) = delete;

    /// Begins the list anew with what meets a question.
    void ask(const LostQuestion& question);
    /// Looks at so many more events and lists those that meet the question. False when there were none left.
    bool readOn(std::size_t events = DefaultStep);
    /// How many are listed so far.
    std::size_t count() const { return m_listed.size(); }

    LostEntry entry(std::size_t number) const;
    /// Compares with the open database. Moves cursors.
    LostDetails details(std::size_t number) const;

    /// For taking it back.
    const kept::History& history() const { return *m_history; }
    const kept::Event& event(std::size_t number) const;

private:
    static constexpr std::size_t DefaultStep = 20'000;

    bool meets(const kept::Event& event) const;

    Session& m_session;
    std::unique_ptr<kept::History> m_history;
    QString m_folded; // of the question
    std::optional<EventKind> m_kind;
    std::size_t m_seen = 0;        // events
    std::vector<quint32> m_listed; // their numbers
    mutable std::vector<char16_t> m_buffer;
};

} // namespace quillon
