#pragma once

#include <functional>

// The names in a folder that is open for reading, and their removal; what PrivateDirectory and
// TreeRemoval build on. All return 0, or the system's error code.

namespace tkcore {

/// Calls the action with each name in the folder but "." and "..", in the order of the listing.
int forEachName(int folder, const std::function<void(const char*)>& action);

/// Removes all that the folder contains. Where rights of its own directories are missing it gives
/// them to itself. Follows no link, and needs no memory that grows with what there is.
int emptyFolder(int folder);

/// The same of an entry of the folder, with the entry.
int removeEntry(int folder, const char* name);

}  // namespace tkcore
