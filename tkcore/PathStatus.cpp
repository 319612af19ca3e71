#include "tkcore/PathStatus.h"

namespace tkcore {

namespace fs = boost::filesystem;

bool isThere(const fs::path& path) {
    boost::system::error_code error;
    return !isReserved(path) && fs::exists(fs::status(path, error));
}

bool isDirectory(const fs::path& path) {
    boost::system::error_code error;
    return !isReserved(path) && fs::is_directory(path, error);
}

std::uint64_t fileSize(const fs::path& path) {
    boost::system::error_code error;
    const std::uintmax_t size = isReserved(path) ? 0 : fs::file_size(path, error);
    return error ? 0 : size;
}

bool isSameFile(const fs::path& left, const fs::path& right) {
    boost::system::error_code error;
    return fs::equivalent(left, right, error) && !error;
}

}  // namespace tkcore
