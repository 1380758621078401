#include "tools/traceability/source_reading.h"
#include "tools/traceability/traceability.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <map>

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
    QString comment;
    Source source;
    std::vector<Declaration> declarations;
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
            file.declarations = declarationsOf(file.source);
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

/// The tests of one file and what they name in it and in the files of the tests that it includes.
class TestReader
{
public:
    TestReader(const Files& files, const QString& path) : m_files(files), m_own(files.at(path))
    {
        include(path);
    }

    QStringList behaviours() const
    {
        static const QStringList frames = {u"initTestCase"_s, u"init"_s, u"cleanup"_s, u"cleanupTestCase"_s};
        QStringList names;
        for (const Declaration& declaration : m_own.declarations) {
            if (declaration.slot && !declaration.name.endsWith(u"_data"_s) &&
                !frames.contains(declaration.name))
                names << declaration.name;
        }
        return names;
    }

    /// Every text in a behaviour, in its data and in what these call and name.
    QSet<QString> textsOfBehaviour(const QString& name) const
    {
        QSet<QString> texts;
        QSet<QString> seen;
        collect(name, texts, seen);
        collect(name + u"_data"_s, texts, seen);
        return texts;
    }

private:
    void include(const QString& path)
    {
        const auto file = m_files.find(path);
        if (file == m_files.end() || m_included.contains(path))
            return;
        m_included << path;
        for (const Declaration& declaration : file->second.declarations) {
            // Variables change; functions and constants say the same to whoever names them.
            if (declaration.function || declaration.constant)
                m_named.insert(declaration.name, &declaration);
        }
        for (const QString& other : file->second.source.includes)
            include(other);
    }

    void collect(const QString& name, QSet<QString>& texts, QSet<QString>& seen) const
    {
        if (seen.contains(name))
            return;
        seen << name;
        for (auto [at, end] = m_named.equal_range(name); at != end; ++at) {
            const Tokens tokens = (*at)->tokens;
            for (const QString& text : textsOf(tokens)) {
                if (isForPeople(text))
                    texts << text;
            }
            for (std::size_t i = 0; i < tokens.size(); ++i) {
                // The word in `.title = …` is a field, not what is called `title` elsewhere.
                const bool field = i > 0 && i + 1 < tokens.size() && tokens[i - 1].isSign(u".") &&
                                   tokens[i + 1].isSign(u"=");
                if (tokens[i].kind == Token::Kind::Word && !field)
                    collect(tokens[i].text, texts, seen);
            }
        }
    }

    const Files& m_files;
    const File& m_own;
    QStringList m_included;
    QMultiHash<QString, const Declaration*> m_named;
};

/// The files that use a constant of a header as `scope::name`; the header itself when there are none.
QStringList usersOf(const Files& files, const Declaration& constant, const QString& header)
{
    QStringList users;
    for (const auto& [path, file] : files) {
        const auto& tokens = file.source.tokens;
        for (std::size_t i = 2; i < tokens.size() && !users.contains(path); ++i) {
            if (tokens[i].isWord(constant.name) && tokens[i - 1].isSign(u"::") &&
                tokens[i - 2].isWord(constant.scope))
                users << path;
        }
    }
    return users.isEmpty() ? QStringList(header) : users;
}

std::vector<Message> messagesOf(const Files& files)
{
    std::vector<Message> messages;
    for (const auto& [path, file] : files) {
        for (const Declaration& declaration : file.declarations) {
            const bool shared = path.endsWith(u".h"_s) && !declaration.function;
            for (const QString& text : textsOf(declaration.tokens)) {
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

} // namespace

bool holds(const QString& text, const QString& message)
{
    const auto isLetter = [](QChar c) { return c.isLetterOrNumber(); };
    // A text with signs in it is part of no other one, a word may be.
    const bool word = std::all_of(message.begin(), message.end(), isLetter);
    const auto standsAlone = [&](qsizetype begin, qsizetype end) {
        return (begin == 0 || !isLetter(text[begin - 1])) && (end == text.size() || !isLetter(text[end]));
    };
    qsizetype from = 0;
    for (const QString& part : message.split(Hole)) {
        qsizetype at = text.indexOf(part, from);
        while (at >= 0 && word && !standsAlone(at, at + part.size()))
            at = text.indexOf(part, at + 1);
        if (at < 0)
            return false;
        from = at + part.size();
    }
    return true;
}

Findings findingsIn(const QString& root)
{
    Findings findings;
    QHash<QString, QStringList> testsWith; // by text
    const Files tests = filesBelow(root, {u"tests"_s});
    for (const auto& [path, file] : tests) {
        const TestReader reader(tests, path);
        const QString program = path.section(u'/', -1).section(u'.', 0, 0);
        const Subject subject{path, file.comment, reader.behaviours()};
        for (const QString& name : subject.behaviours) {
            for (const QString& text : reader.textsOfBehaviour(name))
                testsWith[text] << program + u": "_s + name;
        }
        if (!subject.behaviours.isEmpty())
            findings.subjects.push_back(subject);
    }
    findings.messages = messagesOf(filesBelow(root, {u"app"_s, u"core"_s, u"store"_s, u"ui"_s}));
    for (Message& message : findings.messages) {
        for (auto text = testsWith.cbegin(); text != testsWith.cend(); ++text) {
            if (holds(text.key(), message.text))
                message.heldBy << text.value();
        }
        message.heldBy.removeDuplicates();
        message.heldBy.sort();
    }
    return findings;
}

} // namespace quillon::traceability
