#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "archive/Piece.h"

namespace velextracta {

/// Cuts a file into pieces, has them worked on side by side and hands them back in their order.
/// Memory is bounded: two pieces for each thread. Reading is the caller's, who also takes part in
/// the work, so that it gets done however few threads can be started. Threads are started as pieces
/// come and have ended when the line is gone.
class PieceLine final {
public:
    /// Fills the buffer from where the last call ended; less than that is the end.
    using Read = std::function<std::size_t(std::span<std::byte>)>;
    /// Called by the caller's thread, once for each thread.
    using MakeWorker = std::function<std::unique_ptr<PieceWorker>()>;

    /// The number of threads includes the caller's.
    PieceLine(Read readBytes, MakeWorker makeWorker, unsigned threadCount);
    ~PieceLine();

    PieceLine(const PieceLine&) = delete;
    PieceLine& operator=(const PieceLine&) = delete;

    /// The next piece, until the next call; null at the end. Throws what reading or the work on
    /// this piece has thrown; the line is of no use after that.
    const Piece* next();

private:
    struct Place {
        Piece piece;
        bool isDone = false;
        std::exception_ptr failure;
    };

    Place& placeOf(std::uint64_t number) { return places[number % places.size()]; }
    void readAhead();
    void startThread();
    void workUntilStopped(PieceWorker& worker);
    void workOnOne(std::unique_lock<std::mutex>& lock, PieceWorker& worker);

    Read read;
    MakeWorker make;
    std::size_t mostThreads;                            // beside the caller's
    std::vector<std::unique_ptr<PieceWorker>> workers;  // the caller's first
    bool isAtEnd = false;
    std::uint64_t taken = 0;  // numbers of pieces

    std::mutex mutex;  // for all that follows, and for the marks of places
    std::condition_variable pieceGiven;
    std::condition_variable pieceDone;
    std::uint64_t given = 0;
    std::uint64_t claimed = 0;
    bool isStopped = false;
    std::vector<Place> places;

    std::vector<std::jthread> threads;  // the last member: none outlives what it uses
};

}  // namespace velextracta
