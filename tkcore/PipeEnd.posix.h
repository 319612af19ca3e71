#pragma once

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

/// What stands behind a PipeHandle.
struct PipeEnd final {
    FileDescriptor descriptor;
};

}  // namespace tkcore
