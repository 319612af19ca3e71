#pragma once

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// What stands behind a PipeHandle.
struct PipeEnd final {
    Handle handle;
};

}  // namespace tkcore
