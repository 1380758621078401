#include "exchange/markdown.h"

#include "app/base/one_line.h"
#include "app/base/titles.h"
#include "exchange/all_data.h"
#include "exchange/copied_files.h"
#include "exchange/file_names.h"
#include "exchange/markdown_note.h"
#include "exchange/new_data.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "exchange/separated.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

const QString EndingOfNotes = u".md"_s;

QString fileNote(const std::optional<QString>& name)
{
    return name ? u"![["_s + titles::FileFolder + u'/' + *name + u"]]"_s : QString();
}

/// By what notes are led to.
class NoteNames
{
public:
    void add(const QString& path, const QString& title, const QString& identifier)
    {
        const QString name = path.chopped(EndingOfNotes.size());
        for (const auto& [names, key] :
             {std::pair{&m_paths, name}, {&m_bases, name.section(u'/', -1)}, {&m_titles, title}})
            (*names)[key.toCaseFolded()].push_back({.name = key, .identifier = identifier});
    }

    struct Found {
        QString identifier; // empty: there is no such note
        bool isOneOfSeveral = false;
    };
    /// `from`: the path of the note with the link.
    Found find(const QString& target, const QString& from) const
    {
        const QString beside = QDir::cleanPath(QFileInfo(from).path() + u'/' + target);
        for (const auto& [names, key] :
             {std::pair{&m_paths, beside}, {&m_paths, target}, {&m_bases, target}, {&m_titles, target}}) {
            const auto bearers = names->constFind(key.toCaseFolded());
            if (bearers != names->cend())
                return oneOf(*bearers, key);
        }
        return {};
    }

private:
    struct Bearer {
        QString name;
        QString identifier;
    };
    using Names = QHash<QString, QList<Bearer>>;

    /// Large and small letters are the same, unless it is just they that tell two notes apart.
    static Found oneOf(const QList<Bearer>& bearers, const QString& name)
    {
        Found found;
        for (const bool isExact : {true, false}) {
            for (const Bearer& bearer : bearers) {
                if (isExact && bearer.name != name)
                    continue;
                if (found.identifier.isEmpty())
                    found.identifier = bearer.identifier;
                found.isOneOfSeveral = found.isOneOfSeveral || bearer.identifier != found.identifier;
            }
            if (!found.identifier.isEmpty())
                break;
        }
        return found;
    }

    Names m_paths;
    Names m_bases;
    Names m_titles;
};

class MarkdownImport
{
public:
    MarkdownImport(NewData& data, const QString& folder, const TextImportOptions& options)
        : m_data(data), m_folder(folder), m_options(options)
    {
    }

    void add(const QString& path)
    {
        const QFileInfo file(m_folder.filePath(path));
        const auto [source, whyNot] = textOf(file.filePath());
        if (!source) {
            passOver(path, whyNot);
            return;
        }
        const MarkdownNote note = readMarkdown(*source);
        for (const QString& key : note.unknown)
            tellUnknown(key, path);
        if (note.isOurs && note.kind == data_kinds::file().shortName) {
            passOver(path, u"ファイルデータは取り込みませんでした。ファイルを登録し直してください。"_s);
            return;
        }
        NewDatum datum{.kind = &data_kinds::document(),
                       .name = note.title.isEmpty() ? file.completeBaseName() : note.title,
                       .text = note.text,
                       .day = note.day.isValid() ? note.day : file.lastModified().date(),
                       .identifier = note.identifier,
                       .where = path};
        if (note.isOurs)
            datum.limits = NewDatum::Limits::OfDatabase;
        if (note.kind == data_kinds::definition().shortName || (note.text.isEmpty() && !note.isOurs))
            datum.kind = &data_kinds::definition();
        // A note that is only a name is a term that nobody has defined yet.
        if (datum.text.isEmpty() && datum.kind == &data_kinds::definition())
            datum.text = titles::Undefined;
        for (const QString& tag : note.tags)
            datum.categories.push_back(wayOfText(tag));
        QStringList folders = path.split(u'/');
        folders.removeLast();
        if (note.tags.isEmpty() && !folders.isEmpty())
            datum.categories.push_back(folders);
        const QString identifier = addText(m_data, datum, m_options.longTexts, notes);
        if (identifier.isEmpty())
            return;
        m_names.add(path, datum.name, identifier);
        if (!note.links.isEmpty())
            m_links.push_back({.from = identifier, .path = path, .targets = note.links});
    }

    void link()
    {
        for (const Links& links : m_links) {
            for (const QString& target : links.targets) {
                const NoteNames::Found found = m_names.find(target, links.path);
                if (found.isOneOfSeveral)
                    m_data.tellOneOfSeveral(target, found.identifier, links.path);
                if (found.identifier.isEmpty())
                    m_data.linkLater(links.from, target.section(u'/', -1), links.path);
                else
                    m_data.link(links.from, found.identifier);
            }
        }
    }

    /// Notes have such things by the thousand: told once each.
    void tellUnknown()
    {
        for (const Unknown& unknown : m_unknown)
            notes.push_back(
                {.where = unknown.firstPath,
                 .text = u"見出し部の「%1」は、内容の初めに入れました (%2 件)。"_s.arg(unknown.key)
                             .arg(unknown.count)});
    }

    std::vector<Note> notes;
    qint64 passedOver = 0;

private:
    /// What the heads of notes tell that means nothing here.
    struct Unknown {
        QString key;
        QString firstPath;
        qint64 count = 0;
    };
    void tellUnknown(const QString& key, const QString& path)
    {
        auto known = std::find_if(m_unknown.begin(), m_unknown.end(),
                                  [&](const Unknown& unknown) { return unknown.key == key; });
        if (known == m_unknown.end())
            known = m_unknown.insert(known, {.key = key, .firstPath = path});
        ++known->count;
    }

    struct Links {
        QString from;
        QString path;
        QStringList targets;
    };

    void passOver(const QString& path, const QString& text)
    {
        notes.push_back({.where = path, .text = text});
        ++passedOver;
    }

    NewData& m_data;
    QDir m_folder;
    TextImportOptions m_options;
    NoteNames m_names;
    std::vector<Links> m_links;
    std::vector<Unknown> m_unknown;
};

} // namespace

ExportReport exportMarkdown(Session& session, const QString& folder, Progress* progress)
{
    ExportReport report;
    StagedOutput output(folder);
    output.makeFolder();
    AllData all(session, AllData::Texts::Come);
    FileNames names;
    std::vector<QString> files;
    for (const AllData::Datum& datum : all.data())
        files.push_back(names.next(datum.name, EndingOfNotes));
    CopiedFiles copies(session, output, report);
    qint64 done = 0;
    all.forEachText([&](std::size_t position, const QString& text) {
        const AllData::Datum& datum = all.data()[position];
        MarkdownNote note{.isOurs = true,
                          .title = datum.name,
                          .identifier = datum.identifier,
                          .kind = datum.kind->shortName,
                          .text = text};
        if (datum.kind == &data_kinds::file())
            note.text = fileNote(copies.copy(datum, text, progress));
        for (const std::size_t category : datum.categories)
            note.tags << textOfWay(all.wayTo(all.categories()[category]));
        for (const std::size_t to : datum.linksTo) {
            const QString& file = files[to];
            const QString& name = all.data()[to].name;
            note.links << (file == name ? file : file + u'|' + onOneLine(name).remove(u']').remove(u'['));
        }
        const QString markdown = markdownOf(note);
        if (!markdown.isValidUtf16())
            report.notes.push_back({.where = datum.identifier,
                                    .text = u"文字として不完全な部分は「?」として書き出しました。"_s});
        writeFile(output.inside(files[position] + EndingOfNotes), markdown.toUtf8(), OutputFile::Care::Quick);
        ++report.written;
        ++report.files;
        advance(progress, ++done, static_cast<qint64>(all.data().size()));
    });
    output.place();
    return report;
}

ImportReport importMarkdown(Session& session, const QString& folder, const TextImportOptions& options,
                            Progress* progress)
{
    const QStringList paths = filesBelow(folder, {EndingOfNotes});
    std::vector<Note> notes;
    qint64 passedOver = 0;
    ImportReport report = bringIn(session, options, [&](NewData& data) {
        MarkdownImport import(data, folder, options);
        qint64 done = 0;
        for (const QString& path : paths) {
            import.add(path);
            advance(progress, ++done, paths.size());
        }
        import.link();
        import.tellUnknown();
        notes = std::move(import.notes);
        passedOver = import.passedOver;
    });
    report.skipped += passedOver;
    report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
    return report;
}

} // namespace quillon::exchange
