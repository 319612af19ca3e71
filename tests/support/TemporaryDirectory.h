#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

/// A fresh directory for one test. The destructor removes it with its contents.
class TemporaryDirectory final {
public:
    TemporaryDirectory() {
        std::random_device random;
        const std::filesystem::path parent =
            std::filesystem::canonical(std::filesystem::temp_directory_path());
        do {
            directory = parent / ("velextracta." + std::to_string(random()));
        } while (!std::filesystem::create_directory(directory));
    }
    ~TemporaryDirectory() {
        // A program that has just ended may have its folder open for a moment.
        std::error_code error;
        for (int attempt = 0; attempt < 300; ++attempt) {
            std::filesystem::remove_all(directory, error);
            if (!error) {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return directory; }
    /// The name is UTF-8.
    std::filesystem::path operator/(const std::string& name) const {
        return directory / std::u8string(name.begin(), name.end());
    }

private:
    std::filesystem::path directory;
};

/// The text of the file, as far as it can be read: a file in /proc may end with its process.
inline std::string readFile(const std::filesystem::path& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << text).flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

/// Writes a shell script that can be started as a program.
inline std::filesystem::path writeScript(const std::filesystem::path& path,
                                         const std::string& body) {
    writeFile(path, "#!/bin/sh\n" + body);
    std::filesystem::permissions(path, std::filesystem::perms::all);
    return path;
}
