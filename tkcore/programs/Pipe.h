#pragma once

#include <memory>

namespace tkcore {

/// What users hand around of a pipe: a look at one end, null for none.
using PipeHandle = struct PipeEnd*;

/// An anonymous pipe; neither end reaches a child by itself. Owned by the ChildProgram that prints
/// into it.
class CPipe final {
public:
    CPipe();
    ~CPipe();
    CPipe(const CPipe&) = delete;
    CPipe& operator=(const CPipe&) = delete;

    /// False when the system has no descriptors left; both ends are then closed.
    bool CreatePipe();
    void Close() noexcept;
    void closeWriteEnd() noexcept;

    PipeHandle readHandle() noexcept { return readEnd.get(); }
    PipeHandle writeHandle() noexcept { return writeEnd.get(); }

private:
    std::unique_ptr<PipeEnd> readEnd;
    std::unique_ptr<PipeEnd> writeEnd;
};

/// Reads from the read end of a pipe without ever waiting for bytes; made for each emptying.
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
