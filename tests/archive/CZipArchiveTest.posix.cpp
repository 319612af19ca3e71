#include "archive/CZipArchiveTest.h"

#include <atomic>
#include <cerrno>
#include <thread>

#include <pthread.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Sanitizers have their own malloc, and need more stack.
constexpr std::size_t kLittleStack = std::size_t{1} << 20U;
#else
constexpr std::size_t kLittleStack = std::size_t{48} << 10U;

namespace {

constexpr long kNever = -1;
std::atomic<long> allocationsBeforeFailure = kNever;
std::atomic<bool> failsForGood = false;

}  // namespace

extern "C" void* __libc_malloc(std::size_t size);

extern "C" void* malloc(std::size_t size) {
    if (allocationsBeforeFailure != kNever && allocationsBeforeFailure-- <= 0) {
        allocationsBeforeFailure = failsForGood ? 0 : kNever;
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

namespace velextracta {
namespace {

TEST_F(CZipArchiveTest, packsOrFailsWhicheverAllocationFails) {
    writeFile(input, viewText(4 * kPiece));
    pack({input, input});
    const std::string archive = readFile(output);
    writeFile(output, "older");
    for (const bool forGood : {false, true}) {
        failsForGood = forGood;
        bool hasFailed = true;
        for (long number = 0; hasFailed; ++number) {
            bool isPacked = true;
            allocationsBeforeFailure = number;
            try {
                pack({input, input});
            } catch (const std::exception&) {
                isPacked = false;
            }
            hasFailed = allocationsBeforeFailure.exchange(kNever) <= 0;
            ASSERT_EQ(readFile(output), isPacked ? archive : "older") << number;
            if (isPacked) {
                writeFile(output, "older");
            }
        }
    }
}

}  // namespace
}  // namespace velextracta

#endif

namespace velextracta {
namespace {

TEST_F(CZipArchiveTest, packsWhereThreadsHaveHardlyAnyStackOrCannotBeStarted) {
    writeFile(input, viewText(9 * kPiece));
    pack({input});
    const std::string archive = readFile(output);
    const auto packWith = [&](std::size_t stackSize, bool threadsStart) {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, stackSize);
        pthread_setattr_default_np(&attributes);
        bool started = true;
        try {
            std::thread([] {}).join();
        } catch (const std::system_error&) {
            started = false;
        }
        pack({input});
        _exit(started == threadsStart && readFile(output) == archive ? 0 : 1);
    };
    EXPECT_EXIT(packWith(kLittleStack, true), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(packWith(std::size_t{1} << 50U, false), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace velextracta
