#include "store/database.h"
#include "store/filter_result.h"
#include "store/like_pattern.h"
#include "store/record_set.h"
#include "store/row_pieces.h"
#include "store/schema.h"
#include "store/text_fold.h"
#include "store/text_match.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <map>
#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

using Pair = std::pair<QString, QString>; // name and text

/// Texts in which many different characters are the same to a reader.
class TextMaker
{
public:
    explicit TextMaker(unsigned seed) : m_random(seed) {}

    QString text(int most)
    {
        static const QStringList pieces = {u"あ"_s, u"ア"_s, u"ｱ"_s,  u"か"_s, u"カ"_s, u"ｶ"_s,  u"が"_s,
                                           u"ｶﾞ"_s, u"ガ"_s, u"ﾞ"_s,  u"゛"_s, u"っ"_s, u"つ"_s, u"ｯ"_s,
                                           u"a"_s,  u"A"_s,  u"Ａ"_s, u"ａ"_s, u"1"_s,  u"１"_s, u"漢"_s,
                                           u"—"_s,  u"―"_s,  u"〜"_s, u"～"_s, u"−"_s,  u"－"_s, u"￡"_s,
                                           u"£"_s,  u" "_s,  u"　"_s, u"\n"_s, u"𠮷"_s, u"ハ"_s, u"ﾊﾟ"_s};
        QString result;
        for (int size = number(most + 1); size > 0; --size)
            result += pieces[number(static_cast<int>(pieces.size()))];
        return result;
    }
    int number(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }

private:
    std::mt19937 m_random;
};

/// Whether a reader finds `needle` in `text`: both made comparable, then compared place by place.
bool isIn(const QString& needle, const QString& text)
{
    const QString comparable = foldedText(text);
    const QString wanted = foldedText(needle);
    for (qsizetype place = 0; place + wanted.size() <= comparable.size(); ++place) {
        if (QStringView(comparable).sliced(place, wanted.size()) == wanted)
            return true;
    }
    return false;
}

QStringList identifiersOf(const std::shared_ptr<RecordSet>& rows)
{
    QStringList identifiers;
    rows->forEachRow({1}, [&](const RecordSet::Row& row) { identifiers << row.text(0).toString(); });
    return identifiers;
}

QStringList namesOf(const std::shared_ptr<RecordSet>& rows)
{
    QStringList names;
    rows->forEachName([&](QStringView name, QStringView identifier) {
        names << name.toString() + u' ' + identifier.toString();
    });
    return names;
}

/// The same of a pass that keeps nothing.
QStringList identifiersPassed(const RecordSet& table, const QString& criteria)
{
    QStringList identifiers;
    RowPieces pieces(table, {data_field::Object_ID}, criteria);
    const auto visit = [&](const RowPieces& row) {
        identifiers << row.text(0).toString();
        return identifiers.size() % 3 != 0;
    };
    while (pieces.next(visit)) {
    }
    return identifiers;
}

QString criteriaFor(const QString& text)
{
    return u"Name Like '*"_s + text + u"*' OR Explanation Like '*"_s + text + u"*'"_s;
}

} // namespace

class TestTextSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aHundredThousandSearchesFindWhatAReaderFinds()
    {
        TextMaker maker(1);
        int found = 0;
        for (int world = 0; world < 500; ++world) {
            FoldedTexts texts;
            std::map<qint64, Pair> rows;
            for (int i = maker.number(12); i >= 0; --i) {
                // Replacing and taking out rows, in any order of their numbers, must leave nothing behind.
                const qint64 number = maker.number(20) - 5;
                if (maker.number(5) == 0) {
                    texts.remove(number);
                    rows.erase(number);
                    continue;
                }
                const Pair row{maker.text(6), maker.text(25)};
                texts.put(
                    {.number = number, .name = QStringView(row.first), .text = QStringView(row.second)});
                rows[number] = row;
            }
            for (int search = 0; search < 200; ++search) {
                QString needle = maker.text(4);
                const QString comparable = foldedText(needle);
                if (comparable.isEmpty())
                    continue;
                std::vector<qint64> expected;
                for (const auto& [number, row] : rows) {
                    if (isIn(needle, row.first) || isIn(needle, row.second))
                        expected.push_back(number);
                }
                QCOMPARE(texts.holding(comparable), expected);
                QCOMPARE(texts.like(LikePattern(u'*' + needle + u'*', LikePattern::Comparing::AsAReader)),
                         expected);
                found += static_cast<int>(expected.size());
            }
        }
        QVERIFY(found > 10000);
    }

    void aTextIsMatchedAlikeInPiecesAndAsAWhole()
    {
        TextMaker maker(6);
        int found = 0;
        for (int round = 0; round < 600; ++round) {
            // Long enough to be folded in several pieces, which end in the middle of anything.
            const QString text = maker.text(6000);
            QString needle = maker.text(4);
            if (maker.number(3) == 0)
                needle = text.mid(maker.number(static_cast<int>(text.size()) + 1), 1 + maker.number(20));
            if (needle.isEmpty())
                continue;
            const LikePattern pattern(u'*' + needle + u'*', LikePattern::Comparing::AsAReader);
            TextMatch match(u'*' + needle + u'*');
            const bool isFound = pattern.matches(text);
            QCOMPARE(match.matches(text), isFound);
            QCOMPARE(match.matches(text), isFound); // what is left of the first time does no harm
            found += isFound ? 1 : 0;
        }
        QVERIFY(found > 100);
    }

    void whatStandsAcrossTwoPiecesIsFound()
    {
        TextMatch match(u"*がぎ*"_s);
        for (int before = 2030; before < 2060; ++before) {
            QVERIFY(match.matches(QString(before, u'あ') + u"ｶﾞｷﾞ"_s));
            QVERIFY(!match.matches(QString(before, u'あ') + u"ｶﾞｷ"_s));
        }
        // A needle that is longer than any piece.
        const QString needle(5000, u'い');
        TextMatch longMatch(u'*' + needle + u'*');
        QVERIFY(longMatch.matches(u"あ"_s + needle + u"あ"_s));
        QVERIFY(!longMatch.matches(needle.chopped(1) + u"あ"_s + needle.chopped(1)));
    }

    void namesAndIdentifiersComeBackAsTheyAreStored()
    {
        TextMaker maker(5);
        for (int world = 0; world < 500; ++world) {
            FoldedTexts texts;
            std::map<qint64, Pair> rows; // name and identifier
            for (int i = maker.number(60); i >= 0; --i) {
                const qint64 number = maker.number(100) - 5;
                if (maker.number(5) == 0) {
                    texts.remove(number);
                    rows.erase(number);
                    continue;
                }
                const Pair row{maker.text(6), maker.text(3)};
                const QString text = maker.text(10);
                texts.put({.number = number,
                           .name = QStringView(row.first),
                           .text = QStringView(text),
                           .identifier = row.second});
                rows[number] = row;
            }
            // Some of the rows, and some that are not there.
            std::vector<qint64> asked;
            std::vector<Pair> expected;
            for (qint64 number = -10; number < 110; ++number) {
                if (maker.number(3) == 0)
                    continue;
                asked.push_back(number);
                if (const auto row = rows.find(number); row != rows.end())
                    expected.push_back(row->second);
            }
            std::vector<Pair> actual;
            texts.forEachName(asked, [&](QStringView name, QStringView identifier) {
                actual.emplace_back(name.toString(), identifier.toString());
            });
            QCOMPARE(actual, expected);
        }
    }

    void searchesStayTrueWhileTheDataChange()
    {
        TestWorld world;
        const QString path = world.createDatabase();
        world.openDatabase(path);
        const auto other = Database::open(path);
        const auto otherMain = RecordSet::openTable(other, schema::Main());
        TextMaker maker(2);
        std::map<QString, Pair> rows;
        const auto& main = world.session.RsMain;
        const auto write = [&](RecordSet& set, const QString& identifier) {
            const Pair row{maker.text(6), maker.text(30)};
            set.findFirst(u"Object_ID ='"_s + identifier + u"'"_s);
            if (set.hasCurrentRow() && maker.number(3) == 0) {
                set.deleteRow();
                rows.erase(identifier);
                return;
            }
            if (set.hasCurrentRow())
                set.edit();
            else
                set.addNew();
            set.setField(0, row.first);
            set.setField(1, identifier);
            set.setField(2, row.second);
            set.update();
            rows[identifier] = row;
        };
        for (int step = 0; step < 1500; ++step) {
            // Mostly this program writes, sometimes another one does.
            write(maker.number(8) == 0 ? *otherMain : *main,
                  u"M-%1"_s.arg(maker.number(30), 3, 10, QChar(u'0')));
            const QString needle = maker.text(3);
            if (needle.isEmpty())
                continue;
            QStringList expected;
            for (const auto& [identifier, row] : rows) {
                if (isIn(needle, row.first) || isIn(needle, row.second))
                    expected << identifier;
            }
            QStringList actual =
                identifiersOf(GetFilterResult(world.session.reporting, main, criteriaFor(needle)));
            actual.sort();
            QCOMPARE(actual, expected);
        }
        QVERIFY(world.dialogs.takeComplaints().isEmpty());
    }

    void theFastWayAndTheOrdinaryOneAgreeOnPatterns()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        TextMaker maker(3);
        for (int i = 0; i < 60; ++i)
            TestWorld::addRow(world.session.RsMain, {maker.text(5), u"M-%1"_s.arg(i), maker.text(15)});
        const QStringList wild = {u"?"_s, u"*"_s, u"#"_s, u"[あ-ん]"_s, u"[!a]"_s, u"["_s, u"[1a"_s};
        const auto& main = world.session.RsMain;
        for (int round = 0; round < 1000; ++round) {
            const QString text =
                maker.text(2) + wild[maker.number(static_cast<int>(wild.size()))] + maker.text(2);
            const auto fast = main->filtered(criteriaFor(text));
            // A third comparison, which changes nothing, keeps the search from being recognised.
            const auto ordinary = main->filtered(criteriaFor(text) + u" OR Object_ID = 'none'"_s);
            QCOMPARE(identifiersOf(fast), identifiersOf(ordinary));
            QCOMPARE(identifiersPassed(*main, criteriaFor(text)), identifiersOf(ordinary));
        }
    }

    void whatOnlyLooksLikeASearchIsAnsweredAsItIsAsked_data()
    {
        QTest::addColumn<QString>("criteria");
        QTest::addColumn<QStringList>("found");
        QTest::newRow("a search") << u"Name Like '*abc*' OR Explanation Like '*abc*'"_s
                                  << QStringList({u"both"_s, u"name"_s, u"text"_s, u"in"_s});
        QTest::newRow("the other way round") << u"Explanation Like '*abc*' OR Name Like '*abc*'"_s
                                             << QStringList({u"both"_s, u"name"_s, u"text"_s, u"in"_s});
        QTest::newRow("a beginning") << u"Name Like 'ab*' OR Explanation Like 'ab*'"_s
                                     << QStringList({u"both"_s, u"name"_s, u"text"_s});
        QTest::newRow("an end") << u"Name Like '*bc' OR Explanation Like '*bc'"_s
                                << QStringList({u"both"_s, u"name"_s, u"text"_s});
        QTest::newRow("the whole") << u"Name Like 'abc' OR Explanation Like 'abc'"_s
                                   << QStringList({u"both"_s, u"name"_s, u"text"_s});
        QTest::newRow("nothing between the stars")
            << criteriaFor(QString()) << QStringList({u"both"_s, u"name"_s, u"text"_s, u"in"_s, u"other"_s});
        const QString character = u"𠮷"_s;
        QTest::newRow("a character of two units") << criteriaFor(character) << QStringList(u"other"_s);
        QTest::newRow("its first half") << criteriaFor(character.first(1)) << QStringList();
        QTest::newRow("its second half") << criteriaFor(character.last(1)) << QStringList();
        QTest::newRow("in both fields")
            << u"Name Like '*abc*' AND Explanation Like '*abc*'"_s << QStringList(u"both"_s);
        QTest::newRow("an equal name")
            << u"Name = 'abc' OR Explanation Like 'abc'"_s << QStringList({u"both"_s, u"text"_s});
        QTest::newRow("an equal text")
            << u"Name Like 'abc' OR Explanation = 'abc'"_s << QStringList({u"both"_s, u"name"_s, u"text"_s});
        QTest::newRow("two patterns") << u"Name Like '*abc*' OR Explanation Like '*xyz*'"_s
                                      << QStringList({u"both"_s, u"name"_s, u"in"_s, u"other"_s});
        QTest::newRow("the name twice")
            << u"Name Like '*abc*' OR Name Like '*abc*'"_s << QStringList({u"both"_s, u"name"_s, u"in"_s});
        QTest::newRow("the text twice") << u"Explanation Like '*abc*' OR Explanation Like '*abc*'"_s
                                        << QStringList({u"both"_s, u"text"_s});
        QTest::newRow("the identifier")
            << u"Object_ID Like '*abc*' OR Explanation Like '*abc*'"_s << QStringList({u"both"_s, u"text"_s});
    }

    void whatOnlyLooksLikeASearchIsAnsweredAsItIsAsked()
    {
        QFETCH(QString, criteria);
        QFETCH(QStringList, found);
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        TestWorld::addRow(main, {u"ABC"_s, u"both"_s, u"abc"_s});
        TestWorld::addRow(main, {u"ＡＢＣ"_s, u"name"_s, u"-"_s});
        TestWorld::addRow(main, {u"-"_s, u"text"_s, u"abc"_s});
        TestWorld::addRow(main, {u"xabcx"_s, u"in"_s, u"-"_s});
        TestWorld::addRow(main, {u"𠮷"_s, u"other"_s, u"xyz"_s});
        QCOMPARE(identifiersOf(main->filtered(criteria)), found);
        QCOMPARE(identifiersPassed(*main, criteria), found);
    }

    void hitsAreNamedAsTheyStandInTheFileAtThatMoment()
    {
        TestWorld world;
        const QString path = world.createDatabase();
        world.openDatabase(path);
        const auto& main = world.session.RsMain;
        for (int i = 1; i <= 3; ++i)
            TestWorld::addRow(main, {u"水"_s, u"M-%1"_s.arg(i), u"飲む"_s});
        const auto hits = main->filtered(criteriaFor(u"水"_s));
        QCOMPARE(namesOf(hits), QStringList({u"水 M-1"_s, u"水 M-2"_s, u"水 M-3"_s}));
        main->findFirst(u"Object_ID ='M-2'"_s);
        main->edit();
        main->setField(0, u"湯"_s);
        main->update();
        QCOMPARE(namesOf(hits), QStringList({u"水 M-1"_s, u"湯 M-2"_s, u"水 M-3"_s}));
        const auto other = RecordSet::openTable(Database::open(path), schema::Main());
        other->findFirst(u"Object_ID ='M-3'"_s);
        other->deleteRow();
        QCOMPARE(namesOf(hits), QStringList({u"水 M-1"_s, u"湯 M-2"_s}));
        const sqlite::Transaction undone(world.session.OpenDb->connection());
        main->findFirst(u"Object_ID ='M-1'"_s);
        main->deleteRow();
        QCOMPARE(namesOf(hits), QStringList(u"湯 M-2"_s));
    }

    void hitsThatOthersRenameAreNamedAnew()
    {
        TestWorld world;
        const QString path = world.createDatabase();
        world.openDatabase(path);
        const auto& main = world.session.RsMain;
        TestWorld::addRow(main, {u"水"_s, u"M-1"_s, u"飲む"_s});
        const auto hits = main->filtered(criteriaFor(u"飲む"_s));
        QCOMPARE(namesOf(hits), QStringList(u"水 M-1"_s));
        Database::open(path)->execute(u"UPDATE Main SET Name = '湯'"_s);
        QCOMPARE(namesOf(hits), QStringList(u"湯 M-1"_s));
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"湯"_s))).size(), 1);
        world.session.OpenDb->execute(u"UPDATE Main SET Name = '茶'"_s);
        QCOMPARE(namesOf(hits), QStringList(u"茶 M-1"_s));
    }

    void hitsComeInTheOrderOfTheRowsAfterAnEdit()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        for (int i = 1; i <= 5; ++i)
            TestWorld::addRow(main, {u"水"_s, u"M-%1"_s.arg(i), u"飲む"_s});
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))).size(), 5);
        main->findFirst(u"Object_ID ='M-2'"_s);
        main->edit();
        main->setField(2, u"流れる水"_s);
        main->update();
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))),
                 QStringList({u"M-1"_s, u"M-2"_s, u"M-3"_s, u"M-4"_s, u"M-5"_s}));
    }

    void aSearchAmongHitsStaysAmongThem()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        TestWorld::addRow(main, {u"火"_s, u"M-1"_s, u"飲めない"_s});
        TestWorld::addRow(main, {u"水車"_s, u"M-2"_s, u"回る"_s});
        TestWorld::addRow(main, {u"水"_s, u"M-3"_s, u"飲む"_s});
        const auto hits = main->filtered(criteriaFor(u"水"_s));
        QCOMPARE(identifiersOf(hits->filtered(criteriaFor(u"飲"_s))), QStringList(u"M-3"_s));
        hits->findFirst(criteriaFor(u"飲"_s));
        QCOMPARE(hits->field(1), u"M-3"_s);
        main->findFirst(criteriaFor(u"飲"_s));
        QCOMPARE(main->field(1), u"M-1"_s);
    }

    void aHitDoesNotReachFromTheNameIntoTheText()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        TestWorld::addRow(world.session.RsMain, {u"水素"_s, u"M-1"_s, u"燃料"_s});
        TestWorld::addRow(world.session.RsMain, {u"電池"_s, u"M-2"_s, u""_s});
        QVERIFY(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"素燃"_s))).isEmpty());
        QVERIFY(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"料電"_s))).isEmpty());
        QCOMPARE(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"水素"_s))).size(), 1);
    }

    void aFieldThatHoldsNothingMatchesNoPattern()
    {
        TestWorld world;
        const QString path = world.createDatabase();
        world.openDatabase(path);
        world.session.OpenDb->execute(u"INSERT INTO Main (Object_ID) VALUES ('M-1')"_s);
        QVERIFY(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"*"_s))).isEmpty());
        TestWorld::addRow(world.session.RsMain, {u""_s, u"M-2"_s, u""_s});
        QCOMPARE(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"*"_s))), QStringList(u"M-2"_s));
        QCOMPARE(identifiersPassed(*world.session.RsMain, criteriaFor(u"*"_s)), QStringList(u"M-2"_s));
    }

    void whatATransactionTakesBackIsNotFound()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        TestWorld::addRow(main, {u"水"_s, u"M-1"_s, u"飲む"_s});
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))).size(), 1);
        {
            const sqlite::Transaction undone(world.session.OpenDb->connection());
            TestWorld::addRow(main, {u"水車"_s, u"M-2"_s, u"回る"_s});
            // Inside the transaction the new row is there.
            QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))).size(), 2);
        }
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))), QStringList(u"M-1"_s));
    }

    void whatATransactionChangedAndTookBackIsFoundAsItWas()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        TestWorld::addRow(main, {u"水"_s, u"M-1"_s, u"飲む"_s});
        TestWorld::addRow(main, {u"水車"_s, u"M-2"_s, u"回る"_s});
        {
            const sqlite::Transaction undone(world.session.OpenDb->connection());
            main->moveFirst();
            main->edit();
            main->setField(0, u"火"_s);
            main->update();
            main->moveLast();
            main->deleteRow();
            QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"火"_s))), QStringList(u"M-1"_s));
            QVERIFY(identifiersOf(main->filtered(criteriaFor(u"水"_s))).isEmpty());
        }
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))), QStringList({u"M-1"_s, u"M-2"_s}));
        QVERIFY(identifiersOf(main->filtered(criteriaFor(u"火"_s))).isEmpty());
    }

    void rowsWrittenByAnythingElseAreFoundToo()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        const auto& main = world.session.RsMain;
        QVERIFY(identifiersOf(main->filtered(criteriaFor(u"水"_s))).isEmpty());
        world.session.OpenDb->execute(u"INSERT INTO Main VALUES ('水', 'M-1', '飲む')"_s);
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))), QStringList(u"M-1"_s));
        // Also when the next row is written in the usual way.
        world.session.OpenDb->execute(u"INSERT INTO Main VALUES ('水車', 'M-2', '回る')"_s);
        TestWorld::addRow(main, {u"水素"_s, u"M-3"_s, u"軽い"_s});
        QCOMPARE(identifiersOf(main->filtered(criteriaFor(u"水"_s))),
                 QStringList({u"M-1"_s, u"M-2"_s, u"M-3"_s}));
    }

    void searchingLeavesNothingInTheFile()
    {
        TestWorld world;
        const QString path = world.createDatabase();
        world.openDatabase(path);
        TestWorld::addRow(world.session.RsMain, {u"水"_s, u"M-1"_s, u"飲む"_s});
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        QCOMPARE(identifiersOf(world.session.RsMain->filtered(criteriaFor(u"水"_s))).size(), 1);
        QVERIFY(file.seek(0));
        QVERIFY(file.readAll() == before);
    }

    void aCopyOfWhichMuchIsGoneIsToBeReadAnew()
    {
        const QString text(100, u'あ');
        const auto row = [&](qint64 number) {
            return FoldedTexts::Row{
                .number = number, .name = std::nullopt, .text = QStringView(text), .identifier = {}};
        };
        FoldedTexts texts;
        for (int i = 0; i < 100; ++i)
            texts.put(row(i));
        QVERIFY(!texts.needsRebuilding());
        for (int i = 0; i < 20; ++i)
            texts.remove(i);
        QVERIFY(!texts.needsRebuilding());
        for (int i = 20; i < 50; ++i)
            texts.put(row(i));
        QVERIFY(texts.needsRebuilding());
    }

    void theCopyTakesLessRoomThanTheTextsInUtf8()
    {
        FoldedTexts texts;
        TextMaker maker(4);
        qsizetype bytes = 0;
        for (int i = 0; i < 20000; ++i) {
            const QString name = u"名称"_s + QString::number(i);
            const QString text = QString(300, QChar(static_cast<char16_t>(u'あ' + i % 80)));
            bytes += name.toUtf8().size() + text.toUtf8().size();
            texts.put({.number = i, .name = QStringView(name), .text = QStringView(text)});
        }
        texts.shrink();
        QVERIFY2(texts.bytesHeld() < bytes * 9 / 10,
                 qPrintable(QString::number(texts.bytesHeld()) + u" of "_s + QString::number(bytes)));
    }
};

QTEST_GUILESS_MAIN(TestTextSearch)
#include "test_text_search.moc"
