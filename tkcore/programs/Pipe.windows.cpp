#include "tkcore/programs/Pipe.h"

#include <algorithm>

#include "tkcore/programs/inside/PipeEnd.windows.h"

namespace tkcore {

namespace {

constexpr DWORD kBufferSize = 65536;  // large, so that a child seldom waits for us

}  // namespace

CPipe::CPipe() : readEnd(std::make_unique<PipeEnd>()), writeEnd(std::make_unique<PipeEnd>()) {}

CPipe::~CPipe() = default;

bool CPipe::CreatePipe() {
    HANDLE handles[2] = {};
    Close();
    if (::CreatePipe(&handles[0], &handles[1], nullptr, kBufferSize) == 0) {
        return false;
    }
    readEnd->handle = Handle(handles[0]);
    writeEnd->handle = Handle(handles[1]);
    return true;
}

void CPipe::Close() noexcept {
    readEnd->handle.close();
    closeWriteEnd();
}

void CPipe::closeWriteEnd() noexcept {
    writeEnd->handle.close();
}

int CPipeCommunicator::Read(char* buffer, int size, int& count, bool consume, int /*timeout*/,
                            bool /*acceptPart*/) {
    DWORD waiting = 0;
    if (PeekNamedPipe(readEnd->handle.get(), nullptr, 0, nullptr, &waiting, nullptr) == 0) {
        return static_cast<int>(GetLastError());
    }
    DWORD received = std::min(waiting, static_cast<DWORD>(size));
    if (consume && received != 0 &&
        ReadFile(readEnd->handle.get(), buffer, received, &received, nullptr) == 0) {
        count = 0;
        return static_cast<int>(GetLastError());
    }
    count = static_cast<int>(received);
    return 0;
}

}  // namespace tkcore
