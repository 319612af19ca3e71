#pragma once

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// A directory that is held open. Nobody else can give its name to something else meanwhile, so its
/// files are reached by their paths.
struct OpenFolder final {
    Handle handle;
};

}  // namespace tkcore
