#include "store/kept/put_back_note.h"

#include "store/kept/history_format.h"

namespace quillon::kept
{

void appendPutBackNote(QByteArray& bytes, const PutBackNote& note)
{
    appendNumber(bytes, static_cast<quint16>(note.isCategory ? 1 : 0));
    appendText(bytes, note.before);
    appendNumber(bytes, note.deletedAt);
    appendText(bytes, note.after);
    for (const OwedRelation& owed : note.owed) {
        appendNumber(bytes, static_cast<quint16>(owed.role));
        appendText(bytes, owed.other);
    }
}

PutBackNote readPutBackNote(PayloadReader& payload)
{
    PutBackNote note;
    note.isCategory = payload.number16() == 1;
    note.before = payload.text().toString();
    note.deletedAt = payload.number64();
    note.after = payload.text().toString();
    while (!payload.isAtEnd() && !payload.hasFailed()) {
        const auto role = static_cast<OwedRelation::Other>(payload.number16());
        note.owed.push_back({.role = role, .other = payload.text().toString()});
    }
    return note;
}

} // namespace quillon::kept
