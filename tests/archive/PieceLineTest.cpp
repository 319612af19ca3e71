#include <atomic>
#include <chrono>
#include <new>
#include <numeric>

#include <gtest/gtest.h>

#include "archive/inside/PieceLine.h"
#include "support/Processes.h"

namespace velextracta {
namespace {

std::atomic<int> workingThreads = 0;

/// Counts the running threads that have processed a piece.
class Worker final : public PieceWorker {
public:
    explicit Worker(std::function<void(Piece&)> action) : act(std::move(action)) {}
    void work(Piece& piece) override {
        thread_local const ThreadCount count;
        act(piece);
    }

private:
    struct ThreadCount {
        ThreadCount() { ++workingThreads; }
        ~ThreadCount() { --workingThreads; }
    };
    std::function<void(Piece&)> act;
};

class PieceLineTest : public testing::Test {
protected:
    /// The first bytes of the pieces that the line returns.
    std::vector<int> numbers(unsigned threads, int pieces, std::function<void(Piece&)> action) {
        int piecesRead = 0;
        const auto read = [&](std::span<std::byte> room) -> std::size_t {
            room[0] = static_cast<std::byte>(piecesRead);
            return piecesRead++ == pieces ? 0 : room.size();
        };
        workersMade = 0;
        PieceTools tools(
            [&] {
                ++workersMade;
                return std::make_unique<Worker>(action);
            },
            threads);
        PieceLine line(read, tools);
        std::vector<int> found;
        while (const Piece* piece = line.next()) {
            found.push_back(std::to_integer<int>(piece->original[0]));
        }
        return found;
    }
    static std::vector<int> upTo(int count) {
        std::vector<int> numbers(count);
        std::iota(numbers.begin(), numbers.end(), 0);
        return numbers;
    }

    int workersMade = 0;
};

TEST_F(PieceLineTest, keepsTheOrderHoweverLongThePiecesTake) {
    for (const unsigned threads : {0, 1, 2, 7}) {
        for (const int pieces : {0, 1, 2, 3, 60}) {
            const auto work = [](Piece& piece) {
                const int pause = std::to_integer<int>(piece.original[0]) * 7 % 5;
                std::this_thread::sleep_for(std::chrono::microseconds(300 * pause));
            };
            EXPECT_EQ(numbers(threads, pieces, work), upTo(pieces)) << threads;
            EXPECT_LE(workersMade, std::max(1, pieces));
        }
    }
}

TEST_F(PieceLineTest, worksOnAsManyThreadsAsAreAskedForThatNoSignalInterrupts) {
    const auto caller = std::this_thread::get_id();
    std::atomic<int> working = 0;
    std::atomic<int> disturbed = 0;
    const auto work = [&](Piece& piece) {
        ++working;
        // The first pieces wait for each other.
        if (piece.original[0] < std::byte{3}) {
            EXPECT_TRUE(eventually([&] { return working >= 3; }));
        }
        disturbed += std::this_thread::get_id() != caller && signalsReachThisThread();
    };
    EXPECT_EQ(numbers(3, 20, work), upTo(20));
    EXPECT_EQ(disturbed, 0);
    EXPECT_EQ(workersMade, 3);
}

TEST_F(PieceLineTest, handsAFailureOfAnyThreadOnAndLeavesNoThread) {
    for (int failing = 0; failing < 12; ++failing) {
        const auto work = [&](Piece& piece) {
            if (std::to_integer<int>(piece.original[0]) == failing) {
                throw std::bad_alloc();
            }
        };
        EXPECT_THROW(numbers(3, 12, work), std::bad_alloc);
        EXPECT_LE(workingThreads, 1);  // the caller's
    }
}

TEST_F(PieceLineTest, handsAFailureToReadOrToMakeAWorkerOnAndLeavesNoThread) {
    const auto drain = [](int pieceThatFails, int workerThatFails) {
        int pieces = 0;
        int workers = 0;
        const auto read = [&](std::span<std::byte> room) {
            return pieces++ == pieceThatFails ? throw std::runtime_error("read") : room.size();
        };
        const auto make = [&] {
            return workers++ == workerThatFails ? throw std::runtime_error("make")
                                                : std::make_unique<Worker>([](Piece&) {});
        };
        PieceTools tools(make, 3);
        PieceLine line(read, tools);
        while (line.next() != nullptr) {
        }
    };
    constexpr int kNever = -1;
    for (const int number : {0, 1, 2}) {
        EXPECT_THROW(drain(number * 5, kNever), std::runtime_error);
        EXPECT_THROW(drain(kNever, number), std::runtime_error);
        EXPECT_LE(workingThreads, 1);  // the caller's
    }
}

}  // namespace
}  // namespace velextracta
