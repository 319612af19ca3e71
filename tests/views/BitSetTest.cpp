#include <bit>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "views/BitUtilities.h"
#include "views/EnumSet.h"

namespace {

using namespace velextracta;

template <unsigned Width>
void expectPositions(std::uint32_t value) {
    for (std::uint32_t n = 0, rest = value; n < Width; ++n, rest &= rest - 1) {
        ASSERT_EQ(static_cast<int>(NthSetBit<Width>(value, n)),
                  rest == 0 ? -1 : std::countr_zero(rest))
            << value << " " << n;
    }
}

TEST(BitUtilities, findsTheNthSetBit) {
    std::mt19937 random(1);
    for (int trial = 0; trial < 20'000; ++trial) {
        std::uint32_t value = random();
        value &= random();
        expectPositions<32>(value);
        expectPositions<16>(value & 0xFFFF);
        expectPositions<8>(value & 0xFF);
    }
}

enum class Layer : std::int32_t { top, inner, bottom, mask };
using LayerSet = EnumSet<Layer, 4>;

TEST(EnumSet, holdsOnlyValuesThatTheEnumerationHas) {
    const LayerSet layers(0xFFF5);
    EXPECT_EQ(layers.GetCount(), 2);
    EXPECT_EQ(layers.GetAt(0), Layer::top);
    EXPECT_EQ(layers.GetAt(1), Layer::bottom);
    for (const int n : {-1, 2, 31, 32, 1'000'000}) {
        EXPECT_EQ(static_cast<int>(layers.GetAt(n)), -1) << n;
    }
    EXPECT_TRUE(layers.Contains(Layer::bottom));
    EXPECT_FALSE(layers.Contains(Layer::mask));
    for (const int value : {-1, 4}) {
        EXPECT_THAT([&] { layers.Contains(static_cast<Layer>(value)); },
                    testing::ThrowsMessage<std::out_of_range>("invalid bitset<N> position"));
    }
}

}  // namespace
