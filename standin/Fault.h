#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/Trace.h"
#include "standin/ViewQuery.h"

namespace standin {

enum class FaultAction {
    kExit,
    kLateExit,
    kNoOutput,
    kEmptyOutput,
    kHalfLine,
    kHeaderOnly,
    kBareLineFeeds,
    kHang,
    kFlood,
    kSleep,
    kKill,
};

// With this option and a name for the trace, the program is the child of a hanging stand-in.
inline constexpr char kHangingChildOption[] = "--hanging-child";

struct Fault {
    FaultAction action = FaultAction::kExit;
    std::uint64_t amount = 0;  // bytes to flood, milliseconds to sleep, signal to send
    int exitCode = 0;
    std::string text;
};

// Rules are "MATCH=ACTION;MATCH=ACTION...". Returns the actions, in their order, whose MATCH is
// part of the output's name. Throws std::runtime_error for a rule that cannot be parsed.
std::vector<Fault> faultsFor(std::string_view rules, std::string_view outputName);

// Both return the exit code to end with at once, or nothing to go on. The first may never return.
std::optional<int> sufferBeforeOutput(const std::vector<Fault>& faults, const Trace& trace);
std::optional<int> sufferAfterOutput(const std::vector<Fault>& faults);

OutputShape outputShapeOf(const std::vector<Fault>& faults);

}  // namespace standin
