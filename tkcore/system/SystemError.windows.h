#pragma once

#include <system_error>

#include <windows.h>

namespace tkcore {

/// An error code of the system; its message is the system's text.
inline std::error_code systemError(DWORD code) {
    return {static_cast<int>(code), std::system_category()};
}

}  // namespace tkcore
