#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "exchange/archive.h"
#include "exchange/archive_format.h"
#include "exchange/coming_files.h"
#include "exchange/input.h"
#include "exchange/merging.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "exchange/settled_file.h"
#include "exchange/tables.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

constexpr qint64 BytesPerStep = qint64{1} << 20;

QByteArray contentOf(const QString& path)
{
    constexpr qint64 Much = qint64{1} << 28;
    return InputFile(path).read(Much);
}

/// The rows of an archive. Every pass sees that they are those of the manifest.
class ArchivedRows : public RowSource
{
public:
    ArchivedRows(QString folder, const archive::Manifest& manifest, Progress* progress)
        : m_folder(std::move(folder)), m_manifest(manifest), m_progress(progress)
    {
        for (const archive::Table& table : manifest.tables)
            m_rows += table.rows;
        for (const archive::File& file : manifest.files)
            m_names.insert(file.name);
        for (const archive::File& file : manifest.files) {
            if (const QString key = platform::nameKey(file.name); !m_byKey.contains(key))
                m_byKey.insert(key, file.name);
        }
    }

    /// Files that get another name than they have in the archive.
    void setNewNames(QHash<QString, QString> names) { m_newNames = std::move(names); }

    void forEachRow(const TableSchema& table, const Visit& visit) override
    {
        const auto entry = std::find_if(m_manifest.tables.begin(), m_manifest.tables.end(),
                                        [&](const archive::Table& each) { return each.schema == &table; });
        const QString name = archive::fileOf(table);
        InputFile file(m_folder + u'/' + name);
        QByteArray line;
        qint64 number = 0;
        while (file.readLine(line)) {
            ++number;
            const QString where = name + u':' + QString::number(number);
            auto row = archive::readRow(line, table);
            if (!row || !file.lineEnded())
                throw Refused(u"書庫が壊れています。%1 行目を読み取れません。"_s.arg(where));
            rename(table, *row);
            visit(*row, where);
            constexpr qint64 RowsPerStep = 1000;
            if (++m_visited % RowsPerStep == 0)
                advance(m_progress, std::min(m_visited, 2 * m_rows), 2 * m_rows);
        }
        if (number != entry->rows || file.done() != entry->bytes || file.sha256() != entry->sha256)
            throw Refused(u"書庫が壊れています。%1 の内容が目録と一致しません。"_s.arg(name));
    }

private:
    /// A datum follows its file: the third field names it, or else the first.
    void rename(const TableSchema& table, StoredRow& row) const
    {
        if (m_newNames.isEmpty() || &table != &schema::RefFile())
            return;
        for (const int field : {data_field::Explanation, data_field::Name}) {
            std::optional<QString>& text = row[static_cast<std::size_t>(field)];
            const std::optional<QString> name = text ? archivedName(*text) : std::nullopt;
            if (!name)
                continue;
            text = m_newNames.value(*name, *text);
            return;
        }
    }

    /// The name in the archive of the file that is named so. An archive may come from where case tells files apart: then
    /// it has the very name.
    std::optional<QString> archivedName(const QString& name) const
    {
        if (m_names.contains(name))
            return name;
        const auto alike = m_byKey.constFind(platform::nameKey(name));
        return alike == m_byKey.cend() ? std::nullopt : std::optional(*alike);
    }

private:
    QString m_folder;
    const archive::Manifest& m_manifest;
    Progress* m_progress;
    qint64 m_rows = 0;
    qint64 m_visited = 0;
    QSet<QString> m_names;
    QHash<QString, QString> m_byKey;
    QHash<QString, QString> m_newNames;
};

/// Files that have been put into the folder of registered files. They are gone with this object unless it is told that
/// they stay.
class PlacedFiles
{
public:
    PlacedFiles() = default;
    ~PlacedFiles()
    {
        for (const QString& path : std::as_const(m_paths))
            QFile::remove(path);
        if (!m_folder.isEmpty())
            QDir().rmdir(m_folder);
    }
    PlacedFiles(const PlacedFiles&) = delete;
    PlacedFiles& operator=(const PlacedFiles&) = delete;

    void add(const QString& path) { m_paths << path; }
    void madeFolder(const QString& path) { m_folder = path; }
    void stay()
    {
        m_paths.clear();
        m_folder.clear();
    }
    /// To be told when their rows could not be made durable: a disk that fails at the very end leaves rows that stand all
    /// the same. Those have their files. A file that nobody names, because that cannot be asked now, harms nobody.
    void stayWhereNamed(RecordSet& rows)
    {
        QSet<QString> named;
        guardedBy([this](const Error&) { stay(); },
                  [&] {
                      rows.forEachRow({data_field::Name, data_field::Explanation},
                                      [&](const RecordSet::Row& row) {
                                          for (const int field : {0, 1})
                                              named << platform::nameKey(row.text(field).toString());
                                      });
                  });
        m_paths.removeIf([&](const QString& path) {
            return named.contains(platform::nameKey(QFileInfo(path).fileName()));
        });
    }

private:
    QStringList m_paths;
    QString m_folder;
};

class ArchiveImport
{
public:
    ArchiveImport(Session& session, QString folder, const ImportOptions& options, Progress* progress)
        : m_session(session), m_folder(std::move(folder)), m_options(options), m_progress(progress),
          m_fileFolder(session.inCurrentFolder(titles::FileFolder))
    {
    }

    ImportReport run()
    {
        const QString manifest = m_folder + u'/' + archive::ManifestName;
        if (!QFileInfo(m_folder).isDir() || !QFileInfo::exists(manifest))
            throw Refused(
                u"「%1」は Quillon の書庫ではありません。"_s.arg(QDir::toNativeSeparators(m_folder)));
        m_manifest = archive::readManifest(contentOf(manifest));
        checkFiles();
        ArchivedRows rows(m_folder, m_manifest, m_progress);
        const QHash<QString, QString> renamed = newNames();
        rows.setNewNames(renamed);
        ComingFiles coming;
        for (const archive::File& file : m_manifest.files)
            coming.names.insert(platform::nameKey(renamed.value(file.name, file.name)));
        Merging merging(m_session, rows, m_report, std::move(coming));
        merging.examine();
        PlacedFiles placed;
        const SettledFile settled(required(m_session.RsMain));
        sqlite::Transaction write(required(m_session.RsMain).database().connection());
        merging.write();
        if (!m_options.dryRun) {
            placeFiles(placed);
            try {
                write.commit();
            } catch (...) {
                placed.stayWhereNamed(required(m_session.RsRefFile));
                throw;
            }
            placed.stay();
        }
        return std::move(m_report);
    }

private:
    void requireSame(const QString& path, const archive::File& file)
    {
        if (!m_session.files.fileExists(path))
            throw Refused(u"書庫が壊れています。ファイル %1 がありません。"_s.arg(file.name));
        if (!holds(path, file))
            throw Refused(u"書庫が壊れています。ファイル %1 の内容が目録と一致しません。"_s.arg(file.name));
    }

    bool holds(const QString& path, const archive::File& file)
    {
        InputFile present(path);
        if (present.size() != file.bytes)
            return false;
        while (!present.read(BytesPerStep).isEmpty())
            advance(m_progress, present.done(), present.size());
        return present.done() == file.bytes && present.sha256() == file.sha256;
    }

    QString archived(const archive::File& file) const
    {
        return m_folder + u'/' + archive::FilesFolder + u'/' + file.name;
    }
    QString registered(const QString& name) const { return m_fileFolder + QDir::separator() + name; }

    void checkFiles()
    {
        for (const archive::File& file : m_manifest.files)
            requireSame(archived(file), file);
    }

    /// Finds a name for every file: its own, unless another file has that.
    QHash<QString, QString> newNames()
    {
        QSet<QString> coming;
        for (const archive::File& file : m_manifest.files)
            coming.insert(platform::nameKey(file.name));
        QSet<QString> placed; // not on the disk yet
        QHash<QString, QString> renamed;
        for (const archive::File& file : m_manifest.files) {
            QString name = file.name;
            for (int number = 2;; ++number) {
                const QString key = platform::nameKey(name);
                const bool isFree = !placed.contains(key) && (name == file.name || !coming.contains(key));
                const bool stands = m_session.files.entryExists(registered(name));
                if (isFree && !stands) {
                    m_toPlace.push_back({.file = file, .as = name});
                    placed.insert(key);
                    break;
                }
                // One that is there already needs no copy.
                if (isFree && m_session.files.fileExists(registered(name)) && holds(registered(name), file))
                    break;
                name = numberedName(file.name, number);
            }
            if (name == file.name)
                continue;
            renamed.insert(file.name, name);
            m_report.notes.push_back(
                {.where = archived(file),
                 .text =
                     u"同じ名前の別のファイルがあるため、「%1」という名前で取り込みました。"_s.arg(name)});
        }
        return renamed;
    }

    void placeFiles(PlacedFiles& placed)
    {
        if (m_toPlace.empty() && !m_manifest.hasRowsOf(schema::RefFile()))
            return;
        if (!m_session.files.folderExists(m_fileFolder)) {
            if (!QDir().mkdir(m_fileFolder))
                throw Error(errors::PathFileAccess, u"ファイルデータのフォルダ「%1」を作成できません。"_s.arg(
                                                        QDir::toNativeSeparators(m_fileFolder)));
            placed.madeFolder(m_fileFolder);
        }
        for (const Placing& placing : m_toPlace) {
            const auto copy = m_session.files.stageCopy(archived(placing.file), m_fileFolder, placing.as,
                                                        [&](qint64 done, qint64 whole) {
                                                            advance(m_progress, done, whole);
                                                            return true;
                                                        });
            if (!copy)
                throw Cancelled();
            // Another program may have come first.
            if (m_session.files.entryExists(registered(placing.as)))
                throw Refused(
                    u"ファイル「%1」が同時に登録されました。やり直してください。"_s.arg(placing.as));
            copy->place({});
            placed.add(registered(placing.as));
            copy->keep();
            requireSame(registered(placing.as), placing.file);
        }
    }

    struct Placing {
        archive::File file;
        QString as;
    };

    Session& m_session;
    QString m_folder;
    ImportOptions m_options;
    Progress* m_progress;
    QString m_fileFolder;
    archive::Manifest m_manifest;
    std::vector<Placing> m_toPlace;
    ImportReport m_report;
};

} // namespace

ImportReport importArchive(Session& session, const QString& folder, const ImportOptions& options,
                           Progress* progress)
{
    return ArchiveImport(session, folder, options, progress).run();
}

} // namespace quillon::exchange
