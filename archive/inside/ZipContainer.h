#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "archive/inside/ZipRecords.h"
#include "tkcore/files/ReplacementFile.h"

namespace velextracta {

/// Writes the zip format around the entries: headers and directory. Does not depend on where the
/// entries come from. The CZipArchive that fills it owns it. The file is at its path only after
/// finish(). Every failure is thrown; the container cannot be used after a failure.
class ZipContainer final {
public:
    explicit ZipContainer(const tkcore::LongFileName& filePath);

    /// Begins an entry for an original of at most mostSize bytes. write() takes the bytes in the
    /// form of the method: deflated, or as they are.
    void begin(const ZipEntry& entry, ZipMethod method, std::uint64_t mostSize);
    void write(std::span<const std::byte> bytes);
    /// Size and CRC-32 are those of the original.
    void end(std::uint64_t size, std::uint32_t checksum);

    /// Completes the archive and puts it at its path. Calls the action right before that.
    void finish(const std::function<void()>& beforeIt);

private:
    void put(const std::string& record);

    tkcore::ReplacementFile file;
    ZipHeader header;              // of the entry that was begun
    std::uint64_t firstByte = 0;   // of that entry, behind its header
    std::uint64_t entryCount = 0;  // of those that have ended
    std::string directory;         // of those, too
};

}  // namespace velextracta
