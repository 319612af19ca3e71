#include "tkcore/PathStatus.h"

namespace tkcore {

namespace fs = boost::filesystem;

bool isThere(const fs::path& path) {
    boost::system::error_code error;
    return !isReserved(path) && fs::exists(fs::status(path, error));
}

bool isDirectory(const fs::path& path) {
    boost::system::error_code error;
    const fs::file_type type =
        isReserved(path) ? fs::file_not_found : fs::status(path, error).type();
    if (type != fs::reparse_file) {
        return type == fs::directory_file;
    }
    // Of a folder that is kept in step with a cloud the library only knows that it is special.
    const fs::directory_iterator listing(path, error);
    return !error;
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
