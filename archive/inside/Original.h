#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "tkcore/files/InputFile.h"

namespace velextracta {

/// A file that is being packed. It is read up to its size at the time of opening, because the
/// entry's header depends on that size. Bytes that are appended later are left out.
class Original final {
public:
    explicit Original(const tkcore::LongFileName& file);

    [[nodiscard]] const tkcore::InputFile& file() const noexcept { return opened; }

    /// Fills the room, except at the end of the file, which may have become shorter.
    std::size_t read(std::span<std::byte> room);
    void rewind();
    /// Number of bytes read so far, and their CRC-32.
    [[nodiscard]] std::uint64_t size() const noexcept { return bytesRead; }
    [[nodiscard]] std::uint32_t checksum() const noexcept { return crc; }

private:
    tkcore::InputFile opened;
    std::uint64_t bytesRead = 0;
    std::uint32_t crc = 0;
};

}  // namespace velextracta
