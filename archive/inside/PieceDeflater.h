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

/// The end of a deflate stream. The pieces in their order, and this, are one stream.
inline constexpr std::array kDeflateEnd{std::byte{0x03}, std::byte{0x00}};

/// Turns a complete deflate stream into a piece that another piece may follow: its last block is no
/// longer marked as the last, and it ends on a full byte (up to five bytes are added). Then
/// inflates the piece; false if the result is not the original.
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

/// What was deflated does not inflate to the same bytes.
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
