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

/// Memory for pieces, and workers. Making them takes as long as packing a small file, so they are
/// kept from one file to the next.
class PieceTools final {
public:
    using MakeWorker = std::function<std::unique_ptr<PieceWorker>()>;

    /// Each thread's worker is made when it is first needed. The number of threads includes the
    /// caller's.
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

/// Cuts a file into pieces, processes them side by side and returns them in their order. Memory is
/// bounded: two pieces for each thread. The caller's thread reads and also processes pieces, so the
/// work gets done even if no other thread can be started. The destructor waits for all threads.
class PieceLine final {
public:
    /// Fills the buffer from where the last call ended, and returns the number of bytes. Fewer
    /// bytes than fit mean the end.
    using Read = std::function<std::size_t(std::span<std::byte>)>;

    /// Only one line at a time may use the tools.
    PieceLine(Read readBytes, PieceTools& pieceTools);
    ~PieceLine();

    PieceLine(const PieceLine&) = delete;
    PieceLine& operator=(const PieceLine&) = delete;

    /// The next piece, valid until the next call; null at the end. Throws the exception of reading
    /// or of the work on this piece. The line cannot be used after an exception.
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
