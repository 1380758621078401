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

/// Unloads the windows that `isMeant`, as long as they go; false when one stays.
template <class IsMeant> bool unloadThose(Session& session, IsMeant&& isMeant)
{
    for (LoadedWindow* const window : session.windows.loaded()) {
        const auto loaded = session.windows.loaded();
        const bool stillThere = std::find(loaded.begin(), loaded.end(), window) != loaded.end();
        if (stillThere && isMeant(*window) && !window->unload())
            return false;
    }
    return true;
}

} // namespace

bool CloseDataWindows(Session& session)
{
    return unloadThose(session, [](LoadedWindow& window) { return window.asDataWindow() != nullptr; });
}

void closeListsOfData(Session& session)
{
    static const QStringList names = {u"frmDataSelect"_s, u"frmLinkList"_s, u"frmCategory"_s,
                                      u"frmEntryInfo"_s};
    unloadThose(session, [](const LoadedWindow& window) { return names.contains(window.windowName()); });
}

} // namespace quillon
