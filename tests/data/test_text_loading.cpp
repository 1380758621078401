#include "tests/data/form_world.h"
#include "tests/support/compare_text.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Before = u"前の内容"_s;
const MessageBox AskUpdate{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel};
const QString TooLarge =
    u"ファイルが大きすぎて読み込めません。"
    u"文献の内容に読み込めるのは全角で32,768文字までです。ファイルを分割してください。"_s;

/// What the window asks the file dialog; `proposed` is the name chosen before.
FileDialog asked(const QString& proposed = {})
{
    return {.purpose = FileDialog::Purpose::Open,
            .filter = u"ﾃｷｽﾄﾌｧｲﾙ (*.txt)|*.txt"_s,
            .fileName = proposed,
            .folder = {},
            .promptBeforeOverwriting = false};
}

} // namespace

class TestTextLoading : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;
    frmRefDoc* form = nullptr;

    QString pathOf(const QString& name) const { return world->folder.filePath(name); }
    QString write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(pathOf(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write a test file");
        return file.fileName();
    }
    /// Chooses the menu entry and a file; nothing as `path` cancels the dialog.
    void load(const std::optional<QString>& path, const QString& proposed = {}) const
    {
        world->dialogs.expect(asked(proposed), path);
        QVERIFY(FormWorld::choose(*form, u"mnuDataLoadText"_s));
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<FormWorld>();
        world->add(u"本"_s, Book, Before);
        form = &world->show<frmRefDoc>(Book);
    }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void textIsLoadedInItsEncoding_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("code page 932") << QByteArray("\x93\xfa\x96\x7b\r\n\xb1") << u"日本\r\nｱ"_s;
        QTest::newRow("extensions of 932") << QByteArray("\x87\x40\xfa\x40") << u"①ⅰ"_s;
        QTest::newRow("ASCII") << QByteArray("a\\b~\n") << u"a\\b~\n"_s;
        QTest::newRow("UTF-8 with its mark") << QByteArray("\xef\xbb\xbf日本😀") << u"日本😀"_s;
        QTest::newRow("UTF-8 without a mark") << QByteArray("日本語の文書です。") << u"日本語の文書です。"_s;
        QTest::newRow("UTF-16, low byte first") << QByteArray("\xff\xfe\xe5\x65\x2c\x67") << u"日本"_s;
        QTest::newRow("UTF-16, high byte first") << QByteArray("\xfe\xff\x65\xe5\x67\x2c") << u"日本"_s;
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("several lines, the last without an end")
            << QByteArray("a\r\n\r\nb\rc\nd") << u"a\r\n\r\nb\rc\nd"_s;
    }

    void textIsLoadedInItsEncoding()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        load(write(u"文書.txt"_s, bytes));
        QVERIFY(compareText(form->fieldText(2), text));
    }

    void loadedTextIsAnUnsavedChange()
    {
        load(write(u"a.txt"_s, "new"));
        QCOMPARE(form->modeText(), u"表示モード"_s);
        QCOMPARE(world->documents(), QStringList({u"本|R-991231-001|"_s + Before}));
        world->dialogs.expect(AskUpdate, Answer::No);
        QVERIFY(FormWorld::closes(*form));
    }

    void textCanBeLoadedWhileRegistering()
    {
        form = &world->beginRegistration<frmRefDoc>();
        load(write(u"a.txt"_s, "new"));
        QCOMPARE(form->fieldText(2), u"new"_s);
        QCOMPARE(form->modeText(), u"登録モード"_s);
        FormWorld::enter(FormWorld::name(*form), u"紙"_s);
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        QCOMPARE(world->documents().last(), u"紙|R-991231-002|new"_s);
    }

    void loadedTextIsSavedToTheLastLineBreak()
    {
        load(write(u"a.txt"_s, "a\r\nb\rc\n\r\n"));
        world->dialogs.expect(
            MessageBox{.text = u"本データを更新しました。"_s, .title = u"Quillon 文献データ管理部"_s});
        QVERIFY(FormWorld::choose(*form, u"mnuDataUpdate"_s));
        QCOMPARE(world->documents(), QStringList({u"本|R-991231-001|a\r\nb\rc\n\r\n"_s}));
    }

    void cancelledDialogIsSilentAtFirst()
    {
        load(std::nullopt);
        QCOMPARE(form->fieldText(2), Before);
        QVERIFY(FormWorld::closes(*form));
    }

    void cancelledDialogLoadsTheLastFileAgain()
    {
        const QString path = write(u"a.txt"_s, "one");
        load(path);
        write(u"a.txt"_s, "two");
        FormWorld::enter(FormWorld::definition(*form), u"typed"_s);
        load(std::nullopt, path);
        QCOMPARE(form->fieldText(2), u"two"_s);
        QVERIFY(QFile::remove(path));
        FormWorld::enter(FormWorld::definition(*form), u"typed"_s);
        load(std::nullopt, path); // gone: nothing happens
        QCOMPARE(form->fieldText(2), u"typed"_s);
    }

    void whatWasLoadedOverComesBack()
    {
        const QString path = write(u"a.txt"_s, "one\r\ntwo");
        load(path);
        FormWorld::enter(FormWorld::definition(*form), u"typed"_s);
        load(std::nullopt, path); // cancelled: the file is loaded again
        QCOMPARE(form->fieldText(2), u"one\r\ntwo"_s);
        const auto undo = [this] {
            QTest::keyClick(&FormWorld::definition(*form), Qt::Key_Z, Qt::ControlModifier);
        };
        undo();
        QCOMPARE(form->fieldText(2), u"typed"_s);
        undo();
        QCOMPARE(form->fieldText(2), u"one\r\ntwo"_s);
        undo();
        QCOMPARE(form->fieldText(2), Before);
        QVERIFY(FormWorld::closes(*form)); // nothing has changed
    }

    void eachWindowRemembersItsOwnFile()
    {
        load(write(u"a.txt"_s, "one"));
        form = &world->beginRegistration<frmRefDoc>();
        load(std::nullopt);
        QCOMPARE(form->fieldText(2), QString());
    }

    void missingFileIsSilent()
    {
        load(pathOf(u"missing.txt"_s));
        load(pathOf(u"missing/a.txt"_s), pathOf(u"missing.txt"_s));
        QCOMPARE(form->fieldText(2), Before);
        QVERIFY(world->eventLog.lines.isEmpty());
    }

    void largestTextIsLoaded_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("full-width in 932") << QByteArray("\x93\xfa").repeated(32768);
        QTest::newRow("half-width") << QByteArray(65536, 'a');
        QTest::newRow("half-width kana in UTF-8")
            << ("\xef\xbb\xbf" + QByteArray("\xef\xbd\xb1").repeated(65536));
        QTest::newRow("full-width in UTF-16") << ("\xff\xfe" + QByteArray("\xe5\x65").repeated(32768));
    }

    void largestTextIsLoaded()
    {
        QFETCH(QByteArray, bytes);
        load(write(u"large.txt"_s, bytes));
        form->ShowInputCount(2);
        QCOMPARE(FormWorld::panel(*form, 2), u"文献：残り全角0文字"_s);
    }

    void largerTextIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("one byte more") << QByteArray(65537, 'a');
        QTest::newRow("full-width in 932") << (QByteArray("\x93\xfa").repeated(32768) + "a");
        QTest::newRow("full-width in UTF-16") << ("\xff\xfe" + QByteArray("\xe5\x65").repeated(32769));
        QTest::newRow("much more") << QByteArray(10'000'000, 'a');
    }

    void largerTextIsRefused()
    {
        QFETCH(QByteArray, bytes);
        const QString path = pathOf(u"large.txt"_s);
        write(u"large.txt"_s, bytes);
        world->dialogs.expect(asked(), path);
        world->dialogs.expect(untrapped(TooLarge));
        QVERIFY(FormWorld::choose(*form, u"mnuDataLoadText"_s));
        QVERIFY(world->loggedUnder(u"mnuDataLoadText_Click"_s, 6));
        QCOMPARE(form->fieldText(2), Before);
    }

    void whatCannotBeReadIsRefused_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("folder") << u"folder"_s;
#ifdef Q_OS_UNIX
        QTest::newRow("pipe") << u"pipe"_s;
        QTest::newRow("device") << u"/dev/zero"_s;
        QTest::newRow("file that fails in being read") << u"/proc/self/mem"_s;
#endif
    }

    void whatCannotBeReadIsRefused()
    {
        QFETCH(QString, kind);
        const QString path = kind.startsWith(u'/') ? kind : pathOf(kind);
        if (kind == u"folder"_s)
            QVERIFY(QDir().mkdir(path));
#ifdef Q_OS_UNIX
        if (kind == u"pipe"_s)
            QCOMPARE(mkfifo(path.toLocal8Bit().constData(), 0600), 0);
#endif
        world->dialogs.expect(asked(), path);
        world->dialogs.expect(untrapped(75));
        QVERIFY(FormWorld::choose(*form, u"mnuDataLoadText"_s));
        QVERIFY(world->loggedUnder(u"mnuDataLoadText_Click"_s, 75));
        QCOMPARE(form->fieldText(2), Before);
    }

    void fileWithoutPermissionIsRefused()
    {
#ifdef Q_OS_UNIX
        const QString path = write(u"secret.txt"_s, "secret");
        QVERIFY(QFile::setPermissions(path, {}));
        // The administrator may read everything, so it is someone else who tries.
        const bool administrator = geteuid() == 0;
        if (administrator) {
            QCOMPARE(chmod(world->folder.path().toLocal8Bit().constData(), 0755), 0);
            QCOMPARE(seteuid(65534), 0);
        }
        world->dialogs.expect(asked(), path);
        world->dialogs.expect(untrapped(70));
        const bool chosen = FormWorld::choose(*form, u"mnuDataLoadText"_s);
        if (administrator)
            QCOMPARE(seteuid(0), 0);
        QVERIFY(chosen);
        QVERIFY(world->loggedUnder(u"mnuDataLoadText_Click"_s, 70));
        QCOMPARE(form->fieldText(2), Before);
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }
};

QTEST_MAIN(TestTextLoading)
#include "test_text_loading.moc"
