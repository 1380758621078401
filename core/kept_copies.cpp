#include "core/kept_copies.h"

#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "store/keeper.h"
#include "store/session.h"

#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::vector<kept::Copy> ListCopies(Session& session, const QString& database)
{
    if (session.keeper == nullptr)
        return {};
    return kept::listCopies(kept::Place(session.keeper->keptFolder(), database));
}

bool TakeOutCopy(Session& session, const kept::Copy& copy, const QString& newFile)
{
    bool isTakenOut = false;
    guarded(session.reporting, u"TakeOutCopy"_s, [&] {
        if (session.files.entryExists(newFile))
            throw Error(errors::DatabaseExists);
        if (!kept::isUnharmed(copy))
            throw Error(
                errors::NotADatabase,
                u"控え「%1」は失われているか、壊れています。別の控えを指定してください。"_s.arg(copy.path));
        const QFileInfo target(newFile);
        const auto written = session.files.stageCopy(copy.path, target.absolutePath(), target.fileName(), {});
        written->place({});
        written->keep();
        isTakenOut = true;
    });
    return isTakenOut;
}

} // namespace quillon
