#pragma once

#include <string>
#include <system_error>

#include <windows.h>

namespace tkcore {

/// Throws std::system_error with the system's own text for the code behind ours.
[[noreturn]] inline void throwSystemError(DWORD error, const std::string& text) {
    throw std::system_error(static_cast<int>(error), std::system_category(), text);
}

}  // namespace tkcore
