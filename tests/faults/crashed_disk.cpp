#include "tests/faults/crashed_disk.h"

#include <algorithm>
#include <utility>

namespace quillon::testing
{

CrashedDisk::CrashedDisk(QString folder, const Files& before, const std::vector<DiskEvent>& events)
    : m_folder(std::move(folder))
{
    for (const auto& [name, bytes] : before)
        m_names[name].synced = std::make_shared<Body>(Body{.synced = bytes, .unsynced = {}});
    for (const DiskEvent& event : events)
        take(event);
}

QString CrashedDisk::nameIn(const QString& path) const
{
    return path.startsWith(m_folder) ? path.mid(m_folder.size() + 1) : path;
}

void CrashedDisk::take(const DiskEvent& event)
{
    using Kind = DiskEvent::Kind;
    const auto known = [&] {
        return event.file != 0 ? m_numbered[event.file] : m_names[nameIn(event.path)].present();
    };
    switch (event.kind) {
    case Kind::Mark:
        m_lastMark = static_cast<int>(event.at);
        return;
    case Kind::SyncNames:
        syncNames(nameIn(event.path));
        return;
    case Kind::Make: {
        const auto made = std::make_shared<Body>();
        if (event.file != 0)
            m_numbered[event.file] = made;
        if (!event.path.isEmpty())
            changeName(event.path, made);
        return;
    }
    case Kind::MakeFolder:
        changeName(event.path, std::make_shared<Body>(Body{.synced = {}, .unsynced = {}, .isFolder = true}));
        return;
    case Kind::Unlink:
        changeName(event.path, nullptr);
        return;
    case Kind::Link:
        changeName(event.path, event.from.isEmpty() ? known() : m_names[nameIn(event.from)].present());
        return;
    case Kind::Rename: {
        const Entry moved = m_names[nameIn(event.from)].present();
        if (moved == m_names[nameIn(event.path)].present())
            return; // two names of one file both stay
        changeName(event.from, nullptr);
        --m_changes;
        changeName(event.path, moved);
        return;
    }
    case Kind::Sync:
        if (const Entry file = known()) {
            for (const DiskEvent& written : file->unsynced)
                apply(written, file->synced);
            file->unsynced.clear();
        }
        return;
    case Kind::Write:
    case Kind::Resize:
        if (const Entry file = known())
            file->unsynced.push_back(event);
        return;
    }
}

void CrashedDisk::changeName(const QString& path, const Entry& entry)
{
    m_names[nameIn(path)].unsynced.push_back({.number = m_changes++, .entry = entry});
}

void CrashedDisk::syncNames(const QString& folder)
{
    const auto isIn = [&](const QString& name) {
        return name.left(qMax(qsizetype(0), name.lastIndexOf(u'/'))) == folder;
    };
    std::set<int> synced;
    for (const auto& [name, entry] : m_names) {
        for (const Change& change : entry.unsynced) {
            if (isIn(name))
                synced.insert(change.number);
        }
    }
    // The other name of a renaming has changed with it, and whatever it led to before that is past.
    for (std::size_t before = 0; before != synced.size();) {
        before = synced.size();
        for (const auto& [name, entry] : m_names) {
            const auto last =
                std::find_if(entry.unsynced.rbegin(), entry.unsynced.rend(),
                             [&](const Change& change) { return synced.contains(change.number); });
            for (auto change = last; change != entry.unsynced.rend(); ++change)
                synced.insert(change->number);
        }
    }
    for (auto& [name, entry] : m_names) {
        const auto end = std::find_if(entry.unsynced.begin(), entry.unsynced.end(),
                                      [&](const Change& change) { return !synced.contains(change.number); });
        if (end != entry.unsynced.begin())
            entry.synced = (end - 1)->entry;
        entry.unsynced.erase(entry.unsynced.begin(), end);
    }
}

/// The changes of names that the disk never saw.
std::set<int> CrashedDisk::lostChanges(Loss loss, std::mt19937& random) const
{
    std::set<int> lost;
    for (const auto& [name, entry] : m_names) {
        std::size_t kept = entry.unsynced.size();
        if (loss == Loss::All)
            kept = 0;
        else if (loss == Loss::Some)
            kept = random() % (entry.unsynced.size() + 1);
        for (std::size_t i = kept; i < entry.unsynced.size(); ++i)
            lost.insert(entry.unsynced[i].number);
    }
    // Nor did it see what came after them for the same name.
    for (std::size_t before = lost.size() + 1; before != lost.size();) {
        before = lost.size();
        for (const auto& [name, entry] : m_names) {
            bool isLost = false;
            for (const Change& change : entry.unsynced) {
                isLost = isLost || lost.contains(change.number);
                if (isLost)
                    lost.insert(change.number);
            }
        }
    }
    return lost;
}

CrashedDisk::Files CrashedDisk::files(Loss loss, std::mt19937& random) const
{
    const std::set<int> lost = lostChanges(loss, random);
    std::map<QString, Entry> left;
    for (const auto& [name, entry] : m_names) {
        Entry file = entry.synced;
        for (const Change& change : entry.unsynced) {
            if (!lost.contains(change.number))
                file = change.entry;
        }
        left[name] = file;
    }
    Files files;
    for (const auto& [name, file] : left) {
        const auto folder = left.find(name.left(qMax(qsizetype(0), name.lastIndexOf(u'/'))));
        if (!file || (folder != left.end() && !folder->second))
            continue;
        if (file->isFolder)
            files[name + u'/'];
        else
            files[name] = contentOf(*file, loss, random);
    }
    return files;
}

QByteArray CrashedDisk::contentOf(const Body& body, Loss loss, std::mt19937& random)
{
    QByteArray bytes = body.synced;
    if (loss == Loss::All)
        return bytes;
    for (const DiskEvent& event : body.unsynced) {
        if (loss == Loss::None || random() % 2 == 0)
            apply(event, bytes);
        else
            applyInPart(event, bytes, random);
    }
    return bytes;
}

void CrashedDisk::apply(const DiskEvent& event, QByteArray& bytes)
{
    if (event.kind == DiskEvent::Kind::Resize) {
        bytes.resize(static_cast<qsizetype>(event.at));
        return;
    }
    const qsizetype end = static_cast<qsizetype>(event.at) + event.bytes.size();
    if (bytes.size() < end)
        bytes.append(end - bytes.size(), '\0');
    std::copy(event.bytes.begin(), event.bytes.end(), bytes.begin() + event.at);
}

/// Nothing of it, or some of its sectors; a file that it makes longer may be longer without any of them, with whatever
/// lay there on the disk.
void CrashedDisk::applyInPart(const DiskEvent& event, QByteArray& bytes, std::mt19937& random)
{
    if (event.kind == DiskEvent::Kind::Resize || random() % 3 == 0)
        return;
    const qsizetype end = static_cast<qsizetype>(event.at) + event.bytes.size();
    const qsizetype known = std::min(bytes.size(), end);
    if (bytes.size() < end) {
        if (random() % 2 == 0)
            return;
        const qsizetype before = bytes.size();
        bytes.append(end - before, '\0');
        if (random() % 2 == 0) {
            for (qsizetype i = std::max(before, known); i < end; ++i)
                bytes[i] = static_cast<char>(random());
        }
    }
    constexpr qsizetype Sector = 512;
    for (qsizetype from = 0; from < event.bytes.size();) {
        const qsizetype at = static_cast<qsizetype>(event.at) + from;
        const qsizetype piece = std::min(Sector - at % Sector, event.bytes.size() - from);
        if (random() % 2 == 0)
            std::copy_n(event.bytes.begin() + from, piece, bytes.begin() + at);
        from += piece;
    }
}

} // namespace quillon::testing
