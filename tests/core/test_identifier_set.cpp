#include "core/identifier_set.h"

#include <QTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestIdentifierSet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itHoldsWhatAPlainSetHolds()
    {
        std::mt19937 random(11);
        const auto number = [&](unsigned below) { return random() % below; };
        const QStringList odd = {u""_s,
                                 u"M"_s,
                                 u"M-99123-0011"_s,
                                 u"M-991231-0010"_s,
                                 u"M_991231-001"_s,
                                 u"M-99123a-001"_s,
                                 u"Ｍ-991231-001"_s,
                                 u"M-９91231-001"_s,
                                 QString(12, QChar(u'\0'))};
        const auto identifier = [&] {
            if (number(20) == 0)
                return odd[static_cast<qsizetype>(number(static_cast<unsigned>(odd.size())))];
            return u"%1-%2-%3"_s.arg(QChar(u"MRF"[number(3)]))
                .arg(991200 + number(30), 6, 10, QChar(u'0'))
                .arg(number(40), 3, 10, QChar(u'0'));
        };
        for (int round = 0; round < 30; ++round) {
            IdentifierSet set(static_cast<qsizetype>(number(100)));
            QSet<QString> plain;
            for (int i = 0; i < 1000; ++i) {
                const QString one = identifier();
                set.insert(one);
                plain.insert(one);
            }
            for (int i = 0; i < 2000; ++i) {
                const QString one = identifier();
                QCOMPARE(set.contains(one), plain.contains(one));
            }
        }
    }

    void lettersAndDigitsAreNotMixedUp()
    {
        IdentifierSet set(4);
        set.insert(u"M-991231-001");
        QVERIFY(set.contains(u"M-991231-001"));
        QVERIFY(!set.contains(u"N-991231-001"));
        QVERIFY(!set.contains(u"M-991231-002"));
        QVERIFY(!set.contains(u"M-991230-001"));
        QVERIFY(!set.contains(u"m-991231-001"));
    }
};

QTEST_GUILESS_MAIN(TestIdentifierSet)
#include "test_identifier_set.moc"
