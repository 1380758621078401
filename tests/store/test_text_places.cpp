#include "store/text_fold.h"
#include "store/text_places.h"

#include <QtTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

/// Finding a text in another as a Japanese reader compares, and where it stands there.
class TestTextPlaces : public QObject
{
    Q_OBJECT

private:
    static QStringList found(const QString& wanted, const QString& text, std::size_t most = 100)
    {
        QStringList parts;
        for (const TextPlace& place : placesOf(wanted, text, most))
            parts << QString::number(place.from) + u':' + text.mid(place.from, place.length);
        return parts;
    }

private Q_SLOTS:
    void everyPlaceIsFoundAsAReaderCompares_data()
    {
        QTest::addColumn<QString>("wanted");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("places");
        const auto add = [](const char* name, const QString& wanted, const QString& text,
                            const QStringList& places) { QTest::newRow(name) << wanted << text << places; };
        add("plain", u"水"_s, u"水は水"_s, {u"0:水"_s, u"2:水"_s});
        add("case and width", u"abc"_s, u"xＡＢｃ Abc"_s, {u"1:ＡＢｃ"_s, u"5:Abc"_s});
        add("kana", u"がく"_s, u"ガク・ｶﾞｸ・かく"_s, {u"0:ガク"_s, u"3:ｶﾞｸ"_s});
        add("behind joined marks", u"水"_s, u"ｶﾞｷﾞ水"_s, {u"4:水"_s});
        add("a mark that joins nothing", u"ア"_s, u"ｱﾞ"_s, {u"0:ｱ"_s});
        add("with such a mark", u"ｱﾞ"_s, u"いｱﾞ"_s, {u"1:ｱﾞ"_s});
        add("two marks in a row", u"か゛"_s, u"ｶﾞﾞ"_s, {});
        add("at the end", u"ｶﾞ"_s, u"水ガ"_s, {u"1:ガ"_s});
        add("overlapping ones", u"ああ"_s, u"あああ"_s, {u"0:ああ"_s});
        add("over a line", u"水\nは"_s, u"水\nは"_s, {u"0:水\nは"_s});
        add("nothing wanted", u""_s, u"水"_s, {});
        add("nothing there", u"水"_s, u""_s, {});
        add("outside the basic plane", u"😀"_s, u"水😀😀"_s, {u"1:😀"_s, u"3:😀"_s});
    }

    void everyPlaceIsFoundAsAReaderCompares()
    {
        QFETCH(QString, wanted);
        QFETCH(QString, text);
        QTEST(found(wanted, text), "places");
    }

    void noMoreAreFoundThanAreAskedFor()
    {
        QCOMPARE(found(u"水"_s, u"水水水水"_s, 2), QStringList({u"0:水"_s, u"1:水"_s}));
    }

    void longTextsAreFoundBehindManyPieces()
    {
        QString text;
        for (int i = 0; i < 5000; ++i)
            text += u"ｶﾞｱﾞあ"_s;
        text += u"水"_s;
        QCOMPARE(found(u"水"_s, text), QStringList(u"25000:水"_s));
        QCOMPARE(placesOf(u"が"_s, text, 10000).size(), std::size_t(5000));
        QCOMPARE(placesOf(u"が"_s, text, 10000).back(), (TextPlace{.from = 24'995, .length = 2}));
    }

    void whatIsFoundFoldsToWhatIsWanted()
    {
        const auto seed = std::random_device()();
        std::mt19937 random(seed);
        const QString letters = u"ｶｱハあA゛ﾞﾟ゙水\n"_s;
        const auto any = [&](int most) {
            QString text;
            for (auto length = random() % static_cast<unsigned>(most); length > 0; --length)
                text += letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
            return text;
        };
        for (int i = 0; i < 500; ++i) {
            const QString text = any(30);
            const QString wanted = any(4);
            qsizetype end = 0;
            for (const TextPlace& place : placesOf(wanted, text, 100)) {
                QVERIFY2(place.from >= end && place.from + place.length <= text.size(),
                         qPrintable(QString::number(seed)));
                end = place.from + place.length;
                // A mark at its beginning may have joined what lies before; then it is no place of its own.
                QVERIFY2(foldedText(text.first(end)).endsWith(foldedText(wanted)),
                         qPrintable(QString::number(seed)));
            }
            QCOMPARE(
                placesOf(wanted, text, 100).size(),
                static_cast<std::size_t>(wanted.isEmpty() ? 0 : foldedText(text).count(foldedText(wanted))) -
                    overlapping(foldedText(text), foldedText(wanted)));
        }
    }

private:
    /// How many places QString::count counts that overlap the one before.
    static std::size_t overlapping(const QString& text, const QString& wanted)
    {
        if (wanted.isEmpty())
            return 0;
        std::size_t apart = 0;
        for (qsizetype at = text.indexOf(wanted); at >= 0; at = text.indexOf(wanted, at + wanted.size()))
            ++apart;
        return static_cast<std::size_t>(text.count(wanted)) - apart;
    }
};

QTEST_GUILESS_MAIN(TestTextPlaces)
#include "test_text_places.moc"
