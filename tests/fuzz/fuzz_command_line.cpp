// Words of the command line, one in each line.
#include "app/shell/command_line.h"
#include "tests/fuzz/fuzz.h"

using namespace quillon;
using namespace quillon::testing;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = textOf(data, size);
    const CommandLine line = parseCommandLine(text.isEmpty() ? QStringList() : text.split(u'\n'));
    require((line.request == CommandLine::Request::Refused) == !line.complaint.isEmpty(),
            "what is refused is told, and nothing else");
    require(line.request == CommandLine::Request::Run || !line.file, "only a run opens a file");
    return 0;
}
