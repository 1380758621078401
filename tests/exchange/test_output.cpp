// Writing something whole or not at all, and reading files of any size.
#include "app/base/error.h"
#include "exchange/input.h"
#include "exchange/output.h"
#include "exchange/refused.h"
#include "exchange/spooled_texts.h"
#include "tests/exchange/folder_content.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_folder.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

namespace
{

template <class Action> QString failureOf(Action&& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.description;
    }
    return u"(none)"_s;
}

} // namespace

class TestOutput : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestFolder> folder;

    QString path(const QString& name) const { return folder->filePath(name); }
    QMap<QString, QByteArray> content() const { return contentBelow(folder->path()); }

private Q_SLOTS:
    void init() { folder = std::make_unique<TestFolder>(); }

    void textsThatArePutAsideComeBackInTheirOrder_data()
    {
        QTest::addColumn<int>("longest");
        QTest::newRow("in memory") << 100;
        QTest::newRow("in a file") << 2'000'000;
    }

    void textsThatArePutAsideComeBackInTheirOrder()
    {
        QFETCH(int, longest);
        constexpr int Count = 30;
        const auto text = [&](int i) { return QString(i * longest / Count, QChar(0xD800 + i)); };
        SpooledTexts texts;
        for (int i = 0; i < Count; ++i)
            texts.add(text(i));
        for (int pass = 0; pass < 3; ++pass) {
            texts.rewind();
            for (int i = 0; i < Count; ++i)
                QVERIFY(texts.next() == text(i));
        }
    }

#ifdef Q_OS_LINUX // where there is a folder that nobody can write in
    void textsThatCannotBePutAsideAreTold()
    {
        const QByteArray before = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/proc");
        const QString failure = failureOf([] {
            SpooledTexts texts;
            texts.add(QString(20'000'000, u'水'));
        });
        qputenv("TMPDIR", before);
        QVERIFY2(failure.startsWith(u"一時ファイルを使用できません。"), qPrintable(failure));
    }
#endif

    void folderStandsThereWhenItIsPlaced()
    {
        StagedOutput output(path(u"book"_s));
        output.makeFolder();
        output.makeFolder(u"a/b"_s);
        writeFile(output.inside(u"a/b/c"_s), "text");
        writeFile(output.inside(u"d"_s), QByteArray(1'000'000, 'x'), OutputFile::Care::Quick);
        QVERIFY(!QFileInfo::exists(path(u"book"_s)));
        output.place();
        QCOMPARE(content(), (QMap<QString, QByteArray>{{u"book/a/b/c"_s, "text"},
                                                       {u"book/d"_s, QByteArray(1'000'000, 'x')}}));
    }

    void whatIsNotPlacedIsGone()
    {
        {
            StagedOutput output(path(u"book"_s));
            output.makeFolder();
            writeFile(output.inside(u"c"_s), "text");
            StagedOutput file(path(u"file"_s));
            writeFile(file.path(), "text");
            QCOMPARE(content().size(), 2);
        }
        QVERIFY(QDir(folder->path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    }

    void whatStandsThereIsNotReplaced()
    {
        StagedOutput file(path(u"file"_s));
        writeFile(file.path(), "new");
        StagedOutput book(path(u"book"_s));
        book.makeFolder();
        writeContent(path(u"file"_s), "old");
        QDir(folder->path()).mkdir(u"book"_s);
        const auto isThere = [&](const QString& name) {
            return u"「%1」は既に存在します。別の名前を指定してください。"_s.arg(path(name));
        };
        QVERIFY(compareText(failureOf([&] { file.place(); }), isThere(u"file"_s)));
        QVERIFY(compareText(failureOf([&] { book.place(); }), isThere(u"book"_s)));
        QVERIFY(compareText(failureOf([&] { StagedOutput(path(u"file"_s)); }), isThere(u"file"_s)));
        QCOMPARE(content()[u"file"_s], QByteArray("old"));
    }

    void placeWithoutANameIsRefused()
    {
        QVERIFY(
            compareText(failureOf([] { StagedOutput{QString()}; }), u"書き出し先が指定されていません。"_s));
    }

    void whereNothingCanBeWrittenIsTold()
    {
        const QString nowhere = path(u"no/file"_s);
        const QString expected =
            u"「%1」に書き込めません。フォルダが見つかりません。フォルダの場所と名前を確認してください。"_s
                .arg(nowhere);
        QVERIFY(compareText(failureOf([&] { writeFile(nowhere, "text"); }), expected));
        QVERIFY(compareText(failureOf([&] { StagedOutput(nowhere).makeFolder(); }), expected));
#ifdef Q_OS_LINUX
        QVERIFY(compareText(
            failureOf([] { writeFile(u"/dev/full"_s, "text", OutputFile::Care::Quick); }),
            u"「/dev/full」に書き込めません。"
            u"ファイルを開けないか、読み書きに失敗しましたので、"
            u"通常のファイルであることと、ディスクやネットワークの接続を確認してからやり直してください。"_s));
#endif
    }

    void whatCannotBeReadIsTold()
    {
        QVERIFY(compareText(
            failureOf([&] { InputFile(path(u"none"_s)); }),
            u"「%1」を読み取れません。"
            u"ファイルが見つかりません。ファイルの場所と名前を確認してください。"_s.arg(path(u"none"_s))));
        QVERIFY(failureOf([&] {
                    InputFile{folder->path()};
                }).startsWith(u"「%1」を読み取れません。"_s.arg(folder->path())));
    }

    void linesOfAnyLengthAreRead()
    {
        const QByteArray longLine(1'000'000, 'x');
        writeContent(path(u"lines"_s), "a\n\n" + longLine + "\nlast");
        InputFile file(path(u"lines"_s));
        QByteArray line;
        QVERIFY(file.readLine(line) && file.lineEnded());
        QCOMPARE(line, QByteArray("a"));
        QVERIFY(file.readLine(line) && line.isEmpty());
        QVERIFY(file.readLine(line) && line == longLine);
        QVERIFY(file.readLine(line) && !file.lineEnded());
        QCOMPARE(line, QByteArray("last"));
        QVERIFY(!file.readLine(line));
        QCOMPARE(file.done(), file.size());
        QCOMPARE(file.sha256(),
                 QCryptographicHash::hash("a\n\n" + longLine + "\nlast", QCryptographicHash::Sha256).toHex());
    }
};

QTEST_GUILESS_MAIN(TestOutput)
#include "test_output.moc"
