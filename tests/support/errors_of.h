#pragma once

#include "app/base/error.h"

namespace quillon::testing
{

/// The number of the failure that an action ends in, 0 when it succeeds.
template <class Action> qint32 errorOf(Action&& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.number;
    }
    return 0;
}

} // namespace quillon::testing
