#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace velextracta {

/// A part of a file that is being packed.
struct Piece {
    static constexpr std::size_t kMostBytes = std::size_t{144} << 10U;

    /// Takes the memory at the first call.
    std::span<std::byte> room() {
        if (!bytes) {
            bytes = std::make_unique_for_overwrite<std::byte[]>(kMostBytes);
        }
        return {bytes.get(), kMostBytes};
    }

    std::span<const std::byte> original;  // within the room
    std::vector<std::byte> deflated;

private:
    std::unique_ptr<std::byte[]> bytes;
};

/// Processes pieces, one worker for each thread.
class PieceWorker {
public:
    PieceWorker() = default;
    virtual ~PieceWorker() = default;
    PieceWorker(const PieceWorker&) = delete;
    PieceWorker& operator=(const PieceWorker&) = delete;

    virtual void work(Piece& piece) = 0;
};

}  // namespace velextracta
