#include "app/cli/relations.h"

#include "app/cli/utf8.h"
#include "store/record_set.h"
#include "store/session.h"

namespace quillon::cli
{

void Relations::Chains::add(QStringView identifier, QStringView member)
{
    const auto position = static_cast<quint32>(parts.size());
    const qsizetype at = texts.size();
    texts.resize(at + mostBytes(member));
    char* const begin = texts.data() + at;
    texts.truncate(at + (writeJson(begin, member) - begin));
    parts.push_back({.at = at, .size = texts.size() - at});
    const quint32* const place = places.find(identifier);
    if (place == nullptr) {
        places.insert(identifier, static_cast<quint32>(ends.size()));
        ends.push_back({.first = position, .last = position});
        return;
    }
    Ends& chain = ends[*place];
    parts[chain.last].next = position;
    chain.last = position;
}

Relations::Relations(Session& session)
{
    required(session.RsCategory).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        m_categories.add(row.text(1), row.text(0));
    });
    required(session.RsLink).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        const QStringView from = row.text(0);
        const QStringView to = row.text(1);
        m_links.add(from, to);
        if (from != to)
            m_links.add(to, from);
    });
}

QByteArray Relations::listOf(const Chains& chains, QStringView identifier)
{
    QByteArray list;
    const quint32* const place = chains.places.find(identifier);
    if (place == nullptr)
        return list;
    for (quint32 part = chains.ends[*place].first; part != None; part = chains.parts[part].next) {
        if (!list.isEmpty())
            list += ',';
        list += QByteArrayView(chains.texts).sliced(chains.parts[part].at, chains.parts[part].size);
    }
    return list;
}

} // namespace quillon::cli
