#include "store/lookup/identifier_set.h"

#include "store/lookup/identifier_table.h"
#include "tests/support/failing_memory.h"

#include <QTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestIdentifierSet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itStaysWholeWhereMemoryRunsOut()
    {
#ifdef QUILLON_MEMORY_CAN_FAIL
        const auto identifier = [](int day) { return u"M-%1-001"_s.arg(day, 6, 10, QChar(u'0')); };
        constexpr int Days = 40000; // a page each
        int refusals = 0;
        for (int first = 0; first < 50; ++first) {
            IdentifierTable<quint32> table;
            IdentifierSet set;
            int held = 0;
            {
                const FailingMemory scarce(first);
                try {
                    for (; held < Days; ++held) {
                        set.insert(identifier(held));
                        table.insert(identifier(held), 1);
                    }
                } catch (const std::bad_alloc&) {
                    ++refusals;
                }
            }
            // What could not be put in is not there, and the next one can be.
            for (int day = held + 1; day < held + 3; ++day) {
                QVERIFY(!set.contains(identifier(day)));
                set.insert(identifier(day));
                table.insert(identifier(day), quint32(day));
            }
            QCOMPARE(*table.find(identifier(held + 2)), quint32(held + 2));
            QVERIFY(set.contains(identifier(held + 2)));
            QVERIFY(held == 0 || set.contains(identifier(held - 1)));
            if (held == Days)
                break;
        }
        QVERIFY(refusals > 1);
#else
        QSKIP("Memory cannot be made to fail here.");
#endif
    }

    void itHoldsWhatAPlainSetHolds()
    {
        std::mt19937 random(11); // NOLINT(cert-msc51-cpp): the same sets every time
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
            IdentifierSet set;
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

    void aTableKeepsTheFirstValueOfEachIdentifier()
    {
        std::mt19937 random(12); // NOLINT(cert-msc51-cpp): the same sets every time
        const auto number = [&](unsigned below) { return random() % below; };
        // Days with few and with many data, neighbours and strangers, and what is no usual identifier at all.
        const auto identifier = [&] {
            if (number(10) == 0)
                return QString(static_cast<qsizetype>(number(14)), QChar(u'0'));
            return u"%1-%2-%3"_s.arg(QChar(u"MRF"[number(3)]))
                .arg(number(2) == 0 ? 991231 : number(1'000'000), 6, 10, QChar(u'0'))
                .arg(number(1000), 3, 10, QChar(u'0'));
        };
        for (int round = 0; round < 10; ++round) {
            IdentifierTable<int> table;
            QHash<QString, int> plain;
            QStringList put;
            for (int i = 0; i < 5000; ++i) {
                const QString one =
                    number(3) == 0 && !put.isEmpty()
                        ? put[static_cast<qsizetype>(number(static_cast<unsigned>(put.size())))]
                        : identifier();
                table.insert(one, i);
                if (!plain.contains(one))
                    plain.insert(one, i);
                put << one;
            }
            for (const QString& one : put)
                QCOMPARE(*table.find(one), plain.value(one));
            for (int i = 0; i < 5000; ++i) {
                const QString one = identifier();
                const int* const found = table.find(one);
                QCOMPARE(found != nullptr, plain.contains(one));
                if (found != nullptr)
                    QCOMPARE(*found, plain.value(one));
            }
        }
    }

    void lettersAndDigitsAreNotMixedUp()
    {
        IdentifierSet set;
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
