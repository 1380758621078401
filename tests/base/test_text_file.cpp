#include "app/base/platform/code_page.h"
#include "app/base/text_file.h"
#include "tests/support/compare_text.h"

#include <QtTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestTextFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesBecomeText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << ""_ba << QString();
        QTest::newRow("ascii") << "water\\ice~"_ba << u"water\\ice~"_s;

        // Code page 932.
        QTest::newRow("932") << "\x90\x85\x91\x66"_ba << u"水素"_s;
        QTest::newRow("932, half-width") << "\xD0\xBD\xDE\xA1"_ba << u"ﾐｽﾞ｡"_s;
        QTest::newRow("932, second byte a backslash") << "\x95\x5C\x8E\xA6"_ba << u"表示"_s;
        QTest::newRow("932, NEC extensions") << "\x87\x40\x87\x55\x87\x8A"_ba << u"①Ⅱ㈱"_s;
        QTest::newRow("932, NEC selection of IBM's") << "\xED\x40\xEE\xEF"_ba << u"纊ⅰ"_s;
        QTest::newRow("932, IBM extensions") << "\xFA\x40\xFB\xFC\xFA\xB1"_ba << u"ⅰ髙﨑"_s;
        QTest::newRow("932, wave dash and minus") << "\x81\x60\x81\x7C"_ba << u"\uFF5E\uFF0D"_s;
        QTest::newRow("932, user-defined") << "\xF0\x40"_ba << u"\uE000"_s;
        QTest::newRow("932 that would be UTF-8, too") << "\xC2\xB1"_ba << u"ﾂｱ"_s;

        // Line breaks and control characters are kept.
        QTest::newRow("CR LF") << "a\r\n\x90\x85\r\n"_ba << u"a\r\n水\r\n"_s;
        QTest::newRow("LF") << "a\n\x90\x85\n"_ba << u"a\n水\n"_s;
        QTest::newRow("CR") << "a\rb\r"_ba << u"a\rb\r"_s;
        QTest::newRow("mixed") << "a\r\nb\nc\rd\r\r\n"_ba << u"a\r\nb\nc\rd\r\r\n"_s;
        QTest::newRow("NUL") << "a\0\0b"_ba << u"a\0\0b"_s;
        QTest::newRow("end-of-file sign") << QByteArray("a\x1A"
                                                        "b")
                                          << u"a\x1A"
                                             "b"_s;
        QTest::newRow("controls") << "\x01\x1A\x1C\x7F\t"_ba << u"\x01\x1A\x1C\x7F\t"_s;

        // UTF-8.
        QTest::newRow("UTF-8 with mark") << "\xEF\xBB\xBF水素 é\U0001F600"_ba << u"水素 é\U0001F600"_s;
        QTest::newRow("UTF-8 with mark that would be 932") << "\xEF\xBB\xBF±"_ba << u"±"_s;
        QTest::newRow("UTF-8 with mark, nothing else") << "\xEF\xBB\xBF"_ba << QString();
        QTest::newRow("UTF-8 with mark, line breaks") << "\xEF\xBB\xBF水\r\n\0\n"_ba << u"水\r\n\0\n"_s;
        QTest::newRow("UTF-8 with mark, damaged") << "\xEF\xBB\xBF水\xFF氷"_ba << u"水\uFFFD氷"_s;
        QTest::newRow("UTF-8 without mark") << "水素と\r\n酸素と\0"_ba << u"水素と\r\n酸素と\0"_s;
        QTest::newRow("UTF-8 without mark that would be 932") << "ああ"_ba << u"ああ"_s;
        QTest::newRow("UTF-8 without mark that would be 932, mixed") << "aああ±\r\n"_ba << u"aああ±\r\n"_s;
        QTest::newRow("UTF-8 emoji without mark") << "\U0001F600"_ba << u"\U0001F600"_s;

        // UTF-16.
        QTest::newRow("UTF-16 LE") << "\xFF\xFE\x34\x6C\x0D\0\x0A\0\0\0A\0"_ba << u"水\r\n\0A"_s;
        QTest::newRow("UTF-16 BE") << "\xFE\xFF\x6C\x34\0\x0D\0\x0A\0\0\0A"_ba << u"水\r\n\0A"_s;
        QTest::newRow("UTF-16 LE, pair") << "\xFF\xFE\x3D\xD8\x00\xDE"_ba << u"\U0001F600"_s;
        QTest::newRow("UTF-16 BE, pair") << "\xFE\xFF\xD8\x3D\xDE\x00"_ba << u"\U0001F600"_s;
        QTest::newRow("UTF-16 LE, nothing else") << "\xFF\xFE"_ba << QString();
        QTest::newRow("UTF-16 BE, nothing else") << "\xFE\xFF"_ba << QString();

        // Only the first mark is one.
        QTest::newRow("UTF-8, two marks") << "\xEF\xBB\xBF\xEF\xBB\xBF水"_ba << u"\uFEFF水"_s;
        QTest::newRow("UTF-16 LE, two marks") << "\xFF\xFE\xFF\xFE\x34\x6C"_ba << u"\uFEFF水"_s;
        QTest::newRow("UTF-16 BE, two marks") << "\xFE\xFF\xFE\xFF\x6C\x34"_ba << u"\uFEFF水"_s;
    }

    void bytesBecomeText()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const QString decoded = decodeTextFile(bytes);
        QVERIFY(compareText(decoded, text));
        QCOMPARE(decoded.size(), text.size());
    }

    void halfACharacterAtTheEndSpoilsNothingElse()
    {
        QVERIFY(decodeTextFile("\xEF\xBB\xBF水\xE6\xB0"_ba).startsWith(u"水\uFFFD"));
        QVERIFY(decodeTextFile("\xFF\xFE\x34\x6C\x41"_ba).startsWith(u'水'));
        QVERIFY(decodeTextFile("\xFE\xFF\x6C\x34\x41"_ba).startsWith(u'水'));
        QVERIFY(decodeTextFile("\xFF\xFE\x41"_ba).size() <= 1);
    }

    void whatIsValidInNeitherKeepsEverythingElse_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("half a character at the end") << "\x90\x85\x90"_ba << u"水・"_s;
        QTest::newRow("unassigned pair") << "\x90\x85\x85\x40\x91\x66"_ba << u"水・素"_s;
        QTest::newRow("unassigned pair, twice") << "\x85\x40\x85\x40!"_ba << u"・・!"_s;
        QTest::newRow("line breaks and NUL") << "\r\n\0\x85\x40\n"_ba << u"\r\n\0・\n"_s;
        QTest::newRow("controls") << "\x1A\x1C\x7F\x85\x40"_ba << u"\x1A\x1C\x7F・"_s;
    }

    void whatIsValidInNeitherKeepsEverythingElse()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QVERIFY(compareText(decodeTextFile(bytes), text));
        QVERIFY(compareText(platform::decode932Forgivingly(bytes), text));
    }

    void impossibleSecondByteSpoilsNothingElse()
    {
        // Whether the second byte is swallowed differs from system to system; what follows is whole.
        const QString text = decodeTextFile("a\x90 \x90\x85"_ba);
        QVERIFY2(text.startsWith(u"a・") && text.endsWith(u"水"), qPrintable(text));
    }

    void forgivingAgreesWithStrictWhereverTheBytesAreValid()
    {
        std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same bytes every time
        int valid = 0;
        for (int round = 0; round < 20000; ++round) {
            QByteArray bytes;
            for (auto size = random() % 5; size > 0; --size)
                bytes += static_cast<char>(random() % 256);
            const QString forgiving = platform::decode932Forgivingly(bytes);
            QCOMPARE(forgiving.isEmpty(), bytes.isEmpty());
            QVERIFY(!forgiving.contains(QChar::ReplacementCharacter));
            if (const auto strict = platform::decode932(bytes)) {
                ++valid;
                QCOMPARE(forgiving, *strict);
            } else {
                QVERIFY2(forgiving.contains(u'・'), bytes.toHex(' ').constData());
            }
        }
        QVERIFY(valid > 1000);
    }
};

QTEST_GUILESS_MAIN(TestTextFile)
#include "test_text_file.moc"
