#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tkcore/files/InputFile.h"

namespace velextracta {

/// A file on its way into an archive, read from its start up to the size that it had when it was
/// opened: the entry is begun for that size, and what is appended from then on is not ours.
class Original final {
public:
    explicit Original(const tkcore::LongFileName& file);

    [[nodiscard]] const tkcore::InputFile& file() const noexcept { return opened; }

    /// Fewer bytes than fit only at the end, which may have come nearer.
    std::size_t read(std::span<std::byte> room);
    void rewind();
    /// Of all that has been read since the start.
    [[nodiscard]] std::uint64_t size() const noexcept { return bytesRead; }
    [[nodiscard]] std::uint32_t checksum() const noexcept { return crc; }

private:
    tkcore::InputFile opened;
    std::uint64_t bytesRead = 0;
    std::uint32_t crc = 0;
};

}  // namespace velextracta
