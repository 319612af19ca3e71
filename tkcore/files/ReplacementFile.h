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

/// A new file that takes the place at its path only by commit(); an archive owns one while it is
/// made. Dropped before that it leaves no trace, and an older file stays as it was. Symbolic links
/// at the path are followed; anything there that is no writable regular file is refused, and so is
/// a file that comes to be where there was none at first.
///
/// Offsets and sizes are in bytes. Every failure is a std::system_error that names the path; once
/// one has happened, commit() fails too, so that it may be ignored in between.
class ReplacementFile final {
public:
    explicit ReplacementFile(const LongFileName& filePath);
    ~ReplacementFile();

    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    void write(const void* data, std::size_t size);
    /// The offset from the start of the file at which the next write goes on.
    void seek(std::uint64_t offset);
    [[nodiscard]] std::uint64_t tell() const noexcept { return bufferOffset + buffer.size(); }

    /// Brings the bytes to the disk and puts the file at the path in one step. The action is called
    /// right before that step; what it throws leaves all as it was.
    void commit(const std::function<void()>& beforeIt = [] {});

private:
    void flush();
    void throwEarlierFailure() const;
    /// Does it with the target, and keeps the failure.
    template <typename Action>
    void perform(const Action& action);

    LongFileName path;
    std::unique_ptr<ReplacementTarget> target;
    std::vector<char> buffer;
    std::uint64_t bufferOffset = 0;
    std::error_code failure;
};

}  // namespace tkcore
