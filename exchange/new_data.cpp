#include "exchange/new_data.h"

#include "app/base/input_checks.h"
#include "app/base/ports/clock.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/data_entry.h"
#include "core/links.h"
#include "exchange/refused.h"
#include "exchange/settled_file.h"
#include "store/identifiers.h"
#include "store/lookup/identifier_pages.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

quint64 hashOf(QStringView name, QStringView text)
{
    const std::size_t first = qHash(name, 0x9E3779B9U);
    return qHash(text, first);
}

/// What a person reads of an import that is refused.
QString refusalOf(const std::vector<Note>& refused)
{
    constexpr std::size_t Most = 20;
    QString text = u"取り込めないものが %1 件あるため、何も書き込みませんでした。"_s.arg(refused.size());
    for (std::size_t i = 0; i < std::min(Most, refused.size()); ++i)
        text += u'\n' + refused[i].where + u": "_s + refused[i].text;
    if (refused.size() > Most)
        text += u"\nほか %1 件"_s.arg(refused.size() - Most);
    return text;
}

} // namespace

NewData::NewData(Session& session, ImportReport& report)
    : m_session(session), m_report(report), m_messages(required(session.RsMain).database()),
      m_memberships(required(session.RsCategory), u"1"_s, {0, 1})
{
    for (const DataKind& kind : data_kinds::all()) {
        const RecordSet& rows = required(session.*kind.recordSet);
        m_supplies.emplace_back(rows, kind);
        m_identifiers.emplace_back(rows, u"1"_s, std::vector<int>{data_field::Object_ID});
    }
    required(session.RsCategoryID)
        .forEachRow({category_field::Category_ID, category_field::Name}, [&](const RecordSet::Row& row) {
            const QString identifier = row.text(0).toString();
            const QString parent = identifier.first(std::max(qsizetype(0), identifier.lastIndexOf(u'-')));
            m_categoryIdentifiers.insert(identifier);
            const std::pair key{parent, row.text(1).toString()};
            if (!m_categories.contains(key))
                m_categories.insert(key, identifier);
        });
}

void NewData::refuse(const QString& where, const QString& text)
{
    m_refused.push_back({.where = where, .text = text});
}

void NewData::readPresent()
{
    m_hasReadPresent = true;
    for (std::size_t kind = 0; kind < KindsThatCome; ++kind) {
        const RecordSet& rows = required(m_session.*data_kinds::all().at(kind).recordSet);
        const auto pass =
            rows.database().connection().prepareOwn(u"SELECT \"Name\", \"Explanation\", rowid FROM \""_s +
                                                    rows.table().name + u"\" ORDER BY rowid"_s);
        while (pass->step()) {
            const QStringView name = pass->text(0);
            const quint64 hash = hashOf(name, pass->text(1));
            m_present.push_back({.hash = hash, .kind = kind, .row = pass->number(2)});
        }
        const QString texts = u"\"Name\", \"Explanation\", \"Object_ID\""_s;
        m_rows.push_back(RowQuestion::ofRowNumber(rows, texts));
        m_rowsOfIdentifiers.emplace_back(rows, texts, std::vector<int>{data_field::Object_ID});
    }
    std::sort(m_present.begin(), m_present.end());
}

QString NewData::presentSame(const NewDatum& datum)
{
    if (!m_hasReadPresent)
        readPresent();
    const std::size_t kind = data_kinds::positionOf(*datum.kind);
    const Present wanted{
        .hash = hashOf(datum.name, datum.text), .kind = kind, .row = std::numeric_limits<qint64>::min()};
    const auto isAlike = [&](const Present& present) {
        return present.hash == wanted.hash && present.kind == wanted.kind;
    };
    const auto first = static_cast<std::size_t>(std::lower_bound(m_present.begin(), m_present.end(), wanted) -
                                                m_present.begin());
    const auto isOver = [&](std::size_t i) { return i == m_present.size() || !isAlike(m_present[i]); };
    if (isOver(first))
        return {};

    QString same;
    const auto read = [&](const sqlite::Statement& row) {
        if (row.text(0) == datum.name && row.text(1) == datum.text)
            same = row.text(2).toString();
    };
    if (!datum.identifier.isEmpty())
        m_rowsOfIdentifiers.at(kind).ask({datum.identifier}, read);
    // Of thousands that are alike none is looked at twice.
    auto& next = m_nextOfAlike.try_emplace(first, first).first->second;
    while (same.isEmpty() && !isOver(next)) {
        m_rows.at(kind).askRow(m_present[next++].row, read);
        if (m_met.contains(same))
            same.clear();
    }
    for (std::size_t i = first; same.isEmpty() && !isOver(i); ++i)
        m_rows.at(kind).askRow(m_present[i].row, read);
    if (!same.isEmpty())
        m_met.insert(same);
    return same;
}

QString NewData::givenTo(const NewDatum& datum)
{
    const std::size_t kind = data_kinds::positionOf(*datum.kind);
    const QDate today = m_session.clock.now().date();
    const bool had = identifierNumber(datum.identifier).has_value() && kindOf(datum.identifier) == datum.kind;
    if (had && !m_identifiers[kind].ask({datum.identifier})) {
        m_supplies[kind].reserve(datum.identifier);
        return datum.identifier;
    }
    QDate day = had ? dayOfIdentifier(datum.identifier, today) : QDate();
    if (!day.isValid())
        day = datum.day.isValid() ? datum.day : today;
    return m_supplies[kind].next(day);
}

QString NewData::placeOf(const QStringList& way, const QString& where)
{
    QString place;
    for (const QString& name : way) {
        const std::pair key{place, name};
        const auto known = m_categories.constFind(key);
        if (known != m_categories.cend()) {
            place = *known;
            continue;
        }
        const QString beginning = place.isEmpty() ? QString() : place + u'-';
        const auto& fields = schema::Category_ID().fields;
        if (name.isEmpty() || name.size() > fields[category_field::Name].width) {
            refuse(where, u"カテゴリ名「%1」は 1 文字以上 %2 文字以内でなければなりません。"_s.arg(name).arg(
                              fields[category_field::Name].width));
            return {};
        }
        if (beginning.size() >= fields[category_field::Category_ID].width) {
            refuse(where, u"カテゴリ「%1」の階層が深すぎます。"_s.arg(way.join(u'/')));
            return {};
        }
        place = newCategoryIdentifier(
            beginning, [&](const QString& identifier) { return m_categoryIdentifiers.contains(identifier); });
        m_categoryIdentifiers.insert(place);
        m_categories.insert(key, place);
        RegisterCategory(m_session, place, name);
        ++m_report.categories;
    }
    return place;
}

QStringList NewData::placesOf(const NewDatum& datum)
{
    QStringList places;
    for (const QStringList& way : datum.categories) {
        const QString place = placeOf(way, datum.where);
        if (!place.isEmpty() && !places.contains(place))
            places << place;
    }
    return places;
}

/// Refuses what does not keep within its limits.
bool NewData::isTaken(const NewDatum& datum)
{
    const QString ofWindow = quillon::refusalOf(*datum.kind, {.name = datum.name, .content = datum.text});
    if (ofWindow.isEmpty())
        return true;
    if (datum.limits == NewDatum::Limits::OfWindows) {
        refuse(datum.where, ofWindow);
        return false;
    }
    const auto& fields = required(m_session.*datum.kind->recordSet).table().fields;
    const auto isTooLong = [&](int field, const QString& text) {
        const int width = fields[static_cast<std::size_t>(field)].width;
        const bool tooLong = width > 0 && text.size() > width;
        if (tooLong)
            refuse(datum.where,
                   u"%1が長すぎます。%2 文字以内でなければ取り込めません。"_s.arg(
                       field == data_field::Name ? u"名称"_s : u"定義"_s, QString::number(width)));
        return tooLong;
    };
    if (isTooLong(data_field::Name, datum.name) || isTooLong(data_field::Explanation, datum.text))
        return false;
    if (datum.name.isEmpty()) {
        refuse(datum.where, ofWindow);
        return false;
    }
    m_report.notes.push_back({.where = datum.where,
                              .text = datum.text.isEmpty()
                                          ? u"内容が空の文献として取り込みました。"_s
                                          : u"画面で入力できる長さを超えています。"
                                            u"そのまま取り込みましたが、更新するときは短くしてください。"_s});
    return true;
}

QString NewData::add(const NewDatum& datum)
{
    const DatumTexts texts{.name = datum.name, .content = datum.text};
    if (!isTaken(datum))
        return {};
    if (!m_refused.empty())
        return {}; // nothing of it will be written; the rest is only looked at
    const QStringList places = placesOf(datum);
    if (!m_refused.empty())
        return {};
    QString identifier = presentSame(datum);
    if (identifier.isEmpty()) {
        identifier = givenTo(datum);
        addDatumRow(m_session, *datum.kind, identifier, texts);
        m_report.filed += fileNewDatum(m_session, identifier, places);
        m_added.insert(identifier);
        ++m_report.added;
        if (!datum.identifier.isEmpty() && identifier != datum.identifier)
            ++m_report.renamed;
    } else {
        for (const QString& place : places) {
            m_report.filed += m_memberships.ask({place, identifier}) ? 0 : 1;
            ClassifyDatum(m_session, m_messages, place, identifier);
        }
        ++m_report.skipped;
    }
    if (!datum.identifier.isEmpty() && !m_renamed.contains(datum.identifier))
        m_renamed.insert(datum.identifier, identifier);
    return identifier;
}

void NewData::linkLater(const QString& identifier, const QString& target, const QString& where)
{
    if (!identifier.isEmpty())
        m_links.push_back({.from = identifier, .target = target, .where = where});
}

void NewData::link(const QString& from, const QString& to)
{
    if (from.isEmpty() || to.isEmpty() || areLinked(m_session, from, to))
        return;
    addLink(m_session, from, to);
    ++m_report.linked;
}

void NewData::tellOneOfSeveral(const QString& target, const QString& identifier, const QString& where)
{
    m_report.notes.push_back(
        {.where = where,
         .text = u"「%1」という名称のデータが複数あるため、%2 とリンクしました。"_s.arg(target, identifier)});
}

/// The identifiers of data that bear one of these names: of those that have come in, else of others.
QHash<QString, QString> NewData::identifiersOf(const QSet<QString>& names, QSet<QString>& ambiguous)
{
    QHash<QString, QString> found;
    if (names.isEmpty())
        return found;
    QSet<QString> isNew;
    for (const DataKind& kind : data_kinds::all()) {
        required(m_session.*kind.recordSet)
            .forEachRow({data_field::Name, data_field::Object_ID}, [&](const RecordSet::Row& row) {
                const QString name = row.text(0).toString();
                if (!names.contains(name))
                    return;
                const QString identifier = row.text(1).toString();
                const bool isAdded = m_added.contains(identifier);
                if (!found.contains(name) || (isAdded && !isNew.contains(name))) {
                    found[name] = identifier;
                    ambiguous.remove(name);
                } else if (isAdded || !isNew.contains(name)) {
                    ambiguous.insert(name);
                }
                if (isAdded)
                    isNew.insert(name);
            });
    }
    return found;
}

void NewData::finish()
{
    if (!m_refused.empty())
        throw Refused(exchange::refusalOf(m_refused));
    QSet<QString> names;
    for (const LaterLink& later : m_links)
        names.insert(later.target);
    QSet<QString> ambiguous;
    const QHash<QString, QString> named = identifiersOf(names, ambiguous);
    for (const LaterLink& later : m_links) {
        QString to = m_renamed.value(later.target);
        const DataKind* const kind = kindOf(later.target);
        if (to.isEmpty() && identifierNumber(later.target) && kind != nullptr &&
            m_identifiers[data_kinds::positionOf(*kind)].ask({later.target}))
            to = later.target;
        if (to.isEmpty()) {
            to = named.value(later.target);
            if (ambiguous.contains(later.target))
                tellOneOfSeveral(later.target, to, later.where);
        }
        if (to.isEmpty())
            m_report.notes.push_back(
                {.where = later.where, .text = u"リンク先「%1」が見つかりません。"_s.arg(later.target)});
        else
            link(later.from, to);
    }
}

ImportReport bringIn(Session& session, const ImportOptions& options,
                     const std::function<void(NewData&)>& bring)
{
    ImportReport report;
    const SettledFile settled(required(session.RsMain));
    sqlite::Transaction write(required(session.RsMain).database().connection());
    NewData data(session, report);
    bring(data);
    data.finish();
    if (options.dryRun)
        return report;
    write.commit();
    data.messages().show(session);
    return report;
}

} // namespace quillon::exchange
