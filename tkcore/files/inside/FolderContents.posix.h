#pragma once

#include <functional>

// Listing and removing the contents of a folder that is open for reading, for PrivateDirectory and
// TreeRemoval. All functions return 0 or the system's error code.

namespace tkcore {

/// Calls the action with each name in the folder but "." and "..", in the order of the listing.
int forEachName(int folder, const std::function<void(const char*)>& action);

/// Removes the contents of the folder. Sets missing rights of its own directories. Follows no link.
/// Its memory does not grow with the contents.
int emptyFolder(int folder);

/// Removes an entry of the folder in the same way, with its contents.
int removeEntry(int folder, const char* name);

}  // namespace tkcore
