// A folder of text files becomes documents.
#include "exchange/refused.h"
#include "exchange/text_folder.h"
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

class TestTextFolder : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;

    QString source() const { return world->folder.filePath(u"source"_s); }
    void write(const QString& name, const QByteArray& content, const QDate& day = {2024, 2, 29}) const
    {
        const QString path = source() + u'/' + name;
        writeContent(path, content);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime(day, QTime(12, 0)), QFileDevice::FileModificationTime));
    }
    ImportReport importIt(const TextImportOptions& options = {})
    {
        return importTexts(world->session, source(), options);
    }
    QStringList documents() { return TestWorld::rowsOf(world->session.RsRefDoc); }

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

    void filesBecomeDocumentsOfTheirDay()
    {
        write(u"水.txt"_s, "きれいな水");
        write(u"火.txt"_s, "熱い火", {1999, 12, 31});
        write(u"README"_s, "read me");
        QCOMPARE(importIt().added, 3);
        QCOMPARE(documents(), QStringList({u"README|R-240229-001|read me"_s, u"水|R-240229-002|きれいな水"_s,
                                           u"火|R-991231-001|熱い火"_s}));
    }

    void encodingsAreToldApart()
    {
        write(u"a.txt"_s, "\x8B\xB4");
        write(u"b.txt"_s, "\xEF\xBB\xBF橋");
        write(u"c.txt"_s, "\xFF\xFE\x4B\x6A");
        write(u"d.txt"_s, "\xFE\xFF\x6A\x4B");
        write(u"e.txt"_s, "橋");
        importIt();
        for (const QString& row : documents())
            QVERIFY(compareText(row.section(u'|', 2), u"橋"_s));
        QCOMPARE(documents().size(), 5);
    }

    void foldersBecomeCategories()
    {
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        write(u"自然/川/淀川.txt"_s, "川");
        write(u"自然/山.txt"_s, "山");
        write(u".hidden/x.txt"_s, "x");
        const ImportReport report = importIt();
        QCOMPARE(report.categories, 1);
        QCOMPARE(report.filed, 2);
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategoryID), QStringList({u"A|自然"_s, u"A-A|川"_s}));
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory),
                 QStringList({u"A|R-240229-001"_s, u"A-A|R-240229-002"_s}));
    }

    void whatIsNoTextIsPassedOverAndTold()
    {
        write(u"a.txt"_s, "");
        write(u"b.png"_s, QByteArray("\x89PNG\0\xFF", 6));
        write(u"c.txt"_s, "c");
        const ImportReport report = importIt();
        QCOMPARE(report.added, 1);
        QCOMPARE(report.skipped, 2);
        QVERIFY(compareText(textsOf(report),
                            u"a.txt: 空のファイルのため、取り込みませんでした。\n"
                            u"b.png: テキストファイルではないため、取り込みませんでした。"_s));
    }

    void whatCannotBeReadIsToldWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("line");
        const QByteArray unicode = u"水\n"_s.toUtf8();
        QTest::newRow("two encodings that would pass for one") << "\x90\x85\n" + unicode + "\x90\x85\n" << 2;
        QTest::newRow("two encodings, and more of the other") << "\x90\x85\n\x89\xCE\n\xFF" + unicode << 3;
        QTest::newRow("no encoding at all") << QByteArray("a\r\n\xFF\xFF\xFF\r\n") << 2;
        QTest::newRow("lines that returns end") << QByteArray("a\rb\rc\xFF\r") << 3;
        QTest::newRow("a mark that does not hold") << QByteArray("\xEF\xBB\xBF"
                                                                 "a\n\x90\x85")
                                                   << 2;
        QTest::newRow("half a pair") << QByteArray("\xFF\xFE"
                                                   "a\0\n\0b\0c",
                                                   9)
                                     << 2;
    }

    void whatCannotBeReadIsToldWithItsLine()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, line);
        write(u"a.txt"_s, content);
        write(u"b.txt"_s, "b");
        const ImportReport report = importIt();
        QCOMPARE(report.added, 1);
        QCOMPARE(report.skipped, 1);
        QVERIFY(compareText(textsOf(report),
                            u"a.txt: %1 行目に文字として読み取れないバイトがあるため、取り込めません。"
                            u"UTF-8、UTF-16 またはコードページ 932 で保存し直してください。"_s.arg(line)));
    }

    void pairsOfBytesWithoutTheirMarkAreNoText()
    {
        write(u"a.txt"_s, QByteArray("a\0b\0c\0", 6));
        write(u"b.txt"_s, QByteArray("one zero \0 may be meant", 23));
        const ImportReport report = importIt();
        QCOMPARE(report.added, 1);
        QVERIFY(
            compareText(textsOf(report), u"a.txt: テキストファイルではないため、取り込みませんでした。"_s));
    }

    void whatIsTooLongIsRefusedAltogether()
    {
        write(u"a.txt"_s, "short");
        write(u"b.txt"_s, QByteArray(64'000, 'x'));
        write(u"c.txt"_s, QByteArray(63'999, 'x'));
        try {
            importIt();
            QFAIL("it is taken");
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description,
                                u"取り込めないものが 1 件あるため、何も書き込みませんでした。\n"
                                u"b.txt: 定義が最大入力値を超えています。最大入力値は全角32000文字です。"_s));
        }
        QCOMPARE(documents(), QStringList());
    }

    void whatIsTooLongIsSplitByChoice()
    {
        QString text;
        for (int i = 0; i < 20'000; ++i)
            text += u"行 %1\r\n"_s.arg(i);
        write(u"long.txt"_s, text.toUtf8());
        const ImportReport report = importIt({{}, LongTexts::Split});
        QVERIFY(compareText(textsOf(report), u"long.txt: 長いため、3 個のデータに分けました。"_s));
        QStringList names;
        QString whole;
        for (const QString& row : documents()) {
            names << row.section(u'|', 0, 1);
            whole += row.section(u'|', 2);
            QVERIFY(row.endsWith(u"\r\n"));
        }
        QCOMPARE(names, QStringList({u"long (1/3)|R-240229-001"_s, u"long (2/3)|R-240229-002"_s,
                                     u"long (3/3)|R-240229-003"_s}));
        QVERIFY(compareText(whole, text));
        QCOMPARE(TestWorld::rowsOf(world->session.RsLink),
                 QStringList({u"R-240229-001|R-240229-002"_s, u"R-240229-002|R-240229-003"_s}));
    }

    void longNamesAreCutAndTold()
    {
        write(QString(30, u'水') + u".txt"_s, "x");
        const ImportReport report = importIt();
        const QString cut(24, u'水');
        QCOMPARE(documents(), QStringList(cut + u"|R-240229-001|x"_s));
        QVERIFY(compareText(textsOf(report), QString(30, u'水') + u".txt: 名称が長いため、「"_s + cut +
                                                 u"」に縮めました。"_s));
    }

    void whatIsThereAlreadyComesOnce()
    {
        write(u"a/水.txt"_s, "水");
        QCOMPARE(importIt().added, 1);
        const ImportReport again = importIt();
        QCOMPARE(again.added, 0);
        QCOMPARE(again.skipped, 1);
        QCOMPARE(documents().size(), 1);
        QCOMPARE(TestWorld::rowsOf(world->session.RsCategory).size(), 1);
    }

    void fullDayGivesWayToTheDayBefore()
    {
        for (int i = 0; i < 1001; ++i)
            write(u"%1.txt"_s.arg(i), QByteArray::number(i));
        QCOMPARE(importIt().added, 1001);
        QCOMPARE(documents()[998].section(u'|', 1, 1), u"R-240229-999"_s);
        QCOMPARE(documents()[999].section(u'|', 1, 1), u"R-240228-001"_s);
    }

    void dryRunWritesNothing()
    {
        write(u"a/水.txt"_s, "水");
        const auto before = contentBelow(world->folder.path());
        TextImportOptions options;
        options.dryRun = true;
        QCOMPARE(importIt(options).added, 1);
        QCOMPARE(contentBelow(world->folder.path()), before);
    }

    void categoriesHaveTheirLimits()
    {
        const QString longName(51, u'x');
        write(longName + u"/a.txt"_s, "x");
        write(QStringList(26, u"d"_s).join(u'/') + u"/b.txt"_s, "x");
        try {
            importIt();
            QFAIL("they have none");
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description,
                                u"取り込めないものが 1 件あるため、何も書き込みませんでした。\n"_s +
                                    QStringList(26, u"d"_s).join(u'/') + u"/b.txt: カテゴリ「"_s +
                                    QStringList(26, u"d"_s).join(u'/') + u"」の階層が深すぎます。"_s));
        }
        QVERIFY(QDir(source() + u"/d"_s).removeRecursively());
        try {
            importIt();
            QFAIL("they have none");
        } catch (const Refused& refused) {
            QVERIFY(refused.description.endsWith(u": カテゴリ名「"_s + longName +
                                                 u"」は 1 文字以上 50 文字以内でなければなりません。"_s));
        }
    }

    void missingFolderIsTold()
    {
        try {
            importIt();
            QFAIL("it is there");
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description, u"フォルダ「%1」が見つかりません。"_s.arg(source())));
        }
    }

    void unreasonablyLargeFileIsTold()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"source"_s));
        const QString path = QDir::toNativeSeparators(source() + u"/a.txt"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize((qint64{64} << 20) + 1));
        try {
            importIt();
            QFAIL("it is taken");
        } catch (const Error& error) {
            QVERIFY(compareText(error.description, u"「%1」は大きすぎて取り込めません。"_s.arg(path)));
        }
    }

    void manyRefusalsAreCounted()
    {
        for (int i = 0; i < 25; ++i)
            write(u"%1.txt"_s.arg(i, 2, 10, QChar(u'0')), QByteArray(64'000, 'x'));
        try {
            importIt();
            QFAIL("they are taken");
        } catch (const Refused& refused) {
            QVERIFY(refused.description.endsWith(u"\nほか 5 件"_s));
            QCOMPARE(refused.description.count(u'\n'), 21);
        }
    }
};

QTEST_GUILESS_MAIN(TestTextFolder)
#include "test_text_folder.moc"
