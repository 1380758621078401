#pragma once

#include "tests/faults/faulty_disk.h"

#include <map>
#include <memory>
#include <random>
#include <vector>

namespace quillon::testing
{

/// What a power failure leaves. What was synced stays; of everything else nobody knows: each write may be there, or
/// not, or in a part, whatever came before and after it. The same holds for names that were given and taken, only
/// that those of one file stay in their order.
class CrashedDisk
{
public:
    using Files = std::map<QString, QByteArray>; // by their names in the folder

    /// `before`: the files as they lay there, all synced.
    CrashedDisk(const Files& before, const std::vector<DiskEvent>& events);

    enum class Loss {
        None, // everything was written in time
        All,  // nothing was
        Some
    };
    Files files(Loss loss, std::mt19937& random) const;
    /// The number of the test's last mark, 0 when there is none.
    int lastMark() const { return m_lastMark; }

private:
    struct Body {
        QByteArray synced;
        std::vector<DiskEvent> unsynced;
    };
    using Entry = std::shared_ptr<Body>; // null: no file has the name

    static QByteArray contentOf(const Body& body, Loss loss, std::mt19937& random);
    static void apply(const DiskEvent& event, QByteArray& bytes);
    static void applyInPart(const DiskEvent& event, QByteArray& bytes, std::mt19937& random);

    struct Name {
        Entry synced;
        std::vector<Entry> unsynced; // what it has led to since, in order
        const Entry& present() const { return unsynced.empty() ? synced : unsynced.back(); }
    };
    std::map<QString, Name> m_names;
    int m_lastMark = 0;
};

} // namespace quillon::testing
