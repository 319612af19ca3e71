#include "tkcore/files/OutputFile.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/system/FileDescriptor.posix.h"
#include "tkcore/system/PatientWrite.posix.h"

namespace tkcore {

namespace {

FileDescriptor openToWrite(const PlaceOfFile& place, OutputFile::IfThere ifThere,
                           std::uint32_t permissions) {
    // A pipe without a reader is refused, not waited for.
    const bool appends = ifThere == OutputFile::IfThere::kAppend;
    const int flags =
        O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | (appends ? O_APPEND | O_NONBLOCK : O_EXCL);
    if (ifThere == OutputFile::IfThere::kReplace) {
        unlinkat(place.folder, place.name(), 0);
    }
    return FileDescriptor(openat(place.folder, place.name(), flags, permissions));
}

}  // namespace

struct OutputFile::OpenFile final {
    [[noreturn]] static void fail(const char* action, const LongFileName& path) {
        throw std::system_error(errno, std::generic_category(),
                                std::string("cannot ") + action + " " + VEL_ANSI(path));
    }

    FileDescriptor descriptor;
    bool mayHaveReader = false;
};

OutputFile::OutputFile(const LongFileName& filePath, IfThere ifThere, std::uint32_t permissions)
    : path(filePath), file(std::make_unique<OpenFile>()) {
    file->descriptor = openToWrite(placeOf(path), ifThere, permissions);
    file->mayHaveReader = ifThere == IfThere::kAppend;
    if (!file->descriptor) {
        OpenFile::fail("create", path);
    }
}

OutputFile::~OutputFile() = default;

OutputFile::OutputFile(OutputFile&&) noexcept = default;

void OutputFile::write(std::span<const char> bytes) {
    const int descriptor = file->descriptor.get();
    if (file->mayHaveReader) {
        if (!writePatiently(descriptor, std::string_view(bytes.data(), bytes.size()))) {
            OpenFile::fail("write", path);
        }
        return;
    }
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            errno = count == 0 ? ENOSPC : errno;
            OpenFile::fail("write", path);
        }
    }
}

}  // namespace tkcore
