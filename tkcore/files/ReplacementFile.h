#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <system_error>
#include <vector>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

class ReplacementTarget;

/// A new file that appears at its path only by commit(). An archive owns one while it is written.
/// Without commit() it leaves no trace, and an older file stays as it was. Symbolic links at the
/// path are followed. It replaces only writable regular files, and no file that somebody else
/// created at the path after the constructor.
///
/// Offsets and sizes are in bytes. Every failure is a std::system_error that names the path. After
/// a failure commit() fails as well, so other failures may be ignored.
class ReplacementFile final {
public:
    explicit ReplacementFile(const LongFileName& filePath);
    ~ReplacementFile();

    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    void write(const void* data, std::size_t size);
    /// Sets the offset, from the start of the file, of the next write.
    void seek(std::uint64_t offset);
    [[nodiscard]] std::uint64_t tell() const noexcept { return bufferOffset + buffer.size(); }

    /// Writes the bytes to the disk and puts the file at the path in one step. Calls the action
    /// right before that step; if the action throws, everything stays as it was.
    void commit(const std::function<void()>& beforeIt = [] {});

private:
    void flush();
    void throwEarlierFailure() const;
    /// Calls the action with the target, and remembers a failure.
    template <typename Action>
    void perform(const Action& action);

    LongFileName path;
    std::unique_ptr<ReplacementTarget> target;
    std::vector<char> buffer;
    std::uint64_t bufferOffset = 0;
    std::error_code failure;
};

}  // namespace tkcore
