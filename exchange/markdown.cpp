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
        const QString base = name.section(u'/', -1);
        for (const auto& [names, key] : {std::pair{&m_paths, name}, {&m_bases, base}, {&m_titles, title}}) {
            if (!names->contains(key.toCaseFolded()))
                names->insert(key.toCaseFolded(), identifier);
        }
    }
    /// `from`: the path of the note with the link; nothing when there is no such note.
    QString find(const QString& target, const QString& from) const
    {
        const QString beside = QDir::cleanPath(QFileInfo(from).path() + u'/' + target);
        for (const auto& [names, key] :
             {std::pair{&m_paths, beside}, {&m_paths, target}, {&m_bases, target}, {&m_titles, target}}) {
            const QString identifier = names->value(key.toCaseFolded());
            if (!identifier.isEmpty())
                return identifier;
        }
        return {};
    }

private:
    QHash<QString, QString> m_paths;
    QHash<QString, QString> m_bases;
    QHash<QString, QString> m_titles;
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
        if (note.kind == data_kinds::file().shortName) {
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
        m_names.add(path, datum.name, identifier);
        if (!identifier.isEmpty() && !note.links.isEmpty())
            m_links.push_back({.from = identifier, .path = path, .targets = note.links});
    }

    void link()
    {
        for (const Links& links : m_links) {
            for (const QString& target : links.targets) {
                const QString to = m_names.find(target, links.path);
                if (to.isEmpty())
                    m_data.linkLater(links.from, target.section(u'/', -1), links.path);
                else
                    m_data.link(links.from, to);
            }
        }
    }

    std::vector<Note> notes;
    qint64 passedOver = 0;

private:
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
        notes = std::move(import.notes);
        passedOver = import.passedOver;
    });
    report.skipped += passedOver;
    report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
    return report;
}

} // namespace quillon::exchange
