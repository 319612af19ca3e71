#pragma once

#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Removes a file, a link, or a directory with its contents, however deep; follows no link. Goes on
/// with the rest if an entry cannot be removed.
std::error_code removeTree(const LongFileName& path);

}  // namespace tkcore
