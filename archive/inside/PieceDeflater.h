#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "archive/inside/Piece.h"

struct libdeflate_compressor;
struct libdeflate_decompressor;

namespace velextracta {

/// The end of a deflate stream. All pieces in their order, followed by this, are one stream.
inline constexpr std::array kDeflateEnd{std::byte{0x03}, std::byte{0x00}};

/// Turns a complete deflate stream into a piece that another piece can follow: removes the mark of
/// the last block and fills up the last byte, which adds up to five bytes. Then inflates the piece;
/// false if the result is not the original.
class PieceJoiner final {
public:
    PieceJoiner();

    [[nodiscard]] bool leaveOpen(std::vector<std::byte>& deflated,
                                 std::span<const std::byte> original);

private:
    bool isProved(std::span<const std::byte> deflated, std::span<const std::byte> original);

    std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor;
    std::vector<std::byte> inflated;
};

/// A deflated piece does not inflate to the original bytes.
class UnprovedPiece final : public std::runtime_error {
public:
    UnprovedPiece() : std::runtime_error("what was deflated does not inflate to the same bytes") {}
};

/// Deflates pieces at a level from 1 to 9 (smallest). Throws UnprovedPiece if a
/// piece does not inflate to the same bytes.
class PieceDeflater final : public PieceWorker {
public:
    explicit PieceDeflater(int level);

    void work(Piece& piece) override;

private:
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor;
    std::vector<std::byte> room;
    PieceJoiner joiner;
};

}  // namespace velextracta
