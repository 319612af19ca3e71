#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Throws std::system_error with the text "cannot ACTION PATH", any further text, and the system's
/// own text for the code.
[[noreturn]] inline void throwPathFailure(std::error_code code, std::string_view action,
                                          const LongFileName& path, std::string_view more = {}) {
    std::string text("cannot ");
    text.append(action).append(" ").append(VEL_ANSI(path)).append(more);
    throw std::system_error(code, text);
}

}  // namespace tkcore
