#pragma once

#include <system_error>

#include <windows.h>

namespace tkcore {

/// A code of the system, which has a text for it.
inline std::error_code systemError(DWORD code) {
    return {static_cast<int>(code), std::system_category()};
}

}  // namespace tkcore
