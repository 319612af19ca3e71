#include "tkcore/OutputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

struct OutputFile::OpenFile final {
    FileDescriptor descriptor;
};

OutputFile::OutputFile(const std::string& filePath, IfThere ifThere, std::uint32_t permissions)
    : path(filePath), file(std::make_unique<OpenFile>()) {
    const int taken = ifThere == IfThere::kFail ? O_EXCL : O_TRUNC;
    file->descriptor = FileDescriptor(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | taken, permissions));
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
