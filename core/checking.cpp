#include "core/checking.h"
#include "core/kept_place.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/ports/clock.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "store/lookup/identifier_set.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/backup.h"
#include "store/sqlite/transaction.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Somebody does not want to hear more.
struct Ended {
};

/// The tables with what a session holds of them.
std::array<const std::shared_ptr<RecordSet>*, 7> tablesOf(const Session& session)
{
    return {&session.RsMain, &session.RsRefDoc,     &session.RsRefFile, &session.RsOpenApp,
            &session.RsLink, &session.RsCategoryID, &session.RsCategory};
}

/// Letter, date and number of the day, with hyphens between them.
bool isOfRightForm(QStringView identifier, const DataKind& kind)
{
    return identifierNumber(identifier).has_value() && identifier.front() == kind.letter;
}

/// The data and categories that there are.
struct Present {
    IdentifierSet data;
    IdentifierSet categories;

    explicit Present(const Session& session)
    {
        for (const DataKind& kind : data_kinds::all()) {
            required(session.*kind.recordSet)
                .forEachRow({data_field::Object_ID}, [&](const RecordSet::Row& row) {
                    // Also under the letter of another kind: it is not found there, but it is not gone. Its identifier
                    // is told as odd, and what leads to it is not for deleting.
                    if (!row.isNull(0))
                        data.insert(row.text(0));
                });
        }
        required(session.RsCategoryID)
            .forEachRow({category_field::Category_ID}, [&](const RecordSet::Row& row) {
                if (!row.isNull(0))
                    categories.insert(row.text(0));
            });
    }

    bool isDangling(const RecordSet::Row& link) const
    {
        return !data.contains(link.text(0)) || !data.contains(link.text(1));
    }
    bool isDanglingMembership(const RecordSet::Row& membership) const
    {
        return !categories.contains(membership.text(0)) || !data.contains(membership.text(1));
    }
};

QString both(const RecordSet::Row& row)
{
    return row.text(0).toString() + u" - "_s + row.text(1).toString();
}

class Checking
{
public:
    Checking(Session& session, const std::function<bool(const Finding&)>& tell)
        : m_session(session), m_database(*session.OpenDb), m_tell(tell)
    {
    }

    void run()
    {
        file();
        tables();
        for (const DataKind& kind : data_kinds::all())
            passingOver(required(m_session.*kind.recordSet).table().name, [&] { identifiers(kind); });
        for (const auto* rows : tablesOf(m_session))
            passingOver(required(*rows).table().name, [&] { texts(**rows); });
        passingOver(schema::Link().name, [&] { relations(); });
        passingOver(schema::Category_ID().name, [&] { categories(); });
        passingOver(schema::RefFile().name, [&] { files(); });
    }

private:
    void tell(Trouble trouble, const QString& place, const QString& identifier, const QString& text)
    {
        if (!m_tell({.trouble = trouble, .place = place, .identifier = identifier, .text = text}))
            throw Ended();
    }

    /// A table that cannot be read is told, and the next one has its turn.
    template <class Step> void passingOver(const QString& table, Step&& step)
    {
        guardedBy([&](const Error& error) { tell(Trouble::Damaged, table, {}, error.description); },
                  std::forward<Step>(step));
    }

    void file()
    {
        passingOver({}, [&] {
            const auto statement = m_database.connection().prepareOwn(u"PRAGMA integrity_check"_s);
            while (statement->step()) {
                if (statement->text(0) != u"ok")
                    tell(Trouble::Damaged, {}, {},
                         u"データベースのファイルが壊れています: %1"_s.arg(statement->text(0)));
            }
        });
    }

    void tables()
    {
        QSet<QString> ours;
        for (const TableSchema* table : schema::all()) {
            ours.insert(table->name);
            if (!m_database.isAsDeclared(*table))
                tell(Trouble::OtherTable, table->name, {},
                     u"テーブル %1 の作りが異なります。"_s.arg(table->name));
        }
        QStringList others;
        {
            const auto statement = m_database.connection().prepareOwn(
                u"SELECT name FROM sqlite_master WHERE name NOT LIKE 'sqlite!_%' ESCAPE '!'"_s);
            while (statement->step())
                others << statement->text(0).toString();
        }
        for (const QString& name : others) {
            if (!ours.contains(name))
                tell(Trouble::OtherTable, name, {}, u"Quillon のものではない %1 があります。"_s.arg(name));
        }
    }

    void identifiers(const DataKind& kind)
    {
        const RecordSet& rows = required(m_session.*kind.recordSet);
        const QString table = rows.table().name;
        rows.forEachRow({data_field::Object_ID, data_field::Name}, [&](const RecordSet::Row& row) {
            if (row.isNull(0) || !isOfRightForm(row.text(0), kind))
                tell(Trouble::OddIdentifier, table, row.text(0).toString(),
                     u"%1「%2」の識別符号「%3」は正しい形ではありません。"_s.arg(kind.shortName, row.text(1),
                                                                                 row.text(0)));
        });
    }

    void texts(const RecordSet& rows)
    {
        const TableSchema& table = rows.table();
        const int last = static_cast<int>(table.fields.size()) - 1;
        const auto check = [&](const RecordSet::Row& row) {
            for (int i = 0; i <= last; ++i) {
                const FieldSchema& field = table.fields[static_cast<std::size_t>(i)];
                // Data are named by their identifier, relations by both ends.
                const QString identifier = last == 2 ? row.text(1).toString() : both(row);
                if (!row.isNull(i) && !row.isText(i))
                    tell(Trouble::NoText, table.name, identifier,
                         u"%1 の %2 (%3) の値は文字列ではありません。"_s.arg(table.name, field.name,
                                                                             identifier));
                else if (field.width > 0 && row.text(i).size() > field.width)
                    tell(Trouble::TooWide, table.name, identifier,
                         u"%1 の %2 (%3) は %4 文字で、限度の %5 文字を超えています。"_s
                             .arg(table.name, field.name, identifier)
                             .arg(row.text(i).size())
                             .arg(field.width));
            }
        };
        if (last == 2)
            rows.forEachRow({0, 1, 2}, check);
        else
            rows.forEachRow({0, 1}, check);
    }

    void relations()
    {
        const Present present(m_session);
        required(m_session.RsLink).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
            if (present.isDangling(row))
                tell(Trouble::DanglingLink, schema::Link().name, both(row),
                     u"リンク %1 の相手のデータがありません。"_s.arg(both(row)));
        });
        required(m_session.RsCategory).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
            if (present.isDanglingMembership(row))
                tell(Trouble::DanglingMembership, schema::Category().name, both(row),
                     u"分類 %1 のカテゴリまたはデータがありません。"_s.arg(both(row)));
        });
    }

    void categories()
    {
        IdentifierSet present;
        const RecordSet& rows = required(m_session.RsCategoryID);
        rows.forEachRow({category_field::Category_ID},
                        [&](const RecordSet::Row& row) { present.insert(row.text(0)); });
        rows.forEachRow({category_field::Category_ID, category_field::Name}, [&](const RecordSet::Row& row) {
            const QStringView identifier = row.text(0);
            const qsizetype hyphen = identifier.lastIndexOf(u'-');
            if (hyphen > 0 && !present.contains(identifier.first(hyphen)))
                tell(Trouble::OrphanedCategory, schema::Category_ID().name, identifier.toString(),
                     u"カテゴリ「%1」(%2) の上位のカテゴリがありません。"_s.arg(row.text(1), identifier));
        });
    }

    void files()
    {
        const QString folder = m_session.inCurrentFolder(titles::FileFolder);
        struct FileRow {
            QString name;
            QString identifier;
            QString other; // where another file may be named
        };
        std::vector<FileRow> rows;
        required(m_session.RsRefFile)
            .forEachRow(
                {data_field::Name, data_field::Object_ID, data_field::Explanation},
                [&](const RecordSet::Row& row) {
                    rows.push_back({row.text(0).toString(), row.text(1).toString(), row.text(2).toString()});
                });
        QSet<QString> registered;
        for (const FileRow& row : rows) {
            registered << platform::nameKey(row.name) << platform::nameKey(row.other);
            if (!m_session.files.storedFile(folder, row.other) &&
                !m_session.files.storedFile(folder, row.name))
                tell(Trouble::MissingFile, {}, row.identifier,
                     u"ファイルデータ「%1」(%2) のファイルがありません。"_s.arg(row.name, row.identifier));
        }
        QStringList present;
        const QStringList names = platform::namesOfFiles(folder);
        for (const QString& name : names) {
            if (!registered.contains(platform::nameKey(name)))
                present << name;
        }
        present.sort();
        for (const QString& name : std::as_const(present))
            tell(Trouble::UnregisteredFile, {}, name, u"ファイル「%1」は登録されていません。"_s.arg(name));
    }

    Session& m_session;
    Database& m_database;
    const std::function<bool(const Finding&)>& m_tell;
};

/// Whether SQLite finds the file whole.
bool isWhole(Database& database)
{
    const auto statement = database.connection().prepareOwn(u"PRAGMA quick_check(1)"_s);
    return statement->step() && statement->text(0) == u"ok";
}

/// A copy beside the database; its name tells when it was made.
QString copyBeside(const Session& session)
{
    const QFileInfo file(session.OpenDb->connection().file());
    const QString copy = file.path() + u'/' + file.completeBaseName() + u'-' +
                         session.clock.now().toString(u"yyyyMMdd-HHmmss") + u".mdb"_s;
    if (session.files.entryExists(copy))
        throw Error(errors::DatabaseExists);
    sqlite::Backup backup(file.filePath(), copy);
    constexpr int Pages = 256;
    int patience = 300; // a lock of somebody else ends soon, or not at all
    for (auto progress = backup.step(Pages); progress != sqlite::Backup::Progress::Done;
         progress = backup.step(Pages)) {
        if (progress != sqlite::Backup::Progress::IsLocked)
            continue;
        if (--patience == 0)
            throw Error(errors::Locked);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    backup.keep();
    // Before anything is mended it outlives a power failure.
    platform::syncFile(copy);
    platform::syncFolder(file.path());
    return QDir::toNativeSeparators(copy);
}

QString copyBefore(const Session& session)
{
    const std::optional<kept::Place> place = keptPlace(session, session.OpenDb->path());
    if (!place)
        return copyBeside(session);
    kept::makeCopy({.place = *place,
                    .fileFolder = session.inCurrentFolder(titles::FileFolder),
                    .now = [&] { return session.clock.now(); },
                    .goesOn = [] { return true; }});
    // When the database is as it was for the last one, that is the copy.
    const auto copies = kept::listCopies(*place);
    if (copies.empty())
        throw Error(errors::PathFileAccess);
    return QDir::toNativeSeparators(copies.front().path);
}

bool hasDangling(const RecordSet& links, const RecordSet& memberships, const Present& present)
{
    bool has = false;
    links.forEachRow({0, 1}, [&](const RecordSet::Row& row) { return !(has = present.isDangling(row)); });
    if (!has)
        memberships.forEachRow(
            {0, 1}, [&](const RecordSet::Row& row) { return !(has = present.isDanglingMembership(row)); });
    return has;
}

} // namespace

void checkDatabase(Session& session, const std::function<bool(const Finding&)>& tell)
{
    if (!session.OpenDb)
        throw Error(errors::ObjectNotSet);
    try {
        Checking(session, tell).run();
    } catch (const Ended&) {
        return;
    }
}

Mended mendDatabase(Session& session)
{
    if (!session.OpenDb)
        throw Error(errors::ObjectNotSet);
    if (!isWhole(*session.OpenDb))
        throw Error(errors::NotADatabase, u"データベースのファイルが壊れているため、修復できません。"
                                          u"控えから取り出してください。"_s);
    RecordSet& links = required(session.RsLink);
    RecordSet& memberships = required(session.RsCategory);
    if (!hasDangling(links, memberships, Present(session)))
        return {};
    Mended mended{.copy = copyBefore(session)};
    sqlite::Transaction write(session.OpenDb->connection());
    // Looked at anew: others may have written since it was told what is wrong.
    const Present present(session);
    links.deleteRowsIf({0, 1}, [&](const RecordSet::Row& row) {
        const bool isDangling = present.isDangling(row);
        mended.links += isDangling ? 1 : 0;
        return isDangling;
    });
    memberships.deleteRowsIf({0, 1}, [&](const RecordSet::Row& row) {
        const bool isDangling = present.isDanglingMembership(row);
        mended.memberships += isDangling ? 1 : 0;
        return isDangling;
    });
    write.commit();
    return mended;
}

} // namespace quillon
