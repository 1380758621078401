#include "app/cli/line_dialogs.h"

#include "app/base/error.h"
#include "app/base/platform/event_log.h"
#include "app/base/platform/terminal.h"
#include "app/cli/columns.h"
#include "app/cli/output.h"

#include <QCoreApplication>

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

bool isAtTerminal()
{
    return platform::isTerminal(platform::Stream::Input) && platform::isTerminal(platform::Stream::Errors);
}

/// Asks the person. Anything but a yes is a no.
bool asksYes(const QString& question)
{
    static_cast<void>(platform::writeTo(platform::Stream::Errors, (question + u" [y/N] "_s).toUtf8()));
    constexpr qsizetype Most = 1024;
    const QString answer =
        QString::fromUtf8(platform::readInput(Most).value_or(QByteArray())).trimmed().toLower();
    return answer == u"y" || answer == u"yes" || answer == u"はい";
}

} // namespace

Answer LineDialogs::messageBox(const MessageBox& box)
{
    const QString text = printedLines(box.text);
    if (box.buttons == Buttons::Ok) {
        tell(text);
        return Answer::Ok;
    }
    const bool choosesOk = box.buttons == Buttons::OkCancel;
    const Answer yes = choosesOk ? Answer::Ok : Answer::Yes;
    if (m_saysYes)
        return yes;
    if (isAtTerminal()) {
        m_statusOfNo = Status::NothingFound;
        if (asksYes(text))
            return yes;
    } else {
        m_statusOfNo = Status::Refused;
        tell(text + u"\n実行するには --yes を指定してください。"_s);
    }
    return choosesOk ? Answer::Cancel : Answer::No;
}

std::optional<QString> LineDialogs::inputBox(const InputBox&)
{
    return std::nullopt;
}

std::optional<QString> LineDialogs::fileDialog(const FileDialog&)
{
    return std::nullopt;
}

void LineLog::write(const QString& line)
{
    // Only whoever has something to log needs to know where the program lies, which costs some time.
    std::array<char, 12> name = {"quillon-cli"};
    std::array<char*, 1> words = {name.data()};
    int count = static_cast<int>(words.size());
    const QCoreApplication application(count, words.data());
    platform::writeEventLog(line, QCoreApplication::applicationDirPath());
}

Status LineLog::takeStatus(Status otherwise)
{
    const qint32 failure = std::exchange(m_lastFailure, 0);
    return failure != 0 ? statusOf(failure) : otherwise;
}

DataWindow& NoWindows::newDataWindow(const QString&)
{
    throw Error(errors::ObjectNotSet);
}

DataWindow& NoWindows::registrationWindow(const QString&)
{
    throw Error(errors::ObjectNotSet);
}

DataSelection& NoWindows::dataSelection()
{
    throw Error(errors::ObjectNotSet);
}

CategoryChooser& NoWindows::categoryChooser()
{
    throw Error(errors::ObjectNotSet);
}

LinkListWindow& NoWindows::linkList()
{
    throw Error(errors::ObjectNotSet);
}

void NoWindows::showAuxiliary(const QString&)
{
    throw Error(errors::ObjectNotSet);
}

} // namespace quillon::cli
