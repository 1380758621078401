#pragma once

#include "tests/faults/faulty_disk.h"

#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace quillon::testing
{

/// What a power failure leaves of a folder. What was synced stays; of everything else nobody knows: each write may be
/// there, or not, or in a part, whatever came before and after it. The same holds for names that were given and taken,
/// only that those of one file stay in their order, and that a file is never without both of its names in a renaming.
class CrashedDisk
{
public:
    /// By their names in the folder. What ends with a slash is a folder in it.
    using Files = std::map<QString, QByteArray>;

    /// `before`: the files as they lay there in `folder`, all synced.
    CrashedDisk(QString folder, const Files& before, const std::vector<DiskEvent>& events);

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
        bool isFolder = false;
    };
    using Entry = std::shared_ptr<Body>; // null: nothing has the name
    /// What a name has led to from some moment on. A renaming is one change of two names.
    struct Change {
        int number = 0;
        Entry entry;
    };
    struct Name {
        Entry synced;
        std::vector<Change> unsynced; // in order
        const Entry& present() const { return unsynced.empty() ? synced : unsynced.back().entry; }
    };

    static QByteArray contentOf(const Body& body, Loss loss, std::mt19937& random);
    static void apply(const DiskEvent& event, QByteArray& bytes);
    static void applyInPart(const DiskEvent& event, QByteArray& bytes, std::mt19937& random);

    QString nameIn(const QString& path) const;
    void take(const DiskEvent& event);
    void changeName(const QString& path, const Entry& entry);
    void syncNames(const QString& folder);
    std::set<int> lostChanges(Loss loss, std::mt19937& random) const;

    QString m_folder;
    std::map<QString, Name> m_names;
    std::map<std::uint64_t, Entry> m_numbered;
    int m_changes = 0;
    int m_lastMark = 0;
};

} // namespace quillon::testing
