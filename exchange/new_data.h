#pragma once

#include "core/deferred_messages.h"
#include "exchange/report.h"
#include "exchange/row_question.h"
#include "store/data_kinds.h"
#include "store/identifier_supply.h"
#include "store/lookup/identifier_set.h"

#include <QDate>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <compare>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// A datum that has been something else until now.
struct NewDatum {
    const DataKind* kind = nullptr; // definition or document
    QString name;
    QString text;
    QDate day = {};                           // of what it comes from; today when it is not valid
    QString identifier = {};                  // the one it had; it gets it again when it is free
    std::vector<QStringList> categories = {}; // each the names of a way from the top level down
    QString where = {};
    /// What it may hold. What a person keeps in a table, or has exported, is not to be refused for what a window would
    /// not take; a window's own rule is told then.
    enum class Limits { OfWindows, OfDatabase };
    Limits limits = Limits::OfWindows;
};

/// Data on their way into the open database, by the rules of the windows. What these would refuse is remembered, and the
/// import is refused at the end with all of it. A datum of which the database holds the same name and text already is
/// not added once more; its categories and links are. Of several such the one of its identifier is that datum, else one
/// that nothing has met yet.
class NewData
{
public:
    /// Within a transaction. `report` is filled.
    NewData(Session& session, ImportReport& report);

    /// Adds a datum and files it; categories that are missing are added. Returns its identifier, nothing when it is
    /// refused.
    QString add(const NewDatum& datum);
    /// Links a datum with another, which is named by its identifier (where it comes from), or else its name; data of
    /// this import come before others of the same name. To be done at the end.
    void linkLater(const QString& identifier, const QString& target, const QString& where);
    /// Links two data.
    void link(const QString& from, const QString& to);
    /// Tells that a link could have led to several data.
    void tellOneOfSeveral(const QString& target, const QString& identifier, const QString& where);
    /// Refuses a part of what comes in, and with it everything.
    void refuse(const QString& where, const QString& text);
    /// Links what is to be linked. Throws `Refused` when anything has been refused.
    void finish();

    /// What there is to tell when the write is over.
    const DeferredMessages& messages() const { return m_messages; }

private:
    struct LaterLink {
        QString from;
        QString target;
        QString where;
    };

    /// A row that was there already, found by its texts.
    struct Present {
        quint64 hash = 0; // of its texts
        std::size_t kind = 0;
        qint64 row = 0;

        // The comparison's own 0 is taken for a pointer.
        auto operator<=>(const Present&) const = default; // NOLINT(modernize-use-nullptr)
    };

    static constexpr std::size_t KindsThatCome = 2; // definitions and documents

    bool isTaken(const NewDatum& datum);
    QString givenTo(const NewDatum& datum);
    QString presentSame(const NewDatum& datum);
    void readPresent();
    QStringList placesOf(const NewDatum& datum);
    QString placeOf(const QStringList& way, const QString& where);
    QHash<QString, QString> identifiersOf(const QSet<QString>& names, QSet<QString>& ambiguous);

    Session& m_session;
    ImportReport& m_report;
    DeferredMessages m_messages;
    std::vector<IdentifierSupply> m_supplies; // by kind
    std::vector<RowQuestion> m_identifiers;   // by kind: whether one is taken
    std::vector<RowQuestion> m_rows;          // by kind: name, text and identifier of a row
    RowQuestion m_memberships;                // whether a datum is in a category
    bool m_hasReadPresent = false;
    std::vector<RowQuestion> m_rowsOfIdentifiers; // by kind: the same
    std::vector<Present> m_present;
    std::unordered_map<std::size_t, std::size_t> m_nextOfAlike; // by the first of those that are alike
    IdentifierSet m_met; // of the data that were there already those that have come in, too
    IdentifierSet m_added;
    QHash<QString, QString> m_renamed;                        // from the identifier that a datum had
    QHash<std::pair<QString, QString>, QString> m_categories; // by parent and name
    QSet<QString> m_categoryIdentifiers;
    std::vector<LaterLink> m_links;
    std::vector<Note> m_refused;
};

/// Runs an import of new data as one write, or takes it back again when it is a dry run.
ImportReport bringIn(Session& session, const ImportOptions& options,
                     const std::function<void(NewData&)>& bring);

} // namespace quillon::exchange
