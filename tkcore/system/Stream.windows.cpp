#include "tkcore/system/Stream.h"

#include <windows.h>

namespace tkcore {

void openMissingStreams() noexcept {}  // a missing stream never becomes another file's handle

bool writeTo(Stream stream, std::string_view text) noexcept {
    HANDLE handle = GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    while (!text.empty()) {
        DWORD count = 0;
        if (WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &count, nullptr) == 0) {
            return false;
        }
        text.remove_prefix(count);
    }
    return true;
}

}  // namespace tkcore
