#pragma once

#include "tkcore/AString.h"
#include "tkcore/Pipe.h"

namespace tkcore {

/// Appends to output, as narrow text, what waits in the pipe; never waits for more. Stops early
/// once an interruption is noted, so that a child that prints without end cannot hold us.
///
/// Returns 0, 1 when the pipe could not be asked, or 2 when it could not be read.
int drainPipe(PipeHandle readEnd, AString& output);

}  // namespace tkcore
