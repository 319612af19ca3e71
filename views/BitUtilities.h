#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "tkcore/report/Assertion.h"

namespace velextracta {

/// Number of bits set in a value of the given width (4, 8 or 16 bits).
template <unsigned Width>
std::uint32_t CountBits(std::uint32_t value);

/// Position of the n-th set bit, lowest first and counted from 0, of a value of the given width
/// (4, 8, 16 or 32 bits); 0xFFFFFFFF when the value has no such bit.
template <unsigned Width>
std::uint32_t NthSetBit(std::uint32_t value, std::uint32_t n);

namespace bits {

inline constexpr char kSource[] = "tkcore/tkutils/BitUtilities";
inline constexpr std::uint32_t kNoBit = 0xFFFFFFFF;

template <std::size_t Size>
constexpr auto makeCounts() {
    std::array<std::uint32_t, Size> counts{};
    for (std::uint32_t value = 1; value < Size; ++value) {
        counts[value] = counts[value >> 1] + (value & 1);
    }
    return counts;
}

/// Indexed [n][value].
constexpr auto makeNibblePositions() {
    std::array<std::array<std::uint32_t, 16>, 4> positions{};
    for (std::uint32_t value = 0; value < 16; ++value) {
        std::uint32_t n = 0;
        for (std::uint32_t bit = 0; bit < 4; ++bit) {
            if ((value >> bit & 1) != 0) {
                positions[n++][value] = bit;
            }
        }
        for (; n < 4; ++n) {
            positions[n][value] = kNoBit;
        }
    }
    return positions;
}

inline constexpr auto kNibbleCounts = makeCounts<16>();
inline constexpr auto kByteCounts = makeCounts<256>();
inline constexpr auto kNibblePositions = makeNibblePositions();

}  // namespace bits

template <>
inline std::uint32_t CountBits<4>(std::uint32_t value) {
    VEL_ASSERT_AT(bits::kSource, 116, value <= 0xf);
    return bits::kNibbleCounts[value & 0xf];
}

template <>
inline std::uint32_t CountBits<8>(std::uint32_t value) {
    VEL_ASSERT_AT(bits::kSource, 126, value <= 0xff);
    return bits::kByteCounts[value & 0xff];
}

template <>
inline std::uint32_t CountBits<16>(std::uint32_t value) {
    VEL_ASSERT_AT(bits::kSource, 167, value <= 0xffff);
    return CountBits<8>(value & 0xff) + CountBits<8>(value >> 8 & 0xff);
}

template <>
inline std::uint32_t NthSetBit<4>(std::uint32_t value, std::uint32_t n) {
    VEL_ASSERT_AT(bits::kSource, 617, value <= 0xf && n < 4);
    return n < 4 ? bits::kNibblePositions[n][value & 0xf] : bits::kNoBit;
}

template <>
inline std::uint32_t NthSetBit<8>(std::uint32_t value, std::uint32_t n) {
    VEL_ASSERT_AT(bits::kSource, 647, value <= 0xff && n < 8);
    const std::uint32_t low = CountBits<4>(value & 0xf);
    if (n < low) {
        return NthSetBit<4>(value & 0xf, n);
    }
    const std::uint32_t position = NthSetBit<4>(value >> 4 & 0xf, n - low);
    return position == bits::kNoBit ? position : position + 4;
}

template <>
inline std::uint32_t NthSetBit<16>(std::uint32_t value, std::uint32_t n) {
    VEL_ASSERT_AT(bits::kSource, 696, value <= 0xffff && n < 16);
    const std::uint32_t low = CountBits<8>(value & 0xff);
    if (n < low) {
        return NthSetBit<8>(value & 0xff, n);
    }
    if (n - low < CountBits<8>(value >> 8 & 0xff)) {
        return NthSetBit<8>(value >> 8 & 0xff, n - low) + 8;
    }
    return bits::kNoBit;
}

template <>
inline std::uint32_t NthSetBit<32>(std::uint32_t value, std::uint32_t n) {
    VEL_ASSERT_AT(bits::kSource, 744, value <= 0xffffffff && n < 32);
    const std::uint32_t low = CountBits<16>(value & 0xffff);
    if (n < low) {
        return NthSetBit<16>(value & 0xffff, n);
    }
    const std::uint32_t position = NthSetBit<16>(value >> 16, n - low);
    return position == bits::kNoBit ? position : position + 16;
}

}  // namespace velextracta
