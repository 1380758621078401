// Tables with commas or tabs become data, and data become tables.
#include "exchange/delimited.h"
#include "exchange/delimited_rows.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "tests/exchange/folder_content.h"
#include "tests/exchange/report_texts.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_world.h"

#include <QStringEncoder>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

class TestDelimited : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;

    static inline const QString Water = u"M-991231-001"_s;

    QString table() const { return world->folder.filePath(u"表.csv"_s); }
    void write(const QByteArray& content) const { writeContent(table(), content); }
    void write(const QString& content) const { write(content.toUtf8()); }
    ImportReport importIt(const ImportOptions& options = {})
    {
        return importDelimited(world->session, table(), options);
    }
    QString refusal()
    {
        const auto before = contentBelow(world->folder.path());
        QString text = u"(taken)"_s;
        try {
            importIt();
        } catch (const Refused& refused) {
            text = refused.description;
        }
        return contentBelow(world->folder.path()) == before ? text : u"(something has been written)"_s;
    }
    QStringList definitions() { return TestWorld::rowsOf(world->session.RsMain); }
    static QString rowsOf(const QStringList& pieces)
    {
        QStringList lines;
        DelimitedRows rows([&](const QStringList& fields, qint64 line, const QString& wrong) {
            lines << u"%1: "_s.arg(line) + fields.join(u'|') + wrong;
        });
        for (const QString& piece : pieces)
            rows.take(piece);
        rows.end();
        return lines.join(u'\n');
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

    void rowsAreSplit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("rows");
        const auto row = [](const char* name, const QString& text, const QString& rows) {
            QTest::newRow(name) << text << rows;
        };
        row("commas", u"a,b\nc,d\n"_s, u"1: a|b\n2: c|d"_s);
        row("tabs", u"a\tb,c\nd\te"_s, u"1: a|b,c\n2: d|e"_s);
        row("no line break at the end", u"a,b"_s, u"1: a|b"_s);
        row("breaks of Windows", u"a\r\nb\r\n"_s, u"1: a\n2: b"_s);
        row("old breaks", u"a\rb\r"_s, u"1: a\n2: b"_s);
        row("empty lines", u"a\n\n\r\nb"_s, u"1: a\n4: b"_s);
        row("empty fields", u"a,b\n,\n"_s, u"1: a|b\n2: |"_s);
        row("quoted", u"\"a,b\",\"c\"\"d\"\n\"\",x"_s, u"1: a,b|c\"d\n2: |x"_s);
        row("a break in quotes", u"\"a\r\nb\",c\nd,e"_s, u"1: a\r\nb|c\n3: d|e"_s);
        row("a quote in the middle", u"a\"b\",c"_s, u"1: a\"b\"|c"_s);
        row("something after a quote", u"\"a\"b,c\nd,e"_s,
            u"1: ab|c閉じた引用符の後に文字があります。\n2: d|e"_s);
        row("a quote that is never closed", u"a\n\"b\nc"_s, u"1: a\n2: b\nc引用符が閉じていません。"_s);
        row("nothing", u""_s, u""_s);
    }

    void rowsAreSplit()
    {
        QFETCH(QString, text);
        QFETCH(QString, rows);
        QVERIFY(compareText(rowsOf({text}), rows));
        QVERIFY(compareText(rowsOf(text.split(u""_s)), rows)); // a letter at a time
    }

    void columnsAreToldByTheirHeadings()
    {
        write(u"リンク,備考,定義,名称,分類\r\n"
              u"川;\"海\",x,H2O,水,自然/液体；飲み物\r\n"
              u",,流れる,川,\r\n"
              u",,,海,自然\r\n"_s.replace(u"川;\"海\""_s, u"\"川;海\""_s));
        const ImportReport report = importIt();
        QCOMPARE(definitions(), QStringList({u"水|M-991231-001|H2O"_s, u"川|M-991231-002|流れる"_s,
                                             u"海|M-991231-003|未定義"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID),
                 QStringList({u"A|自然"_s, u"A-A|液体"_s, u"B|飲み物"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory),
                 QStringList({u"A-A|M-991231-001"_s, u"B|M-991231-001"_s, u"A|M-991231-003"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsLink),
                 QStringList({u"M-991231-001|M-991231-002"_s, u"M-991231-001|M-991231-003"_s}));
        QCOMPARE(report.added, 3);
        QCOMPARE(report.linked, 2);
        QCOMPARE(report.filed, 3);
        QCOMPARE(report.categories, 3);
        QVERIFY(compareText(textsOf(report), u"1 行目: 列「備考」は取り込みません。"_s));
    }

    void encodingsAreToldApart_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QString text = u"名称,定義\n橋,かける\n"_s;
        QTest::newRow("UTF-8") << text.toUtf8();
        QTest::newRow("UTF-8 with its mark") << "\xEF\xBB\xBF" + text.toUtf8();
        QTest::newRow("code page 932")
            << QByteArray("\x96\xBC\x8F\xCC,\x92\xE8\x8B\x60\n\x8B\xB4,\x82\xA9\x82\xAF\x82\xE9\n");
        for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
            QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
            QTest::newRow(encoding == QStringConverter::Utf16LE ? "UTF-16" : "UTF-16, the other way round")
                << QByteArray(encoder.encode(text));
        }
    }

    void encodingsAreToldApart()
    {
        QFETCH(QByteArray, content);
        write(content);
        importIt();
        QCOMPARE(definitions(), QStringList(u"橋|M-991231-001|かける"_s));
    }

    void whatCannotBeReadIsRefusedWithItsLine()
    {
        const QString text = u"%1 行目に文字として読み取れないバイトがあるため、取り込めません。"
                             u"UTF-8、UTF-16 またはコードページ 932 で保存し直してください。"_s;
        write(u"名称\n橋\n"_s.toUtf8() + "\x8B\xB4\n");
        QVERIFY(compareText(refusal(), text.arg(3)));
        write("\xEF\xBB\xBF" + u"名称\n橋\n"_s.toUtf8() + "\x8B\xB4\n");
        QVERIFY(compareText(refusal(), text.arg(3)));
        QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
        write(QByteArray(encoder.encode(u"名称\n橋\n川"_s)) + 'x');
        QVERIFY(compareText(refusal(), text.arg(3)));
        QCOMPARE(definitions(), QStringList());
    }

    void wrongLinesAreToldAndNothingIsDone()
    {
        write(u"名称,定義,種別,分類\n"
              u"水,H2O,,自然\n"
              u"長い,%1,,\n"
              u",無名,,\n"
              u"少ない\n"
              u"\"x\"y,,,\n"
              u"種,x,其他,\n"
              u"文,x,文献,\n"
              u"閉,\"じ"_s.arg(QString(256, u'あ')));
        QVERIFY(compareText(refusal(), u"取り込めないものが 6 件あるため、何も書き込みませんでした。\n"
                                       u"3 行目: 定義が長すぎます。255 文字以内でなければ取り込めません。\n"
                                       u"4 行目: 必須項目が入力されていません。\n"
                                       u"5 行目: 列の数が見出しと違います (1 列、見出しは 4 列)。\n"
                                       u"6 行目: 閉じた引用符の後に文字があります。\n"
                                       u"7 行目: 種別「其他」はありません。\n"
                                       u"9 行目: 引用符が閉じていません。"_s));
        QCOMPARE(definitions(), QStringList());
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID), QStringList());
    }

    void whatOnlyAWindowWouldRefuseComesInAndIsTold()
    {
        const QString name(50, u'水');
        const QString text(255, u'あ');
        write(u"識別符号,名称,定義,種別\n,%1,x,\n,文,%2,\n,空,,文献\n,語,,\n"_s.arg(name, text));
        const ImportReport report = importIt();
        QCOMPARE(definitions(), QStringList({name + u"|M-991231-001|x"_s, u"文|M-991231-002|"_s + text,
                                             u"語|M-991231-003|未定義"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsRefDoc), QStringList(u"空|R-991231-001|"_s));
        const QString told = u"画面で入力できる長さを超えています。"
                             u"そのまま取り込みましたが、更新するときは短くしてください。"_s;
        QVERIFY(compareText(textsOf(report), u"2 行目: "_s + told + u"\n3 行目: "_s + told +
                                                 u"\n4 行目: 内容が空の文献として取り込みました。"_s));
        QCOMPARE(importIt().skipped, 4);
        write(u"名称\n%1\n"_s.arg(QString(51, u'水')));
        QVERIFY(compareText(refusal(), u"取り込めないものが 1 件あるため、何も書き込みませんでした。\n"
                                       u"2 行目: 名称が長すぎます。50 文字以内でなければ取り込めません。"_s));
    }

    void fieldThatNeverEndsIsNotCut()
    {
        write(u"名称,定義,種別\n長,\"%1\",文献\n"_s.arg(QString(4'000'001, u'x')));
        QVERIFY(compareText(refusal(), u"取り込めないものが 1 件あるため、何も書き込みませんでした。\n"
                                       u"2 行目: 長すぎる項目があります。"_s));
    }

    void headingsHaveToBeThere_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("refusal");
        const QString none = u"1 行目に見出し「名称」がありません。"_s;
        QTest::newRow("none") << u"水,H2O\n"_s << none;
        QTest::newRow("no row at all") << u""_s << none;
        QTest::newRow("twice") << u"名称,名称\n"_s << u"1 行目: 見出し「名称」が 2 つあります。"_s;
        QTest::newRow("never closed") << u"\"名称"_s << u"1 行目: 引用符が閉じていません。"_s;
    }

    void headingsHaveToBeThere()
    {
        QFETCH(QString, text);
        QFETCH(QString, refusal);
        write(text);
        QVERIFY(compareText(this->refusal(), refusal));
    }

    void ofSeveralThatAreAlikeTheOneOfTheIdentifierIsMeant()
    {
        for (int i = 1; i <= 3; ++i)
            TestWorld::addRow(world->session.RsMain, {u"橋"_s, u"M-991231-00%1"_s.arg(i), u"かける"_s});
        write(u"識別符号,名称,定義,分類\n"
              u"M-991231-002,橋,かける,二\n"
              u",橋,かける,一\n"
              u"M-991231-009,橋,かける,三\n"
              u"M-991231-002,橋,かける,又\n"_s);
        QCOMPARE(importIt().skipped, 4);
        QCOMPARE(definitions().size(), 3);
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory),
                 QStringList(
                     {u"A|M-991231-002"_s, u"B|M-991231-001"_s, u"C|M-991231-003"_s, u"D|M-991231-002"_s}));
    }

    void dayOfTheRowIsThatOfTheIdentifier()
    {
        write(
            u"名称,日付,識別符号\na,2024-02-29,\nb,2024/3/1,\nc,,M-010203-004\nd,,M-010203-004\ne,昨日,\nf,2024年12月3日,\ng,20231231,\n"_s);
        const ImportReport report = importIt();
        QStringList identifiers;
        for (const QString& row : definitions())
            identifiers << row.section(u'|', 1, 1);
        QCOMPARE(identifiers,
                 QStringList({u"M-240229-001"_s, u"M-240301-001"_s, u"M-010203-004"_s, u"M-010203-001"_s,
                              u"M-991231-001"_s, u"M-241203-001"_s, u"M-231231-001"_s}));
        QCOMPARE(report.renamed, 1);
        QVERIFY(compareText(textsOf(report), u"6 行目: 日付「昨日」を読み取れないため、使用しません。"_s));
    }

    void kindIsThatOfItsColumn()
    {
        write(u"名称\t種別\t定義\n水\t定義\tH2O\n川\t文献\t流れる\n図\tFILE\t未入力\n"_s);
        const ImportReport report = importIt();
        QCOMPARE(definitions().size(), 1);
        QCOMPARE(TestWorld::rowsOf(world->session.RsRefDoc), QStringList(u"川|R-991231-001|流れる"_s));
        QCOMPARE(report.skipped, 1);
        QVERIFY(compareText(textsOf(report), u"4 行目: ファイルデータは取り込みませんでした。"
                                             u"ファイルを登録し直してください。"_s));
    }

    void linkToNothingIsTold()
    {
        write(u"名称,リンク\n水,無い\n"_s);
        const ImportReport report = importIt();
        QCOMPARE(report.linked, 0);
        QVERIFY(compareText(textsOf(report), u"2 行目: リンク先「無い」が見つかりません。"_s));
    }

    void whatWasExportedComesBackTheSame()
    {
        const QStringList texts{u"a,b"_s, u"c\r\n\"d\""_s, u" e "_s, u"f\tg"_s, u"\uFEFF<h>"_s, u"=1+2"_s};
        for (qsizetype i = 0; i < texts.size(); ++i) {
            TestWorld::addRow(world->session.RsMain, {i == 1 || i == 3 ? u"名 %1"_s.arg(i) : texts[i],
                                                      u"M-991231-00%1"_s.arg(i + 1), texts[i]});
            TestWorld::addRow(world->session.RsRefDoc,
                              {u"同じ"_s, u"R-991231-00%1"_s.arg(i + 1), texts[i] + u"R"_s});
        }
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"a;b；c/d\\"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"\"x\""_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"B"_s, u"y"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, Water});
        TestWorld::addRow(world->session.RsCategory, {u"B"_s, Water});
        TestWorld::addRow(world->session.RsLink, {Water, u"M-991231-003"_s});
        TestWorld::addRow(world->session.RsLink, {Water, u"R-991231-002"_s});
        TestWorld::addRow(world->session.RsLink, {u"R-991231-001"_s, u"M-991231-005"_s});
        for (const QString& name : {u"out.csv"_s, u"out.tsv"_s}) {
            const QString path = world->folder.filePath(name);
            QCOMPARE(exportDelimited(world->session, path).written, 12);
            QList<QStringList> before;
            const auto tables = {world->session.RsMain, world->session.RsRefDoc, world->session.RsCategoryID,
                                 world->session.RsCategory, world->session.RsLink};
            for (const auto& rows : tables) {
                before << TestWorld::rowsOf(rows);
                rows->deleteEveryRow();
            }
            const ImportReport report = importDelimited(world->session, path);
            QVERIFY(compareText(textsOf(report), QString()));
            QCOMPARE(report.renamed, 0);
            qsizetype i = 0;
            for (const auto& rows : tables)
                QCOMPARE(TestWorld::rowsOf(rows), before[i++]);
        }
    }

    void exportedIsAsDocumented()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, u"H2O, \"水\""_s});
        TestWorld::addRow(world->session.RsRefFile, {u"図"_s, u"F-991231-001"_s, u"未入力"_s});
        TestWorld::addRow(world->session.RsLink, {Water, u"F-991231-001"_s});
        exportDelimited(world->session, table());
        QVERIFY(compareText(QString::fromUtf8(contentBelow(world->folder.path())[u"表.csv"_s].sliced(3)),
                            u"識別符号,種別,名称,定義,分類,リンク\r\n"
                            u"M-991231-001,定義,水,\"H2O, \"\"水\"\"\",,図\r\n"
                            u"F-991231-001,FILE,図,未入力,,\r\n"_s));
        QVERIFY(contentBelow(world->folder.path())[u"表.csv"_s].startsWith("\xEF\xBB\xBF"));
        bool isRefused = false;
        try {
            exportDelimited(world->session, table());
        } catch (const Refused&) {
            isRefused = true;
        }
        QVERIFY(isRefused);
    }

    void halvesOfCharactersAreTold()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, Water, QString(QChar(0xD800))});
        const ExportReport report = exportDelimited(world->session, table());
        QVERIFY(compareText(textsOf(report),
                            u"M-991231-001: 文字として不完全な部分は「?」として書き出しました。"_s));
    }

    void dryRunWritesNothing()
    {
        write(u"名称,分類\n水,自然\n"_s);
        const auto before = contentBelow(world->folder.path());
        const ImportReport report = importIt({.dryRun = true});
        QCOMPARE(report.added, 1);
        QCOMPARE(report.categories, 1);
        QCOMPARE(contentBelow(world->folder.path()), before);
    }

    void brokenOffImportLeavesNothing()
    {
        class Ending : public Progress
        {
        public:
            void at(qint64, qint64) override {}
            bool cancelled() override { return true; }
        };
        write(u"名称\n水\n"_s);
        Ending end;
        bool isCancelled = false;
        try {
            importDelimited(world->session, table(), {}, &end);
        } catch (const Cancelled&) {
            isCancelled = true;
        }
        QVERIFY(isCancelled);
        QCOMPARE(definitions(), QStringList());
    }

    void manyRowsAreOneImport()
    {
        QString text = u"名称,定義\n"_s;
        for (int i = 0; i < 20'000; ++i)
            text += u"項目 %1,\"本文\n%1\"\n"_s.arg(i);
        write(text);
        QCOMPARE(importIt().added, 20'000);
        QCOMPARE(definitions().last(), u"項目 19999|M-991211-020|本文\n19999"_s);
    }
};

QTEST_GUILESS_MAIN(TestDelimited)
#include "test_delimited.moc"
