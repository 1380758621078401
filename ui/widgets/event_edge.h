#pragma once

#include "app/base/reporting.h"

#include <QString>

#include <new>
#include <utility>

namespace quillon
{

/// The one way from a Qt event to a handler of the program: a failure that the handler does not trap is shown and
/// logged under the handler's name, and the program goes on. Neither an `Error` nor a lack of memory ever leaves a slot
/// or an event function.
template <class Handler> void handleEvent(Reporting& reporting, const QString& name, Handler&& handler)
{
    const OperationAtWork atWork(reporting, name, OperationAtWork::Inside::HasOwnName);
    try {
        std::forward<Handler>(handler)();
    } catch (const Error& error) {
        reportUntrapped(reporting, error, name);
    } catch (const std::bad_alloc&) {
        reportUntrapped(reporting, Error(errors::OutOfMemory), name);
    }
}

/// A slot for `connect` that runs `handler` through `handleEvent`; arguments of the signal are passed on as far as
/// the handler takes them by being a generic callable without parameters: they are dropped.
template <class Handler> auto eventSlot(Reporting& reporting, const QString& name, Handler handler)
{
    return
        [&reporting, name, handler = std::move(handler)]() mutable { handleEvent(reporting, name, handler); };
}

} // namespace quillon
