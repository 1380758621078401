#include "store/like_pattern.h"

#include <QTest>

#include <random>

using namespace quillon;
using namespace Qt::Literals::StringLiterals;

namespace
{

using Comparing = LikePattern::Comparing;

/// The same language for patterns without lists, in the plainest words: exponential, but too simple to be wrong.
bool plainlyMatches(QStringView pattern, QStringView text)
{
    if (pattern.isEmpty())
        return text.isEmpty();
    const QChar first = pattern.front();
    if (first == u'*') {
        return plainlyMatches(pattern.sliced(1), text) ||
               (!text.isEmpty() && plainlyMatches(pattern, text.sliced(1)));
    }
    if (text.isEmpty())
        return false;
    if (first == u'[') {
        const qsizetype end = pattern.indexOf(u']');
        if (end > 1) {
            const bool negated = pattern[1] == u'!';
            const QStringView list = pattern.sliced(negated ? 2 : 1, end - (negated ? 2 : 1));
            return list.contains(text.front()) != negated &&
                   plainlyMatches(pattern.sliced(end + 1), text.sliced(1));
        }
    }
    const bool accepted = first == u'?' || (first == u'#' && text.front() >= u'0' && text.front() <= u'9') ||
                          (first != u'?' && first != u'#' && first == text.front());
    return accepted && plainlyMatches(pattern.sliced(1), text.sliced(1));
}

} // namespace

class TestLikePattern : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patternsMatchExactly_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("matches");
        QTest::newRow("empty, empty") << u""_s << u""_s << true;
        QTest::newRow("empty, text") << u""_s << u"a"_s << false;
        QTest::newRow("letter") << u"a"_s << u"a"_s << true;
        QTest::newRow("case") << u"a"_s << u"A"_s << false;
        QTest::newRow("star, empty") << u"*"_s << u""_s << true;
        QTest::newRow("stars, empty") << u"***"_s << u""_s << true;
        QTest::newRow("star, text") << u"*"_s << u"abc"_s << true;
        QTest::newRow("beginning") << u"A-*"_s << u"A-B-C"_s << true;
        QTest::newRow("beginning alone") << u"A-*"_s << u"A-"_s << true;
        QTest::newRow("not the beginning") << u"A-*"_s << u"A"_s << false;
        QTest::newRow("another beginning") << u"A-*"_s << u"AB-C"_s << false;
        QTest::newRow("end") << u"*水"_s << u"海の水"_s << true;
        QTest::newRow("not the end") << u"*水"_s << u"水の海"_s << false;
        QTest::newRow("within") << u"*水*"_s << u"海水浴"_s << true;
        QTest::newRow("twice") << u"*ab*ab*"_s << u"xabyab"_s << true;
        QTest::newRow("only once") << u"*ab*ab*"_s << u"xaby"_s << false;
        QTest::newRow("backtracking") << u"*aab"_s << u"aaaab"_s << true;
        QTest::newRow("one character") << u"?"_s << u"水"_s << true;
        QTest::newRow("one character, none") << u"?"_s << u""_s << false;
        QTest::newRow("one character, two") << u"?"_s << u"ab"_s << false;
        QTest::newRow("a pair is one character") << u"?"_s << u"😀"_s << true;
        QTest::newRow("a pair is not two") << u"??"_s << u"😀"_s << false;
        QTest::newRow("star and pair") << u"*?b"_s << u"a😀b"_s << true;
        QTest::newRow("digit") << u"M-######-###"_s << u"M-991231-001"_s << true;
        QTest::newRow("no digit") << u"#"_s << u"a"_s << false;
        QTest::newRow("full-width digit") << u"#"_s << u"５"_s << false;
        QTest::newRow("list") << u"[abc]"_s << u"b"_s << true;
        QTest::newRow("list, other") << u"[abc]"_s << u"d"_s << false;
        QTest::newRow("list, empty text") << u"[abc]"_s << u""_s << false;
        QTest::newRow("negated") << u"[!abc]"_s << u"d"_s << true;
        QTest::newRow("negated, one of it") << u"[!abc]"_s << u"a"_s << false;
        QTest::newRow("negated, empty text") << u"[!abc]"_s << u""_s << false;
        QTest::newRow("range") << u"[a-f]x"_s << u"cx"_s << true;
        QTest::newRow("range, outside") << u"[a-f]x"_s << u"gx"_s << false;
        QTest::newRow("ranges and singles") << u"[a-c0-9_]"_s << u"_"_s << true;
        QTest::newRow("range of pairs") << u"[😀-😎]"_s << u"😅"_s << true;
        QTest::newRow("range backwards") << u"[z-a]"_s << u"m"_s << false;
        QTest::newRow("hyphen in front") << u"[-a]"_s << u"-"_s << true;
        QTest::newRow("hyphen at the end") << u"[a-]"_s << u"-"_s << true;
        QTest::newRow("hyphen after negation") << u"[!-]"_s << u"-"_s << false;
        QTest::newRow("star in a list") << u"[*]"_s << u"*"_s << true;
        QTest::newRow("star in a list, other") << u"[*]"_s << u"a"_s << false;
        QTest::newRow("bracket in a list") << u"[[]"_s << u"["_s << true;
        QTest::newRow("question mark in a list") << u"a[?]"_s << u"a?"_s << true;
        QTest::newRow("exclamation inside") << u"[a!]"_s << u"!"_s << true;
        QTest::newRow("closing bracket alone") << u"a]"_s << u"a]"_s << true;
        QTest::newRow("never closed") << u"a[b"_s << u"a[b"_s << true;
        QTest::newRow("never closed at the end") << u"a["_s << u"a["_s << true;
        QTest::newRow("never closed, star after it") << u"[*"_s << u"[xyz"_s << true;
        QTest::newRow("empty list") << u"a[]b"_s << u"ab"_s << true;
        QTest::newRow("percent is a letter") << u"%"_s << u"abc"_s << false;
        QTest::newRow("underscore is a letter") << u"_"_s << u"a"_s << false;
        QTest::newRow("full-width star is a letter") << u"＊"_s << u"abc"_s << false;
        QTest::newRow("line breaks") << u"*b*"_s << u"a\r\nb\r\n"_s << true;
        QTest::newRow("zeros") << u"a*c"_s << u"a\0b\0c"_s << true;
    }
    void patternsMatchExactly()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, text);
        QTEST(LikePattern(pattern, Comparing::Exactly).matches(text), "matches");
    }

    void patternsMatchAsAReader_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("matches");
        QTest::newRow("width and case") << u"*ＡＢＣ*"_s << u"xabcx"_s << true;
        QTest::newRow("kana type") << u"*みず*"_s << u"ミズ"_s << true;
        QTest::newRow("half-width voiced") << u"*ガ*"_s << u"ｶﾞｽ"_s << true;
        QTest::newRow("half-width voiced in the pattern") << u"ｶﾞ*"_s << u"がす"_s << true;
        QTest::newRow("voiced is not plain") << u"*か*"_s << u"ｶﾞ"_s << false;
        QTest::newRow("small is not large") << u"*っ*"_s << u"つ"_s << false;
        QTest::newRow("voiced kana is one character") << u"?"_s << u"ｶﾞ"_s << true;
        QTest::newRow("full-width digit") << u"#"_s << u"５"_s << true;
        QTest::newRow("full-width star is a letter") << u"＊"_s << u"abc"_s << false;
        QTest::newRow("full-width star is a star's twin") << u"＊"_s << u"*"_s << true;
        QTest::newRow("full-width bracket is no list") << u"［a］"_s << u"[a]"_s << true;
        QTest::newRow("list") << u"[Ａ-Ｃ]"_s << u"b"_s << true;
        QTest::newRow("list of hiragana") << u"[あ-お]"_s << u"ｲ"_s << true;
        QTest::newRow("voiced kana in a list") << u"[ｶﾞ]"_s << u"が"_s << true;
        QTest::newRow("voiced kana in a list, plain") << u"[ｶﾞ]"_s << u"か"_s << false;
        QTest::newRow("mark after a wildcard") << u"?ﾞ"_s << u"ｱﾞ"_s << true;
    }
    void patternsMatchAsAReader()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, text);
        QTEST(LikePattern(pattern, Comparing::AsAReader).matches(text), "matches");
    }

    void surrogatesAloneAreCharacters()
    {
        const QString alone(QChar(0xD83D));
        QVERIFY(LikePattern(alone, Comparing::Exactly).matches(alone));
        QVERIFY(LikePattern(u"?"_s, Comparing::Exactly).matches(alone));
        QVERIFY(LikePattern(u"*x"_s, Comparing::Exactly).matches(QString(alone + u'x')));
        QVERIFY(!LikePattern(alone, Comparing::Exactly).matches(u"😀"));
    }

    void agreesWithThePlainMatcher()
    {
        std::mt19937 random(991231);
        const auto draw = [&random](const QString& alphabet, int longest) {
            QString text;
            const int length = std::uniform_int_distribution<int>(0, longest)(random);
            std::uniform_int_distribution<qsizetype> letter(0, alphabet.size() - 1);
            for (int i = 0; i < length; ++i)
                text += alphabet[letter(random)];
            return text;
        };
        int matching = 0;
        for (int round = 0; round < 20000; ++round) {
            // No list inside reads "]" or "-", which the plain matcher does not know.
            QString pattern = draw(u"aab1***??#"_s, 6);
            if (round % 3 == 0)
                pattern += u"[ab1]"_s + draw(u"ab*"_s, 3);
            if (round % 5 == 0)
                pattern.prepend(u"*[!a]"_s);
            if (round % 7 == 0)
                pattern += u"*[a"_s;
            const QString text = draw(u"aaab1["_s, 7);
            const bool expected = plainlyMatches(pattern, text);
            matching += expected ? 1 : 0;
            const bool actual = LikePattern(pattern, Comparing::Exactly).matches(text);
            QVERIFY2(actual == expected, qPrintable(pattern + u" against "_s + text));
        }
        // A generator that never matches would prove nothing.
        QVERIFY(matching > 1500);
    }

    void hostilePatternsEnd()
    {
        // Each of these would keep a backtracking matcher busy for ever, or a recursive one until the stack ends.
        QVERIFY(!LikePattern(u"*a"_s.repeated(50) + u'b', Comparing::Exactly).matches(QString(1000, u'a')));
        QVERIFY(!LikePattern(u"*?"_s.repeated(3000) + u'b', Comparing::Exactly).matches(QString(5000, u'a')));
        QVERIFY(LikePattern(QString(100000, u'*'), Comparing::Exactly).matches(QString(100000, u'a')));
        QVERIFY(LikePattern(QString(100000, u'['), Comparing::Exactly).matches(QString(100000, u'[')));
        QVERIFY(LikePattern(QString(100000, u'?'), Comparing::AsAReader).matches(QString(100000, u'a')));
    }
};

QTEST_GUILESS_MAIN(TestLikePattern)
#include "test_like_pattern.moc"
