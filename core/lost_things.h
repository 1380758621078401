#pragma once

#include "core/whereabouts.h"
#include "store/kept/history.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>
#include <optional>
#include <vector>

namespace quillon
{

class PresentThings;
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
    int notListed = 0;              // so many more of all these were there
    bool isCompared = true;         // with what is there now; otherwise nobody knows what that is
    bool isIdentifierTaken = false; // by the lost one itself or by another

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
    /// Of any database, which may be damaged or gone: unless it is the open one, there is nothing to compare with.
    LostThings(Session& session, const QString& database);
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
    /// Compares with the open database, as far as the history was known when this was made. Moves cursors.
    LostDetails details(std::size_t number) const;

    /// For taking it back: of which database it is, and its history. Error 91 when nothing is kept.
    const kept::Place& place() const;
    kept::History& history() const;
    const kept::Event& event(std::size_t number) const;
    /// Whether its database is the open one.
    bool isOfOpenDatabase() const;

private:
    static constexpr std::size_t DefaultStep = 20'000;

    struct Kept;

    bool meets(const kept::Event& event) const;
    bool holdsQuestion(QStringView text) const;
    /// What the end of a link or membership is called, or was called when it was deleted.
    QString nameOf(Whereabouts::Kind kind, const QString& identifier, const kept::Event& event) const;
    /// What is in the place of a lost row; false when nothing is. Moves the cursor of its table to it.
    bool goToPresent(const kept::StoredRow& row, const kept::Event& event) const;
    bool goToPair(const TableSchema& table, const std::optional<QString>& first,
                  const std::optional<QString>& second) const;
    void addRelations(LostDetails& details, const kept::StoredRow& row, const kept::Event& event) const;

    Session& m_session;
    std::unique_ptr<Kept> m_kept; // null: nothing is kept
    QString m_folded;             // of the question
    std::optional<EventKind> m_kind;
    mutable QString m_comparedPath; // of a database of which it is known whether it is this one
    mutable bool m_isOfComparedPath = false;
    std::size_t m_seen = 0;        // events
    std::vector<quint32> m_listed; // their numbers
    mutable std::vector<char16_t> m_buffer;
    mutable QHash<QString, QString> m_names; // by letter for the kind and identifier, of what is there
};

} // namespace quillon
