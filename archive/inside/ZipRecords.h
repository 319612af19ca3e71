#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// The records of the zip format around the bytes of entries, as bytes.

namespace velextracta {

/// What the container says of an entry beside its bytes.
struct ZipEntry {
    std::string name;  // ends in "/" for a directory
    std::time_t modificationTime = 0;
    std::uint32_t permissions = 0;
};

enum class ZipMethod : std::uint16_t { kStored = 0, kDeflated = 8 };  // by the format's numbers

/// Where the format has 32 bits for a number, or 16, this says that it stands in 64 bits elsewhere
/// (Zip64), as a greater one must.
inline constexpr std::uint32_t kZip64Mark = 0xFFFFFFFF;
inline constexpr std::uint16_t kZip64Mark16 = 0xFFFF;

/// An entry as its two headers tell of it: the one before its bytes and the one in the directory
/// at the archive's end.
struct ZipHeader {
    ZipEntry entry;
    ZipMethod method = ZipMethod::kStored;
    /// Whether the sizes stand in 64 bits in the local header. They may, whatever they are.
    bool hasWideSizes = false;
    std::uint64_t offset = 0;      // of the local header in the archive
    std::uint64_t size = 0;        // of the original
    std::uint64_t packedSize = 0;  // of the bytes behind the local header
    std::uint32_t checksum = 0;    // CRC-32 of the original
};

/// As long whatever the sizes and the checksum are. A name too long for the format is a
/// std::runtime_error that names it.
std::string localHeader(const ZipHeader& header);
std::string directoryHeader(const ZipHeader& header);

/// What follows the directory; all three are numbers of 64 bits in the format, too.
std::string endRecords(std::uint64_t entryCount, std::uint64_t directoryOffset,
                       std::uint64_t directorySize);

}  // namespace velextracta
