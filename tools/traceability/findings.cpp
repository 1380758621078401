#include "tools/traceability/assertions.h"
#include "tools/traceability/source_reading.h"
#include "tools/traceability/traceability.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

/// Texts with Japanese letters that are never shown.
const QSet<QString> NotShown = {
    u"ＭＳ Ｐゴシック"_s,        // the name of a font
    u"国"_s,                     // measures how wide a full-width character is
    u"漢gｇ|"_s,                 // measures how high a line is
    u"Explanation = '未定義'"_s, // a criteria text
};

struct File {
    QString comment; // above the tests
    Source source;
};
using Files = std::map<QString, File>; // by path

Files filesBelow(const QString& root, const QStringList& folders)
{
    static const QRegularExpression comment(u"\\A// ([^\\n]+)\\n|((?:^/// [^\\n]+\\n)+)class [Tt]est"_s,
                                            QRegularExpression::MultilineOption);
    Files files;
    for (const QString& folder : folders) {
        QDirIterator entries(root + u'/' + folder, {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile input(entries.next());
            if (!input.open(QIODevice::ReadOnly))
                qFatal("%s cannot be read", qPrintable(input.fileName()));
            const QString content = QString::fromUtf8(input.readAll()).remove(u'\r');
            File& file = files[input.fileName().mid(root.size() + 1)];
            if (const auto match = comment.match(content); match.hasMatch())
                file.comment = match.captured(match.lastCapturedIndex()).remove(u"/// "_s).simplified();
            file.source = readSource(content);
        }
    }
    return files;
}

/// Whether a text has letters beyond the European ones; identifiers and statements have none.
bool isForPeople(const QString& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.isLetter() && c.unicode() >= 0x370; });
}

/// Collects what stands in a file and in the files that it includes, once each.
void collectNamed(const Files& files, const QString& path, QStringList& included, Named& named)
{
    const auto file = files.find(path);
    if (file == files.end() || included.contains(path))
        return;
    included << path;
    for (const Declaration& declaration : file->second.source.declarations) {
        // Variables change; functions and constants say the same to whoever names them.
        if (declaration.function || declaration.constant)
            named.insert(declaration.name, &declaration);
    }
    for (const QString& other : file->second.source.includes)
        collectNamed(files, other, included, named);
}

/// The names of the test functions of a file.
QStringList behavioursOf(const Source& source)
{
    static const QStringList frames = {u"initTestCase"_s, u"init"_s, u"cleanup"_s, u"cleanupTestCase"_s};
    QStringList names;
    for (const Declaration& declaration : source.declarations) {
        if (declaration.slot && !declaration.name.endsWith(u"_data"_s) && !frames.contains(declaration.name))
            names << declaration.name;
    }
    return names;
}

/// The files that use a constant of a header as `scope::name`; the header itself when there are none.
QStringList usersOf(const Files& files, const Declaration& constant, const QString& header)
{
    const QString name = constant.scope + u"::"_s + constant.name;
    QStringList users;
    for (const auto& [path, file] : files) {
        const auto& declarations = file.source.declarations;
        if (std::any_of(declarations.begin(), declarations.end(),
                        [&](const Declaration& user) { return user.words.contains(name); }))
            users << path;
    }
    return users.isEmpty() ? QStringList(header) : users;
}

/// What a test must fill into the holes of its text so that the message comes out; nothing when it cannot.
std::optional<QString> filling(QString message, const QString& text)
{
    qsizetype from = 0;
    for (const QString& part : text.split(Hole)) {
        from = message.indexOf(part, from);
        if (from < 0)
            return std::nullopt;
        message.remove(from, part.size());
    }
    return message.remove(Hole);
}

std::vector<Message> messagesOf(const Files& files)
{
    std::vector<Message> messages;
    for (const auto& [path, file] : files) {
        for (const Declaration& declaration : file.source.declarations) {
            const bool shared = path.endsWith(u".h"_s) && !declaration.function;
            for (const QString& text : declaration.texts) {
                if (!isForPeople(text) || NotShown.contains(text))
                    continue;
                auto message = std::find_if(messages.begin(), messages.end(),
                                            [&](const Message& known) { return known.text == text; });
                if (message == messages.end())
                    message = messages.insert(message, {text, {}, {}});
                message->shownBy << (shared ? usersOf(files, declaration, path) : QStringList(path));
            }
        }
    }
    for (Message& message : messages) {
        message.shownBy.removeDuplicates();
        message.shownBy.sort();
    }
    return messages;
}

using TestsByText = QHash<QString, QSet<QString>>;

QSet<QString> testsHolding(const QString& message, const QStringList& texts, const TestsByText& testsWith)
{
    QSet<QString> held;
    for (const QString& text : texts) {
        if (holds(text, message))
            held += testsWith[text];
        else if (const auto filled = text.contains(Hole) ? filling(message, text) : std::nullopt)
            held += testsWith[text] & testsWith[*filled];
    }
    return held;
}

/// The tests that hold every line of a message, wherever it stands in them.
QSet<QString> testsHoldingLines(const QString& message, const QStringList& texts,
                                const TestsByText& testsWith)
{
    QStringList lines = QString(message).remove(u'\r').split(u'\n');
    lines.removeIf([](const QString& line) { return !isForPeople(line); });
    QSet<QString> held = testsHolding(lines.first(), texts, testsWith);
    for (const QString& line : std::as_const(lines))
        held &= testsHolding(line, texts, testsWith);
    return held;
}

} // namespace

bool holds(const QString& text, const QString& message)
{
    const auto letterAt = [&](qsizetype at) { return at < text.size() && text[at].isLetterOrNumber(); };
    const auto begins = [&](qsizetype at) { return at == 0 || !letterAt(at - 1) || !letterAt(at); };
    // A caption is another one with its key in brackets.
    const auto ends = [&](qsizetype at) {
        return !letterAt(at - 1) || !(letterAt(at) || text.mid(at, 2) == u"(&");
    };
    // What ends openly is made for standing in the middle of a text.
    const bool open = message.endsWith(u' ') || message.endsWith(u'-');
    const QStringList parts = message.split(Hole);
    qsizetype from = 0;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const qsizetype size = parts[i].size();
        const auto fits = [&](qsizetype at) {
            return open || size == 0 || ((i > 0 || begins(at)) && (i + 1 < parts.size() || ends(at + size)));
        };
        qsizetype at = text.indexOf(parts[i], from);
        while (at >= 0 && !fits(at))
            at = text.indexOf(parts[i], at + 1);
        if (at < 0)
            return false;
        from = at + size;
    }
    return true;
}

Findings findingsIn(const QString& root)
{
    Findings findings;
    TestsByText testsWith;
    const Files tests = filesBelow(root, {u"tests"_s});
    for (const auto& [path, file] : tests) {
        QStringList included;
        Named named;
        collectNamed(tests, path, included, named);
        Assertions assertions(named);
        const QString program = path.section(u'/', 1).section(u'.', 0, 0);
        const Subject subject{path, file.comment, behavioursOf(file.source)};
        for (const QString& name : subject.behaviours) {
            const QSet<QString> texts = assertions.textsOf(name);
            for (const QString& text : texts)
                testsWith[text] << program + u": "_s + name;
        }
        if (!subject.behaviours.isEmpty())
            findings.subjects.push_back(subject);
    }
    findings.messages =
        messagesOf(filesBelow(root, {u"app"_s, u"core"_s, u"exchange"_s, u"store"_s, u"ui"_s}));
    QStringList texts = testsWith.keys();
    texts.removeIf([](const QString& text) { return !isForPeople(text); });
    for (Message& message : findings.messages) {
        QSet<QString> held = testsHolding(message.text, texts, testsWith);
        if (held.isEmpty())
            held = testsHoldingLines(message.text, texts, testsWith);
        message.heldBy = QStringList(held.begin(), held.end());
        message.heldBy.sort();
        // First the tests of the floor that shows the message.
        std::stable_partition(message.heldBy.begin(), message.heldBy.end(), [&](const QString& test) {
            const QString folder = u'/' + test.section(u'/', 0, 0) + u'/';
            return std::any_of(message.shownBy.begin(), message.shownBy.end(),
                               [&](const QString& path) { return (u'/' + path).contains(folder); });
        });
    }
    return findings;
}

} // namespace quillon::traceability
