#pragma once

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// The object behind a PipeHandle.
struct PipeEnd final {
    Handle handle;
};

}  // namespace tkcore
