#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "tkcore/files/LongFileName.h"

// The part of ReplacementFile that depends on the system.

namespace tkcore {

/// The file while it is not in place, and the place. Every failure is a std::system_error that
/// names the path. Without a successful putInPlace() it leaves no trace.
class ReplacementTarget {
public:
    ReplacementTarget() = default;
    virtual ~ReplacementTarget() = default;
    ReplacementTarget(const ReplacementTarget&) = delete;
    ReplacementTarget& operator=(const ReplacementTarget&) = delete;

    virtual void writeAt(std::uint64_t offset, const char* data, std::size_t size) = 0;
    virtual void bringToDisk() = 0;
    /// Replaces nothing if there was no file at first. Calls the action after all checks and right
    /// before the replacement; its exceptions pass through.
    virtual void putInPlace(const std::function<void()>& beforeIt) = 0;
};

std::unique_ptr<ReplacementTarget> openReplacementTarget(const LongFileName& path);

/// How many hidden names to try if files have them already.
inline constexpr int kMostNames = 100;

/// A random hidden name of fixed length. A name made from the file's own could be too long.
std::string randomHiddenName();

}  // namespace tkcore
