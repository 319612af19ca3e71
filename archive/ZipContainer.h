#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <exception>
#include <span>
#include <string>

#include "tkcore/ReplacementFile.h"

namespace velextracta {

/// What the container says of an entry beside its bytes.
struct ZipEntry {
    std::string name;  // ends in "/" for a directory
    std::time_t modificationTime = 0;
    std::uint32_t permissions = 0;
};

enum class ZipMethod { kStored = 0, kDeflated = 8 };  // by the numbers of the format

/// The zip format around the entries: headers, directory, the file they go to. Knows nothing of
/// where entries come from. Owned by the CZipArchive that fills it. The file is at its path only
/// after finish(). Every failure is thrown; the container is of no use after one.
class ZipContainer final {
public:
    explicit ZipContainer(const tkcore::LongFileName& filePath);
    ~ZipContainer();

    ZipContainer(const ZipContainer&) = delete;
    ZipContainer& operator=(const ZipContainer&) = delete;

    /// Begins an entry for at most mostSize bytes of an original, which come through write() in
    /// the form that the method says.
    void begin(const ZipEntry& entry, ZipMethod method, std::uint64_t mostSize);
    void write(std::span<const std::byte> bytes);
    /// Size and CRC-32 are those of the original.
    void end(std::uint64_t size, std::uint32_t checksum);

    /// The archive is complete: it goes to its path. The action is called right before that.
    void finish(const std::function<void()>& beforeIt);

private:
    struct Callbacks;

    void check(int result);

    std::string path;
    tkcore::ReplacementFile file;
    std::exception_ptr failure;  // of the file, on its way through a library that has no exceptions
    void* writer = nullptr;
};

}  // namespace velextracta
