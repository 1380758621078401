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
        // A list without a member stands for nothing, one that excludes nothing for any character.
        QTest::newRow("empty list") << u"a[]b"_s << u"ab"_s << true;
        QTest::newRow("empty list alone") << u"[]"_s << u""_s << true;
        QTest::newRow("empty list, text") << u"[]"_s << u"a"_s << false;
        QTest::newRow("empty list between stars") << u"*[]*"_s << u"abc"_s << true;
        QTest::newRow("nothing excluded") << u"[!]"_s << u"a"_s << true;
        QTest::newRow("nothing excluded, exclamation") << u"[!]"_s << u"!"_s << true;
        QTest::newRow("nothing excluded, pair") << u"[!]"_s << u"😀"_s << true;
        QTest::newRow("nothing excluded, empty text") << u"[!]"_s << u""_s << false;
        QTest::newRow("nothing excluded, two") << u"[!]"_s << u"ab"_s << false;
        QTest::newRow("backwards excluded") << u"[!z-a]"_s << u"m"_s << true;
        // Identifiers compare to the letter, the ends of ranges included.
        QTest::newRow("range of both widths backwards") << u"[ｱ-ン]"_s << u"ミ"_s << false;
        QTest::newRow("range of both widths backwards, end") << u"[ｱ-ン]"_s << u"ン"_s << false;
        QTest::newRow("range of both cases") << u"[A-z]"_s << u"a"_s << true;
        QTest::newRow("range of both cases backwards") << u"[a-Z]"_s << u"b"_s << false;
        QTest::newRow("range from full width") << u"[Ａ-z]"_s << u"b"_s << false;
        QTest::newRow("range to full width") << u"[a-Ｚ]"_s << u"ン"_s << true;
        QTest::newRow("marks are members") << u"[ｶﾞ-ｺﾞ]"_s << u"ﾞ"_s << true;
        QTest::newRow("marks are members, kana") << u"[ｶﾞ-ｺﾞ]"_s << u"ｶ"_s << true;
        QTest::newRow("marks are members, full width") << u"[ｶﾞ-ｺﾞ]"_s << u"ギ"_s << false;
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
        QTest::newRow("half-width to full-width range") << u"[ｱ-ン]"_s << u"ミ"_s << true;
        QTest::newRow("half-width to full-width range, hiragana") << u"[ｱ-ン]"_s << u"み"_s << true;
        QTest::newRow("half-width to full-width range, half width") << u"[ｱ-ン]"_s << u"ﾐ"_s << true;
        QTest::newRow("half-width to full-width range, first") << u"[ｱ-ン]"_s << u"あ"_s << true;
        QTest::newRow("half-width to full-width range, last") << u"[ｱ-ン]"_s << u"ﾝ"_s << true;
        QTest::newRow("half-width to full-width range, kanji") << u"[ｱ-ン]"_s << u"水"_s << false;
        QTest::newRow("half-width to full-width range, excluded") << u"[!ｱ-ン]"_s << u"ミ"_s << false;
        QTest::newRow("full-width to half-width range") << u"[Ａ-z]"_s << u"m"_s << true;
        QTest::newRow("full-width to half-width range, capital") << u"[Ａ-z]"_s << u"Ｍ"_s << true;
        QTest::newRow("full-width to half-width range, between") << u"[Ａ-z]"_s << u"_"_s << false;
        QTest::newRow("range of both cases") << u"[a-Z]"_s << u"B"_s << true;
        QTest::newRow("hiragana to katakana range") << u"[あ-ン]"_s << u"ｲ"_s << true;
        QTest::newRow("voiced range") << u"[ｶﾞ-ｺﾞ]"_s << u"ギ"_s << true;
        QTest::newRow("voiced range, hiragana") << u"[ｶﾞ-ｺﾞ]"_s << u"ぐ"_s << true;
        QTest::newRow("voiced range, half width") << u"[ｶﾞ-ｺﾞ]"_s << u"ｹﾞ"_s << true;
        QTest::newRow("voiced range, first") << u"[ｶﾞ-ｺﾞ]"_s << u"が"_s << true;
        QTest::newRow("voiced range, last") << u"[ｶﾞ-ｺﾞ]"_s << u"ゴ"_s << true;
        QTest::newRow("voiced range, plain within") << u"[ｶﾞ-ｺﾞ]"_s << u"キ"_s << true;
        QTest::newRow("voiced range, before it") << u"[ｶﾞ-ｺﾞ]"_s << u"カ"_s << false;
        QTest::newRow("voiced range, behind it") << u"[ｶﾞ-ｺﾞ]"_s << u"サ"_s << false;
        QTest::newRow("voiced range, the mark") << u"[ｶﾞ-ｺﾞ]"_s << u"ﾞ"_s << false;
        QTest::newRow("half-voiced range") << u"[ﾊﾟ-ﾎﾟ]"_s << u"ぴ"_s << true;
        QTest::newRow("combining voiced range") << u"[か\u3099-こ\u3099]"_s << u"ギ"_s << true;
        QTest::newRow("a mark of its own in a list") << u"[ｱﾞ]"_s << u"ﾞ"_s << true;
        QTest::newRow("a mark behind a range") << u"[a-bﾞ]"_s << u"ﾞ"_s << true;
        // Backwards in the eyes of a reader, whatever the code points say.
        QTest::newRow("range backwards") << u"[z-a]"_s << u"m"_s << false;
        QTest::newRow("range backwards, end") << u"[z-a]"_s << u"a"_s << false;
        QTest::newRow("range backwards by its fold") << u"[ン-ｱ]"_s << u"ミ"_s << false;
        QTest::newRow("range backwards by its case") << u"[Z-a]"_s << u"m"_s << false;
        QTest::newRow("voiced range backwards") << u"[ｺﾞ-ｶﾞ]"_s << u"ギ"_s << false;
        QTest::newRow("range backwards excluded") << u"[!ｺﾞ-ｶﾞ]"_s << u"ギ"_s << true;
        QTest::newRow("full-width hyphen is a member") << u"[a－c]"_s << u"b"_s << false;
        QTest::newRow("empty list") << u"[]"_s << u""_s << true;
        QTest::newRow("nothing excluded") << u"[!]"_s << u"ｶﾞ"_s << true;
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
