#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reader/ExtractaViewData.h"

namespace velextracta {

/// A net and how many connectivity records it has.
struct RankedNet {
    std::uint64_t recordCount = 0;
    std::string netName;
};

/// The nets of a survey, most records first; of nets with equally many, the one whose name is
/// byte-wise greater first. Throws ExtractaParserException, naming the surveyed file, when it has
/// no NET_NAME column or one of its records ends before that column.
std::vector<RankedNet> rankNets(const ExtractaViewData& survey, const std::string& path);

}  // namespace velextracta
