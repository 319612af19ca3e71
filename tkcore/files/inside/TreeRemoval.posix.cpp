#include "tkcore/files/inside/TreeRemoval.h"

#include <fcntl.h>

#include "tkcore/files/inside/FolderContents.posix.h"

namespace tkcore {

std::error_code removeTree(const LongFileName& path) {
    std::string text = VEL_ANSI(path);
    // With a separator at the end of the path the system would follow a link.
    while (text.size() > 1 && text.ends_with('/')) {
        text.pop_back();
    }
    return {removeEntry(AT_FDCWD, text.c_str()), std::generic_category()};
}

}  // namespace tkcore
