#pragma once

#include <string>

#include <windows.h>

#include "tkcore/files/LongFileName.h"

// Paths in the form that the functions of Windows take, and failures of these functions.

namespace tkcore {

/// A path of any length for a function of Windows. The action is for the text of a failure. Throws
/// std::system_error for a path that is reserved.
std::wstring nativePath(const LongFileName& path, const char* action);

/// The path; if it exceeds the system's limit, in the form without limit.
std::wstring withoutLimit(const std::wstring& path);
/// The inverse.
std::wstring withLimit(const std::wstring& path);

/// The absolute path, completed by the system.
std::wstring fullPath(const std::wstring& path);

/// Throws std::system_error with the last call's error code and the text "cannot ACTION PATH".
[[noreturn]] void throwLastError(const char* action, const LongFileName& path);

}  // namespace tkcore
