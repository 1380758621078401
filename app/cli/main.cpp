#include "app/base/platform/command_line.h"
#include "app/base/platform/terminal.h"
#include "app/cli/run.h"

int main(int argc, char** argv)
{
    quillon::platform::noteInterruptions();
    return quillon::cli::runCommand(quillon::platform::arguments(argc, argv).mid(1));
}
