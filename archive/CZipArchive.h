#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "archive/ZipContainer.h"

namespace tkcore {
class InputFile;
}

namespace velextracta {

/// A new zip archive, at its path only once Close() has succeeded. Every failure is thrown and
/// names the path it is about; a failure of AddNewFile() abandons the archive. A request to end
/// the program (tkcore::interruption()) makes AddNewFile() fail with "interrupted".
class CZipArchive final {
public:
    static constexpr int kCreate = 2;         // the one mode of Open()
    static constexpr int kDefaultLevel = -1;  // else 0 (store) to 9 (smallest)
    static constexpr int kSafeSmartness = 7;
    static constexpr int kNormalClose = 0;

    static constexpr std::size_t kMemoryBound = std::size_t{448} << 20U;  // bytes

    /// A file that fits the bound (bytes) together with its deflated form is deflated as a whole,
    /// by the fastest library; an interruption is noticed after it. Any other is streamed through
    /// a library that is half as fast and takes no memory.
    explicit CZipArchive(std::size_t memoryBound = kMemoryBound) : mostMemory(memoryBound) {}
    ~CZipArchive();

    CZipArchive(const CZipArchive&) = delete;
    CZipArchive& operator=(const CZipArchive&) = delete;

    /// Volumes are not supported: volumeSize is 0.
    void Open(const std::string& path, int mode, int volumeSize = 0);

    /// Adds a file as it is now, or a directory as an entry of its own without what is in it,
    /// under its full path or its last component. Smartness and buffer size change nothing: a file
    /// deflated as a whole that does not shrink is stored anyway. Always true.
    bool AddNewFile(const std::string& path, int level = kDefaultLevel, bool fullPath = true,
                    int smartness = kSafeSmartness, unsigned long bufferSize = 65536);

    /// After an exception (not 0) the archive is dropped. updateTimeStamp is not supported.
    void Close(int afterException = kNormalClose, bool updateTimeStamp = false);

private:
    /// False, with nothing added, if it does not fit the bound.
    bool addWhole(const ZipEntry& entry, tkcore::InputFile& file, int level);
    void addStreaming(const ZipEntry& entry, tkcore::InputFile& file, int level);
    ZipContainer& openContainer();

    std::size_t mostMemory;
    std::optional<ZipContainer> container;
};

}  // namespace velextracta
