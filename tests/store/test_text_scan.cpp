#include "store/text_scan.h"

#include <QTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

namespace
{

/// The first place of a needle, found one place after the other.
qsizetype firstPlace(QStringView text, QStringView needle)
{
    for (qsizetype place = 0; place + needle.size() <= text.size(); ++place) {
        if (text.sliced(place, needle.size()) == needle)
            return place;
    }
    return -1;
}

QString randomText(std::mt19937& random, int size, int letters)
{
    QString text;
    for (int i = 0; i < size; ++i)
        text += QChar(static_cast<char16_t>(u'あ' + random() % static_cast<unsigned>(letters)));
    return text;
}

using Scan = const char16_t* (*)(const char16_t*, const char16_t*, QStringView);

constexpr Scan BothScans[] = {findUnits, findUnitsPlainly};

qsizetype placeFound(Scan scan, QStringView text, QStringView needle)
{
    const char16_t* begin = text.utf16();
    const char16_t* end = begin + text.size();
    const char16_t* found = scan(begin, end, needle);
    return found == end ? -1 : found - begin;
}

} // namespace

class TestTextScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothScansFindTheFirstPlace()
    {
        std::mt19937 random(20261120);
        int hits = 0;
        for (int round = 0; round < 20000; ++round) {
            // Few letters make many near misses; sizes go over several blocks of the vectors.
            const int letters = 2 + static_cast<int>(random() % 4);
            const QString text = randomText(random, static_cast<int>(random() % 200), letters);
            const QString needle = randomText(random, 1 + static_cast<int>(random() % 9), letters);
            const qsizetype expected = firstPlace(text, needle);
            hits += expected >= 0 ? 1 : 0;
            for (const Scan scan : BothScans)
                QCOMPARE(placeFound(scan, text, needle), expected);
        }
        QVERIFY(hits > 1000 && hits < 19000); // both outcomes have been tried
    }

    void aNeedleAtTheVeryEndIsFound()
    {
        for (int size = 1; size < 150; ++size) {
            const QString text = QString(size - 1, u'あ') + u'い';
            for (const Scan scan : BothScans)
                QCOMPARE(placeFound(scan, text, u"い"), size - 1);
        }
    }

    void nothingIsFoundInATextShorterThanTheNeedle()
    {
        for (const Scan scan : BothScans)
            QCOMPARE(placeFound(scan, u"あい"_s, u"あいう"), -1);
    }

    void nothingBeyondTheEndIsReadOrFound()
    {
        // The needle goes on behind the part that is searched.
        const QString text = QString(63, u'あ') + u"いう"_s;
        for (const Scan scan : BothScans) {
            const char16_t* begin = QStringView(text).utf16();
            QCOMPARE(scan(begin, begin + 64, u"いう") - begin, 64);
            QCOMPARE(scan(begin, begin + 65, u"いう") - begin, 63);
        }
    }
};

QTEST_GUILESS_MAIN(TestTextScan)
#include "test_text_scan.moc"
