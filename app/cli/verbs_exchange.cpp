#include "app/base/absolute_path.h"
#include "app/base/platform/files.h"
#include "app/base/ports/clock.h"
#include "app/cli/columns.h"
#include "app/cli/formats.h"
#include "app/cli/found.h"
#include "app/cli/overwritten_line.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "exchange/progress.h"
#include "exchange/refused.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <initializer_list>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// Tells on a terminal how far a long work is; an interruption ends it.
class LineProgress : public exchange::Progress
{
public:
    explicit LineProgress(Run& run)
        : m_clock(run.session.clock), m_shows(platform::isTerminal(platform::Stream::Errors)),
          m_line(platform::takesEscapeSequences(platform::Stream::Errors))
    {
    }
    ~LineProgress() override
    {
        if (m_hasShown)
            show(m_line.cleared());
    }
    LineProgress(const LineProgress&) = delete;
    LineProgress& operator=(const LineProgress&) = delete;

    void at(qint64 done, qint64 whole) override
    {
        constexpr qint64 Interval = 200; // milliseconds
        const qint64 now = m_clock.milliseconds();
        if (!m_shows || now < m_next)
            return;
        m_next = now + Interval;
        m_hasShown = true;
        show(m_line.replacedBy(whole > 0 ? QByteArray::number(done * 100 / whole) + " %"
                                         : QByteArray::number(done)));
    }
    bool cancelled() override { return platform::wasInterrupted(); }

private:
    static void show(const QByteArray& text)
    {
        static_cast<void>(platform::writeTo(platform::Stream::Errors, text));
    }

    Clock& m_clock;
    bool m_shows;
    bool m_hasShown = false;
    OverwrittenLine m_line;
    qint64 m_next = 0;
};

/// The full name of what a command names as its source or target.
QString fullName(const QString& name)
{
    return QDir::toNativeSeparators(QDir::cleanPath(absolutePath(QDir::currentPath(), name)));
}

struct Counted {
    QByteArrayView name;
    QString label;
    qint64 number = 0;
};

/// Tells what was done: the numbers and then the notes.
template <class Counts>
void writeReport(Run& run, const Counts& counts, const std::vector<exchange::Note>& notes)
{
    Output& output = run.output;
    if (run.isJson()) {
        for (const Counted& count : counts) {
            output.write(&count == counts.data() ? "{\"" : ",\"");
            output.write(count.name);
            output.write("\":");
            output.writeNumber(count.number);
        }
        output.write(",\"notes\":[");
        for (const exchange::Note& note : notes) {
            output.write(&note == notes.data() ? "{\"where\":" : ",{\"where\":");
            output.writeJson(note.where);
            output.write(",\"text\":");
            output.writeJson(note.text);
            output.write('}');
        }
        output.write("]}\n");
        return;
    }
    constexpr int LabelColumns = 20;
    constexpr int NumberColumns = 9;
    for (const Counted& count : counts)
        output.write(padded(count.label, LabelColumns) +
                     QString::number(count.number).rightJustified(NumberColumns) + u'\n');
    for (const exchange::Note& note : notes)
        output.write((note.where.isEmpty() ? QString() : onePrintedLine(note.where) + u": "_s) +
                     printedLines(note.text) + u'\n');
}

/// The format that a command names.
template <class Format> const Format& formatAskedFor(const Run& run, const std::vector<Format>& formats)
{
    return *std::find_if(formats.begin(), formats.end(),
                         [&](const Format& format) { return format.name == run.arguments.words[0]; });
}

/// Runs an import or an export. What ends it has written nothing. `troubles`: the errors that are none of the database,
/// which has been opened, but of what the command names.
template <class Work> auto whole(std::initializer_list<qint32> troubles, Work&& work)
{
    try {
        return withNamedFile(std::forward<Work>(work));
    } catch (const exchange::Cancelled& cancelled) {
        throw Refusal{Status::HalfWay, cancelled.description};
    } catch (const Error& error) {
        if (std::find(troubles.begin(), troubles.end(), error.number) != troubles.end())
            throw Refusal{Status::Refused, error.description};
        throw;
    }
}

/// Whatever form a source is to have: that it is not there is told alike.
void requireSource(const QString& source)
{
    if (QFileInfo::exists(source))
        return;
    const Error reason = platform::whyNotFound(source, errors::FileNotFound);
    if (reason.number == errors::FileNotFound)
        throw Refusal{Status::NothingFound,
                      u"「%1」が見つかりません。場所と名前を確認してください。"_s.arg(source)};
    throw Refusal{Status::Refused, u"「%1」を読み取れません。%2"_s.arg(source, reason.description)};
}

} // namespace

Status exportData(Run& run)
{
    const QString target = fullName(run.arguments.words[1]);
    const ExportFormat& format = formatAskedFor(run, exportFormats());
    const QString item = run.arguments.value(u"--item"_s);
    if (run.arguments.has(u"--item"_s)) {
        if (!format.takesItem)
            throw WrongUsage{u"--item は picture と一緒に指定します。"_s, run.arguments.verb};
        static_cast<void>(foundItem(run.session, item));
    }
    // What is written is the target: there is no room for that, and nothing stands there.
    const exchange::ExportReport report = whole({errors::DiskFull}, [&] {
        LineProgress progress(run);
        return format.run(run.session, target, item, &progress);
    });
    writeReport(run,
                std::array{Counted{"written", u"書き出したデータ"_s, report.written},
                           Counted{"files", u"作成したファイル"_s, report.files}},
                report.notes);
    return Status::Done;
}

Status importData(Run& run)
{
    const QString source = fullName(run.arguments.words[1]);
    requireSource(source);
    exchange::TextImportOptions options;
    options.dryRun = run.arguments.has(u"--dry-run"_s);
    if (run.arguments.has(u"--split"_s))
        options.longTexts = exchange::LongTexts::Split;
    const exchange::ImportReport report = whole({errors::NotADatabase}, [&] {
        LineProgress progress(run);
        return formatAskedFor(run, importFormats()).run(run.session, source, options, &progress);
    });
    writeReport(run,
                std::array{Counted{"added", u"追加したデータ"_s, report.added},
                           Counted{"skipped", u"既にあるデータ"_s, report.skipped},
                           Counted{"renamed", u"識別符号の変更"_s, report.renamed},
                           Counted{"linked", u"追加したリンク"_s, report.linked},
                           Counted{"filed", u"追加した分類"_s, report.filed},
                           Counted{"categories", u"追加したカテゴリ"_s, report.categories}},
                report.notes);
    if (options.dryRun)
        tell(u"--dry-run のため、何も書き込んでいません。"_s);
    if (report.lost > 0) {
        tell(u"元のファイルに読み取れないところがあります。"_s);
        return Status::HalfWay;
    }
    return report.added + report.linked + report.filed + report.categories > 0 ? Status::Done
                                                                               : Status::NothingFound;
}

} // namespace quillon::cli
