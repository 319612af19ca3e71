#include "standin/Package.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace standin {
namespace {

constexpr auto kSupplyNames = std::to_array<const char*>(
    {"GND", "VDD_CORE", "VDDQ", "VDD_IO", "VSSA", "VDDA_PLL", "VCC_1V8", "VDD_SRAM", "VREF"});

// Quotes, blanks, commas, bytes that are not UTF-8, words of the control file. The first and the
// third become equal when every character but letters, digits, "-" and "_" becomes "_".
constexpr auto kOddNames = std::to_array<std::string_view>({
    "VDD 'CORE',1",
    "SENSE\xC3\x28\xFF",
    "VDD.(CORE)/1",
    "\xCE\x94V_\xC3\x9CTILITY",
    "A'",
    "''",
    " LEADING",
    "TRAILING ",
    "= 'x' OR",
    "NET\tTAB",
    "END",
    "VDD*?\"<>|:;#%&$@[]{}^~`+5V",
});

// The largest whole number whose square is at most the value.
std::uint64_t integerRoot(std::uint64_t value) {
    std::uint64_t root = 0;
    for (std::uint64_t bit = std::uint64_t{1} << 31; bit != 0; bit >>= 1) {
        const std::uint64_t candidate = root | bit;
        root = candidate * candidate <= value ? candidate : root;
    }
    return root;
}

// Falls with the rank to the power of 1.5, so the four largest nets have most of the records.
std::uint64_t weightOfRank(std::uint64_t rank) {
    return 1'000'000'000'000 / integerRoot(rank * rank * rank * 10'000);
}

// Every eighth signal is half of a differential pair, half of the others belong to a bus.
Net signalNet(std::uint64_t number) {
    Net net;
    const std::uint64_t group = number / 16;
    const std::uint64_t member = number % 16;
    if (member < 2) {
        net.differentialPair = "SERDES_TX" + std::to_string(group);
        net.name = net.differentialPair + (member == 0 ? "_P" : "_N");
    } else if (member < 9) {
        net.busName = "DDR_DQ" + std::to_string(group);
        net.name = net.busName + '_' + std::to_string(member - 2);
    } else {
        net.name = "SIG_" + std::to_string(number);
    }
    return net;
}

}  // namespace

std::vector<Net> makeNets(std::uint64_t count, bool oddNames) {
    std::vector<Net> nets;
    for (std::uint64_t number = 0; number < count; ++number) {
        const bool supply = number < std::size(kSupplyNames);
        nets.push_back(supply ? Net{kSupplyNames[number], "", ""}
                              : signalNet(number - std::size(kSupplyNames)));
    }
    if (oddNames) {
        const auto place = nets.begin() + (nets.empty() ? 0 : 1);
        std::vector<Net> odd;
        odd.reserve(kOddNames.size());
        for (const std::string_view name : kOddNames) {
            odd.push_back({std::string(name), "", ""});
        }
        nets.insert(place, odd.begin(), odd.end());
    }
    std::uint64_t sum = 0;
    for (std::size_t index = 0; index < nets.size(); ++index) {
        sum += weightOfRank(index + 1);
        nets[index].cumulativeWeight = sum;
    }
    return nets;
}

Net& pickNet(std::vector<Net>& nets, Random& random) {
    const std::uint64_t point = random.below(nets.back().cumulativeWeight);
    return *std::upper_bound(
        nets.begin(), nets.end(), point,
        [](std::uint64_t wanted, const Net& net) { return wanted < net.cumulativeWeight; });
}

std::vector<Component> makeComponents() {
    std::vector<Component> components{
        {"BGA1", "IO", "BGA_42X42", 0, 0, 42, 42, 1'000'000, "YES", kBallPadStack},
        {"DIE1", "IC", "DIE_60X60", -5'000'000, 0, 60, 60, 130'000, "NO", kBumpPadStack},
        {"DIE2", "IC", "DIE_30X60", 6'000'000, 2'000'000, 30, 60, 130'000, "NO", kBumpPadStack},
    };
    constexpr int kCapacitors = 48;
    for (int number = 0; number < kCapacitors; ++number) {
        components.push_back({std::string("C").append(std::to_string(number + 1)), "DISCRETE",
                              "CAP0201", -18'800'000 + number * 800'000, 16'000'000, 2, 1, 500'000,
                              "NO", kCapacitorPadStack});
    }
    return components;
}

Pin pinAt(const Component& component, std::uint64_t row, std::uint64_t column) {
    std::string name;
    if (row >= 26) {
        name += static_cast<char>('A' + row / 26 - 1);
    }
    name += static_cast<char>('A' + row % 26);
    const auto offset = [&](std::uint64_t index, std::uint64_t count) {
        return (2 * static_cast<std::int64_t>(index) - static_cast<std::int64_t>(count) + 1) *
               component.pitch / 2;
    };
    return {name + std::to_string(column + 1), component.x + offset(column, component.columns),
            component.y + offset(row, component.rows)};
}

std::string micrometres(std::int64_t nanometres) {
    std::string text = std::to_string(nanometres < 0 ? -nanometres : nanometres);
    if (text.size() < 4) {
        text.insert(0, 4 - text.size(), '0');
    }
    text.insert(text.size() - 3, 1, '.');
    if (nanometres < 0) {
        text.insert(0, 1, '-');
    }
    return text;
}

std::string sortable(std::uint64_t number) {
    constexpr std::size_t kDigits = 10;
    std::string text = std::to_string(number);
    text.insert(0, kDigits - std::min(text.size(), kDigits), '0');
    return text;
}

}  // namespace standin
