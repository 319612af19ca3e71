#include "standin/Fault.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

#include "standin/System.h"

namespace standin {
namespace {

struct ActionRow {
    std::string_view name;
    FaultAction action;
    std::uint64_t greatestAmount;  // 0: the action takes no amount
    bool takesExitCode;
    bool takesText;
    OutputShape shape;
};

constexpr std::uint64_t kAnyAmount = std::uint64_t{1} << 40;
constexpr std::uint64_t kGreatestSignal = 64;
constexpr std::uint64_t kGreatestExitCode = 255;

constexpr auto kActions = std::to_array<ActionRow>({
    {"exit", FaultAction::kExit, 0, true, true, OutputShape::kWhole},
    {"late-exit", FaultAction::kLateExit, 0, true, true, OutputShape::kWhole},
    {"no-output", FaultAction::kNoOutput, 0, false, false, OutputShape::kNone},
    {"empty-output", FaultAction::kEmptyOutput, 0, false, false, OutputShape::kEmpty},
    {"half-line", FaultAction::kHalfLine, 0, false, false, OutputShape::kHalfHeader},
    {"header-only", FaultAction::kHeaderOnly, 0, false, false, OutputShape::kHeaderOnly},
    {"bare-line-feeds", FaultAction::kBareLineFeeds, 0, false, false, OutputShape::kBareLineFeeds},
    {"hang", FaultAction::kHang, 0, false, false, OutputShape::kWhole},
    {"flood", FaultAction::kFlood, kAnyAmount, true, false, OutputShape::kWhole},
    {"sleep", FaultAction::kSleep, kAnyAmount, false, false, OutputShape::kWhole},
    {"kill", FaultAction::kKill, kGreatestSignal, false, false, OutputShape::kWhole},
});

std::string_view takeUpTo(std::string_view& rest, char separator) {
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

std::uint64_t takeNumber(std::string_view& rest, std::uint64_t greatest, std::string_view rule) {
    const std::string_view digits = takeUpTo(rest, ':');
    std::uint64_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto [parsed, error] = std::from_chars(digits.data(), end, number);
    if (digits.empty() || error != std::errc() || parsed != end || number > greatest) {
        throw std::runtime_error("EXTRACTA_STANDIN_FAULT: expected a number up to " +
                                 std::to_string(greatest) + " in \"" + std::string(rule) + "\"");
    }
    return number;
}

Fault parseAction(std::string_view rest, std::string_view rule) {
    const std::string_view name = takeUpTo(rest, ':');
    const auto* row = std::find_if(std::begin(kActions), std::end(kActions),
                                   [&](const ActionRow& entry) { return entry.name == name; });
    if (row == std::end(kActions)) {
        throw std::runtime_error("EXTRACTA_STANDIN_FAULT: unknown action in \"" +
                                 std::string(rule) + "\"");
    }
    Fault fault;
    fault.action = row->action;
    fault.amount = row->greatestAmount == 0 ? 0 : takeNumber(rest, row->greatestAmount, rule);
    fault.exitCode =
        row->takesExitCode ? static_cast<int>(takeNumber(rest, kGreatestExitCode, rule)) : 0;
    if (!row->takesText && !rest.empty()) {
        throw std::runtime_error("EXTRACTA_STANDIN_FAULT: too much in \"" + std::string(rule) +
                                 "\"");
    }
    fault.text = rest;
    return fault;
}

void print(std::string_view text) {
    if (!writeToStandardOutput(text)) {
        throw std::runtime_error("cannot write to standard output");
    }
}

void flood(std::uint64_t bytes) {
    std::string chatter;
    while (chatter.size() < 4096) {
        chatter += "extracta is still working on the design\n";
    }
    while (bytes > 0) {
        const auto portion = std::min<std::uint64_t>(bytes, chatter.size());
        print(std::string_view(chatter).substr(0, portion));
        bytes -= portion;
    }
}

// The child leaves the session, so that only an end of the whole process tree reaches it.
[[noreturn]] void hang(const Trace& trace) {
    start(ownProgram(), {kHangingChildOption, trace.processName()}, Session::kItsOwn);
    sleepForEver();
}

}  // namespace

std::vector<Fault> faultsFor(std::string_view rules, std::string_view outputName) {
    std::vector<Fault> faults;
    while (!rules.empty()) {
        const std::string_view rule = takeUpTo(rules, ';');
        const std::size_t equals = rule.find('=');
        if (equals == std::string_view::npos) {
            throw std::runtime_error("EXTRACTA_STANDIN_FAULT: no MATCH=ACTION in \"" +
                                     std::string(rule) + "\"");
        }
        const Fault fault = parseAction(rule.substr(equals + 1), rule);
        if (outputName.find(rule.substr(0, equals)) != std::string_view::npos) {
            faults.push_back(fault);
        }
    }
    return faults;
}

std::optional<int> sufferBeforeOutput(const std::vector<Fault>& faults, const Trace& trace) {
    for (const Fault& fault : faults) {
        switch (fault.action) {
            case FaultAction::kExit:
                print(fault.text);
                return fault.exitCode;
            case FaultAction::kHang:
                hang(trace);
            case FaultAction::kFlood:
                flood(fault.amount);
                if (fault.exitCode != 0) {
                    return fault.exitCode;
                }
                break;
            case FaultAction::kSleep:
                std::this_thread::sleep_for(std::chrono::milliseconds(fault.amount));
                break;
            case FaultAction::kKill:
                endBySignal(static_cast<int>(fault.amount));
                break;
            default:
                break;  // happens during or after the output
        }
    }
    return std::nullopt;
}

std::optional<int> sufferAfterOutput(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        if (fault.action == FaultAction::kLateExit) {
            print(fault.text);
            return fault.exitCode;
        }
    }
    return std::nullopt;
}

OutputShape outputShapeOf(const std::vector<Fault>& faults) {
    OutputShape shape = OutputShape::kWhole;
    for (const Fault& fault : faults) {
        for (const ActionRow& row : kActions) {
            if (row.action == fault.action && row.shape != OutputShape::kWhole) {
                shape = row.shape;
            }
        }
    }
    return shape;
}

}  // namespace standin
