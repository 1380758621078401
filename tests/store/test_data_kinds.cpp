#include "app/base/error.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

/// What the first character of an identifier tells.
class TestDataKinds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_world = std::make_unique<TestWorld>(); }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void kindsHaveNamesAndTitles_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("title");
        QTest::newRow("definition") << u"M-991231-001"_s << u"定義"_s << u"Quillon 定義データ管理部"_s;
        QTest::newRow("document") << u"R"_s << u"文献"_s << u"Quillon 文献データ管理部"_s;
        QTest::newRow("file") << u"Foo"_s << u"FILE"_s << u"Quillon ファイルデータ管理部"_s;
        QTest::newRow("unknown") << u"X-991231-001"_s << u"不明"_s << u"不明"_s;
        QTest::newRow("small letter") << u"m-991231-001"_s << u"不明"_s << u"不明"_s;
        QTest::newRow("full-width letter") << u"Ｍ-991231-001"_s << u"不明"_s << u"不明"_s;
        QTest::newRow("empty") << u""_s << u"不明"_s << u"不明"_s;
    }
    void kindsHaveNamesAndTitles()
    {
        QFETCH(QString, identifier);
        QTEST(GetDivName(m_world->session, identifier, DivName::ShortName), "name");
        QTEST(GetDivName(m_world->session, identifier, DivName::Title), "title");
    }

    void theFirstCharacterAloneIsTheKind_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("position"); // among the kinds, -1 for none
        QTest::newRow("definition") << u"M-991231-001"_s << 0;
        QTest::newRow("document") << u"R"_s << 1;
        QTest::newRow("file") << u"Foo"_s << 2;
        QTest::newRow("another letter") << u"X-991231-001"_s << -1;
        QTest::newRow("small letter") << u"m-991231-001"_s << -1;
        QTest::newRow("letter further on") << u" M-991231-001"_s << -1;
        QTest::newRow("nothing") << QString() << -1;
    }
    void theFirstCharacterAloneIsTheKind()
    {
        QFETCH(QString, identifier);
        QFETCH(int, position);
        const DataKind* const kind = kindOf(identifier);
        QCOMPARE(kind != nullptr ? static_cast<int>(data_kinds::positionOf(*kind)) : -1, position);
        QCOMPARE(data_kinds::positionOf(kindForNames(identifier)),
                 static_cast<std::size_t>(position < 0 ? 0 : position)); // names of strangers: definitions
    }

    void aLetterIsTheWholeText()
    {
        QCOMPARE(kindWithLetter(u"R"), &data_kinds::document());
        QCOMPARE(kindWithLetter(u"R-"), nullptr);
        QCOMPARE(kindWithLetter(u"r"), nullptr);
        QCOMPARE(kindWithLetter(u""), nullptr);
    }

    void everyKindHasItsTable()
    {
        QCOMPARE(errorOf([&] { dataTableOf(m_world->session, u"M-991231-001"); }), errors::ObjectNotSet);
        m_world->openDatabase(m_world->createDatabase());
        QCOMPARE(dataTableOf(m_world->session, u"M-991231-001").table().name, u"Main"_s);
        QCOMPARE(dataTableOf(m_world->session, u"R-991231-001").table().name, u"RefDoc"_s);
        QCOMPARE(dataTableOf(m_world->session, u"F-991231-001").table().name, u"RefFile"_s);
        for (const QString& stranger : {u"X-991231-001"_s, u"m-991231-001"_s, QString()})
            QCOMPARE(errorOf([&] { dataTableOf(m_world->session, stranger); }), errors::ObjectNotSet);
    }

private:
    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestDataKinds)
#include "test_data_kinds.moc"
