#include "core/close_all_form.h"

#include "app/base/ports/windows.h"
#include "app/base/reporting.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void CloseAllForm(Session& session)
{
    guarded(session.reporting, u"CloseAllForm"_s, [&] {
        const auto windows = session.windows.loaded().size();
        for (std::size_t round = 1; round < windows; ++round) {
            const auto loaded = session.windows.loaded();
            if (loaded.size() < 2)
                return; // a window has taken others with it
            // sic: always the second window, not the next one. The list closes up after each that goes.
            loaded[1]->unload();
        }
    });
}

} // namespace quillon
