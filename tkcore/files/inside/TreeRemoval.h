#pragma once

#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Removes a file, a link, or a directory with all that it contains, however deep; follows no link.
/// What cannot be removed keeps nothing else from being removed.
std::error_code removeTree(const LongFileName& path);

}  // namespace tkcore
