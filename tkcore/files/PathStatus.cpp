#include "tkcore/files/PathStatus.h"

#include <boost/filesystem.hpp>

#include "tkcore/files/Path.h"

namespace tkcore {

namespace fs = boost::filesystem;

using Kind = PathStatus::Kind;

bool isThere(const LongFileName& path) {
    const Kind kind = statusOf(path).kind;
    return kind != Kind::kNothing && kind != Kind::kUnknown;
}

bool isDirectory(const LongFileName& path) {
    return statusOf(path).kind == Kind::kDirectory;
}

std::uint64_t fileSize(const LongFileName& path) {
    const PathStatus status = statusOf(path);
    return status.kind == Kind::kFile ? status.size : 0;
}

LongFileName followLinks(const LongFileName& path) {
    constexpr int kMostLinks = 40;
    fs::path place = toPath(path);
    for (int links = 0; links < kMostLinks; ++links) {
        boost::system::error_code error;
        const fs::path target = fs::read_symlink(place, error);
        if (error) {
            break;
        }
        place = target.is_absolute() ? target : place.parent_path() / target;
    }
    return path.IsInitialized() ? LongFileName(pathText(place)) : path;
}

DiskRoom roomIn(const LongFileName& folder) {
    boost::system::error_code unknown;
    const fs::space_info disk = fs::space(toPath(folder), unknown);
    return unknown ? DiskRoom() : DiskRoom{disk.capacity, disk.available};
}

}  // namespace tkcore
