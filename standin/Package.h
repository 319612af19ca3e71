#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace standin {

// The made-up package that a generated design describes. Lengths are in nanometres.
inline constexpr std::int64_t kHalfPackage = 22'500'000;  // from the middle to the edge

struct PadStackRow {
    const char* name;
    const char* shape;
    std::int64_t width;
    std::int64_t height;
    const char* startLayer;
    const char* endLayer;
    const char* drill;  // empty for a pad without a hole
};

inline constexpr auto kPadStacks = std::to_array<PadStackRow>({
    {"BALL_500", "CIRCLE", 500'000, 500'000, "BOTTOM", "BOTTOM", ""},
    {"BUMP_80", "OCTAGON", 80'000, 80'000, "TOP", "TOP", ""},
    {"FINGER_100X300", "OBLONG_Y", 100'000, 300'000, "TOP", "TOP", ""},
    {"CAP_300", "SQUARE", 300'000, 300'000, "TOP", "TOP", ""},
    {"VIA_1_2", "ROUNDED_SQUARE", 90'000, 90'000, "TOP", "L2", "LASER_60"},
    {"VIA_2_3", "CIRCLE", 90'000, 90'000, "L2", "L3", "LASER_60"},
    {"CORE_3_4", "", 250'000, 250'000, "L3", "L4", "MECHANICAL_150"},
    {"VIA_4_5", "FIG_RECTANGLE", 90'000, 90'000, "L4", "L5", "LASER_60"},
    {"VIA_5_6", "OBLONG_X", 120'000, 90'000, "L5", "BOTTOM", "LASER_60"},
});
inline constexpr std::size_t kBallPadStack = 0;
inline constexpr std::size_t kBumpPadStack = 1;
inline constexpr std::size_t kCapacitorPadStack = 3;

// The pad stacks that lead from one layer to another.
inline constexpr std::span kViaPadStacks(kPadStacks.begin() + 4, kPadStacks.end());

struct Net {
    std::string name;
    std::string busName;
    std::string differentialPair;
    std::uint64_t cumulativeWeight = 0;  // sum up to this net; weights are shares of the records
    std::uint64_t nodeCount = 0;
};

struct Component {
    std::string refdes;
    const char* componentClass;
    const char* symbol;
    std::int64_t x;
    std::int64_t y;
    std::uint64_t columns;
    std::uint64_t rows;
    std::int64_t pitch;
    const char* mirror;
    std::size_t padStack;
};

struct Pin {
    std::string number;
    std::int64_t x;
    std::int64_t y;
};

// The standard distributions differ between libraries; this generator does not.
class Random final {
public:
    explicit Random(std::uint64_t seed) : generator(seed) {}

    std::uint64_t below(std::uint64_t limit) { return generator() % limit; }
    bool oneIn(std::uint64_t count) { return below(count) == 0; }
    std::int64_t around(std::int64_t middle, std::int64_t reach) {
        return middle - reach +
               static_cast<std::int64_t>(below(static_cast<std::uint64_t>(2 * reach + 1)));
    }
    template <typename Table>
    const auto& oneOf(const Table& table) {
        return table[below(std::size(table))];
    }

private:
    std::mt19937_64 generator;
};

// The largest net first; the odd names follow the first regular one.
std::vector<Net> makeNets(std::uint64_t count, bool oddNames);
// The ball grid and the dies, then the capacitors.
std::vector<Component> makeComponents();
inline constexpr std::size_t kLargeComponents = 3;
// Rows by letters, columns by numbers, as a ball map names them.
Pin pinAt(const Component& component, std::uint64_t row, std::uint64_t column);

// Draws a net by its weight.
Net& pickNet(std::vector<Net>& nets, Random& random);

// Nanometres as micrometres with three decimals.
std::string micrometres(std::int64_t nanometres);
// A number with leading zeros, so that it sorts as text.
std::string sortable(std::uint64_t number);

}  // namespace standin
