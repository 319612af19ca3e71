#pragma once

#include <string>

#include <windows.h>

namespace tkcore {

/// Renames an open file, whose handle must allow deletion, on the same disk. The path is one for
/// functions of Windows. Returns 0 or the system's error code. Where the system can do it, readers
/// of a replaced file that allow its deletion keep reading the old file.
DWORD renameOpenFile(HANDLE file, const std::wstring& path, bool mayReplace);

/// Whether the error means that somebody has the file open, perhaps only for a moment. Then try
/// again.
bool isOpenElsewhere(DWORD error) noexcept;

}  // namespace tkcore
