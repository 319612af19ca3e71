#pragma once

#include <string>

namespace velextracta {

/// Names and versions of the libraries that packing uses.
std::string archiveLibraries();

}  // namespace velextracta
