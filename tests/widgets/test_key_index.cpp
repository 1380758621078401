// The index of a tree's keys, compared with a plain hash.
#include "ui/widgets/key_index.h"

#include <QHash>
#include <QTest>

#include <random>
#include <vector>

using namespace Qt::Literals::StringLiterals;
using quillon::KeyIndex;

namespace
{

struct KeyOf {
    const std::vector<QString>* keys;
    QStringView operator()(quint32 number) const { return (*keys)[number]; }
};

} // namespace

class TestKeyIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itFindsWhatAPlainHashFinds_data()
    {
        QTest::addColumn<unsigned>("texts");
        for (const unsigned texts : {10U, 200U, 20'000U})
            QTest::addRow("%u texts", texts) << texts;
    }

    void itFindsWhatAPlainHashFinds()
    {
        QFETCH(unsigned, texts);
        std::mt19937 random(texts);
        std::vector<QString> keys{QString()};
        KeyIndex index(KeyOf{&keys});
        QHash<QString, quint32> plain;
        const auto text = [&] { return u"A-%1"_s.arg(random() % texts); };
        for (int step = 0; step < 60'000; ++step) {
            const QString key = text();
            const quint32 found = index.find(key);
            QCOMPARE(found, plain.value(key, 0));
            switch (random() % 4) {
            case 0:
                index.remove(key);
                plain.remove(key);
                break;
            case 1:
                if (step % 10'000 == 1) {
                    index.clear();
                    plain.clear();
                    index.reserve(random() % 1000);
                }
                break;
            default:
                if (found == 0) {
                    keys.push_back(key);
                    index.insert(static_cast<quint32>(keys.size() - 1));
                    plain.insert(key, static_cast<quint32>(keys.size() - 1));
                }
            }
            QCOMPARE(index.size(), static_cast<std::size_t>(plain.size()));
        }
        for (unsigned i = 0; i < texts; ++i)
            QCOMPARE(index.find(u"A-%1"_s.arg(i)), plain.value(u"A-%1"_s.arg(i), 0));
    }

    void textsThatShareTheirHashAreToldApart()
    {
        // Beyond 65,536 texts some hashes of 32 bits are the same.
        std::vector<QString> keys{QString()};
        KeyIndex index(KeyOf{&keys});
        for (quint32 number = 1; number <= 300'000; ++number) {
            keys.push_back(QString::number(number));
            QCOMPARE(index.find(keys.back()), 0U);
            index.insert(number);
        }
        for (quint32 number = 1; number <= 300'000; ++number)
            QCOMPARE(index.find(keys[number]), number);
    }
};

QTEST_GUILESS_MAIN(TestKeyIndex)
#include "test_key_index.moc"
