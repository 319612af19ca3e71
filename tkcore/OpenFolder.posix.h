#pragma once

#include <string>

#include "tkcore/FileDescriptor.posix.h"
#include "tkcore/LongFileName.h"

namespace tkcore {

/// A directory that is held open.
struct OpenFolder final {
    FileDescriptor descriptor;
};

/// A path as the system's calls want it that end in "at": a folder, and the path from there on.
struct PlaceOfFile final {
    int folder;
    std::string path;

    [[nodiscard]] const char* name() const noexcept { return path.c_str(); }
};

PlaceOfFile placeOf(const LongFileName& file);

}  // namespace tkcore
