#pragma once

#include <string>

#include <windows.h>

namespace tkcore {

/// Gives the open file, which may be deleted by its handle, another name on its disk; the path is
/// one that functions of Windows take. Returns 0, or the system's error code. Of a file that is
/// replaced readers who allow its deletion keep what they read, where the system can do that.
DWORD renameOpenFile(HANDLE file, const std::wstring& path, bool mayReplace);

/// Whether somebody holds a file open, perhaps for a moment only: it is worth trying again.
bool isOpenElsewhere(DWORD error) noexcept;

}  // namespace tkcore
