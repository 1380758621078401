#include "app/shell/command_line.h"

#include "app/base/platform/terminal.h"
#include "app/base/titles.h"
#include "store/build_info.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int Success = 0;
constexpr int WrongUse = 2;

const char* const Help = R"(使い方: quillon [オプション] [--] [ファイル]

自己教育的データベース管理システム Quillon を起動します。
ファイルを指定すると、メイン画面を表示した後でそのデータベースを展開します。
ファイルデータはカレントフォルダ (--home のときは作業フォルダ) 内の RefFile フォルダに
置かれます。

オプション:
  --home        作業フォルダで起動します。作業フォルダは、環境変数 QUILLON_HOME、
                なければ書類フォルダ内の Quillon で、最初に使うときに作成します
  --restore     失われたデータを戻す画面を開きます
  -h, --help    この説明を表示して終了します
  --version     版を表示して終了します
  --            以降の語をすべてファイル名として扱います
)";

CommandLine refused(const QString& complaint)
{
    return {.request = CommandLine::Request::Refused, .complaint = complaint};
}

void print(platform::Stream stream, const QByteArray& text)
{
    // Where nothing can be written, nothing can be said about it either.
    static_cast<void>(platform::writeTo(stream, text));
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    CommandLine commandLine;
    bool optionsEnded = false;
    for (const QString& argument : arguments) {
        // A lone dash is a name like any other: nothing is ever read from the standard input.
        const bool isOption = !optionsEnded && argument.size() > 1 && argument.startsWith(u'-');
        if (!isOption) {
            if (commandLine.file)
                return refused(u"ファイルは一つだけ指定できます: %1"_s.arg(argument));
            commandLine.file = argument;
        } else if (argument == u"--"_s) {
            optionsEnded = true;
        } else if (argument == u"--home"_s) {
            commandLine.atHome = true;
        } else if (argument == u"--restore"_s) {
            commandLine.restores = true;
        } else if (argument == u"--help"_s || argument == u"-h"_s) {
            return {.request = CommandLine::Request::Help};
        } else if (argument == u"--version"_s) {
            return {.request = CommandLine::Request::Version};
        } else {
            return refused(u"不明なオプションです: %1"_s.arg(argument));
        }
    }
    return commandLine;
}

int answerOnTerminal(const CommandLine& commandLine)
{
    platform::joinTerminal();
    switch (commandLine.request) {
    case CommandLine::Request::Run:
        break;
    case CommandLine::Request::Help:
        print(platform::Stream::Output, Help);
        break;
    case CommandLine::Request::Version:
        print(platform::Stream::Output, versionLines(titles::Application).toUtf8());
        break;
    case CommandLine::Request::Refused:
        print(platform::Stream::Errors,
              "quillon: " + commandLine.complaint.toUtf8() + "\n使い方は quillon --help で表示されます。\n");
        return WrongUse;
    }
    return Success;
}

} // namespace quillon
