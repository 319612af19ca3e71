#include "archive/inside/PieceDeflater.h"

#include <cstring>
#include <new>
#include <optional>

#include <libdeflate.h>
#include <zlib.h>

namespace velextracta {

namespace {

constexpr std::byte kLastBlockMark{0x01};  // the first bit of a block

/// An empty stored block has a header of three zero bits, zero bits up to the end of the byte, and
/// these four bytes.
constexpr std::array kEmptyBlock{std::byte{0x00}, std::byte{0x00}, std::byte{0xFF},
                                 std::byte{0xFF}};
/// A last byte of this value or more uses one of its upper three bits: the header does not fit.
constexpr std::byte kNoRoomForHead{0x20};

class Inflater final {
public:
    Inflater() {
        if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflater() { inflateEnd(&stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    z_stream stream{};
};

/// The position of the last block's first bit; none if there is no last block. Only inflating finds
/// the borders of blocks. The room is for the inflated bytes.
std::optional<std::size_t> findLastBlock(std::span<std::byte> deflated, std::span<std::byte> room) {
    // The meaning of z_stream::data_type after a call with Z_BLOCK.
    constexpr unsigned kUnusedBits = 7;
    constexpr unsigned kInLastBlock = 64;
    constexpr unsigned kAtBlockEnd = 128;

    std::size_t begin = 0;
    if ((deflated.front() & kLastBlockMark) != std::byte{}) {
        return begin;
    }
    Inflater inflater;
    z_stream& stream = inflater.stream;
    stream.next_in = reinterpret_cast<Bytef*>(deflated.data());
    stream.avail_in = static_cast<uInt>(deflated.size());
    stream.next_out = reinterpret_cast<Bytef*>(room.data());
    stream.avail_out = static_cast<uInt>(room.size());
    while (inflate(&stream, Z_BLOCK) == Z_OK) {
        const auto state = static_cast<unsigned>(stream.data_type);
        if ((state & kInLastBlock) != 0) {
            return begin;
        }
        if ((state & kAtBlockEnd) != 0) {
            begin = std::size_t{stream.total_in} * 8 - (state & kUnusedBits);
        }
    }
    return {};
}

}  // namespace

PieceJoiner::PieceJoiner()
    : decompressor(libdeflate_alloc_decompressor(), libdeflate_free_decompressor),
      inflated(Piece::kMostBytes) {
    if (!decompressor) {
        throw std::bad_alloc();
    }
}

bool PieceJoiner::leaveOpen(std::vector<std::byte>& deflated, std::span<const std::byte> original) {
    const auto lastBlock = deflated.empty() ? std::nullopt : findLastBlock(deflated, inflated);
    if (!lastBlock) {
        return false;
    }
    deflated[*lastBlock / 8] &= ~(kLastBlockMark << (*lastBlock % 8));
    // Now append an empty block. Its header of zero bits begins where the last block ends, but the
    // position of that bit is not known. The header either fits into the zero bits at the end of
    // the last byte or needs one more byte. Try both: only the right one can be inflated.
    const std::size_t size = deflated.size();
    for (std::size_t further = deflated.back() < kNoRoomForHead ? 0 : 1; further <= 1; ++further) {
        deflated.resize(size + further);
        deflated.insert(deflated.end(), kEmptyBlock.begin(), kEmptyBlock.end());
        deflated.insert(deflated.end(), kDeflateEnd.begin(), kDeflateEnd.end());
        const bool proved = isProved(deflated, original);
        deflated.resize(deflated.size() - kDeflateEnd.size());
        if (proved) {
            return true;
        }
        deflated.resize(size);
    }
    return false;
}

bool PieceJoiner::isProved(std::span<const std::byte> deflated,
                           std::span<const std::byte> original) {
    std::size_t bytesRead = 0;
    std::size_t bytesWritten = 0;
    return libdeflate_deflate_decompress_ex(decompressor.get(), deflated.data(), deflated.size(),
                                            inflated.data(), inflated.size(), &bytesRead,
                                            &bytesWritten) == LIBDEFLATE_SUCCESS &&
           bytesRead == deflated.size() && bytesWritten == original.size() &&
           std::memcmp(inflated.data(), original.data(), original.size()) == 0;
}

PieceDeflater::PieceDeflater(int level)
    : compressor(libdeflate_alloc_compressor(level), libdeflate_free_compressor) {
    if (!compressor) {
        throw std::bad_alloc();
    }
    room.resize(libdeflate_deflate_compress_bound(compressor.get(), Piece::kMostBytes));
}

void PieceDeflater::work(Piece& piece) {
    const std::size_t size = libdeflate_deflate_compress(
        compressor.get(), piece.original.data(), piece.original.size(), room.data(), room.size());
    piece.deflated.assign(room.data(), room.data() + size);
    if (!joiner.leaveOpen(piece.deflated, piece.original)) {
        throw UnprovedPiece();
    }
}

}  // namespace velextracta
