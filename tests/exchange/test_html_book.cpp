// A database as a book of pages to be read from the disk.
#include "app/base/ports/files.h"
#include "exchange/html_book.h"
#include "exchange/markup.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "tests/exchange/folder_content.h"
#include "tests/exchange/report_texts.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_world.h"

#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

class TestHtmlBook : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QMap<QString, QByteArray> content;

    static inline const QString Water = u"M-991231-001"_s;
    static inline const QString River = u"R-991231-001"_s;

    ExportReport exportIt()
    {
        const QString folder = world->folder.filePath(u"本"_s);
        ExportReport report = exportHtmlBook(world->session, folder);
        content = contentBelow(folder);
        return report;
    }
    QString page(const QString& name) const { return QString::fromUtf8(content[name]); }
    void fill()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"川"_s, River, u"川は\n流れる"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"図 1.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"地形"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, River});
        TestWorld::addRow(world->session.RsLink, {River, Water});
        writeContent(world->folder.filePath(u"RefFile/図 1.txt"_s), "picture");
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

    void bookHasAPageForEverything()
    {
        fill();
        const ExportReport report = exportIt();
        QCOMPARE(QStringList(content.keys()),
                 QStringList({u"RefFile/図 1.txt"_s, u"categories/1.html"_s, u"categories/2.html"_s,
                              u"data/F-991231-001.html"_s, u"data/M-991231-001.html"_s,
                              u"data/R-991231-001.html"_s, u"index.html"_s, u"lists/definitions-1.html"_s,
                              u"lists/documents-1.html"_s, u"lists/files-1.html"_s,
                              u"lists/uncategorised-1.html"_s, u"search-index.js"_s, u"search.js"_s,
                              u"style.css"_s}));
        QCOMPARE(report.written, 3);
        QCOMPARE(report.files, content.size());
        QVERIFY(report.notes.empty());
    }

    void pageOfADatumShowsItsTextLinksAndCategories()
    {
        fill();
        exportIt();
        QVERIFY(compareText(
            page(u"data/R-991231-001.html"_s),
            u"<!DOCTYPE html>\n<html lang=\"ja\">\n<head>\n<meta charset=\"utf-8\">\n"
            u"<meta name=\"viewport\" content=\"width=device-width\">\n<title>川</title>\n"
            u"<link rel=\"stylesheet\" href=\"../style.css\">\n</head>\n<body>\n"
            u"<nav><a href=\"../index.html\">目次と検索</a></nav>\n"
            u"<article>\n<h1>川</h1>\n<p class=\"facts\">文献 · R-991231-001</p>\n"
            u"<div class=\"text\">川は\n流れる</div>\n</article>\n"
            u"<section>\n<h2>リンク先</h2>\n<ul>\n<li><a href=\"../data/M-991231-001.html\">水</a></li>\n</ul>\n</section>\n"
            u"<section>\n<h2>分類</h2>\n<ul>\n<li><a href=\"../categories/1.html\">自然</a> › "
            u"<a href=\"../categories/2.html\">地形</a></li>\n</ul>\n</section>\n</body>\n</html>\n"_s));
        QVERIFY(
            page(u"data/M-991231-001.html"_s)
                .contains(u"<h2>リンク元</h2>\n<ul>\n<li><a href=\"../data/R-991231-001.html\">川</a></li>"));
        QVERIFY(page(u"data/F-991231-001.html"_s)
                    .contains(u"<a href=\"../RefFile/%E5%9B%B3%201.txt\">図 1.txt</a>"));
    }

    void indexHasTheTreeAndTheLists()
    {
        fill();
        exportIt();
        const QString index = page(u"index.html"_s);
        QVERIFY(index.contains(
            u"<h1>目次</h1>\n<form id=\"searching\" role=\"search\">\n<label for=\"search\">名称と本文の検索</label>"));
        QVERIFY(index.contains(u"<p id=\"none\" hidden>見つかりませんでした。</p>"));
        QVERIFY(index.contains(
            u"<h2>分類</h2>\n<ul>\n<li><details open><summary><a href=\"categories/1.html\">自然</a> "
            u"<span class=\"count\">0</span></summary>\n<ul>\n<li><a href=\"categories/2.html\">地形</a> "
            u"<span class=\"count\">1</span></li>\n</ul>\n</details></li>\n</ul>\n"));
        for (const QString& line :
             {u"<h2>一覧</h2>"_s, u"<li>定義データ <a href=\"lists/definitions-1.html\">1–1</a></li>"_s,
              u"<li>文献データ <a href=\"lists/documents-1.html\">1–1</a></li>"_s,
              u"<li>ファイルデータ <a href=\"lists/files-1.html\">1–1</a></li>"_s,
              u"<li>未分類データ <a href=\"lists/uncategorised-1.html\">1–2</a></li>"_s})
            QVERIFY2(index.contains(line), qPrintable(line));
        QVERIFY(
            page(u"categories/1.html"_s)
                .contains(u"<h2>下位分類</h2>\n<ul>\n<li><a href=\"../categories/2.html\">地形</a></li>"));
        QVERIFY(
            page(u"categories/2.html"_s)
                .contains(u"<h2>データ</h2>\n<ul>\n<li><a href=\"../data/R-991231-001.html\">川</a></li>"));
    }

    void everyLinkLeadsToAPageOfTheBook()
    {
        fill();
        exportIt();
        static const QRegularExpression link(u"(?:href|src)=\"([^\"]*)\""_s);
        int checked = 0;
        for (auto file = content.cbegin(); file != content.cend(); ++file) {
            if (!file.key().endsWith(u".html"))
                continue;
            for (auto found = link.globalMatch(QString::fromUtf8(*file)); found.hasNext(); ++checked) {
                const QString target = QUrl::fromPercentEncoding(found.next().captured(1).toUtf8());
                const QString path = QDir::cleanPath(QFileInfo(file.key()).path() + u'/' + target);
                QVERIFY2(content.contains(path), qPrintable(file.key() + u" -> "_s + target));
            }
        }
        QVERIFY(checked > 30);
    }

    void nothingThatIsWrittenBecomesMarkup()
    {
        const QString nasty = u"</div><script>alert('x\")&amp;</script>"_s;
        TestWorld::addRow(world->session.RsMain,
                          {nasty, Water, nasty + QString(QChar(0xD800)) + QChar(u'\0')});
        TestWorld::addRow(world->session.RsMain, {u"a"_s, u"M-\"><script>"_s.first(12), nasty});
        TestWorld::addRow(world->session.RsCategoryID, {u"<"_s, nasty});
        TestWorld::addRow(world->session.RsCategory, {u"<"_s, Water});
        TestWorld::addRow(world->session.RsLink, {Water, Water});
        exportIt();
        for (auto file = content.cbegin(); file != content.cend(); ++file) {
            if (file.key() == u"search.js")
                continue;
            QVERIFY2(!file->contains("<script>"), qPrintable(file.key()));
            QVERIFY2(!file->contains("</script>") || file.key() == u"index.html", qPrintable(file.key()));
            QVERIFY2(file->isValidUtf8() && !file->contains('\0'), qPrintable(file.key()));
        }
        QVERIFY(
            page(u"data/M-991231-001.html"_s)
                .contains(
                    u"&lt;/div&gt;&lt;script&gt;alert(&#39;x&quot;)&amp;amp;&lt;/script&gt;\uFFFD\uFFFD</div>"));
        QVERIFY(content.contains(u"data/x1.html"_s));
    }

    void searchIsAScriptOfTheBook()
    {
        fill();
        exportIt();
        QVERIFY(compareText(page(u"search-index.js"_s),
                            u"window.quillonIndex=[\n[\"data/M-991231-001.html\",\"水\",\"H2O\"],\n"
                            u"[\"data/R-991231-001.html\",\"川\",\"川は\\n流れる\"],\n"
                            u"[\"data/F-991231-001.html\",\"図 1.txt\",\"未入力\"],\n];\n"_s));
        QVERIFY(page(u"index.html"_s).contains(u"<script src=\"search.js\"></script>"));
        QVERIFY(page(u"search.js"_s).contains(u"script.src=\"search-index.js\""));
        for (auto file = content.cbegin(); file != content.cend(); ++file)
            QVERIFY2(!file->contains("//"), qPrintable(file.key())); // nothing from elsewhere
    }

    void looksFollowTheReader()
    {
        exportIt();
        const QString style = page(u"style.css"_s);
        QVERIFY(style.contains(u"@media print"));
        QVERIFY(style.contains(u"prefers-color-scheme:dark"));
        QCOMPARE(style.count(u'{'), style.count(u'}'));
    }

    void longListsComeInPages()
    {
        sqlite::Transaction write(world->session.OpenDb->connection());
        for (int i = 0; i < 1001; ++i)
            TestWorld::addRow(world->session.RsMain,
                              {u"%1"_s.arg(i),
                               u"M-9912%1-%2"_s.arg(10 + i / 999).arg(1 + i % 999, 3, 10, QChar(u'0')),
                               u"-"_s});
        write.commit();
        exportIt();
        QVERIFY(page(u"index.html"_s)
                    .contains(u"定義データ <a href=\"lists/definitions-1.html\">1–1000</a> "
                              u"<a href=\"lists/definitions-2.html\">1001–1001</a>"));
        QCOMPARE(page(u"lists/definitions-2.html"_s).count(u"<li>"), 1);
    }

    void fileThatSeveralDataNameIsThereOnceUnderTheNameThatIsLedTo()
    {
        TestWorld::addRow(world->session.RsRefFile, {u"a.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"A.TXT"_s, u"F-991231-002"_s, u"未入力"_s});
        writeContent(world->folder.filePath(u"RefFile/a.txt"_s), "picture");
        const bool isOneFile =
            world->session.files.storedFile(world->session.inCurrentFolder(u"RefFile"_s), u"A.TXT"_s)
                .has_value(); // that is up to the system
        const ExportReport report = exportIt();
        QCOMPARE(report.notes.size(), isOneFile ? 0U : 1U);
        QCOMPARE(content[u"RefFile/a.txt"_s], QByteArray("picture"));
        QVERIFY(page(u"data/F-991231-001.html"_s).contains(u"\"../RefFile/a.txt\""_s));
        QCOMPARE(page(u"data/F-991231-002.html"_s).contains(u"\"../RefFile/a.txt\""_s), isOneFile);
    }

    void missingFileIsTold()
    {
        TestWorld::addRow(world->session.RsRefFile, {u"無い"_s, u"F-991231-001"_s, u"未入力"_s});
        QVERIFY(
            compareText(textsOf(exportIt()), u"F-991231-001: 登録されたファイル「無い」がありません。"_s));
    }

    void placeThatIsTakenIsRefused()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"本"_s));
        bool isRefused = false;
        try {
            exportIt();
        } catch (const Refused&) {
            isRefused = true;
        }
        QVERIFY(isRefused);
    }
};

QTEST_GUILESS_MAIN(TestHtmlBook)
#include "test_html_book.moc"
