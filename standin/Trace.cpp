#include "standin/Trace.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace standin {

Trace::Trace(std::string processName) : name(std::move(processName)) {
    const char* requested = std::getenv("EXTRACTA_STANDIN_TRACE");
    path = requested == nullptr ? "" : requested;
    report("start");
}

Trace::~Trace() {
    try {
        report("end");
    } catch (const std::exception&) {
        // The start line was written; a reader notices that the end is missing.
        return;
    }
}

void Trace::report(std::string_view event) const {
    if (path.empty()) {
        return;
    }
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const std::string line =
        std::string(event) + ' ' + name + ' ' + std::to_string(::getpid()) + ' ' +
        std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) + '\n';
    constexpr int kReadableAndWritable = 0666;
    const int file =
        ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kReadableAndWritable);
    // One write, so that the lines of processes that run side by side do not mix.
    const bool written =
        file >= 0 && ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    if (file >= 0) {
        ::close(file);
    }
    if (!written) {
        throw std::runtime_error(path + ": cannot append to the trace");
    }
}

}  // namespace standin
