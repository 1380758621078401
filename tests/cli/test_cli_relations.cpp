#include "tests/cli/cli_world.h"

#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The verbs for links and categories, run as a shell does.
class TestCliRelations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
    }

    void linkLinksOnce()
    {
        QCOMPARE(m_world->run({u"link"_s, u"M-991231-001"_s, u"M-991231-002"_s}),
                 answer(0, {}, u"<水> と <火> をリンクしました。\n"_s));
        QCOMPARE(m_world->run({u"link"_s, u"M-991231-002"_s, u"M-991231-001"_s}),
                 answer(1, {}, u"既に同一のリンクが存在します。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsLink),
                 (QStringList{u"M-991231-001|R-991231-001"_s, u"M-991231-001|M-991231-002"_s}));
    }

    void unlinkTakesEitherDirection()
    {
        QCOMPARE(m_world->run({u"unlink"_s, u"R-991231-001"_s, u"M-991231-001"_s}),
                 answer(0, {}, u"<水の本> と <水> のリンクを削除しました。\n"_s));
        QCOMPARE(m_world->run({u"unlink"_s, u"R-991231-001"_s, u"M-991231-001"_s}),
                 answer(1, {}, u"quillon-cli: R-991231-001 と M-991231-001 はリンクされていません。\n"_s));
    }

    void linksAreListed()
    {
        TestWorld::addRow(m_world->session.RsLink, {u"M-991231-002"_s, u"M-991231-001"_s});
        TestWorld::addRow(m_world->session.RsLink, {u"F-991231-001"_s, u"M-991231-009"_s});
        const QString first = u"M-991231-001  R-991231-001  水 → 水の本\n"_s;
        const QString second = u"M-991231-002  M-991231-001  火 → 水\n"_s;
        const QString third = u"F-991231-001  M-991231-009  水.txt → 不明\n"_s;
        QCOMPARE(m_world->run({u"links"_s}), answer(0, first + second + third));
        QCOMPARE(m_world->run({u"links"_s, u"M-991231-001"_s}), answer(0, first + second));
        QCOMPARE(m_world->run({u"links"_s, u"M-991231-002"_s, u"--json"_s}),
                 answer(0, u"{\"from\":\"M-991231-002\",\"to\":\"M-991231-001\"}\n"_s));
        m_world->session.OpenDb->execute(u"DELETE FROM Link"_s);
        QCOMPARE(m_world->run({u"links"_s}), answer(1, {}, u"quillon-cli: リンクは存在しません。\n"_s));
    }

    void categoriesAreListedAsATree()
    {
        QCOMPARE(m_world->run({u"categories"_s}), answer(0, u"A        1  自然\n"
                                                            u"A-A      1    物理\n"
                                                            u"B        0  社会\n"_s));
        QCOMPARE(m_world->run({u"categories"_s, u"--json"_s}),
                 answer(0, u"{\"identifier\":\"A\",\"name\":\"自然\",\"parent\":null,\"members\":1}\n"
                           u"{\"identifier\":\"A-A\",\"name\":\"物理\",\"parent\":\"A\",\"members\":1}\n"
                           u"{\"identifier\":\"B\",\"name\":\"社会\",\"parent\":null,\"members\":0}\n"_s));
        QCOMPARE(m_world->run({u"categories"_s, u"--identifiers"_s}), answer(0, u"A\nA-A\nB\n"_s));
        m_world->session.OpenDb->execute(u"DELETE FROM Category_ID"_s);
        QCOMPARE(m_world->run({u"categories"_s}), answer(1, {}, u"quillon-cli: カテゴリはありません。\n"_s));
    }

    void aCategoryIsAddedUnderTheFirstFreeIdentifier()
    {
        QCOMPARE(m_world->run({u"category"_s, u"add"_s, u"歴史"_s}), answer(0, u"C\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"add"_s, u"化学"_s, u"--under"_s, u"A"_s, u"--json"_s}),
                 answer(0, u"{\"identifier\":\"A-B\"}\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"add"_s, u"名"_s, u"--under"_s, u"X"_s}),
                 answer(1, {}, u"quillon-cli: カテゴリ X は見つかりませんでした。\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"add"_s, QString()}),
                 answer(4, {}, u"quillon-cli: カテゴリ名が入力されていません。\n"_s));
        const Answered tooLong = m_world->run({u"category"_s, u"add"_s, QString(51, u'長')});
        QCOMPARE(tooLong.status, 4);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategoryID).size(), 5);
    }

    void aCategoryIsRenamed()
    {
        QCOMPARE(m_world->run({u"category"_s, u"rename"_s, u"A"_s, u"天然"_s}), answer(0, {}));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategoryID).first(), u"A|天然"_s);
        QCOMPARE(m_world->run({u"category"_s, u"rename"_s, u"A"_s, u"天然"_s}),
                 answer(1, {}, u"quillon-cli: 変更するところはありません。\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"rename"_s, u"X"_s, u"名"_s}),
                 answer(1, {}, u"quillon-cli: カテゴリ X は見つかりませんでした。\n"_s));
    }

    void aCategoryIsDeletedWhenNothingIsBelow()
    {
        QCOMPARE(
            m_world->run({u"category"_s, u"delete"_s, u"A"_s, u"--yes"_s}),
            answer(4, {}, u"quillon-cli: サブカテゴリが存在します。先にサブカテゴリを削除して下さい。\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"delete"_s, u"A-A"_s}),
                 answer(4, {}, u"<物理> を削除しますか。\n実行するには --yes を指定してください。\n"_s));
        QCOMPARE(m_world->run({u"category"_s, u"delete"_s, u"A-A"_s, u"--yes"_s}),
                 answer(0, {}, u"カテゴリ：物理を削除しました。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory), QStringList{u"A|M-991231-001"_s});
    }

    void classifyTakesOutOfTheCategoriesAbove()
    {
        QCOMPARE(m_world->run({u"classify"_s, u"M-991231-001"_s, u"A-A"_s}), answer(0, {}));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory),
                 (QStringList{u"A-A|R-991231-001"_s, u"A-A|M-991231-001"_s}));
        QCOMPARE(m_world->run({u"classify"_s, u"M-991231-001"_s, u"A-A"_s}),
                 answer(1, {}, u"quillon-cli: M-991231-001 は既にカテゴリ A-A に分類されています。\n"_s));
        QCOMPARE(m_world->run({u"classify"_s, u"M-991231-001"_s, u"X"_s}),
                 answer(1, {}, u"quillon-cli: カテゴリ X は見つかりませんでした。\n"_s));
    }

    void unclassifyTakesOut()
    {
        QCOMPARE(m_world->run({u"unclassify"_s, u"M-991231-001"_s, u"A"_s}), answer(0, {}));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory), QStringList{u"A-A|R-991231-001"_s});
        QCOMPARE(m_world->run({u"unclassify"_s, u"M-991231-001"_s, u"A"_s}),
                 answer(1, {}, u"quillon-cli: M-991231-001 はカテゴリ A に分類されていません。\n"_s));
    }

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliRelations)
#include "test_cli_relations.moc"
