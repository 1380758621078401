#pragma once

#include "exchange/all_data.h"

#include <QString>

#include <cstddef>
#include <utility>
#include <vector>

namespace quillon::exchange
{

/// A datum with what it is linked with, in either direction, and what these are linked with.
struct Neighbourhood {
    /// Of each, where it stands: the datum itself first, then the nearer ones; each only once.
    struct Member {
        std::size_t position = 0; // in all data
        int distance = 0;
    };
    std::vector<Member> members;
    std::vector<std::pair<std::size_t, std::size_t>> links; // between members, by their place in the list
    std::size_t leftOut = 0;                                // too many to be drawn
};

Neighbourhood neighbourhoodOf(const AllData& all, std::size_t position);

/// Draws it. The same data make the same picture.
QString pictureOf(const AllData& all, const Neighbourhood& neighbourhood);

} // namespace quillon::exchange
