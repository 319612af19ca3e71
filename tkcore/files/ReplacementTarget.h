#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "tkcore/files/LongFileName.h"

// What ReplacementFile builds on.

namespace tkcore {

/// The file while it is not in place, and the place. Every failure is a std::system_error that
/// names the path. Destroyed before putInPlace() has succeeded, it leaves no trace.
class ReplacementTarget {
public:
    ReplacementTarget() = default;
    virtual ~ReplacementTarget() = default;
    ReplacementTarget(const ReplacementTarget&) = delete;
    ReplacementTarget& operator=(const ReplacementTarget&) = delete;

    virtual void writeAt(std::uint64_t offset, const char* data, std::size_t size) = 0;
    virtual void bringToDisk() = 0;
    /// Where nothing was at first, nothing is replaced. Between the last look at the place and its
    /// taking the action is called, whose exceptions pass through.
    virtual void putInPlace(const std::function<void()>& beforeIt) = 0;
};

std::unique_ptr<ReplacementTarget> openReplacementTarget(const LongFileName& path);

/// How many of them are tried where a file of the name is there.
inline constexpr int kMostNames = 100;

/// A hidden name of fixed length: one made from the file's own name could grow too long.
std::string randomHiddenName();

}  // namespace tkcore
