#pragma once

#include <string>

#include <windows.h>

#include "tkcore/files/LongFileName.h"

// Paths as the functions of Windows take them, and their failures.

namespace tkcore {

/// For a function of Windows, whatever the path's length; the action is what it is wanted for.
/// Throws std::system_error for a path that is reserved.
std::wstring nativePath(const LongFileName& path, const char* action);

/// The path in the form that is free of the system's limit on its length, if it is that long.
std::wstring withoutLimit(const std::wstring& path);
/// The inverse.
std::wstring withLimit(const std::wstring& path);

/// The absolute path, as the system completes it.
std::wstring fullPath(const std::wstring& path);

/// Throws std::system_error for the last call's code, which is read before anything can change it:
/// "cannot", the action and the path.
[[noreturn]] void throwLastError(const char* action, const LongFileName& path);

}  // namespace tkcore
