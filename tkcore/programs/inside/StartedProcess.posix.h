#pragma once

#include <optional>

#include <sys/types.h>

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

/// The record behind a ProcessHandle.
struct StartedProcess final {
    pid_t keeper = 0;
    FileDescriptor
        keeperDescriptor;         // becomes readable at the keeper's end; none once that is known
    std::optional<int> exitCode;  // once the keeper has been reaped
};

}  // namespace tkcore
