#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"

namespace velextracta {

/// Doubts about a view's file, for warnings: that it is no view file, that its columns are not the
/// fields asked for (none: any), that records have another number of fields than its A! line. Field
/// names must be equal byte for byte, because programs that load the file look them up like that.
/// Reads at most 64 KiB and 1,000 lines, and ignores a line that is cut off at 64 KiB.
std::vector<std::string> doubtsAboutViewFile(const tkcore::LongFileName& path,
                                             const std::vector<std::string>& fields);

}  // namespace velextracta
