#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string_view>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// An existing file or directory opened for reading, with its properties at that moment. All paths
/// of users and extractors are opened for reading by this class. Refuses anything else (a pipe, a
/// device, a socket) without waiting for its other end. Every failure is a std::system_error that
/// names the path.
class InputFile final {
public:
    explicit InputFile(const LongFileName& filePath);
    ~InputFile();

    [[nodiscard]] bool isDirectory() const noexcept { return directory; }
    /// Throws that the path cannot be read, or whatever the action is, if it is a directory.
    void requireFile(std::string_view action = "read") const;
    /// In bytes; 0 for a directory.
    [[nodiscard]] std::uint64_t size() const noexcept { return bytes; }
    /// In seconds since 1970, UTC.
    [[nodiscard]] std::time_t modificationTime() const noexcept { return modified; }
    /// The twelve permission bits.
    [[nodiscard]] std::uint32_t permissions() const noexcept { return permissionBits; }

    /// Both continue where the last read ended. read() reads all bytes asked for, unless the file
    /// ends before. readSome() reads what the system gives at once, none only at the file's end.
    std::size_t read(void* destination, std::size_t size);
    std::size_t readSome(void* destination, std::size_t size);
    /// The next read begins at the start of the file.
    void rewind();

private:
    struct OpenFile;

    LongFileName path;
    std::unique_ptr<OpenFile> file;
    bool directory = false;
    std::uint64_t bytes = 0;
    std::time_t modified = 0;
    std::uint32_t permissionBits = 0;
};

}  // namespace tkcore
