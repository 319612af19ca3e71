#include "tkcore/files/OutputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/FileDescriptor.posix.h"
#include "tkcore/system/PatientWrite.posix.h"

namespace tkcore {

namespace {

FileDescriptor openToWrite(const PlaceOfFile& place, OutputFile::IfThere ifThere,
                           std::uint32_t permissions) {
    // O_NONBLOCK refuses a pipe without a reader instead of waiting for one.
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
        throwPathFailure({errno, std::generic_category()}, action, path);
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

void OutputFile::write(std::span<const char> bytes) {
    const int descriptor = file->descriptor.get();
    const auto write = [&](std::span<const char> rest) {
        return ::write(descriptor, rest.data(), rest.size());
    };
    const bool isWritten = file->mayHaveReader
                               ? writePatiently(descriptor, {bytes.data(), bytes.size()})
                               : writeAll(bytes, write);
    if (!isWritten) {
        OpenFile::fail("write", path);
    }
}

}  // namespace tkcore
