#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"

namespace velextracta {

/// What is doubtful about the file of a view, as far as its head tells, for warnings: that it is no
/// view file, that its columns are not the fields asked for (any will do where none is named), that
/// records have not as many fields as its A! line. Names of fields are compared to the letter,
/// since that is how those who load the file look them up. Reads no more than 64 KiB, of which a
/// line that is cut off there is not looked at, and no more than 1,000 lines.
std::vector<std::string> doubtsAboutViewFile(const tkcore::LongFileName& path,
                                             const std::vector<std::string>& fields);

}  // namespace velextracta
