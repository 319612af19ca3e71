#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include <signal.h>

#include "support/TemporaryDirectory.h"

/// Whether a process of this id runs; one that only waits to be reaped does not.
inline bool isRunning(pid_t process) {
    const std::string status = readFile("/proc/" + std::to_string(process) + "/stat");
    const std::size_t nameEnd = status.rfind(')');
    return nameEnd != std::string::npos && status.substr(nameEnd, 4) != ") Z ";
}

/// Waits until the condition holds; false if it does not within ten seconds.
inline bool eventually(const std::function<bool()>& condition) {
    for (int pause = 0; pause < 10'000; ++pause) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

/// The process id that a script has written to a file, once it stands there.
inline pid_t readProcessId(const std::filesystem::path& file) {
    eventually([&] { return readFile(file).ends_with('\n'); });
    return static_cast<pid_t>(std::stol(readFile(file)));
}
