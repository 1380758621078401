#pragma once

#include <QString>

#include <cstddef>
#include <optional>

namespace quillon
{

class LostThings;
class Session;

/// What came of putting something back.
struct PutBackResult {
    QString identifier;              // under which it stands now; empty for a link, a membership and a file
    bool hasOtherIdentifier = false; // its own is somebody else's by now
    bool hasOtherParent = false;     // a category, because its parent has another one by now
    int missing = 0;                 // links and memberships whose other end is gone
    QString text;                    // all of this in words
};

/// Puts back one of the things that were lost, as one write: an item with its links and categories, a category with its
/// members, a link, a membership, the former texts of an item, the former name of a category, the former content of a
/// file. Everything reaches what it belonged to, under whichever identifier that is there by now, or nothing: whoever
/// else bears the identifier stays as it is. What is replaced is kept in turn. Nothing when a failure was reported, as
/// "PutBack": 3021 with the reason when what it belonged to is gone.
std::optional<PutBackResult> PutBack(Session& session, const LostThings& things, std::size_t number);

} // namespace quillon
