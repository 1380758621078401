#include "app/shell/command_line.h"
#include "app/shell/frmSplash.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"

#include <QProcess>
#include <QProgressBar>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What the program says before there is a main window, letter for letter.
class TestStartTexts : public QObject
{
    Q_OBJECT

    /// What the program prints on a channel.
    static QString printed(const QStringList& arguments, QProcess::ProcessChannel channel)
    {
        QProcess process;
        process.start(QString::fromUtf8(QUILLON_PROGRAM), arguments);
        if (!process.waitForFinished())
            return process.errorString();
        process.setReadChannel(channel);
        return QString::fromUtf8(process.readAll());
    }

private Q_SLOTS:
    void helpTellsTheUseAndEveryOption()
    {
        QVERIFY(compareText(
            printed({u"--help"_s}, QProcess::StandardOutput),
            u"使い方: quillon [オプション] [--] [ファイル]\n"
            "\n"
            "自己教育的データベース管理システム Quillon を起動します。\n"
            "ファイルを指定すると、メイン画面を表示した後でそのデータベースを展開します。\n"
            "ファイルデータはカレントフォルダ (--home のときは作業フォルダ) 内の RefFile フォルダに\n"
            "置かれます。\n"
            "\n"
            "オプション:\n"
            "  --home        作業フォルダで起動します。作業フォルダは、環境変数 QUILLON_HOME、\n"
            "                なければ書類フォルダ内の Quillon で、最初に使うときに作成します\n"
            "  --restore     失われたデータを戻す画面を開きます\n"
            "  -h, --help    この説明を表示して終了します\n"
            "  --version     版を表示して終了します\n"
            "  --            以降の語をすべてファイル名として扱います\n"));
    }

    void complaintNamesWhatIsWrong()
    {
        QVERIFY(compareText(parseCommandLine({u"--full-screen"_s}).complaint,
                            u"不明なオプションです: --full-screen"));
        QVERIFY(compareText(parseCommandLine({u"水.mdb"_s, u"火.mdb"_s}).complaint,
                            u"ファイルは一つだけ指定できます: 火.mdb"));
    }

    void refusalPointsToTheHelp()
    {
        QVERIFY(compareText(printed({u"-x"_s}, QProcess::StandardError),
                            u"quillon: 不明なオプションです: -x\n"
                            "使い方は quillon --help で表示されます。\n"));
    }

    void progressOfTheSplashIsNamedForScreenReaders()
    {
        WindowWorld world;
        const auto splash = std::make_unique<frmSplash>(world.session(), world.program.windows());
        const auto* progress = WindowWorld::control<QProgressBar>(*splash, u"pgbSplash"_s);
        QVERIFY(compareText(progress->accessibleName(), u"起動の進み具合"));
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }
};

QTEST_MAIN(TestStartTexts)
#include "test_start_texts.moc"
