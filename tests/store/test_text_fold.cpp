#include "store/text_fold.h"
#include "tests/support/compare_text.h"

#include <QTest>

#include <random>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestTextFold : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formsOfOneTextFoldAlike_data()
    {
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("other");
        QTest::newRow("case") << u"ABCxyz"_s << u"abcXYZ"_s;
        QTest::newRow("width of letters") << u"ＡＢＣａｂｃ"_s << u"abcABC"_s;
        QTest::newRow("width of digits") << u"０１２９"_s << u"0129"_s;
        QTest::newRow("width of signs") << u"！＃（）＠［］｛｝～"_s << u"!#()@[]{}~"_s;
        QTest::newRow("width of the blank") << u"　"_s << u" "_s;
        QTest::newRow("half-width katakana") << u"ｱｲｳｴｵｯｬｭｮﾝ"_s << u"アイウエオッャュョン"_s;
        QTest::newRow("half-width marks") << u"｡｢｣､･ｰ"_s << u"。「」、・ー"_s;
        QTest::newRow("hiragana") << u"ぁあがっづんゔゎ"_s << u"ァアガッヅンヴヮ"_s;
        QTest::newRow("small ka and ke") << u"ゕゖ"_s << u"ヵヶ"_s;
        QTest::newRow("iteration marks") << u"ゝゞ"_s << u"ヽヾ"_s;
        QTest::newRow("half-width voiced ka") << u"ｶﾞ"_s << u"が"_s;
        QTest::newRow("combining voice mark") << u"か\u3099"_s << u"ガ"_s;
        QTest::newRow("combining half-voice mark") << u"は\u309A"_s << u"パ"_s;
        QTest::newRow("every voiced kana") << u"ｶﾞｷﾞｸﾞｹﾞｺﾞｻﾞｼﾞｽﾞｾﾞｿﾞﾀﾞﾁﾞﾂﾞﾃﾞﾄﾞﾊﾞﾋﾞﾌﾞﾍﾞﾎﾞｳﾞ"_s
                                           << u"がぎぐげござじずぜぞだぢづでどばびぶべぼヴ"_s;
        QTest::newRow("every half-voiced kana") << u"ﾊﾟﾋﾟﾌﾟﾍﾟﾎﾟ"_s << u"ぱぴぷぺぽ"_s;
        QTest::newRow("voiced wa, wi, we, wo") << u"ﾜﾞゐ\u3099ゑ\u3099ｦﾞ"_s << u"ヷヸヹヺ"_s;
        QTest::newRow("Greek") << u"ΑΒΩΣς"_s << u"αβωσσ"_s;
        QTest::newRow("Cyrillic") << u"АБЯЁ"_s << u"абяё"_s;
        QTest::newRow("dash") << u"\u2014"_s << u"\u2015"_s;
        QTest::newRow("wave dash") << u"\u301C"_s << u"\uFF5E"_s;
        QTest::newRow("double bar") << u"\u2016"_s << u"\u2225"_s;
        QTest::newRow("minus") << u"\u2212"_s << u"\uFF0D"_s;
        QTest::newRow("cent") << u"\u00A2"_s << u"\uFFE0"_s;
        QTest::newRow("pound") << u"\u00A3"_s << u"\uFFE1"_s;
        QTest::newRow("not") << u"\u00AC"_s << u"\uFFE2"_s;
    }
    void formsOfOneTextFoldAlike()
    {
        QFETCH(QString, one);
        QFETCH(QString, other);
        QVERIFY(compareText(foldedText(one), foldedText(other)));
    }

    void differentTextsStayDifferent_data()
    {
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("other");
        QTest::newRow("small kana") << u"つ"_s << u"っ"_s;
        QTest::newRow("half-width small kana") << u"ﾔ"_s << u"ｬ"_s;
        QTest::newRow("voiced kana") << u"か"_s << u"が"_s;
        QTest::newRow("half-voiced kana") << u"ば"_s << u"ぱ"_s;
        QTest::newRow("half-width voiced kana") << u"ﾊﾞ"_s << u"ﾊﾟ"_s;
        QTest::newRow("long vowel and dash") << u"ー"_s << u"―"_s;
        QTest::newRow("katakana and Han") << u"ニ"_s << u"二"_s;
        QTest::newRow("letters") << u"a"_s << u"b"_s;
        QTest::newRow("small tu takes no voice mark") << u"ｯﾞ"_s << u"ヅ"_s;
    }
    void differentTextsStayDifferent()
    {
        QFETCH(QString, one);
        QFETCH(QString, other);
        QVERIFY(foldedText(one) != foldedText(other));
    }

    void theFoldedFormIsTheNarrowSmallKatakanaOne()
    {
        QVERIFY(compareText(foldedText(u"ＡｶﾞかﾞヴABC水　―"), u"aガガヴabc水 ―"));
    }

    void aVoiceMarkWithoutAKanaStaysByItself()
    {
        QVERIFY(compareText(foldedText(u"ﾞ"), u"゛"));
        QVERIFY(compareText(foldedText(u"\u309A"), u"゜"));
        QVERIFY(compareText(foldedText(u"aﾞ"), u"a゛"));
        QVERIFY(compareText(foldedText(u"ｱﾞ"), u"ア゛"));
        QVERIFY(compareText(foldedText(u"ｶﾟ"), u"カ゜"));
        QVERIFY(compareText(foldedText(u"ｶﾞﾞ"), u"ガ゛"));
    }

    void surrogatesStayAsTheyAre()
    {
        QVERIFY(compareText(foldedText(u"😀𠮷"), u"😀𠮷"));
        const QString alone = QString(QChar(0xD83D)) + u'A' + QChar(0xDE00);
        QVERIFY(compareText(foldedText(alone), QString(QChar(0xD83D)) + u'a' + QChar(0xDE00)));
    }

    void theEmptyTextStaysEmpty()
    {
        QCOMPARE(foldedText(u""), QString());
        QCOMPARE(foldedText(QStringView()), QString());
    }

    void everyUnitBecomesOneUnit()
    {
        for (int unit = 0; unit < 0x10000; ++unit)
            QCOMPARE(foldedText(QString(QChar(static_cast<char16_t>(unit)))).size(), 1);
    }

    void foldingTwiceChangesNothing()
    {
        std::mt19937 random(19991231);
        std::uniform_int_distribution<int> anyUnit(0, 0xFFFF);
        std::uniform_int_distribution<int> kana(0xFF61, 0xFF9F);
        for (int round = 0; round < 2000; ++round) {
            QString text;
            for (int i = 0; i < 40; ++i)
                text += QChar(static_cast<char16_t>(i % 2 == 0 ? anyUnit(random) : kana(random)));
            const QString once = foldedText(text);
            QVERIFY(compareText(foldedText(once), once));
        }
    }
};

QTEST_GUILESS_MAIN(TestTextFold)
#include "test_text_fold.moc"
