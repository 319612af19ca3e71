// bench-spawn REPORT COUNT PROGRAM ARGUMENT...: starts the program COUNT times, one after the
// other, and writes to REPORT when it began, in nanoseconds of the monotonic clock, and what the
// runs took: seconds, those of them until each was started, seconds of processor time, bytes of
// memory at the peak of one of them.
//
// It is the least that anybody who starts programs has to do, and it is small: the system counts
// the memory of whoever starts a program into the program's peak.

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

struct Totals {
    std::chrono::duration<double> starting{};
    double processorSeconds = 0;
    long peakMemory = 0;
};

double seconds(const timeval& time) {
    constexpr double kMicroseconds = 1e-6;
    return static_cast<double>(time.tv_sec) + kMicroseconds * static_cast<double>(time.tv_usec);
}

/// Whether the program could be started and was successful.
bool runOnce(char* const* command, Totals& totals) {
    constexpr long kMemoryUnit = 1024;
    pid_t process = 0;
    const Clock::time_point begin = Clock::now();
    if (posix_spawn(&process, *command, nullptr, nullptr, command, environ) != 0) {
        return false;
    }
    totals.starting += Clock::now() - begin;
    int status = 0;
    rusage usage{};
    while (wait4(process, &status, 0, &usage) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    totals.processorSeconds += seconds(usage.ru_utime) + seconds(usage.ru_stime);
    totals.peakMemory = std::max(totals.peakMemory, usage.ru_maxrss * kMemoryUnit);
    return status == 0;
}

int parseCount(const char* text) {
    int count = 0;
    std::from_chars(text, text + std::strlen(text), count);
    return count;
}

}  // namespace

int main(int argc, char* argv[]) {
    const Clock::time_point begin = Clock::now();
    const int count = argc < 4 ? 0 : parseCount(argv[2]);
    if (count <= 0) {
        std::cerr << "usage: bench-spawn REPORT COUNT PROGRAM ARGUMENT...\n";
        return 2;
    }
    Totals totals;
    for (int n = 0; n < count; ++n) {
        if (!runOnce(argv + 3, totals)) {
            std::cerr << "bench-spawn: " << argv[3] << " failed\n";
            return 1;
        }
    }
    const std::chrono::duration<double> elapsed = Clock::now() - begin;
    std::ofstream report(argv[1]);
    report << std::chrono::nanoseconds(begin.time_since_epoch()).count() << ' ' << elapsed.count()
           << ' ' << totals.starting.count() << ' ' << totals.processorSeconds << ' '
           << totals.peakMemory << '\n';
    return report.flush() ? 0 : 1;
}
