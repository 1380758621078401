// A database as a folder of notes, and notes as data.
#include "exchange/markdown.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "store/database.h"
#include "store/record_set.h"
#include "tests/exchange/folder_content.h"
#include "tests/exchange/report_texts.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

namespace
{

/// Somebody who does something as soon as he is told of a progress.
class Meanwhile : public Progress
{
public:
    explicit Meanwhile(std::function<void()> act) : m_act(std::move(act)) {}
    void at(qint64, qint64) override
    {
        if (m_act)
            std::exchange(m_act, nullptr)();
    }

private:
    std::function<void()> m_act;
};

} // namespace

class TestMarkdown : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;

    static inline const QString Water = u"M-991231-001"_s;
    static inline const QString River = u"R-991231-001"_s;

    QString notes() const { return world->folder.filePath(u"notes"_s); }
    void write(const QString& name, const QString& content) const
    {
        writeContent(notes() + u'/' + name, content.toUtf8());
    }
    ImportReport importIt() { return importMarkdown(world->session, notes()); }
    QStringList documents() { return TestWorld::rowsOf(world->session.RsRefDoc); }
    QStringList namesAndTexts()
    {
        QStringList rows;
        for (const QString& row : documents())
            rows << row.section(u'|', 0, 0) + u'|' + row.section(u'|', 2);
        return rows;
    }
    QStringList linkedNames()
    {
        QHash<QString, QString> names;
        for (const QString& row : documents() + TestWorld::rowsOf(world->session.RsMain))
            names[row.section(u'|', 1, 1)] = row.section(u'|', 0, 0);
        QStringList rows;
        for (const QString& row : TestWorld::rowsOf(world->session.RsLink))
            rows << names[row.section(u'|', 0, 0)] + u" - "_s + names[row.section(u'|', 1, 1)];
        return rows;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void eachDatumIsANote()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"川/海"_s, River, u"川は\n流れる"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"無い.txt"_s, u"F-991231-002"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"地/形"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, Water});
        TestWorld::addRow(world->session.RsLink, {Water, River});
        writeContent(world->folder.filePath(u"RefFile/図.txt"_s), "picture");
        const ExportReport report = exportMarkdown(world->session, notes());
        QCOMPARE(report.written, 4);
        QCOMPARE(report.files, 5);
        QVERIFY(
            compareText(textsOf(report), u"F-991231-002: 登録されたファイル「無い.txt」がありません。"_s));
        const auto content = contentBelow(notes());
        QCOMPARE(QStringList(content.keys()), QStringList({u"RefFile/図.txt"_s, u"図.txt.md"_s,
                                                           u"川／海.md"_s, u"水.md"_s, u"無い.txt.md"_s}));
        QVERIFY(compareText(QString::fromUtf8(content[u"水.md"_s]),
                            u"---\ntitle: \"水\"\nidentifier: \"M-991231-001\"\nkind: \"定義\"\ntags:\n"
                            u"  - \"自然/地\\\\/形\"\n---\n\nH2O\n\n<!-- links -->\n- [[川／海|川/海]]\n"_s));
        QVERIFY(compareText(QString::fromUtf8(content[u"図.txt.md"_s]),
                            u"---\ntitle: \"図.txt\"\nidentifier: \"F-991231-001\"\nkind: \"FILE\"\n---\n\n"
                            u"![[RefFile/図.txt]]\n"_s));
    }

    void everythingIsAsItWasAtOneMoment()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"川"_s, River, u"流れる"_s});
        const auto other = Database::open(world->session.OpenDb->path());
        Meanwhile meanwhile([&] {
            other->execute(u"UPDATE RefDoc SET Explanation = 'another'"_s);
            other->execute(u"DELETE FROM Main"_s);
        });
        exportMarkdown(world->session, notes(), &meanwhile);
        QVERIFY(TestWorld::rowsOf(world->session.RsMain).isEmpty());
        const auto content = contentBelow(notes());
        QVERIFY(content[u"川.md"_s].endsWith(u"\n\n流れる\n"_s.toUtf8()));
        QVERIFY(content[u"水.md"_s].endsWith("\n\nH2O\n"));
    }

    void whatWasExportedComesBackTheSame()
    {
        const QStringList texts{u"a"_s,
                                u"\n  b\n"_s,
                                u"c\r\n---\r\n[[d]] #e"_s,
                                u"---\ntitle: x\n---\n"_s,
                                u"f\n\n<!-- links -->\n- [[g]]\n"_s,
                                u"h\n\n<!-- links -->"_s,
                                u"# 見出し\n\n「文」\\ \"引用\""_s,
                                QString(u'\0') + u"\t\u2028\uFEFF"_s};
        for (qsizetype i = 0; i < texts.size(); ++i) {
            TestWorld::addRow(world->session.RsMain,
                              {u"語: \"%1\" #x"_s.arg(i), u"M-991231-00%1"_s.arg(i + 1), texts[i]});
            TestWorld::addRow(world->session.RsRefDoc,
                              {u"同じ"_s, u"R-991231-00%1"_s.arg(i + 1), texts[i] + u"R"_s});
        }
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然;/\\"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"#地形, [x]"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, Water});
        TestWorld::addRow(world->session.RsLink, {Water, u"M-991231-005"_s});
        TestWorld::addRow(world->session.RsLink, {u"R-991231-002"_s, u"R-991231-003"_s});
        exportMarkdown(world->session, notes());
        QList<QStringList> before;
        for (const auto& table : {world->session.RsMain, world->session.RsRefDoc, world->session.RsCategoryID,
                                  world->session.RsCategory, world->session.RsLink}) {
            before << TestWorld::rowsOf(table);
            before.last().sort();
            table->deleteEveryRow();
        }
        const ImportReport report = importIt();
        QCOMPARE(report.renamed, 0);
        QVERIFY(compareText(textsOf(report), QString()));
        qsizetype i = 0;
        for (const auto& table : {world->session.RsMain, world->session.RsRefDoc, world->session.RsCategoryID,
                                  world->session.RsCategory, world->session.RsLink}) {
            QStringList now = TestWorld::rowsOf(table);
            now.sort();
            QCOMPARE(now, before[i++]);
        }
    }

    void whatNoWindowWouldTakeComesBackTheSame()
    {
        const QString name(50, u'水');
        TestWorld::addRow(world->session.RsMain, {name, Water, QString(255, u'あ')});
        TestWorld::addRow(world->session.RsMain, {u"二\n行"_s, u"M-991231-002"_s, u"x"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"空"_s, River, u""_s});
        exportMarkdown(world->session, notes());
        const QStringList definitions = TestWorld::rowsOf(world->session.RsMain);
        world->session.RsMain->deleteEveryRow();
        world->session.RsRefDoc->deleteEveryRow();
        const ImportReport report = importIt();
        QStringList now = TestWorld::rowsOf(world->session.RsMain);
        std::reverse(now.begin(), now.end()); // they come in the order of the names of their files
        QCOMPARE(now, definitions);
        QCOMPARE(documents(), QStringList(u"空|R-991231-001|"_s));
        QCOMPARE(report.notes.size(), 2U);
    }

    void titlesTextsLinksAndTagsOfNotes()
    {
        write(
            u"水.md"_s,
            u"# 水とは\n\n[[川|かわ]] と [[海#深さ]] と [山](sub/%E5%B1%B1.md) #自然/水 `#code [[code]]`\n"_s);
        write(u"川.md"_s,
              u"---\ntitle: '川''s'\ntags: [地形, \"自然\"]\ndate: 2024-02-29\n---\n流れる\r\n"_s);
        write(u"sub/山.md"_s, u"---\ntags:\n  - 地形\n---\n\n高い [[水とは]] [[../川]] [[無い]]"_s);
        write(u"海.md"_s, u""_s);
        write(u"x.txt"_s, u"no note"_s);
        const ImportReport report = importIt();
        QCOMPARE(report.added, 4);
        QVERIFY(compareText(textsOf(report), u"sub/山.md: リンク先「無い」が見つかりません。"_s));
        QCOMPARE(
            namesAndTexts(),
            QStringList(
                {u"山|高い [[水とは]] [[../川]] [[無い]]"_s, u"川's|流れる"_s,
                 u"水とは|[[川|かわ]] と [[海#深さ]] と [山](sub/%E5%B1%B1.md) #自然/水 `#code [[code]]`"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsMain).size(), 1);
        QVERIFY(TestWorld::rowsOf(world->session.RsMain)[0].startsWith(u"海|M-"));
        QVERIFY(TestWorld::rowsOf(world->session.RsMain)[0].endsWith(u"|未定義"));
        QVERIFY(documents()[1].contains(u"|R-240229-001|"));
        QCOMPARE(linkedNames(),
                 QStringList({u"山 - 水とは"_s, u"山 - 川's"_s, u"水とは - 川's"_s, u"水とは - 海"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID),
                 QStringList({u"A|地形"_s, u"B|自然"_s, u"B-A|水"_s}));
        QCOMPARE(report.filed, 4);
    }

    void whatAHeadTellsBesidesIsKeptAndTold()
    {
        write(u"a.md"_s, u"---\ntitle: 水\nauthor: 山田\naliases:\n  - みず\nrelated: \"[[b]]\"\nempty:\n"
                         u"date: 昨日\ntags: [自然,\n  地形]\n---\n流れる\n"_s);
        write(u"b.md"_s, u"---\nauthor: 川田\n---\n"_s);
        const ImportReport report = importIt();
        QCOMPARE(
            namesAndTexts(),
            QStringList({u"水|author: 山田\naliases:\n  - みず\nrelated: \"[[b]]\"\ndate: 昨日\n\n流れる"_s,
                         u"b|author: 川田"_s}));
        QCOMPARE(linkedNames(), QStringList(u"水 - b"_s));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID), QStringList({u"A|自然"_s, u"B|地形"_s}));
        QVERIFY(compareText(textsOf(report),
                            u"a.md: 見出し部の「author」は、内容の初めに入れました (2 件)。\n"
                            u"a.md: 見出し部の「aliases」は、内容の初めに入れました (1 件)。\n"
                            u"a.md: 見出し部の「related」は、内容の初めに入れました (1 件)。\n"
                            u"a.md: 見出し部の「date」は、内容の初めに入れました (1 件)。"_s));
    }

    void identifierOfOthersIsNoneOfOurs()
    {
        write(u"a.md"_s, u"---\nidentifier: 10.1000/182\nkind: FILE\n---\n# 水\n\n[[b]] #自然\n"_s);
        write(u"b.md"_s, u"---\nidentifier: M-991231-001\n---\n# 川\n\n[[水]]\n"_s);
        QCOMPARE(importIt().added, 2);
        QCOMPARE(namesAndTexts(),
                 QStringList({u"水|identifier: 10.1000/182\nkind: FILE\n\n[[b]] #自然"_s, u"川|[[水]]"_s}));
        QCOMPARE(linkedNames(), QStringList(u"水 - 川"_s));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID), QStringList(u"A|自然"_s));
    }

    void ofSeveralNotesOfOneTitleEachCanBeLedTo()
    {
        write(u"a.md"_s, u"---\ntitle: 水\n---\n一"_s);
        write(u"sub/b.md"_s, u"---\ntitle: 水\n---\n二"_s);
        write(u"C.md"_s, u"大"_s);
        write(u"c.md"_s, u"小"_s);
        write(u"x.md"_s, u"[[水]] [[sub/b]] [[C]] [[c]]"_s);
        // Where the case of a name tells nothing, there is one file less.
        const qsizetype led = QDir(notes()).entryList({u"?.md"_s}, QDir::Files).contains(u"c.md"_s) ? 4 : 3;
        const ImportReport report = importIt();
        QStringList linked = TestWorld::rowsOf(world->session.RsLink);
        QCOMPARE(linked.size(), led);
        linked.removeDuplicates();
        QCOMPARE(linked.size(), led);
        QString first;
        for (const QString& row : documents()) {
            if (row.endsWith(u"|一"))
                first = row.section(u'|', 1, 1);
        }
        QVERIFY(
            compareText(textsOf(report),
                        u"x.md: 「水」という名称のデータが複数あるため、%1 とリンクしました。"_s.arg(first)));
    }

    void linksToWhatIsThereAlready()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-002"_s, u"みず"_s});
        write(u"川.md"_s, u"[[水]]"_s);
        const ImportReport report = importIt();
        QCOMPARE(report.linked, 1);
        QCOMPARE(linkedNames(), QStringList(u"川 - 水"_s));
        QVERIFY(
            compareText(textsOf(report),
                        u"川.md: 「水」という名称のデータが複数あるため、M-991231-001 とリンクしました。"_s));
    }

    void folderOfANoteWithoutTagsIsItsCategory()
    {
        write(u"自然/川.md"_s, u"川"_s);
        importIt();
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID), QStringList(u"A|自然"_s));
    }

    void whatIsNoNoteIsPassedOverAndTold()
    {
        writeContent(notes() + u"/a.md"_s, QByteArray("\x89\0\xFF", 3));
        write(u"b.md"_s, u"---\nidentifier: F-991231-001\nkind: FILE\n---\n"_s);
        const ImportReport report = importIt();
        QCOMPARE(report.skipped, 2);
        QVERIFY(
            compareText(textsOf(report),
                        u"a.md: テキストファイルではないため、取り込みませんでした。\n"
                        u"b.md: ファイルデータは取り込みませんでした。ファイルを登録し直してください。"_s));
    }

    void halvesOfCharactersAreTold()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, QString(QChar(0xD800))});
        const ExportReport report = exportMarkdown(world->session, notes());
        QVERIFY(compareText(textsOf(report),
                            u"M-991231-001: 文字として不完全な部分は「?」として書き出しました。"_s));
    }

    void placeThatIsTakenIsRefused()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"notes"_s));
        bool isRefused = false;
        try {
            exportMarkdown(world->session, notes());
        } catch (const Refused&) {
            isRefused = true;
        }
        QVERIFY(isRefused);
        QCOMPARE(contentBelow(notes()).size(), 0);
    }

    void everyNameIsOneThatAnySystemCanHold()
    {
        const QStringList names{u"a"_s, u"A"_s, u"con"_s, u"b."_s, u""_s, u".c"_s, u"d\ne"_s};
        for (qsizetype i = 0; i < names.size(); ++i)
            TestWorld::addRow(world->session.RsMain, {names[i], u"M-991231-00%1"_s.arg(i + 1), u"-"_s});
        exportMarkdown(world->session, notes());
        QCOMPARE(QStringList(contentBelow(notes()).keys()),
                 QStringList({u"A (2).md"_s, u"_.c.md"_s, u"_.md"_s, u"_con.md"_s, u"a.md"_s, u"b.md"_s,
                              u"d_e.md"_s}));
    }
};

QTEST_GUILESS_MAIN(TestMarkdown)
#include "test_markdown.moc"
