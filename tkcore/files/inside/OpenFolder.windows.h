#pragma once

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// A directory that is held open. While it is open nobody can give its name to something else, so
/// the ordinary paths of its files are safe.
struct OpenFolder final {
    Handle handle;
};

}  // namespace tkcore
