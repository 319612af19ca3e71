#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

struct libdeflate_compressor;

namespace velextracta {

/// Deflates a file piece by piece with a library that only knows whole files: every piece but the
/// last is left open behind, so that the deflated pieces in a row are one deflated file. Memory
/// does not grow with the file, and the caller has a say after each piece.
class PieceDeflater final {
public:
    /// The level goes from 0 (store) to 9 (smallest). The result is good until the next call.
    std::span<const std::byte> deflate(std::span<const std::byte> piece, int level, bool isLast);

private:
    void useLevel(int level);

    struct FreeCompressor {
        void operator()(libdeflate_compressor* owned) const noexcept;
    };

    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor;
    int compressorLevel = -1;
    std::vector<std::byte> deflated;
    std::vector<std::byte> scratch;
};

}  // namespace velextracta
