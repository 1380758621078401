#include "tests/faults/crashed_disk.h"

#include <algorithm>

namespace quillon::testing
{

namespace
{

QString nameIn(const QString& path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

CrashedDisk::CrashedDisk(const Files& before, const std::vector<DiskEvent>& events)
{
    for (const auto& [name, bytes] : before)
        m_names[name].synced = std::make_shared<Body>(Body{.synced = bytes, .unsynced = {}});
    for (const DiskEvent& event : events) {
        if (event.kind == DiskEvent::Kind::Mark) {
            m_lastMark = static_cast<int>(event.at);
            continue;
        }
        if (event.kind == DiskEvent::Kind::SyncNames) {
            for (auto& [name, entry] : m_names) {
                if (!entry.unsynced.empty())
                    entry.synced = entry.unsynced.back();
                entry.unsynced.clear();
            }
            continue;
        }
        Name& name = m_names[nameIn(event.path)];
        if (event.kind == DiskEvent::Kind::Make) {
            name.unsynced.push_back(std::make_shared<Body>());
            continue;
        }
        if (event.kind == DiskEvent::Kind::Unlink) {
            name.unsynced.push_back(nullptr);
            continue;
        }
        const Entry file = name.present();
        if (!file)
            continue;
        if (event.kind != DiskEvent::Kind::Sync) {
            file->unsynced.push_back(event);
            continue;
        }
        for (const DiskEvent& written : file->unsynced)
            apply(written, file->synced);
        file->unsynced.clear();
    }
}

CrashedDisk::Files CrashedDisk::files(Loss loss, std::mt19937& random) const
{
    Files files;
    for (const auto& [name, entry] : m_names) {
        std::size_t kept = entry.unsynced.size();
        if (loss == Loss::All)
            kept = 0;
        else if (loss == Loss::Some)
            kept = random() % (entry.unsynced.size() + 1);
        const Entry& file = kept == 0 ? entry.synced : entry.unsynced[kept - 1];
        if (file)
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
