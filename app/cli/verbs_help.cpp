#include "app/cli/completions.h"
#include "app/cli/help.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

Status help(Run& run)
{
    const QString name = run.arguments.words.join(u' ');
    const Verb* const verb = name.isEmpty() ? nullptr : verbNamed(name);
    if (!name.isEmpty() && verb == nullptr)
        throw WrongUsage{u"不明なコマンドです: %1"_s.arg(name), nullptr};
    printHelp(verb);
    return Status::Done;
}

Status completion(Run& run)
{
    run.output.write(completionFor(run.arguments.words.first()));
    return Status::Done;
}

} // namespace quillon::cli
