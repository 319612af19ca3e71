#include "archive/PieceDeflater.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#include <libdeflate.h>
#include <zlib.h>

namespace velextracta {

namespace {

constexpr std::size_t kScratchSize = std::size_t{128} << 10U;

/// An empty stored block without the three bits of its head; it ends on a full byte.
constexpr std::array<std::uint8_t, 4> kEmptyBlock{0x00, 0x00, 0xFF, 0xFF};
constexpr unsigned kHeadBits = 3;
constexpr std::size_t kMostAppended = kEmptyBlock.size() + 1;

/// Positions in bits from the start of a deflated piece.
struct LastBlock {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

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

/// Only by inflating can be found where a block begins.
LastBlock findLastBlock(std::span<std::byte> deflated, std::span<std::byte> scratch) {
    // The meaning of z_stream::data_type after a call with Z_BLOCK.
    constexpr int kUnusedBits = 7;
    constexpr int kInLastBlock = 64;
    constexpr int kAtBlockEnd = 128;

    Inflater inflater;
    z_stream& stream = inflater.stream;
    stream.next_in = reinterpret_cast<Bytef*>(deflated.data());
    stream.avail_in = static_cast<uInt>(deflated.size());
    for (LastBlock block;;) {
        stream.next_out = reinterpret_cast<Bytef*>(scratch.data());
        stream.avail_out = static_cast<uInt>(scratch.size());
        if (inflate(&stream, Z_BLOCK) != Z_OK) {
            throw std::logic_error("deflated bytes cannot be inflated");
        }
        if ((stream.data_type & kAtBlockEnd) == 0) {
            continue;
        }
        block.end = std::uint64_t{stream.total_in} * 8 -
                    static_cast<unsigned>(stream.data_type & kUnusedBits);
        if ((stream.data_type & kInLastBlock) != 0) {
            return block;
        }
        block.begin = block.end;
    }
}

/// Takes the mark of the last block away and fills up to a full byte with an empty block.
/// Returns the new size, up to kMostAppended larger.
std::size_t leaveOpen(std::byte* deflated, const LastBlock& lastBlock) {
    deflated[lastBlock.begin / 8] &= ~(std::byte{1} << (lastBlock.begin % 8));
    // The head is zeros, as what is left of the last byte; it may need some of a further one.
    deflated[(lastBlock.end + 7) / 8] = std::byte{0};
    const std::size_t sizeWithHead = (lastBlock.end + kHeadBits + 7) / 8;
    std::memcpy(deflated + sizeWithHead, kEmptyBlock.data(), kEmptyBlock.size());
    return sizeWithHead + kEmptyBlock.size();
}

}  // namespace

void PieceDeflater::useLevel(int level) {
    if (compressor && compressorLevel == level) {
        return;
    }
    compressor.reset(libdeflate_alloc_compressor(level));
    if (!compressor) {
        throw std::bad_alloc();
    }
    compressorLevel = level;
}

void PieceDeflater::FreeCompressor::operator()(libdeflate_compressor* owned) const noexcept {
    libdeflate_free_compressor(owned);
}

std::span<const std::byte> PieceDeflater::deflate(std::span<const std::byte> piece, int level,
                                                  bool isLast) {
    useLevel(level);
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), piece.size());
    deflated.resize(std::max(deflated.size(), bound + kMostAppended));
    std::size_t size = libdeflate_deflate_compress(compressor.get(), piece.data(), piece.size(),
                                                   deflated.data(), bound);
    if (size == 0) {
        throw std::logic_error("deflated bytes do not fit their bound");
    }
    if (!isLast) {
        scratch.resize(kScratchSize);
        size = leaveOpen(deflated.data(), findLastBlock({deflated.data(), size}, scratch));
    }
    return {deflated.data(), size};
}

}  // namespace velextracta
