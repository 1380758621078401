#pragma once

#include "app/base/error.h"

#include <QString>

#include <utility>

namespace quillon::exchange
{

/// What is to come in or go out cannot be taken as it is. Nothing has been written.
struct Refused : Error {
    explicit Refused(QString text) : Error(errors::InvalidArgument, std::move(text)) {}
};

/// The person has ended it. Nothing has been written.
struct Cancelled : Refused {
    Cancelled();
};

} // namespace quillon::exchange
