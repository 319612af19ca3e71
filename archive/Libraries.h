#pragma once

#include <string>

namespace velextracta {

/// The libraries that packing rests on, by name and version.
std::string archiveLibraries();

}  // namespace velextracta
