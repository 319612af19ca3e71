#include <bit>
#include <random>

#include <gtest/gtest.h>

#include "tkcore/BitUtilities.h"
#include "tkcore/EnumSet.h"

namespace {

using namespace tkcore;

std::uint32_t nthSetBitByCounting(std::uint32_t value, std::uint32_t n) {
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        if ((value >> bit & 1) != 0 && n-- == 0) {
            return bit;
        }
    }
    return 0xFFFFFFFF;
}

TEST(BitUtilities, findsTheNthSetBit) {
    std::mt19937 random(1);
    for (int trial = 0; trial < 20'000; ++trial) {
        std::uint32_t value = random();
        value &= random();
        for (std::uint32_t n = 0; n < 32; ++n) {
            ASSERT_EQ(NthSetBit<32>(value, n), nthSetBitByCounting(value, n)) << value << " " << n;
        }
        ASSERT_EQ(NthSetBit<8>(value & 0xff, 2), nthSetBitByCounting(value & 0xff, 2));
        ASSERT_EQ(NthSetBit<16>(value & 0xffff, 9), nthSetBitByCounting(value & 0xffff, 9));
    }
}

enum class Layer : std::int32_t { top, inner, bottom, mask };
using LayerSet = EnumSet<Layer, 4>;

TEST(EnumSet, holdsOnlyValuesThatTheEnumerationHas) {
    const LayerSet layers(0xFFF5);
    EXPECT_EQ(layers.GetCount(), 2);
    EXPECT_EQ(layers.GetAt(0), Layer::top);
    EXPECT_EQ(layers.GetAt(1), Layer::bottom);
    EXPECT_TRUE(layers.Contains(Layer::bottom));
    EXPECT_FALSE(layers.Contains(Layer::mask));
    EXPECT_EQ(LayerSet().GetCount(), 0);
}

TEST(EnumSet, refusesAValueOutsideTheEnumeration) {
    for (const int value : {-1, 4}) {
        try {
            LayerSet(0xF).Contains(static_cast<Layer>(value));
            ADD_FAILURE() << value;
        } catch (const std::out_of_range& exception) {
            EXPECT_STREQ(exception.what(), "invalid bitset<N> position");
        }
    }
}

TEST(EnumSet, hasTheValueMinusOneBeyondItsMembers) {
    for (const int n : {-1, 2, 31, 32, 1'000'000}) {
        EXPECT_EQ(static_cast<int>(LayerSet(0x5).GetAt(n)), -1) << n;
    }
}

}  // namespace
