#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// A file to write from its start, or to append to. Each write goes to the system at once. An
/// appended text is one write, so that texts of several processes do not mix. Every failure is a
/// std::system_error that names the path. The bytes written before a failure stay.
class OutputFile final {
public:
    /// kReplace removes what has the name, perhaps a link, without opening it, and makes a new
    /// file.
    enum class IfThere { kFail, kReplace, kAppend };

    static constexpr std::uint32_t kUsualPermissions = 0666;

    /// The permissions are those of a new file; the system takes off those in its mask.
    OutputFile(const LongFileName& filePath, IfThere ifThere,
               std::uint32_t permissions = kUsualPermissions);
    ~OutputFile();

    void write(std::span<const char> bytes);

private:
    struct OpenFile;

    LongFileName path;
    std::unique_ptr<OpenFile> file;
};

}  // namespace tkcore
