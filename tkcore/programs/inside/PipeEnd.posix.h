#pragma once

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

/// What stands behind a PipeHandle.
struct PipeEnd final {
    FileDescriptor descriptor;
};

}  // namespace tkcore
