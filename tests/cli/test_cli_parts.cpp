#include "app/cli/columns.h"
#include "app/cli/overwritten_line.h"
#include "app/cli/status.h"
#include "app/cli/utf8.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::cli;

namespace
{

template <class Write> QByteArray written(QStringView text, Write&& write)
{
    QByteArray bytes(mostBytes(text), Qt::Uninitialized);
    const char* const begin = bytes.constData();
    bytes.truncate(write(bytes.data(), text) - begin);
    return bytes;
}

} // namespace

/// How the command line program writes texts.
class TestCliParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullWidthCharactersTakeTwoColumns_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("columns");
        QTest::newRow("nothing") << QString() << 0;
        QTest::newRow("letters") << u"abc"_s << 3;
        QTest::newRow("kanji") << u"水素"_s << 4;
        QTest::newRow("half-width katakana") << u"ｶﾞ"_s << 2;
        QTest::newRow("full-width letter") << u"Ａ"_s << 2;
        QTest::newRow("combining sound mark") << u"か\u3099"_s << 2;
        QTest::newRow("a rare kanji of two units") << u"𠮷"_s << 2;
        QTest::newRow("half a character") << QString(QChar(0xD842)) << 1;
    }

    void fullWidthCharactersTakeTwoColumns()
    {
        QFETCH(QString, text);
        QFETCH(int, columns);
        QCOMPARE(columnsOf(QStringView(text)), columns);
        QCOMPARE(columnsOf(QStringView(padded(text, 10))), 10);
    }

    void whatDoesNotFitIsCutBetweenCharacters()
    {
        QCOMPARE(elided(u"水素"_s, 4), u"水素"_s);
        QCOMPARE(elided(u"水素水"_s, 5), u"水素…"_s);
        QCOMPARE(elided(u"水素水"_s, 4), u"水…"_s);
        QCOMPARE(elided(u"𠮷𠮷𠮷"_s, 5), u"𠮷𠮷…"_s);
        QCOMPARE(elided(u"水素"_s, 0), u"…"_s);
    }

    void nothingSteersTheTerminal()
    {
        QCOMPARE(onePrintedLine(u"a\r\nb\tc\x1B[2Jd"_s), u"a b c\uFFFD[2Jd"_s);
        QCOMPARE(onePrintedLine(u"a\u202Eb\u0085c"_s), u"a\uFFFDb c"_s);
        QCOMPARE(printedLines(u"a\r\nb\tc\x1B[2Jd"_s), u"a\nb\tc\uFFFD[2Jd"_s);
    }

    void aLineIsClearedByTheTerminalOrWithBlanks()
    {
        OverwrittenLine cleared(true);
        QCOMPARE(cleared.replacedBy("100 %"), QByteArray("\r100 %\x1B[K"));
        QCOMPARE(cleared.replacedBy("7"), QByteArray("\r7\x1B[K"));
        QCOMPARE(cleared.cleared(), QByteArray("\r\x1B[K"));
        OverwrittenLine blanked(false);
        QCOMPARE(blanked.replacedBy("100 %"), QByteArray("\r100 %"));
        QCOMPARE(blanked.replacedBy("7"), QByteArray("\r7    "));
        QCOMPARE(blanked.replacedBy("12"), QByteArray("\r12"));
        QCOMPARE(blanked.cleared(), QByteArray("\r  \r"));
    }

    void jsonLosesNothing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("nothing") << QString() << QByteArray("\"\"");
        QTest::newRow("quotes and slashes") << u"\"\\/"_s << QByteArray("\"\\\"\\\\/\"");
        QTest::newRow("line breaks") << u"a\r\n\tb"_s << QByteArray("\"a\\r\\n\\tb\"");
        QTest::newRow("controls") << u"\x01\x7F"_s << QByteArray("\"\\u0001\\u007f\"");
        QTest::newRow("two bytes") << u"é"_s << QByteArray("\"\xC3\xA9\"");
        QTest::newRow("three bytes") << u"水"_s << QByteArray("\"\xE6\xB0\xB4\"");
        QTest::newRow("four bytes") << u"𠮷"_s << QByteArray("\"\xF0\xA0\xAE\xB7\"");
        QTest::newRow("half characters")
            << QString(QChar(0xD842)) + u"a"_s + QChar(0xDFB7) << QByteArray("\"\\ud842a\\udfb7\"");
    }

    void jsonLosesNothing()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, json);
        QCOMPARE(written(text, writeJson), json);
        const auto read = QJsonDocument::fromJson('[' + json + ']');
        QCOMPARE(read.array().at(0).toString(), text);
    }

    void halfACharacterIsReplacedForPeople()
    {
        QCOMPARE(written(QString(QChar(0xD842)), writeUtf8), QByteArray("\xEF\xBF\xBD"));
        QCOMPARE(written(u"水é𠮷a"_s, writeUtf8), u"水é𠮷a"_s.toUtf8());
    }

    void failuresHaveTheirStatus_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("status");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("no such row") << 3021 << 1;
        QTest::newRow("row deleted") << 3167 << 1;
        QTest::newRow("no such file") << 53 << 1;
        QTest::newRow("no database") << 3024 << 3;
        QTest::newRow("locked") << 3260 << 3;
        QTest::newRow("damaged") << 3343 << 3;
        QTest::newRow("disk full") << 61 << 3;
        QTest::newRow("too wide") << 3163 << 4;
        QTest::newRow("taken") << 3022 << 4;
        QTest::newRow("no permission") << 70 << 3;
        QTest::newRow("no access") << 75 << 3;
    }

    void failuresHaveTheirStatus()
    {
        QFETCH(int, number);
        QFETCH(int, status);
        QCOMPARE(static_cast<int>(statusOf(number)), status);
    }
};

QTEST_GUILESS_MAIN(TestCliParts)
#include "test_cli_parts.moc"
