#include "app/base/platform/code_page.h"

#include "tests/support/compare_text.h"

#include <QtTest>

#include <array>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestCodePage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesAreThoseOfTheCodePage_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("bytes");
        QTest::newRow("nothing") << QString() << 0;
        QTest::newRow("ascii") << u"abc XYZ~\\"_s << 9;
        QTest::newRow("control characters") << u"a\r\n\tb"_s << 5;
        QTest::newRow("kanji") << u"水素"_s << 4;
        QTest::newRow("kana") << u"みズ"_s << 4;
        QTest::newRow("half-width katakana") << u"ﾐｽﾞ｡｢｣"_s << 6;
        QTest::newRow("full-width latin") << u"ＡＢ１"_s << 6;
        QTest::newRow("full-width blank") << u"\u3000"_s << 2;
        QTest::newRow("mixed") << u"水H2Oミﾐ"_s << 2 + 3 + 2 + 1;
        QTest::newRow("NEC row 13") << u"①Ⅳ㍉㈱№℡"_s << 12;
        QTest::newRow("IBM extensions") << u"髙﨑纊"_s << 6;
        QTest::newRow("small Roman numerals") << u"ⅰⅹ"_s << 4;
        QTest::newRow("Greek and Cyrillic") << u"αЯ"_s << 4;
        QTest::newRow("one byte for a missing character") << u"한é€"_s << 3;
        QTest::newRow("one byte per unit of an emoji") << u"\U0001F600"_s << 2;
        QTest::newRow("one byte per unit of a rare kanji") << u"\U00020B9F"_s << 2;
        QTest::newRow("a lone surrogate") << QString(QChar(0xD83D)) << 1;
    }

    void bytesAreThoseOfTheCodePage()
    {
        QFETCH(QString, text);
        QFETCH(int, bytes);
        QCOMPARE(platform::byteLength932(text), bytes);
    }

    void charactersBesideThePageAreAsWideAsWindowsMakesThem_data()
    {
        QTest::addColumn<char16_t>("character");
        QTest::addColumn<int>("bytes");
        const auto row = [](char16_t character, int bytes) {
            QTest::addRow("U+%04X", character) << character << bytes;
        };
        for (const char16_t missing : {u'\u2014', u'\u2016', u'\u2212', u'\u301C'})
            row(missing, 1); // "?"
        for (const char16_t twin :
             {u'\u2015', u'\u2225', u'\uFF0D', u'\uFF5E', u'\uFFE0', u'\uFFE1', u'\uFFE2'})
            row(twin, 2); // what the page has in their stead
        for (const char16_t fitting : {u'\u00AB', u'\u00BB', u'\u00AF', u'\u00B5', u'\u00B7', u'\u00B8',
                                       u'\u3094', u'\u00A2', u'\u00A3', u'\u00AC'})
            row(fitting, 2);
        for (const char16_t halfWide : {u'\u00A1', u'\u00A5', u'\u00A9', u'\u00E9'})
            row(halfWide, 1);
    }
    void charactersBesideThePageAreAsWideAsWindowsMakesThem()
    {
        QFETCH(char16_t, character);
        QTEST(static_cast<int>(platform::byteLength932(QStringView(&character, 1))), "bytes");
    }

    void validBytesAreDecoded_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << QByteArray() << QString();
        QTest::newRow("ascii") << QByteArray("a\\b~c\r\n") << u"a\\b~c\r\n"_s;
        QTest::newRow("kanji") << QByteArray("\x90\x85\x91\x66") << u"水素"_s;
        QTest::newRow("second byte is a backslash") << QByteArray("\x95\x5C\x8E\xA6") << u"表示"_s;
        QTest::newRow("half-width katakana") << QByteArray("\xD0\xBD\xDE") << u"ﾐｽﾞ"_s;
        QTest::newRow("NEC row 13") << QByteArray("\x87\x40") << u"①"_s;
        QTest::newRow("IBM extension") << QByteArray("\xFB\xFC") << u"髙"_s;
        QTest::newRow("wave dash") << QByteArray("\x81\x60") << u"\uFF5E"_s;
        QTest::newRow("control characters") << QByteArray("\x1A\x1C\x7F") << u"\x1A\x1C\x7F"_s;
        QTest::newRow("NUL") << QByteArray("a\0b", 3) << QString::fromUtf16(u"a\0b", 3);
    }

    void validBytesAreDecoded()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const auto decoded = platform::decode932(bytes);
        QVERIFY(decoded.has_value());
        QVERIFY(compareText(*decoded, text));
    }

    void invalidBytesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("half a character at the end") << QByteArray("a\x90");
        QTest::newRow("impossible second byte") << QByteArray("\x90\x20");
        QTest::newRow("unassigned pair") << QByteArray("\x85\x40");
        QTest::newRow("UTF-8") << QByteArray("\xE6\xB0\xB4\xE7\xB4\xA0\xE3\x81\xA8");
    }

    void invalidBytesAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(!platform::decode932(bytes).has_value());
    }

    void everyTwoByteCharacterHasTheLengthItDecodesFrom()
    {
        int characters = 0;
        for (int lead = 0x81; lead <= 0xFC; ++lead) {
            if (lead >= 0xA0 && lead <= 0xDF)
                continue;
            for (int trail = 0x40; trail <= 0xFC; ++trail) {
                const std::array bytes = {static_cast<char>(lead), static_cast<char>(trail)};
                const auto text = platform::decode932(QByteArrayView(bytes));
                if (!text || text->size() != 1)
                    continue;
                ++characters;
                QVERIFY2(platform::byteLength932(*text) == 2, qPrintable(*text));
            }
        }
        // The characters of the standard and the extensions of both vendors.
        QVERIFY2(characters > 7000, qPrintable(QString::number(characters)));
    }
};

QTEST_GUILESS_MAIN(TestCodePage)
#include "test_code_page.moc"
