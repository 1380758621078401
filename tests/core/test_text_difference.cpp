#include "core/text_difference.h"

#include <QStringList>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

/// In what two texts differ.
class TestTextDifference : public QObject
{
    Q_OBJECT

    static QStringList parts(const QString& text, const std::vector<TextSpan>& spans)
    {
        QStringList found;
        for (const TextSpan& span : spans)
            found << text.mid(span.begin, span.length);
        return found;
    }
    static QList<int> lines(const QString& text, const std::vector<TextSpan>& spans)
    {
        const std::vector<int> found = linesOf(text, spans);
        return {found.begin(), found.end()};
    }

private Q_SLOTS:
    void partsThatDifferAreFound_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("now");
        QTest::addColumn<QStringList>("partsBefore");
        QTest::addColumn<QStringList>("partsNow");
        QTest::addColumn<QList<int>>("linesBefore");
        QTest::addColumn<QList<int>>("linesNow");
        const QStringList no;
        const QList<int> none;
        QTest::newRow("equal") << u"水\n火"_s << u"水\n火"_s << no << no << none << none;
        QTest::newRow("nothing before")
            << u""_s << u"水\n火"_s << no << QStringList(u"水\n火"_s) << none << QList<int>({1, 2});
        QTest::newRow("nothing now") << u"水"_s << u""_s << QStringList(u"水"_s) << no << QList<int>({1})
                                     << none;
        QTest::newRow("inside a line") << u"空\n青い水\n土"_s << u"空\n赤い水\n土"_s << QStringList(u"青"_s)
                                       << QStringList(u"赤"_s) << QList<int>({2}) << QList<int>({2});
        QTest::newRow("a line more") << u"空\n土"_s << u"空\n水\n土"_s << no << QStringList(u"水\n"_s) << none
                                     << QList<int>({2});
        QTest::newRow("a line less") << u"空\n水\n土"_s << u"空\n土"_s << QStringList(u"水\n"_s) << no
                                     << QList<int>({2}) << none;
        QTest::newRow("two places") << u"一\n二\n三\n四\n五"_s << u"壱\n二\n三\n四\n伍"_s
                                    << QStringList({u"一"_s, u"五"_s}) << QStringList({u"壱"_s, u"伍"_s})
                                    << QList<int>({1, 5}) << QList<int>({1, 5});
        QTest::newRow("repeated characters")
            << u"ああ"_s << u"あああ"_s << no << QStringList(u"あ"_s) << none << QList<int>({1});
        QTest::newRow("halves of characters") << u"𠮷"_s << u"𠮸"_s << QStringList(u"𠮷"_s)
                                              << QStringList(u"𠮸"_s) << QList<int>({1}) << QList<int>({1});
    }
    void partsThatDifferAreFound()
    {
        QFETCH(QString, before);
        QFETCH(QString, now);
        const TextDifference difference = differenceOf(before, now);
        QTEST(parts(before, difference.before), "partsBefore");
        QTEST(parts(now, difference.now), "partsNow");
        QTEST(lines(before, difference.before), "linesBefore");
        QTEST(lines(now, difference.now), "linesNow");
    }

    void ofLongTextsThatDifferMuchTheMiddleCountsAsOne()
    {
        QString before = u"始\n"_s;
        QString now = before;
        for (int i = 0; i < 2000; ++i) {
            before += u"a%1\n"_s.arg(i);
            now += u"b%1\n"_s.arg(i);
        }
        now += u"c\n"_s;
        const TextDifference difference = differenceOf(before + u"終"_s, now + u"終"_s);
        QCOMPARE(difference.before.size(), std::size_t{1});
        QCOMPARE(difference.now.size(), std::size_t{1});
        QCOMPARE(difference.before[0].begin, qsizetype{2});
    }
};

QTEST_GUILESS_MAIN(TestTextDifference)
#include "test_text_difference.moc"
