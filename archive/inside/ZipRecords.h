#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// The records of the zip format around the bytes of entries, as bytes.

namespace velextracta {

/// Properties of an entry.
struct ZipEntry {
    std::string name;  // ends in "/" for a directory
    std::time_t modificationTime = 0;
    std::uint32_t permissions = 0;
};

enum class ZipMethod : std::uint16_t { kStored = 0, kDeflated = 8 };  // by the format's numbers

/// A field of 32 bits, or 16, with this value means that the number is in a 64-bit field elsewhere
/// (Zip64). Greater numbers have to be there.
inline constexpr std::uint32_t kZip64Mark = 0xFFFFFFFF;
inline constexpr std::uint16_t kZip64Mark16 = 0xFFFF;

/// The data of an entry's two headers: the local header before its bytes, and the header in the
/// directory at the archive's end.
struct ZipHeader {
    ZipEntry entry;
    ZipMethod method = ZipMethod::kStored;
    /// Whether the local header has the sizes in 64 bits. That is allowed for small sizes, too.
    bool hasWideSizes = false;
    std::uint64_t offset = 0;      // of the local header in the archive
    std::uint64_t size = 0;        // of the original
    std::uint64_t packedSize = 0;  // of the bytes behind the local header
    std::uint32_t checksum = 0;    // CRC-32 of the original
};

/// The local header. Its length does not depend on sizes and checksum, so it can be overwritten
/// once they are known. Throws std::runtime_error for a name that is too long for the format.
std::string localHeader(const ZipHeader& header);
std::string directoryHeader(const ZipHeader& header);

/// The records behind the directory, with Zip64 records if a number needs them.
std::string endRecords(std::uint64_t entryCount, std::uint64_t directoryOffset,
                       std::uint64_t directorySize);

}  // namespace velextracta
