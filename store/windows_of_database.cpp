#include "store/windows_of_database.h"

#include "app/base/ports/windows.h"
#include "store/session.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Does something with each of the windows that are loaded now and still are when their turn comes; ends with false as
/// soon as that is the answer.
template <class Operation> bool forEachLoaded(Session& session, Operation&& operation)
{
    const auto now = session.windows.loaded();
    return std::all_of(now.begin(), now.end(), [&](LoadedWindow* const window) {
        const auto loaded = session.windows.loaded();
        const bool stillThere = std::find(loaded.begin(), loaded.end(), window) != loaded.end();
        return !stillThere || operation(*window);
    });
}

} // namespace

bool CloseDataWindows(Session& session)
{
    const auto isMeant = [](LoadedWindow& window) { return window.asDataWindow() != nullptr; };
    // No window goes before all have answered: what one of them was to throw away is still there when another stays.
    if (!forEachLoaded(session, [&](LoadedWindow& window) { return !isMeant(window) || window.mayUnload(); }))
        return false;
    return forEachLoaded(session, [&](LoadedWindow& window) {
        if (isMeant(window))
            window.unloadAnswered();
        return true;
    });
}

void closeListsOfData(Session& session)
{
    static const QStringList names = {u"frmDataSelect"_s, u"frmLinkList"_s, u"frmCategory"_s,
                                      u"frmEntryInfo"_s};
    forEachLoaded(session, [](LoadedWindow& window) {
        return !names.contains(window.windowName()) || window.unload();
    });
}

} // namespace quillon
