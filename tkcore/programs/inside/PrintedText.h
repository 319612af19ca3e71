#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tkcore {

/// The output of a program, narrow text of any bytes. It keeps up to two mebibytes in full; of more
/// it keeps the first and the last mebibyte.
class PrintedText final {
public:
    void append(std::string_view bytes);

    [[nodiscard]] bool empty() const noexcept { return first.empty(); }
    /// The text; if bytes are left out, a line shows how many.
    [[nodiscard]] std::string text() const;

private:
    static constexpr std::size_t kMostAtEachEnd = std::size_t{1} << 20U;

    std::string first;
    std::string last;           // a ring buffer once it is full
    std::size_t lastBegin = 0;  // start of the text in the ring buffer
    std::uint64_t leftOut = 0;
};

}  // namespace tkcore
