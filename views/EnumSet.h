#pragma once

#include <cstdint>
#include <stdexcept>

#include "tkcore/report/Assertion.h"
#include "views/BitUtilities.h"

namespace velextracta {

/// A set of the values 0 to Size - 1 of an enumeration, iterated in ascending order with
/// GetAt(0) to GetAt(GetCount() - 1).
template <typename Enum, unsigned Size>
class EnumSet final {
    static_assert(Size > 0 && Size < 32, "the members are the low bits of one 32-bit word");

public:
    EnumSet() = default;

    /// Bit n of the mask stands for the value n; bits at Size and above are ignored.
    explicit constexpr EnumSet(std::uint64_t mask)
        : word(static_cast<std::uint32_t>(mask & ((std::uint64_t{1} << Size) - 1))) {}

    /// Throws std::out_of_range for other values than 0 to Size - 1.
    bool Contains(Enum value) const {
        const auto position = static_cast<std::int32_t>(value);
        if (position < 0 || position >= static_cast<std::int32_t>(Size)) {
            throw std::out_of_range("invalid bitset<N> position");
        }
        return (word >> position & 1) != 0;
    }

    std::int32_t GetCount() const {
        return static_cast<std::int32_t>(CountBits<16>(word & 0xffff) + CountBits<16>(word >> 16));
    }

    /// The n-th member, counted from 0; the value -1 when there is none.
    Enum GetAt(std::int32_t n) const {
        VEL_ASSERT_AT("tkcore/tkutils/EnumSet_T", 656, n >= 0 && n < GetCount());
        const auto kk =
            static_cast<std::int32_t>(NthSetBit<32>(word, static_cast<std::uint32_t>(n)));
        VEL_ASSERT_AT("tkcore/tkutils/EnumSet_T", 662, kk != -1);
        return static_cast<Enum>(kk);
    }

private:
    std::uint32_t word = 0;
};

}  // namespace velextracta
