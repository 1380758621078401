#include "app/base/error.h"
#include "tests/support/errors_of.h"
#include "ui/widgets/keyed_tree_model.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::KeyedTreeModel;
using quillon::testing::errorOf;

namespace
{

QStringList keys(const KeyedTreeModel& model)
{
    QStringList list;
    for (int position = 1; position <= model.nodeCount(); ++position)
        list << model.key(position);
    return list;
}

/// A(B(D, E), C), F: created in the order A F B C D E.
void grow(KeyedTreeModel& model)
{
    model.add(u""_s, u"A"_s, u"甲"_s);
    model.add(u""_s, u"F"_s, u"己"_s);
    model.add(u"A"_s, u"B"_s, u"乙"_s);
    model.add(u"A"_s, u"C"_s, u"丙"_s);
    model.add(u"B"_s, u"D"_s, u"丁"_s);
    model.add(u"B"_s, u"E"_s, u"戊"_s);
}

} // namespace

class TestKeyedTreeModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void positionsCountInTheOrderOfCreation();
    void positionsCloseUpAfterARemoval();
    void aSubtreeLeavesWithItsTop();
    void aRemovedKeyIsFreeAgain();
    void aTakenKeyIsRefused();
    void aMissingParentIsRefused();
    void emptyKeysMayStandMoreThanOnce();
    void keysCompareExactly();
    void positionsOutsideTheTreeAreRefused();
    void manyLevelsAreReachable();
    void textsChangeInPlace();
    void aRebuildTellsTheViewsOnce();
    void aRebuildThatFailsEndsAllTheSame();
    void randomChangesKeepPositionsAndIndexesTogether();
    void fiftyThousandNodesAreBuiltAndTakenDown();

private:
    std::unique_ptr<KeyedTreeModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestKeyedTreeModel::init()
{
    m_model = std::make_unique<KeyedTreeModel>();
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void TestKeyedTreeModel::cleanup()
{
    m_tester.reset();
    m_model.reset();
}

void TestKeyedTreeModel::positionsCountInTheOrderOfCreation()
{
    grow(*m_model);
    QCOMPARE(keys(*m_model), u"A F B C D E"_s.split(u' '));
    QCOMPARE(m_model->position(u"D"_s), 5);
    QCOMPARE(m_model->position(u"?"_s), 0);
    QCOMPARE(m_model->text(5), u"丁"_s);
    QCOMPARE(m_model->parentPosition(5), 3);
    QCOMPARE(m_model->parentPosition(2), 0);
    QVERIFY(m_model->hasChildren(3));
    QVERIFY(!m_model->hasChildren(4));
    QCOMPARE(m_model->indexOf(6).data().toString(), u"戊"_s);
    QCOMPARE(m_model->position(m_model->indexOf(6)), 6);
    QCOMPARE(m_model->position(QModelIndex()), 0);
}

void TestKeyedTreeModel::positionsCloseUpAfterARemoval()
{
    grow(*m_model);
    m_model->remove(2);
    QCOMPARE(keys(*m_model), u"A B C D E"_s.split(u' '));
    QCOMPARE(m_model->position(u"E"_s), 5);
    QCOMPARE(m_model->position(m_model->index(0, 0)), 1);
    QCOMPARE(m_model->parentPosition(4), 2);
    m_model->add(u"A"_s, u"G"_s, u"庚"_s);
    QCOMPARE(m_model->position(u"G"_s), 6);
}

void TestKeyedTreeModel::aSubtreeLeavesWithItsTop()
{
    grow(*m_model);
    m_model->remove(3);
    QCOMPARE(keys(*m_model), u"A F C"_s.split(u' '));
    QCOMPARE(m_model->position(u"D"_s), 0);
    QCOMPARE(m_model->rowCount(m_model->indexOf(1)), 1);
}

void TestKeyedTreeModel::aRemovedKeyIsFreeAgain()
{
    grow(*m_model);
    m_model->remove(m_model->position(u"B"_s));
    m_model->add(u"F"_s, u"D"_s, u"新"_s);
    QCOMPARE(m_model->position(u"D"_s), 4);
    QCOMPARE(m_model->parentPosition(4), 2);
}

void TestKeyedTreeModel::aTakenKeyIsRefused()
{
    grow(*m_model);
    QCOMPARE(errorOf([this] { m_model->add(u"A"_s, u"E"_s, u"二"_s); }), quillon::errors::KeyNotUnique);
    QCOMPARE(m_model->nodeCount(), 6);
}

void TestKeyedTreeModel::aMissingParentIsRefused()
{
    grow(*m_model);
    QCOMPARE(errorOf([this] { m_model->add(u"Z"_s, u"Y"_s, u"二"_s); }), quillon::errors::ElementNotFound);
    QCOMPARE(m_model->position(u"Y"_s), 0);
}

void TestKeyedTreeModel::emptyKeysMayStandMoreThanOnce()
{
    m_model->add(u""_s, u"A"_s, u"甲"_s);
    m_model->add(u"A"_s, u""_s, u"無"_s);
    m_model->add(u"A"_s, u""_s, u"名"_s);
    QCOMPARE(m_model->nodeCount(), 3);
    QCOMPARE(m_model->position(u""_s), 2);
    m_model->remove(2);
    QCOMPARE(m_model->text(m_model->position(u""_s)), u"名"_s);
}

void TestKeyedTreeModel::keysCompareExactly()
{
    for (const QString& key : {u"A"_s, u"a"_s, u"Ａ"_s, u"A "_s, u"ア"_s, u"あ"_s})
        m_model->add(u""_s, key, key);
    QCOMPARE(m_model->position(u"a"_s), 2);
    QCOMPARE(m_model->position(u"あ"_s), 6);
}

void TestKeyedTreeModel::positionsOutsideTheTreeAreRefused()
{
    grow(*m_model);
    for (const int position : {-1, 0, 7}) {
        QCOMPARE(errorOf([&] { m_model->key(position); }), quillon::errors::IndexOutOfBounds);
        QCOMPARE(errorOf([&] { m_model->remove(position); }), quillon::errors::IndexOutOfBounds);
        QCOMPARE(errorOf([&] { m_model->indexOf(position); }), quillon::errors::IndexOutOfBounds);
    }
}

void TestKeyedTreeModel::manyLevelsAreReachable()
{
    QString key = u"A"_s;
    m_model->add(u""_s, key, key);
    for (int level = 1; level < 40; ++level) {
        m_model->add(key, key + u"-A"_s, u"深"_s);
        key += u"-A"_s;
    }
    QModelIndex index = m_model->indexOf(40);
    int depth = 0;
    for (; index.isValid(); index = index.parent())
        ++depth;
    QCOMPARE(depth, 40);
    m_model->remove(2);
    QCOMPARE(m_model->nodeCount(), 1);
}

void TestKeyedTreeModel::textsChangeInPlace()
{
    grow(*m_model);
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->setText(4, u"<b>\n&"_s);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toModelIndex(), m_model->indexOf(4));
    QCOMPARE(m_model->indexOf(4).data().toString(), u"<b>\n&"_s);
}

void TestKeyedTreeModel::aRebuildTellsTheViewsOnce()
{
    grow(*m_model);
    const QModelIndex shown = m_model->indexOf(5);
    const QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    const QSignalSpy inserted(m_model.get(), &QAbstractItemModel::rowsInserted);
    {
        const KeyedTreeModel::Rebuild rebuild(*m_model);
        m_model->clear();
        grow(*m_model);
        m_model->remove(2);
        QCOMPARE(resets.size(), 0);
        // A view that paints now still asks for what it showed before.
        QCOMPARE(m_model->data(shown, Qt::DisplayRole).toString(), u"丁"_s);
        QVERIFY(m_model->parent(shown).isValid());
        QCOMPARE(m_model->position(shown), 0);
    }
    QCOMPARE(resets.size(), 1);
    QCOMPARE(inserted.size(), 0);
    QCOMPARE(keys(*m_model), u"A B C D E"_s.split(u' '));
}

void TestKeyedTreeModel::aRebuildThatFailsEndsAllTheSame()
{
    const QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QCOMPARE(errorOf([this] {
                 const KeyedTreeModel::Rebuild rebuild(*m_model);
                 grow(*m_model);
                 m_model->add(u""_s, u"A"_s, u"二"_s);
             }),
             quillon::errors::KeyNotUnique);
    QCOMPARE(resets.size(), 1);
    QCOMPARE(m_model->nodeCount(), 6);
}

void TestKeyedTreeModel::randomChangesKeepPositionsAndIndexesTogether()
{
    QRandomGenerator random(7);
    struct Plain {
        QString key;
        QString parent;
    };
    QList<Plain> plain;
    for (int step = 0; step < 200; ++step) {
        if (plain.isEmpty() || random.bounded(4) != 0) {
            const QString parent = plain.isEmpty() || random.bounded(6) == 0
                                       ? QString()
                                       : plain[random.bounded(static_cast<int>(plain.size()))].key;
            const QString key = u"K%1"_s.arg(step);
            m_model->add(parent, key, key);
            plain.append({key, parent});
        } else {
            const int gone = random.bounded(static_cast<int>(plain.size()));
            m_model->remove(gone + 1);
            QSet<QString> removed{plain[gone].key};
            plain.removeAt(gone);
            for (qsizetype i = 0; i < plain.size();) {
                if (removed.contains(plain[i].parent)) {
                    removed.insert(plain[i].key);
                    plain.removeAt(i);
                } else {
                    ++i;
                }
            }
        }
        QCOMPARE(m_model->nodeCount(), plain.size());
        for (int position = 1; position <= m_model->nodeCount(); ++position) {
            QCOMPARE(m_model->key(position), plain[position - 1].key);
            const int parent = m_model->parentPosition(position);
            QCOMPARE(parent == 0 ? QString() : m_model->key(parent), plain[position - 1].parent);
            QCOMPARE(m_model->position(m_model->indexOf(position)), position);
        }
    }
}

void TestKeyedTreeModel::fiftyThousandNodesAreBuiltAndTakenDown()
{
    m_tester.reset(); // it walks the tree after every change
    {
        const KeyedTreeModel::Rebuild rebuild(*m_model);
        m_model->add(u""_s, u"A"_s, u"甲"_s);
        for (int node = 1; node < 50000; ++node)
            m_model->add(node % 3 == 0 || node < 3 ? u"A"_s : u"N%1"_s.arg(node - node % 3),
                         u"N%1"_s.arg(node), u"名"_s);
    }
    QCOMPARE(m_model->nodeCount(), 50000);
    QCOMPARE(m_model->position(u"N49999"_s), 50000);
    while (m_model->nodeCount() > 49000)
        m_model->remove(m_model->nodeCount() / 2);
    QVERIFY(m_model->position(u"N1"_s) <= 2);
    m_model->remove(1);
    QCOMPARE(m_model->nodeCount(), 0);
}

QTEST_GUILESS_MAIN(TestKeyedTreeModel)
#include "test_keyed_tree_model.moc"
