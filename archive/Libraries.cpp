#include "archive/Libraries.h"

#include <libdeflate.h>
#include <zlib.h>

namespace velextracta {

std::string archiveLibraries() {
    return std::string("libdeflate " LIBDEFLATE_VERSION_STRING ", zlib ") + zlibVersion();
}

}  // namespace velextracta
