#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "exchange/archive.h"
#include "exchange/archive_format.h"
#include "exchange/input.h"
#include "exchange/notes.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "exchange/registered_files.h"
#include "exchange/tables.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"

#include <QDir>
#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

class ArchiveExport
{
public:
    ArchiveExport(Session& session, const QString& folder, Progress* progress)
        : m_session(session), m_output(folder), m_progress(progress)
    {
    }

    ExportReport run()
    {
        writeFiles(writeTables());
        writeFile(m_output.inside(archive::ManifestName), archive::manifestText(m_manifest));
        ++m_report.files;
        m_output.place();
        m_report.notes = m_notes.take();
        return std::move(m_report);
    }

private:
    /// Returns what files there were to these rows.
    RegisteredFiles writeTables()
    {
        // All of them as they are at one moment.
        const sqlite::Transaction reading(tableOf(m_session, schema::Main()).database().connection(),
                                          sqlite::Transaction::Purpose::Reading);
        RegisteredFiles files(m_session);
        m_output.makeFolder();
        m_output.makeFolder(archive::TablesFolder);
        for (const TableSchema* const table : schema::all())
            m_wholeRows += tableOf(m_session, *table).roughCount();
        for (const TableSchema* const table : schema::all())
            writeTable(tableOf(m_session, *table));
        for (const DataKind& kind : data_kinds::all())
            m_report.written += m_manifest.tables[data_kinds::positionOf(kind)].rows;
        return files;
    }

    void writeTable(const RecordSet& rows)
    {
        const TableSchema& table = rows.table();
        archive::Table entry{.schema = &table, .sha256 = {}};
        QCryptographicHash hash(QCryptographicHash::Sha256);
        OutputFile file(m_output.inside(archive::fileOf(table)));
        QByteArray line;
        qint64 tooLong = 0;
        qint64 noTexts = 0;
        forEachStoredRow(rows, [&](const StoredRow& row, bool isText) {
            line.resize(0);
            archive::appendRow(line, table, row);
            hash.addData(line);
            file.write(line);
            entry.bytes += line.size();
            ++entry.rows;
            noTexts += isText ? 0 : 1;
            tooLong += fieldTooLong(table, row) ? 1 : 0;
            if (entry.rows % RowsPerStep == 0)
                advance(m_progress, m_rows + entry.rows, std::max(m_wholeRows, m_rows + entry.rows));
        });
        file.finish();
        m_rows += entry.rows;
        entry.sha256 = hash.result().toHex();
        m_manifest.tables.push_back(entry);
        ++m_report.files;
        if (noTexts > 0)
            m_notes.add(
                table.name,
                u"文字列でない値のある行が %1 件あります。文字列として書き出しました。"_s.arg(noTexts));
        if (tooLong > 0)
            m_notes.add(table.name,
                        u"項目の幅を超える行が %1 件あります。そのまま書き出しました。"_s.arg(tooLong));
    }

    void writeFiles(const RegisteredFiles& files)
    {
        const QString folder = m_session.inCurrentFolder(titles::FileFolder);
        for (const RegisteredFiles::Lacking& datum : files.lacking())
            m_notes.add(datum.identifier, u"登録されたファイル「%1」がありません。"_s.arg(datum.name));
        if (files.names().isEmpty())
            return;
        m_output.makeFolder(archive::FilesFolder);
        for (const QString& name : files.names()) {
            const QString source = folder + QDir::separator() + name;
            if (!m_session.files.storedFile(folder, name)) {
                m_notes.add(source, u"通常のファイルではないため、書き出しませんでした。"_s);
                continue;
            }
            const auto copy = m_session.files.stageCopy(source, m_output.inside(archive::FilesFolder), name,
                                                        [&](qint64 done, qint64 whole) {
                                                            advance(m_progress, done, whole);
                                                            return true;
                                                        });
            if (!copy)
                throw Cancelled();
            copy->place({});
            copy->keep();
            InputFile written(m_output.inside(archive::FilesFolder + u'/' + name));
            while (!written.read(BytesPerStep).isEmpty())
                advance(m_progress, written.done(), written.size());
            m_manifest.files.push_back({.name = name, .bytes = written.done(), .sha256 = written.sha256()});
            ++m_report.files;
            if (!files.isNamed(name))
                m_notes.add(source, u"このファイルを登録したファイルデータはありません。"_s);
        }
    }

    static constexpr qint64 RowsPerStep = 1000;
    static constexpr qint64 BytesPerStep = qint64{1} << 20;

    Session& m_session;
    StagedOutput m_output;
    Progress* m_progress;
    archive::Manifest m_manifest;
    ExportReport m_report;
    Notes m_notes;
    qint64 m_rows = 0;
    qint64 m_wholeRows = 0;
};

} // namespace

ExportReport exportArchive(Session& session, const QString& folder, Progress* progress)
{
    return ArchiveExport(session, folder, progress).run();
}

} // namespace quillon::exchange
