#include "app/shell/command_line.h"

#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#ifdef Q_OS_WIN
#include <windows.h>

#include <array>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestCommandLine : public QObject
{
    Q_OBJECT

    using Request = CommandLine::Request;

    struct Run {
        int exitCode = -1;
        QString output;
        QString errors;
    };

    /// Runs the program where there is no display and no platform that could do without one.
    static Run runWithoutDisplay(const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
            environment.remove(name);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QString::fromUtf8(QUILLON_PROGRAM), arguments);
        Run run;
        if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
            run.exitCode = process.exitCode();
        run.output = QString::fromUtf8(process.readAllStandardOutput());
        run.errors = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

private Q_SLOTS:
    void nothingMeansAnEmptyRun()
    {
        const CommandLine commandLine = parseCommandLine({});
        QCOMPARE(commandLine.request, Request::Run);
        QVERIFY(!commandLine.file.has_value());
    }

    void namesKeepEveryCharacter_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("file");
        QTest::newRow("plain") << QStringList{u"QUILLON.mdb"_s} << u"QUILLON.mdb"_s;
        QTest::newRow("Japanese with blanks and quotes")
            << QStringList{u"知識 'の' \"庫\".mdb"_s} << u"知識 'の' \"庫\".mdb"_s;
        QTest::newRow("behind the end of options") << QStringList{u"--"_s, u"a.mdb"_s} << u"a.mdb"_s;
        QTest::newRow("leading dash") << QStringList{u"--"_s, u"-a.mdb"_s} << u"-a.mdb"_s;
        QTest::newRow("like an option") << QStringList{u"--"_s, u"--help"_s} << u"--help"_s;
        QTest::newRow("the end of options twice") << QStringList{u"--"_s, u"--"_s} << u"--"_s;
        QTest::newRow("options end behind the name") << QStringList{u"a.mdb"_s, u"--"_s} << u"a.mdb"_s;
        QTest::newRow("a lone dash") << QStringList{u"-"_s} << u"-"_s;
        QTest::newRow("nothing") << QStringList{QString()} << QString();
    }

    void namesKeepEveryCharacter()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, file);
        const CommandLine commandLine = parseCommandLine(arguments);
        QCOMPARE(commandLine.request, Request::Run);
        QVERIFY(commandLine.file.has_value());
        QCOMPARE(*commandLine.file, file);
    }

    void unknownOptionsAndSecondNamesAreRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("named");
        QTest::newRow("long") << QStringList{u"--unknown"_s} << u"--unknown"_s;
        QTest::newRow("short") << QStringList{u"-x"_s} << u"-x"_s;
        QTest::newRow("behind a name") << QStringList{u"a.mdb"_s, u"--full-screen"_s} << u"--full-screen"_s;
        QTest::newRow("the toolkit's own") << QStringList{u"-platform"_s, u"offscreen"_s} << u"-platform"_s;
        QTest::newRow("second name") << QStringList{u"a.mdb"_s, u"b.mdb"_s} << u"b.mdb"_s;
    }

    void theHomeFolderIsAskedForByItsOption()
    {
        QVERIFY(!parseCommandLine({u"a.mdb"_s}).atHome);
        const CommandLine commandLine = parseCommandLine({u"--home"_s, u"a.mdb"_s});
        QCOMPARE(commandLine.request, Request::Run);
        QVERIFY(commandLine.atHome);
        QCOMPARE(commandLine.file, u"a.mdb"_s);
        QVERIFY(parseCommandLine({u"--restore"_s, u"--home"_s}).atHome);
        QCOMPARE(parseCommandLine({u"--"_s, u"--home"_s}).file, u"--home"_s);
    }

#ifdef Q_OS_WIN
    void theSystemShowsALineOfTheLogAsItStands()
    {
        const QString program =
            QDir::toNativeSeparators(QFileInfo(QString::fromUtf8(QUILLON_PROGRAM)).absoluteFilePath());
        const HMODULE words = LoadLibraryExW(reinterpret_cast<const wchar_t*>(program.utf16()), nullptr,
                                             LOAD_LIBRARY_AS_DATAFILE);
        QVERIFY(words != nullptr);
        std::array<wchar_t, 100> shown{};
        std::array<DWORD_PTR, 1> lines{reinterpret_cast<DWORD_PTR>(L"一行 %1")};
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, words, 0, 0, shown.data(),
                       shown.size(), reinterpret_cast<va_list*>(lines.data()));
        FreeLibrary(words);
        QCOMPARE(QString::fromWCharArray(shown.data()), u"一行 %1\r\n"_s);
    }
#endif

    void theVersionIsThatOfTheBuild()
    {
        QVERIFY2(runWithoutDisplay({u"--version"_s}).output.contains(u"Ver." QUILLON_VERSION " "_s),
                 "titles::Version and the project's version differ");
    }

    void unknownOptionsAndSecondNamesAreRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, named);
        const CommandLine commandLine = parseCommandLine(arguments);
        QCOMPARE(commandLine.request, Request::Refused);
        QVERIFY2(commandLine.complaint.contains(named), qPrintable(commandLine.complaint));
    }

    void helpIsAnsweredWithoutADisplay()
    {
        for (const QString& option : {u"--help"_s, u"-h"_s}) {
            const Run run = runWithoutDisplay({option});
            QCOMPARE(run.exitCode, 0);
            QVERIFY2(run.output.contains(u"使い方"_s), qPrintable(run.output));
            QVERIFY(run.output.contains(u"--version"_s));
            QCOMPARE(run.errors, QString());
        }
    }

    void theVersionIsAnsweredWithoutADisplay()
    {
        const Run run = runWithoutDisplay({u"--version"_s});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.output.split(u'\n');
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines[0], u"Quillon System Ver.1.30 (Ver.2.00β)"_s);
        QVERIFY2(QRegularExpression(u"^コミット: ([0-9a-f]{7,}\\+?|不明)$"_s).match(lines[1]).hasMatch(),
                 qPrintable(lines[1]));
        QCOMPARE(lines[2], u"Qt: "_s + QString::fromLatin1(qVersion()));
        QVERIFY2(QRegularExpression(u"^SQLite: 3\\.[0-9]+\\.[0-9]+$"_s).match(lines[3]).hasMatch(),
                 qPrintable(lines[3]));
        QCOMPARE(lines[4], QString());
        QCOMPARE(run.errors, QString());
    }

    void anUnknownOptionIsRefusedWithoutADisplay()
    {
        const Run run = runWithoutDisplay({u"--不明"_s});
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.output, QString());
        QVERIFY2(run.errors.contains(u"--不明"_s), qPrintable(run.errors));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_command_line.moc"
