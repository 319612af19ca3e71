#include "tkcore/PathStatus.h"

namespace tkcore {

bool isTooLong(const boost::filesystem::path& path) {
    boost::system::error_code error;
    boost::filesystem::symlink_status(path, error);
    return error == boost::system::errc::filename_too_long;
}

bool isReserved(const boost::filesystem::path& /*path*/) {
    return false;
}

}  // namespace tkcore
