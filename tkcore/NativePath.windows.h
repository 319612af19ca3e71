#pragma once

#include <string>

#include <windows.h>

// Paths as the functions of Windows take them, and their failures.

namespace tkcore {

/// For a function of Windows, whatever the path's length; the action is what it is wanted for.
/// Throws std::system_error for a name that the system would take for something else than a file.
std::wstring nativePath(const std::string& path, const char* action);

/// The path in the form that is free of the system's limit on its length, if it is that long.
std::wstring withoutLimit(const std::wstring& path);
/// The inverse.
std::wstring withLimit(const std::wstring& path);

/// The absolute path, as the system completes it.
std::wstring fullPath(const std::wstring& path);

/// Throws std::system_error with the system's own text for the code behind ours.
[[noreturn]] void throwSystemError(DWORD error, const std::string& text);

}  // namespace tkcore
