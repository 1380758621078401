#include "exchange/progress.h"

#include "exchange/refused.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

Cancelled::Cancelled() : Refused(u"中止しました。何も書き込んでいません。"_s) {}

void advance(Progress* progress, qint64 done, qint64 whole)
{
    if (progress == nullptr)
        return;
    progress->at(done, whole);
    if (progress->cancelled())
        throw Cancelled();
}

} // namespace quillon::exchange
