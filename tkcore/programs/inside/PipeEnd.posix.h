#pragma once

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

/// The object behind a PipeHandle.
struct PipeEnd final {
    FileDescriptor descriptor;
};

}  // namespace tkcore
