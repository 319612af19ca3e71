#pragma once

#include <memory>

namespace tkcore {

/// A pointer to one end of a pipe, which it does not own; null for none.
using PipeHandle = struct PipeEnd*;

/// An anonymous pipe. Children do not inherit its ends. The ChildProgram that prints into it owns
/// it.
class CPipe final {
public:
    CPipe();
    ~CPipe();
    CPipe(const CPipe&) = delete;
    CPipe& operator=(const CPipe&) = delete;

    /// False if the system has no descriptors left; then both ends are closed.
    bool CreatePipe();
    void Close() noexcept;
    void closeWriteEnd() noexcept;

    PipeHandle readHandle() noexcept { return readEnd.get(); }
    PipeHandle writeHandle() noexcept { return writeEnd.get(); }

private:
    std::unique_ptr<PipeEnd> readEnd;
    std::unique_ptr<PipeEnd> writeEnd;
};

/// Reads from the read end of a pipe without waiting for bytes.
class CPipeCommunicator final {
public:
    explicit CPipeCommunicator(PipeHandle readHandle) : readEnd(readHandle) {}

    /// With consume, reads up to size bytes into the buffer and sets count to their number.
    /// Without consume, only sets count to the number of available bytes, at most size. Returns 0
    /// or the system's error code. Never waits: timeout (milliseconds) and acceptPart are for
    /// systems whose pipes block.
    int Read(char* buffer, int size, int& count, bool consume, int timeout, bool acceptPart);

private:
    PipeHandle readEnd;
};

}  // namespace tkcore
