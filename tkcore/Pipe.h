#pragma once

#include "tkcore/FileDescriptor.h"

namespace tkcore {

/// One end of a pipe, with what is known of it.
struct PipeEnd final {
    FileDescriptor descriptor;
    bool announcesWrites = false;
    int emptyAt = -1;  // value of childNews() when it was last seen to be empty
};

/// What users hand around of a pipe: a look at one end, null for none.
using PipeHandle = PipeEnd*;

/// An anonymous pipe; neither end reaches a child by itself.
class CPipe final {
public:
    /// False when the system has no descriptors left; both ends are then closed.
    bool CreatePipe();
    void Close() noexcept;
    void closeWriteEnd() noexcept { writeEnd.descriptor.close(); }

    PipeHandle readHandle() noexcept { return &readEnd; }
    PipeHandle writeHandle() noexcept { return &writeEnd; }

private:
    PipeEnd readEnd;
    PipeEnd writeEnd;
};

/// Reads from the read end of a pipe without ever waiting for bytes.
class CPipeCommunicator final {
public:
    explicit CPipeCommunicator(PipeHandle readHandle) : readEnd(readHandle) {}

    /// With consume, reads up to size bytes into the buffer and sets count to their number;
    /// without, only sets count to the number of bytes that wait, at most size. Returns 0, or
    /// the system's error code. Nothing is waited for, whatever the timeout (milliseconds) and
    /// the wish for a part of the bytes say: both are there for systems whose pipes block.
    int Read(char* buffer, int size, int& count, bool consume, int timeout, bool acceptPart);

private:
    PipeHandle readEnd;
};

}  // namespace tkcore
