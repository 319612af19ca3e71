#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// A file that is written from its start, or from its end, on; each write at once and, where it is
/// appended to, in one piece, so that writes of several processes do not mix. Every failure is a
/// std::system_error that names the path; what was written by then stays.
class OutputFile final {
public:
    /// To replace is to make it anew: what has the name, a link perhaps, is removed, never opened.
    enum class IfThere { kFail, kReplace, kAppend };

    static constexpr std::uint32_t kUsualPermissions = 0666;

    /// The permissions are those of a new file, less what the system is told to take off.
    OutputFile(const LongFileName& filePath, IfThere ifThere,
               std::uint32_t permissions = kUsualPermissions);
    ~OutputFile();
    OutputFile(OutputFile&&) noexcept;

    void write(std::span<const char> bytes);

private:
    struct OpenFile;

    LongFileName path;
    std::unique_ptr<OpenFile> file;
};

}  // namespace tkcore
