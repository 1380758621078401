#include "app/shell/missing_parts.h"

#include "tests/support/scripted_dialogs.h"

#include <QDir>
#include <QFile>
#include <QFont>
#include <QLibraryInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString NoFontJapanese =
    u"日本語のフォントが見つからないため、文字を正しく表示できません。フォントを導入してから、"
    u"起動し直してください（Debian では fonts-noto-cjk パッケージなど）。"_s;
const QString NoFontEnglish =
    u"No Japanese font was found, so the texts cannot be read. Install one and start again "
    u"(on Debian, for example, the package fonts-noto-cjk)."_s;
const QString NoInputJapanese =
    u"入力メソッド「fcitx」の Qt 6 用の部品が見つからないため、日本語を入力できないことがあります。"
    u"部品を導入するか、環境変数 QT_IM_MODULE を直してください"
    u"（Debian では fcitx5-frontend-qt6 パッケージなど）。"_s;
const QString NoInputEnglish =
    u"The part of the input method \"fcitx\" for Qt 6 was not found, so Japanese may be impossible to type. "
    u"Install it or correct the environment variable QT_IM_MODULE (on Debian, for example, the package "
    u"fcitx5-frontend-qt6)."_s;

} // namespace

class TestMissingParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsMissingIsToldInWordsThatCanBeRead_data()
    {
        QTest::addColumn<bool>("japaneseFont");
        QTest::addColumn<QString>("inputMethod");
        QTest::addColumn<QString>("text");
        const QString gap = u"\r\n\r\n"_s;
        QTest::newRow("font") << true << QString() << NoFontJapanese + gap + NoFontEnglish;
        QTest::newRow("input method") << false << u"fcitx"_s << NoInputJapanese;
        QTest::newRow("both") << true << u"fcitx"_s
                              << NoFontJapanese + gap + NoFontEnglish + gap + NoInputJapanese + gap +
                                     NoInputEnglish;
    }

    void whatIsMissingIsToldInWordsThatCanBeRead()
    {
        QFETCH(bool, japaneseFont);
        QFETCH(QString, inputMethod);
        QFETCH(QString, text);
        ScriptedDialogs dialogs;
        dialogs.expect({.text = text, .title = u"Quillon システム運用部"_s});
        tellMissingParts(&dialogs, {.japaneseFont = japaneseFont, .inputMethod = inputMethod});
        QCOMPARE(dialogs.takeComplaints(), QStringList());
    }

    void whereNothingIsMissingNothingIsSaid()
    {
        // A Japanese font is among what the tests need, and this platform has no input methods.
        qputenv("QT_IM_MODULE", "nonexistent");
        const MissingParts missing = missingParts(QFont());
        qunsetenv("QT_IM_MODULE");
        QCOMPARE(missing, MissingParts());
        ScriptedDialogs dialogs;
        tellMissingParts(&dialogs, missing);
        QCOMPARE(dialogs.takeComplaints(), QStringList());
    }

    void aFolderOfKeptThingsThatCannotBeWrittenIsTold()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QString kept = file.fileName() + u"/kept"_s;
        ScriptedDialogs dialogs;
        dialogs.expect(
            {.text =
                 u"上書きまたは削除した内容と控えを残すフォルダ「%1」に書き込めません。このままでは、失われたデータを"
                 u"後で戻せません。アクセス権を確認するか、環境変数 QUILLON_COPIES で別の場所を指定してください。"_s
                     .arg(QDir::toNativeSeparators(kept)),
             .title = u"Quillon システム運用部"_s});
        tellUnwritableKeptFolder(&dialogs, kept);
        // Where it can be written, and where nothing is to be kept, there is nothing to tell.
        tellUnwritableKeptFolder(&dialogs, folder.filePath(u"a/b"_s));
        tellUnwritableKeptFolder(&dialogs, std::nullopt);
        // A run that nobody has started from a menu has no box.
        tellUnwritableKeptFolder(nullptr, kept);
        tellMissingParts(nullptr, {.japaneseFont = true, .inputMethod = u"nonexistent"_s});
        QCOMPARE(dialogs.takeComplaints(), QStringList());
    }

    void aWordForNoInputMethodNeedsNone()
    {
        QVERIFY(hasInputMethod(u"none"_s, {}));
        QVERIFY(hasInputMethod(u"simple"_s, {}));
        QVERIFY(!hasInputMethod(u"ibus"_s, {}));
    }

#ifdef Q_OS_LINUX
    void anInputMethodIsFoundByTheKeysOfItsPlugin()
    {
        const QStringList folders{u"/nowhere"_s, QLibraryInfo::path(QLibraryInfo::PluginsPath)};
        QVERIFY(hasInputMethod(u"ibus"_s, folders));
        QVERIFY(hasInputMethod(u"IBus"_s, folders));
        QVERIFY(hasInputMethod(u"xim"_s, folders)); // a second key of the plugin for composed characters
        QVERIFY(!hasInputMethod(u"nonexistent"_s, folders));
    }

    void aSystemWithoutFontsIsToldOnTheErrorStream()
    {
        QTemporaryDir empty;
        QVERIFY(empty.isValid());
        QFile settings(empty.filePath(u"fonts.conf"_s));
        QVERIFY(settings.open(QIODevice::WriteOnly));
        QVERIFY(settings.write("<fontconfig><dir>" + QFile::encodeName(empty.path()) +
                               "</dir></fontconfig>") > 0);
        settings.close();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"FONTCONFIG_FILE"_s, settings.fileName());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(empty.path());
        process.start(QString::fromUtf8(QUILLON_PROGRAM), {});
        process.setReadChannel(QProcess::StandardError);
        QByteArray said;
        while (!said.contains("fonts-noto-cjk).\n") && process.waitForReadyRead())
            said += process.readAll();
        process.kill(); // its box waits for a person
        process.waitForFinished();
        QVERIFY2(QString::fromUtf8(said).contains(NoFontJapanese), said.constData());
        QVERIFY2(QString::fromUtf8(said).contains(NoFontEnglish), said.constData());
    }

    void withoutADisplayTheProgramEndsWithASentence_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("waylandDisplay");
        QTest::addColumn<QString>("advice");
        QTest::newRow("X11") << u"xcb"_s << QString() << u"デスクトップの中で起動してください。"_s;
        QTest::newRow("Wayland")
            << u"no-such-platform"_s << u"wayland-0"_s
            << u"Wayland のデスクトップでは Qt 6 の Wayland プラグインが必要です（Debian では qt6-wayland パッケージ）。"_s;
    }

    void withoutADisplayTheProgramEndsWithASentence()
    {
        QFETCH(QString, platform);
        QFETCH(QString, waylandDisplay);
        QFETCH(QString, advice);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"DISPLAY"_s);
        environment.insert(u"WAYLAND_DISPLAY"_s, waylandDisplay);
        environment.insert(u"QT_QPA_PLATFORM"_s, platform);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QString::fromUtf8(QUILLON_PROGRAM), {});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        const QString said = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(said.endsWith(u"quillon: 画面に接続できないため、起動できませんでした。"_s + advice + u'\n'),
                 qPrintable(said));
    }
#endif
};

QTEST_MAIN(TestMissingParts)
#include "test_missing_parts.moc"
