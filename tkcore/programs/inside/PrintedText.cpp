#include "tkcore/programs/inside/PrintedText.h"

#include <algorithm>

namespace tkcore {

void PrintedText::append(std::string_view bytes) {
    const std::string_view toFirst = bytes.substr(0, kMostAtEachEnd - first.size());
    first += toFirst;
    bytes.remove_prefix(toFirst.size());
    const std::string_view toLast = bytes.substr(0, kMostAtEachEnd - last.size());
    last += toLast;
    bytes.remove_prefix(toLast.size());
    leftOut += bytes.size();
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, kMostAtEachEnd - lastBegin);
        std::ranges::copy(part, last.begin() + static_cast<std::ptrdiff_t>(lastBegin));
        lastBegin = (lastBegin + part.size()) % kMostAtEachEnd;
        bytes.remove_prefix(part.size());
    }
}

std::string PrintedText::text() const {
    std::string all = first;
    if (leftOut > 0) {
        all += "\n[" + std::to_string(leftOut) + " bytes are left out here]\n";
    }
    all.append(last, lastBegin).append(last, 0, lastBegin);
    return all;
}

}  // namespace tkcore
