#include "tkcore/OutputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

namespace {

int flagsFor(OutputFile::IfThere ifThere) {
    switch (ifThere) {
        case OutputFile::IfThere::kFail:
            return O_EXCL;
        case OutputFile::IfThere::kAppend:
            return O_APPEND;
        case OutputFile::IfThere::kTruncate:
        default:
            return O_TRUNC;
    }
}

}  // namespace

struct OutputFile::OpenFile final {
    FileDescriptor descriptor;
};

OutputFile::OutputFile(const std::string& filePath, IfThere ifThere, std::uint32_t permissions)
    : path(filePath), file(std::make_unique<OpenFile>()) {
    file->descriptor = FileDescriptor(::open(
        path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | flagsFor(ifThere), permissions));
    if (!file->descriptor) {
        throw std::system_error(errno, std::generic_category(), "cannot create " + path);
    }
}

OutputFile::~OutputFile() = default;

OutputFile::OutputFile(OutputFile&&) noexcept = default;

void OutputFile::write(std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file->descriptor.get(), bytes.data(), bytes.size());
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            throw std::system_error(count == 0 ? ENOSPC : errno, std::generic_category(),
                                    "cannot write " + path);
        }
    }
}

}  // namespace tkcore
