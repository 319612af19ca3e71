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

/// Pieces of one deflate stream, in their order, make up the stream together with this end.
inline constexpr std::array kDeflateEnd{std::byte{0x03}, std::byte{0x00}};

/// Turns what was deflated by itself into a piece of a stream: takes the mark off its last block
/// and ends it on a full byte, up to five bytes further, so that any other piece may follow. Then
/// inflates it; false if that does not give the original.
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

/// Deflates pieces at a level from 1 to 9 (smallest). Throws UnprovedPiece if one does not prove.
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
