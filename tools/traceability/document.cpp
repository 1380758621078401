#include "tools/traceability/source_reading.h"
#include "tools/traceability/traceability.h"

#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

/// So many tests are named beside a text; they do for finding the others.
constexpr qsizetype NamedTests = 6;

const QString Head =
    u"# What the tests hold\n\n"
    u"Each behaviour of the program with its test, then each text that people see with the tests that assert it.\n"
    u"`quillon-traceability` writes this file from the sources; the test `traceability` fails when the file is out of\n"
    u"date or a text has no test.\n"_s;
const QString TextsHead =
    u"\n## Texts\n\n`…` stands for a value that is filled in, `⏎` for the end of a line.\n\n"
    u"| Text | Shown by | Held by |\n|---|---|---|\n"_s;

QString code(const QString& text)
{
    return u'`' + text + u'`';
}

/// A text on one line.
QString readable(QString text)
{
    return text.replace(u"\r\n"_s, u"⏎"_s).replace(u'\n', u'⏎').replace(Hole, u'…');
}

QString listed(const QStringList& names)
{
    QStringList first;
    for (const QString& name : names.first(std::min(NamedTests, names.size())))
        first << code(name);
    if (names.size() > NamedTests)
        first << u"and more"_s;
    return first.join(u", "_s);
}

} // namespace

QString sentenceOf(const QString& name)
{
    static const QRegularExpression capitals(u"[A-Z]{2,}(?![a-z])"_s);
    static const QRegularExpression pieces(u"[A-Z]{2,}(?![a-z])|[A-Z]?[a-z]+|[A-Z]|\\d+[a-z]*"_s);
    QStringList words;
    for (auto matches = pieces.globalMatch(name); matches.hasNext();) {
        const QString word = matches.next().captured();
        words << (capitals.match(word).hasMatch() ? word : word.toLower());
    }
    QString sentence = words.join(u' ');
    return sentence.replace(0, 1, sentence.left(1).toUpper());
}

QString untestedMessages(const Findings& findings)
{
    QString lines;
    for (const Message& message : findings.messages) {
        if (message.heldBy.isEmpty())
            lines += readable(message.text) + u"  "_s + message.shownBy.join(u' ') + u'\n';
    }
    return lines;
}

QString documentOf(const Findings& findings)
{
    QString document = Head;
    QString folder;
    for (const Subject& subject : findings.subjects) {
        const QString file = subject.path.section(u'/', -1);
        if (const QString own = subject.path.chopped(file.size()); own != folder) {
            document += u"\n## %1\n"_s.arg(code(own));
            folder = own;
        }
        const QString words = file.section(u'.', 0, 0).remove(u"test_"_s).replace(u'_', u' ');
        document += u"\n### %1 (%2)\n\n"_s.arg(words.left(1).toUpper() + words.mid(1), code(file));
        if (!subject.comment.isEmpty())
            document += subject.comment + u"\n\n"_s;
        document += u"| Behaviour | Test |\n|---|---|\n"_s;
        for (const QString& name : subject.behaviours)
            document += u"| "_s + sentenceOf(name) + u" | "_s + code(name) + u" |\n"_s;
    }
    document += TextsHead;
    for (const Message& message : findings.messages) {
        const QString text = readable(message.text).replace(u'|', u"\\|"_s);
        document += u"| "_s + code(text) + u" | "_s + listed(message.shownBy) + u" | "_s +
                    listed(message.heldBy) + u" |\n"_s;
    }
    return document;
}

} // namespace quillon::traceability
