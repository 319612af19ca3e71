#pragma once

#include <string_view>

namespace tkcore {

/// Writes to a terminal or a pipe, whose reader may be slow or absent. Waits for the reader until a
/// request to end the program has come. False, with errno, if not all has been written.
bool writePatiently(int descriptor, std::string_view bytes) noexcept;

}  // namespace tkcore
