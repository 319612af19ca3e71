#include "archive/inside/Original.h"

#include <algorithm>

#include <libdeflate.h>

namespace velextracta {

Original::Original(const tkcore::LongFileName& file) : opened(file) {}

std::size_t Original::read(std::span<std::byte> room) {
    const auto wanted = std::min<std::uint64_t>(room.size(), opened.size() - bytesRead);
    const std::size_t received = opened.read(room.data(), static_cast<std::size_t>(wanted));
    crc = libdeflate_crc32(crc, room.data(), received);
    bytesRead += received;
    return received;
}

void Original::rewind() {
    opened.rewind();
    bytesRead = 0;
    crc = 0;
}

}  // namespace velextracta
