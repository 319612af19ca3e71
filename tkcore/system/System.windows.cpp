#include "tkcore/system/System.h"

#include <cstdlib>
#include <system_error>

#include <windows.h>

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

namespace {

constexpr DWORD kHighResolution = 2;  // a flag that the compiler's headers do not know

}  // namespace

void sleepMilliseconds(unsigned milliseconds) {
    // An ordinary sleep lasts up to 16 milliseconds longer. The finer clock for all sleeps would
    // bring in a library with windows, and with it the console would no longer tell of the
    // session's end.
    static const Handle timer(
        CreateWaitableTimerExW(nullptr, nullptr, kHighResolution, TIMER_ALL_ACCESS));
    LARGE_INTEGER due;
    due.QuadPart = -10'000LL * milliseconds;  // from now, in tenths of a microsecond
    if (!timer || SetWaitableTimer(timer.get(), &due, 0, nullptr, nullptr, FALSE) == 0 ||
        WaitForSingleObject(timer.get(), INFINITE) != WAIT_OBJECT_0) {
        Sleep(milliseconds);
    }
}

std::chrono::milliseconds removalPatience() noexcept {
    // A scanner for viruses looks at new files, and the console of a program that has just ended
    // may still stand in its folder.
    return std::chrono::seconds(3);
}

void endAbnormally() noexcept {
    constexpr int kAborted = 3;
    std::_Exit(kAborted);  // abort() would write to standard error
}

AString systemMessage(int code) {
    constexpr std::size_t kLongestText = 79;
    wchar_t buffer[512];
    DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(code), 0, buffer, std::size(buffer), nullptr);
    while (size > 0 && buffer[size - 1] <= L' ') {
        --size;
    }
    std::wstring_view text(buffer, size);
    while (narrow(text).size() > kLongestText) {
        text.remove_suffix(1);  // a whole character, whatever it takes in UTF-8
    }
    return std::wstring(text);
}

}  // namespace tkcore
