#include "tkcore/programs/PipeUtil.h"

#include <array>
#include <cstddef>

#include "tkcore/report/Assertion.h"
#include "tkcore/system/Interruption.h"

namespace tkcore {

namespace {

constexpr int kBufferSize = 14096;
constexpr int kQueryFailed = 1;
constexpr int kReadFailed = 2;

}  // namespace

int drainPipe(PipeHandle readEnd, PrintedText& output) {
    CPipeCommunicator communicator(readEnd);
    std::array<char, kBufferSize> buffer;
    for (;;) {
        throwIfInterrupted();
        char smallBuffer = 0;
        int count = 0;
        if (communicator.Read(&smallBuffer, 1, count, false, 0, false) != 0) {
            return kQueryFailed;
        }
        if (count == 0) {
            return 0;
        }
        int receivedSize = 0;
        if (communicator.Read(buffer.data(), kBufferSize, receivedSize, true, 0, true) != 0) {
            return kReadFailed;
        }
        VEL_ASSERT_AT("Norvik/PipeUtil", 51, receivedSize > 0);
        output.append({buffer.data(), static_cast<std::size_t>(receivedSize)});
    }
}

}  // namespace tkcore
