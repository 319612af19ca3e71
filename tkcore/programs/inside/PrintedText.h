#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tkcore {

/// What a program has printed, narrow text of any bytes: all of it up to two mebibytes, of more
/// the first and the last mebibyte.
class PrintedText final {
public:
    void append(std::string_view bytes);

    [[nodiscard]] bool empty() const noexcept { return first.empty(); }
    /// Where bytes are left out, a line says how many.
    [[nodiscard]] std::string text() const;

private:
    static constexpr std::size_t kMostAtEachEnd = std::size_t{1} << 20U;

    std::string first;
    std::string last;           // once it is full, a ring
    std::size_t lastBegin = 0;  // in the ring
    std::uint64_t leftOut = 0;
};

}  // namespace tkcore
