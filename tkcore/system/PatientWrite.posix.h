#pragma once

#include <string_view>

namespace tkcore {

/// Writes to what may have a reader who takes his time, or none: a terminal, a pipe. Waits for him,
/// but no longer than until a request to end the program has come; then, or for another reason,
/// false with errno if not all has been written.
bool writePatiently(int descriptor, std::string_view bytes) noexcept;

}  // namespace tkcore
