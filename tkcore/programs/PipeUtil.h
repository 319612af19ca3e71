#pragma once

#include "tkcore/programs/Pipe.h"
#include "tkcore/programs/inside/PrintedText.h"

namespace tkcore {

/// Appends to output what waits in the pipe; never waits for more. Throws Interrupted, so that a
/// child that prints without end cannot hold us.
///
/// Returns 0, 1 when the pipe could not be asked, or 2 when it could not be read.
int drainPipe(PipeHandle readEnd, PrintedText& output);

}  // namespace tkcore
