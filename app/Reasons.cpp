#include "app/Reasons.h"

#include <algorithm>

#include "tkcore/report/Log.h"
#include "tkcore/report/Terminal.h"
#include "tkcore/text/AString.h"

namespace velextracta {

using tkcore::AString;

namespace {

constexpr std::size_t kMostLines = 10;
constexpr std::size_t kLongestLine = 500;
constexpr std::string_view kReason = "error: ";
constexpr std::string_view kWarning = "warning: ";
constexpr std::string_view kLastWords = "uncaught exception";  // the last text of a process

}  // namespace

Reasons::Reasons() {
    if (tkcore::isPersonAtTerminal() && !tkcore::isLogOnTerminal()) {
        tkcore::listenToReasons([this](std::string_view reason) { add(reason); });
    }
}

Reasons::~Reasons() {
    tkcore::listenToReasons({});
}

void Reasons::add(std::string_view reason) {
    if (reason.starts_with(kWarning) || reason.starts_with(kLastWords)) {
        tkcore::printOnTerminal(AString(reason).wide());
    }
    if (!reason.starts_with(kReason)) {
        return;
    }
    while (!reason.empty()) {
        const std::string_view line = reason.substr(0, reason.find('\n'));
        reason.remove_prefix(std::min(reason.size(), line.size() + 1));
        if (lines.size() < kMostLines) {
            lines.emplace_back(line.substr(0, kLongestLine));
        } else {
            ++leftOut;
        }
    }
}

void Reasons::print() const {
    for (const std::string& line : lines) {
        tkcore::printOnTerminal(AString(line).wide());
    }
    if (leftOut > 0) {
        tkcore::printOnTerminal(AString::Format("%d more lines: see the log, as with "
                                                "TKCORE_LOG=0:run.log",
                                                leftOut)
                                    .wide());
    }
}

}  // namespace velextracta
