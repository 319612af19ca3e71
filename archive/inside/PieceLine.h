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

#include "archive/inside/Piece.h"

namespace velextracta {

/// What a line works with: memory for pieces, and workers. To make them takes as long as to pack a
/// small file, so they are kept from one file to the next.
class PieceTools final {
public:
    using MakeWorker = std::function<std::unique_ptr<PieceWorker>()>;

    /// The worker of each thread is made when it is first needed. The number of threads includes
    /// the caller's.
    PieceTools(MakeWorker makeWorker, unsigned threadCount);

private:
    friend class PieceLine;

    struct Place {
        Piece piece;
        bool isDone = false;
        std::exception_ptr failure;
    };

    PieceWorker& worker(std::size_t number);

    MakeWorker make;
    std::size_t mostThreads;                            // beside the caller's
    std::vector<std::unique_ptr<PieceWorker>> workers;  // the caller's first
    std::vector<Place> places;
};

/// Cuts a file into pieces, has them worked on side by side and hands them back in their order.
/// Memory is bounded: two pieces for each thread. The caller reads, and takes part in the work, so
/// that it gets done even if no thread can be started. Threads are started as pieces come and have
/// ended when the line is gone.
class PieceLine final {
public:
    /// Fills the buffer from where the last call ended; less than that is the end.
    using Read = std::function<std::size_t(std::span<std::byte>)>;

    /// Only one line at a time works with the tools.
    PieceLine(Read readBytes, PieceTools& pieceTools);
    ~PieceLine();

    PieceLine(const PieceLine&) = delete;
    PieceLine& operator=(const PieceLine&) = delete;

    /// The next piece, until the next call; null at the end. Throws what reading or the work on
    /// this piece has thrown; the line is of no use after that.
    const Piece* next();

private:
    using Place = PieceTools::Place;

    Place& placeOf(std::uint64_t number) { return tools.places[number % tools.places.size()]; }
    void readAhead();
    void startThread();
    void workUntilStopped(PieceWorker& worker);
    void workOnOne(std::unique_lock<std::mutex>& lock, PieceWorker& worker);

    Read read;
    PieceTools& tools;
    bool isAtEnd = false;
    std::uint64_t taken = 0;  // numbers of pieces

    std::mutex mutex;  // for all that follows, and for the marks of places
    std::condition_variable pieceGiven;
    std::condition_variable pieceDone;
    std::uint64_t given = 0;
    std::uint64_t claimed = 0;
    bool isStopped = false;

    std::vector<std::jthread> threads;  // the last member: none outlives what it uses
};

}  // namespace velextracta
