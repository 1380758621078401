#include "tests/support/console_calls.h"

// The calls of the system in it are those above.
#include "app/base/platform/windows/terminal.cpp" // NOLINT(bugprone-suspicious-include)

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::platform;
using quillon::testing::Console;

/// What the command line program makes of what a console of Windows answers.
class TestWindowsConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init()
    {
        Console::present() = {};
        interrupted = false;
        inputBrokenOff = false;
    }

    void whatIsTypedIsRead()
    {
        Console::present().typed = u"水\r\n"_s;
        QCOMPARE(readInput(100), std::optional(QByteArray("\xE6\xB0\xB4\r\n")));
        QVERIFY(!wasInterrupted());
    }

    void theEndOfTheInputIsNoInterruption()
    {
        SetLastError(ERROR_OPERATION_ABORTED); // of something before
        Console::present().typed = u"\x1A\r\n"_s;
        QCOMPARE(readInput(100), std::optional(QByteArray()));
        Console::present().typed = QString();
        QCOMPARE(readInput(100), std::optional(QByteArray()));
        QVERIFY(!wasInterrupted());
    }

    void anInterruptionIsNoEndOfTheInput()
    {
        Console::present().isInterrupted = true;
        QVERIFY(!readInput(100));
        QVERIFY(wasInterrupted()); // although the system's thread has not come yet
        // When it comes, this is still the first one.
        QVERIFY(noteInterruption(CTRL_C_EVENT));
        QVERIFY(!noteInterruption(CTRL_C_EVENT));
    }

    void escapeSequencesAreAskedForAndGivenUpAgain()
    {
        const DWORD before = Console::present().mode;
        QVERIFY(takesEscapeSequences(Stream::Output));
        QCOMPARE(Console::present().mode, before | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        QVERIFY(takesEscapeSequences(Stream::Errors)); // the same console
        {
            FormerModes former;
            former.keep(nullptr, before);
        }
        QCOMPARE(Console::present().mode, before);
    }

    void aConsoleMayTakeNone()
    {
        Console::present().isOld = true;
        const DWORD before = Console::present().mode;
        QVERIFY(!takesEscapeSequences(Stream::Output));
        QCOMPARE(Console::present().mode, before);
    }

    void whatIsNoConsoleTakesNone()
    {
        Console::present().isThere = false;
        QVERIFY(!takesEscapeSequences(Stream::Output));
    }
};

QTEST_GUILESS_MAIN(TestWindowsConsole)
#include "test_windows_console.moc"
