#include "app/base/platform/collation.h"

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <string>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestCollation : public QObject
{
    Q_OBJECT

    static std::string keyOf(const platform::Collator& collator, const QString& text)
    {
        std::string key;
        collator.appendKey(text, key);
        return key;
    }

    static QStringList sorted(QStringList texts)
    {
        const platform::Collator collator;
        std::stable_sort(texts.begin(), texts.end(), [&](const QString& one, const QString& other) {
            return keyOf(collator, one) < keyOf(collator, other);
        });
        return texts;
    }

private Q_SLOTS:
    void kanaSortInTheOrderOfTheSyllabary()
    {
        QCOMPARE(sorted({u"わ"_s, u"か"_s, u"ア"_s, u"さ"_s, u"イ"_s}),
                 QStringList({u"ア"_s, u"イ"_s, u"か"_s, u"さ"_s, u"わ"_s}));
    }

    void latinComesBeforeKanaAndKanaBeforeKanji()
    {
        QCOMPARE(sorted({u"水"_s, u"みず"_s, u"Water"_s, u"9"_s}),
                 QStringList({u"9"_s, u"Water"_s, u"みず"_s, u"水"_s}));
    }

    void voicedKanaFollowThePlainOnes()
    {
        QCOMPARE(sorted({u"が"_s, u"き"_s, u"か"_s}), QStringList({u"か"_s, u"が"_s, u"き"_s}));
    }

    void smallLettersStandBesideTheirCapitals()
    {
        QCOMPARE(sorted({u"b"_s, u"B"_s, u"a"_s, u"A"_s}), QStringList({u"a"_s, u"A"_s, u"b"_s, u"B"_s}));
    }

    void aPrefixComesFirstAndNothingComesBeforeIt()
    {
        QCOMPARE(sorted({u"水素"_s, u"水"_s, u""_s}), QStringList({u""_s, u"水"_s, u"水素"_s}));
    }

    void kanjiSortByTheirReadingsInTheStandardsOrder()
    {
        // The first level of the standard is ordered by reading: 亜 アイ ... 安 アン ... 水 スイ ... 和 ワ.
        QCOMPARE(sorted({u"和"_s, u"水"_s, u"安"_s, u"亜"_s}),
                 QStringList({u"亜"_s, u"安"_s, u"水"_s, u"和"_s}));
    }

    void severalHundredNamesAreInTheOrderOfEverySystem()
    {
        // One rank per line; what is alike stands side by side.
        QFile file(QStringLiteral(QUILLON_SORTED_NAMES));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const platform::Collator collator;
        std::string before;
        int names = 0;
        for (const QString& rank : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
            const QStringList alike = rank.split(u'\t');
            const std::string key = keyOf(collator, alike.first());
            QVERIFY2(before < key, qPrintable(rank));
            for (const QString& name : alike)
                QVERIFY2(keyOf(collator, name) == key, qPrintable(rank));
            before = key;
            names += static_cast<int>(alike.size());
        }
        QVERIFY(names > 400);
    }

    void keysAreAppendedBehindWhatIsThere()
    {
        const platform::Collator collator;
        std::string keys = "kept";
        collator.appendKey(u"水", keys);
        QCOMPARE(keys, "kept" + keyOf(collator, u"水"_s));
        QVERIFY(keys.size() > 4);
    }

    void aLongTextGetsAWholeKey()
    {
        const platform::Collator collator;
        const QString text(20000, u'水');
        QVERIFY(keyOf(collator, text) < keyOf(collator, text + u'あ'));
    }
};

QTEST_GUILESS_MAIN(TestCollation)
#include "test_collation.moc"
