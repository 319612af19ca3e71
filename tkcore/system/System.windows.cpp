#include "tkcore/system/System.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include <windows.h>

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

namespace {

constexpr DWORD kHighResolution = 2;  // a flag that the compiler's headers do not know

}  // namespace

void sleepMilliseconds(unsigned milliseconds) {
    // An ordinary sleep lasts up to 16 milliseconds longer. The finer clock for all sleeps needs a
    // library for windows on the screen; with that loaded, the console does not report the end of
    // the session.
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
    // A virus scanner opens new files, and the console of a program that has just ended may still
    // have its folder open.
    return std::chrono::seconds(3);
}

std::optional<std::tm> localTime(std::time_t time) {
    // Not the C runtime's function: it has one rule for all years, and reads the variable TZ.
    constexpr std::int64_t kTicksInSecond = 10'000'000;
    constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kTicksInSecond;
    if (time < -kSecondsFrom1601 || time > kMost - kSecondsFrom1601) {
        return std::nullopt;
    }
    ULARGE_INTEGER ticks;
    ticks.QuadPart = static_cast<ULONGLONG>((time + kSecondsFrom1601) * kTicksInSecond);
    const FILETIME fileTime{ticks.LowPart, ticks.HighPart};
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    if (FileTimeToSystemTime(&fileTime, &utc) == 0 ||
        SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == 0) {
        return std::nullopt;
    }
    std::tm result{};
    result.tm_year = local.wYear - 1900;
    result.tm_mon = local.wMonth - 1;
    result.tm_mday = local.wDay;
    result.tm_hour = local.wHour;
    result.tm_min = local.wMinute;
    result.tm_sec = local.wSecond;
    return result;
}

void endAbnormally() noexcept {
    constexpr int kAborted = 3;
    std::_Exit(kAborted);  // abort() would write to standard error
}

AString systemMessage(int code) {
    constexpr std::size_t kLongestText = 79;
    // Some texts have a placeholder for the object, which our callers name themselves.
    wchar_t it[] = L"it";
    std::array<wchar_t*, 99> inserts;
    inserts.fill(it);
    wchar_t buffer[512];
    DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY, nullptr,
                                static_cast<DWORD>(code), 0, buffer, std::size(buffer),
                                reinterpret_cast<va_list*>(inserts.data()));
    while (size > 0 && buffer[size - 1] <= L' ') {
        --size;
    }
    std::wstring_view text(buffer, size);
    while (narrow(text).size() > kLongestText) {
        text.remove_suffix(1);  // a whole character, which may be several bytes in UTF-8
    }
    return std::wstring(text);
}

}  // namespace tkcore
