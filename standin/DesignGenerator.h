#pragma once

#include <cstdint>
#include <functional>

#include "standin/Database.h"

namespace standin {

struct DesignSize {
    std::uint64_t nets = 200;       // 0: every record is unnamed
    std::uint64_t records = 20000;  // rows of CONNECTIVITY, and as many of FULL_GEOMETRY
    std::uint64_t seed = 1;
    bool oddNames = false;  // adds nets with names that are hard to handle, among the largest
};

inline constexpr std::uint64_t kMostNets = 100'000;
inline constexpr std::uint64_t kMostRecords = 1'000'000'000;

// Fills an empty database with a made-up package. The same size gives the same rows on every
// machine. Calls progress now and then with the number of records written; its exceptions pass
// through.
void generateDesign(Database& database, const DesignSize& size,
                    const std::function<void(std::uint64_t)>& progress);

}  // namespace standin
