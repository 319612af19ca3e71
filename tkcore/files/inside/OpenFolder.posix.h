#pragma once

#include <string>

#include "tkcore/files/LongFileName.h"
#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

/// A directory that is held open.
struct OpenFolder final {
    FileDescriptor descriptor;
};

/// A path for the system calls whose names end in "at": a folder, and the path from there.
struct PlaceOfFile final {
    int folder;
    std::string path;

    [[nodiscard]] const char* name() const noexcept { return path.c_str(); }
};

PlaceOfFile placeOf(const LongFileName& file);

}  // namespace tkcore
