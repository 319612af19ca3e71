#include "tkcore/files/inside/TreeRemoval.h"

#include <boost/filesystem.hpp>

#include "tkcore/files/Path.h"

namespace tkcore {

namespace fs = boost::filesystem;

std::error_code removeTree(const LongFileName& path) {
    boost::system::error_code error;
    const fs::path tree = toPath(path);
    fs::remove_all(tree, error);
    boost::system::error_code ignored;
    if (error && fs::is_directory(fs::symlink_status(tree, ignored))) {
        for (fs::directory_iterator entry(tree, ignored), end; entry != end;
             entry.increment(ignored)) {
            fs::remove_all(entry->path(), ignored);
        }
        fs::remove_all(tree, error);
    }
    return {error.value(), std::system_category()};
}

}  // namespace tkcore
