#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"

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

/// Waits for a script to write a process id to a file, and returns it.
inline pid_t readProcessId(const std::filesystem::path& file) {
    eventually([&] { return readFile(file).ends_with('\n'); });
    return static_cast<pid_t>(std::stol(readFile(file)));
}
