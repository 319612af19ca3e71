#pragma once

#include <string_view>

namespace tkcore {

/// Writes to a terminal or a pipe whose reader may be slow or absent. Waits for the reader, but not
/// after a request to end the program. False, with errno, if not all was written.
bool writePatiently(int descriptor, std::string_view bytes) noexcept;

}  // namespace tkcore
