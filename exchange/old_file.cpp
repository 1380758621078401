#include "exchange/old_file.h"

#include "app/base/absolute_path.h"
#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "core/category_entry.h"
#include "exchange/merging.h"
#include "exchange/old_source.h"
#include "exchange/output.h"
#include "exchange/settled_file.h"
#include "exchange/tables.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/identifier_supply.h"
#include "store/quoted.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/statement.h"
#include "store/sqlite/transaction.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// The copying of the rows of one file into the tables of a new one.
class Conversion
{
public:
    /// `day`: that of the source, for what tells no day of its own.
    Conversion(OldSource& source, std::shared_ptr<Database> target, const QDate& day)
        : m_source(source), m_database(std::move(target)), m_target(*m_database), m_day(day)
    {
    }

    ImportReport run()
    {
        sqlite::Transaction write(m_target.connection());
        for (const TableSchema* table : schema::all()) {
            m_target.execute(table->statement);
            copy(*table);
        }
        write.commit();
        m_report.lost = m_source.lossCount();
        m_report.notes = m_source.takeNotes();
        return m_report;
    }

private:
    void copy(const TableSchema& table)
    {
        const QString places = QStringList(static_cast<qsizetype>(table.fields.size()), u"?"_s).join(u", ");
        m_insert = m_target.connection().prepareOwn(u"INSERT INTO "_s + quoted(table.name) + u" VALUES ("_s +
                                                    places + u')');
        qint64& count = countOf(table);
        m_source.forEachRow(table, [&](const StoredRow& row, const QString& where) {
            noteWidth(table, row, where);
            if (inserted(row))
                ++count;
            else
                m_late.emplace_back(row, where);
        });
        // Afterwards, so that none is given an identifier that another has further down.
        for (const auto& [row, where] : std::exchange(m_late, {}))
            ++(insertedOtherwise(table, row, where) ? count : m_report.skipped);
    }

    qint64& countOf(const TableSchema& table)
    {
        if (&table == &schema::Link())
            return m_report.linked;
        if (&table == &schema::Category())
            return m_report.filed;
        if (&table == &schema::Category_ID())
            return m_report.categories;
        return &table == &schema::OpenApp() ? m_uncounted : m_report.added;
    }

    /// False when there is a row of this key already.
    bool inserted(const StoredRow& row)
    {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i])
                m_insert->bind(static_cast<int>(i) + 1, *row[i]);
        }
        try {
            m_insert->run();
        } catch (const Error& error) {
            if (error.number != errors::DuplicateKey)
                throw;
            return false;
        }
        return true;
    }

    /// A row whose key another one has, under another key; false when nothing is lost without it.
    bool insertedOtherwise(const TableSchema& table, StoredRow row, const QString& where)
    {
        const bool isRelation = &table == &schema::Link() || &table == &schema::Category();
        if (isRelation || isThere(table, row)) {
            m_source.notes().add(where, u"同じ内容の行が二つあるため、一つにしました。"_s);
            return false;
        }
        const bool isCategory = &table == &schema::Category_ID();
        QString& identifier = *row[isCategory ? category_field::Category_ID : data_field::Object_ID];
        identifier = isCategory ? newCategory(identifier) : newIdentifier(table, identifier);
        m_source.notes().add(where,
                             u"識別符号が他のデータと重複しているため、%1 に変えました。"_s.arg(identifier));
        ++m_report.renamed;
        return inserted(row);
    }

    bool isThere(const TableSchema& table, const StoredRow& row)
    {
        QStringList conditions;
        for (const FieldSchema& field : table.fields)
            conditions += quoted(field.name) + u" IS ?"_s;
        const auto ask = m_target.connection().prepareOwn(u"SELECT 1 FROM "_s + quoted(table.name) +
                                                          u" WHERE "_s + conditions.join(u" AND "));
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i])
                ask->bind(static_cast<int>(i) + 1, *row[i]);
        }
        return ask->step();
    }

    QString newIdentifier(const TableSchema& table, const QString& taken) const
    {
        const auto rows = RecordSet::openTable(m_database, table);
        const QStringView letter = &table == &schema::Main()     ? u"M"
                                   : &table == &schema::RefDoc() ? u"R"
                                                                 : u"F";
        const QDate day = dayOfIdentifier(taken, m_day);
        return IdentifierSupply(*rows, *kindWithLetter(letter)).next(day.isValid() ? day : m_day);
    }

    QString newCategory(const QString& taken) const
    {
        const auto rows = RecordSet::openTable(m_database, schema::Category_ID());
        return newCategoryIdentifier(taken.first(taken.lastIndexOf(u'-') + 1), [&](const QString& key) {
            return rows->goTo(category_field::Category_ID, key);
        });
    }

    void noteWidth(const TableSchema& table, const StoredRow& row, const QString& where)
    {
        const FieldSchema* const field = fieldTooLong(table, row);
        if (field != nullptr)
            m_source.notes().add(
                where,
                u"項目 %1 が %2 文字を超えています。そのまま写しましたが、更新するときは短くしてください。"_s
                    .arg(field->name, QString::number(field->width)));
    }

    OldSource& m_source;
    std::shared_ptr<Database> m_database;
    Database& m_target;
    QDate m_day;
    qint64 m_uncounted = 0;
    ImportReport m_report;
    std::unique_ptr<sqlite::Statement> m_insert;
    std::vector<std::pair<StoredRow, QString>> m_late; // rows whose key another one has
};

const QString EndingOfDatabases = u".mdb"_s;

const QStringList& companions()
{
    static const QStringList endings = {u"-journal"_s, u"-wal"_s, u"-shm"_s};
    return endings;
}

/// The n-th name for the copy of a file.
QString nameOfCopy(const QFileInfo& source, int n)
{
    const QString mark = n == 1 ? u"-変換"_s : u"-変換-%1"_s.arg(n);
    QString stem = source.fileName();
    if (stem.endsWith(EndingOfDatabases, Qt::CaseInsensitive))
        stem.chop(EndingOfDatabases.size());
    // The name of a journal, which is longer, must fit, too.
    while (stem.size() > 1 &&
           !platform::fitsAsName(source.path(), stem + mark + EndingOfDatabases + companions().front()))
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    return source.path() + u'/' + stem + mark + EndingOfDatabases;
}

/// Makes the file for the copy, under the first name that is free.
std::shared_ptr<Database> createBeside(const QFileInfo& source)
{
    for (int n = 1;; ++n) {
        const QString path = nameOfCopy(source, n);
        // What another database of this name has left would be taken for a part of this one.
        if (std::any_of(companions().begin(), companions().end(),
                        [&](const QString& companion) { return QFile::exists(path + companion); }))
            continue;
        const bool isFree = !QFileInfo::exists(path);
        try {
            return Database::beginCreation(path, false);
        } catch (const Error& error) {
            if (error.number == errors::DatabaseExists)
                continue;
            // Made, but not to be opened.
            if (isFree && QFileInfo(path).size() == 0)
                QFile::remove(path);
            throw Error(error.number,
                        u"変換した写し「%1」を作成できません。"_s.arg(QDir::toNativeSeparators(path)) +
                            error.description);
        }
    }
}

/// Removes a file that was begun, unless it is kept.
class Removal
{
public:
    explicit Removal(QString path) : m_path(std::move(path)) {}
    ~Removal()
    {
        if (m_path.isEmpty())
            return;
        QFile::remove(m_path);
        for (const QString& companion : companions())
            QFile::remove(m_path + companion);
    }
    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;
    void keep() { m_path.clear(); }

private:
    QString m_path;
};

} // namespace

bool isOldFile(const QString& path)
{
    return old_format::isOldFile(path);
}

ConvertedFile convertOldFile(const QString& source, Progress* progress)
{
    const QFileInfo file(absolutePath(QDir::currentPath(), source));
    OldSource old(file.filePath());
    std::shared_ptr<Database> target = createBeside(file);
    Removal removal(target->path());
    ConvertedFile converted{.path = target->path(), .report = {}};
    try {
        old.setProgress(progress, 1);
        converted.report = Conversion(old, target, file.lastModified().date()).run();
    } catch (...) {
        target.reset(); // closed before it is removed
        throw;
    }
    removal.keep();
    return converted;
}

QString writeNotes(const ConvertedFile& converted)
{
    QString content = QString(QChar::ByteOrderMark); // so that every editor takes it for what it is
    for (const Note& note : converted.report.notes)
        content += (note.where.isEmpty() ? note.text : note.where + u": "_s + note.text) + u"\r\n"_s;
    const QString stem = converted.path.chopped(EndingOfDatabases.size());
    QString path = stem + u".txt"_s;
    for (int n = 2; QFile::exists(path); ++n)
        path = stem + u"-%1.txt"_s.arg(n);
    writeFile(path, content.toUtf8());
    return path;
}

ImportReport importOldFile(Session& session, const QString& source, const ImportOptions& options,
                           Progress* progress)
{
    OldSource old(source);
    old.setProgress(progress, 2);
    ImportReport report;
    // The files of a database lie in a folder beside it, and stay where they are.
    const QFileInfo file(absolutePath(QDir::currentPath(), source));
    const bool isHome = QDir(file.path()) == QDir(session.CurrentFolder);
    Merging merging(session, old, report,
                    {.present = isHome ? ComingFiles::Present::Theirs : ComingFiles::Present::MayBeTheirs});
    merging.examine();
    {
        const SettledFile settled(required(session.RsMain));
        sqlite::Transaction write(required(session.RsMain).database().connection());
        merging.write();
        if (!options.dryRun)
            write.commit();
    }
    report.lost = old.lossCount();
    const std::vector<Note> notes = old.takeNotes();
    report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
    return report;
}

} // namespace quillon::exchange
