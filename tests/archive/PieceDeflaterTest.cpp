#include <gtest/gtest.h>
#include <libdeflate.h>

#include "archive/inside/PieceDeflater.h"
#include "support/Contents.h"

namespace velextracta {
namespace {

std::vector<std::byte> deflate(std::span<const std::byte> original) {
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(5), libdeflate_free_compressor);
    std::vector<std::byte> deflated(2 * original.size() + 100);
    deflated.resize(libdeflate_deflate_compress(compressor.get(), original.data(), original.size(),
                                                deflated.data(), deflated.size()));
    return deflated;
}

TEST(PieceJoiner, letsNoDamagePass) {
    PieceJoiner joiner;
    const std::string texts[] = {viewText(3000), viewText(40000) + randomBytes(40000)};
    for (const std::string& text : texts) {
        const auto original = std::as_bytes(std::span(text));
        const auto good = deflate(original);
        const auto isRefused = [&](std::vector<std::byte> bytes) {
            return !joiner.leaveOpen(bytes, original);
        };
        EXPECT_FALSE(isRefused(good));
        EXPECT_TRUE(isRefused({}));
        for (std::size_t bit = 0; bit < good.size() * 8; bit += 1 + good.size() / 500) {
            auto damaged = good;
            damaged[bit / 8] ^= std::byte{1} << (bit % 8);
            EXPECT_TRUE(isRefused(damaged)) << text.size() << ' ' << bit;
        }
        EXPECT_TRUE(isRefused({good.begin(), good.end() - 1}));
        auto longer = good;
        longer.push_back(std::byte{0x03});
        EXPECT_TRUE(isRefused(longer));
        longer = good;
        EXPECT_FALSE(joiner.leaveOpen(longer, original.first(original.size() - 1)));
    }
}

}  // namespace
}  // namespace velextracta
