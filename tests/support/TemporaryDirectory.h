#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

/// A fresh directory for one test, removed with all that it holds.
class TemporaryDirectory final {
public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "velextracta.XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory " + name);
        }
        directory = std::filesystem::canonical(name);
    }
    ~TemporaryDirectory() {
        std::error_code error;
        std::filesystem::remove_all(directory, error);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return directory; }
    std::filesystem::path operator/(const std::string& name) const { return directory / name; }

private:
    std::filesystem::path directory;
};

/// What can be read of the file: that of a process may end when the process does.
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
