#pragma once

#include "tkcore/programs/Pipe.h"
#include "tkcore/programs/inside/PrintedText.h"

namespace tkcore {

/// Appends the available bytes of the pipe to the output; never waits for more. Throws Interrupted,
/// so that a child that prints without end does not stop us from ending.
///
/// Returns 0; 1 if the number of bytes could not be determined; 2 if the pipe could not be read.
int drainPipe(PipeHandle readEnd, PrintedText& output);

}  // namespace tkcore
