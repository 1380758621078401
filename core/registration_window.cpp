#include "core/registration_window.h"

#include "app/base/ports/data_window.h"
#include "store/identifiers.h"
#include "store/session.h"

namespace quillon
{

DataWindow* newRegistration(Session& session, const QString& kind)
{
    DataWindow* const open = session.windows.loadedRegistrationWindow(kind);
    if (open != nullptr && !open->mayUnload()) {
        open->bringToFront();
        return nullptr;
    }
    // After the question: what was registered there has taken an identifier.
    const QString identifier = CreateObject_ID(session, kind);
    if (identifier.isEmpty())
        return nullptr;
    DataWindow& window = session.windows.registrationWindow(kind);
    if (open != nullptr) {
        window.setFieldText(0, {});
        window.setFieldText(2, {});
        window.setLinkRows({});
        window.setCategoryRows({});
    }
    window.setFieldText(1, identifier);
    return &window;
}

} // namespace quillon
