#pragma once

#include <QString>

#include <vector>

namespace quillon::kept
{

class PayloadReader;

/// A relation that did not come back with what it belongs to, because its other end was gone.
struct OwedRelation {
    enum class Other : quint16 {
        LinkSource = 1, // an item that was linked with this one
        LinkTarget = 2, // an item with which this one was linked
        Category = 3,   // a category in which this item was filed
        Member = 4      // an item that was filed in this category
    };
    Other role = Other::LinkSource;
    QString other; // its identifier at that time
};

/// That a deleted item or category is there again. It comes back with its relations, also with those whose other end comes
/// back later, and under another name.
struct PutBackNote {
    bool isCategory = false;
    QString before;       // its identifier when it was deleted
    qint64 deletedAt = 0; // milliseconds since 1970
    QString after;        // under which it is there now
    std::vector<OwedRelation> owed = {};
};

void appendPutBackNote(QByteArray& bytes, const PutBackNote& note);
PutBackNote readPutBackNote(PayloadReader& payload);

} // namespace quillon::kept
