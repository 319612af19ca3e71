#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "archive/inside/ZipContainer.h"
#include "tkcore/system/System.h"

namespace velextracta {

class Original;
class PieceLine;
class PieceTools;
struct Piece;

/// A new zip archive. It is at its path only once Close() has succeeded. Every failure is thrown
/// and names the path it is about. A failure of AddNewFile() abandons the archive. A request to end
/// the program makes AddNewFile() fail with tkcore::Interrupted.
///
/// libdeflate deflates, zlib finds the last block of a piece, and the container is our own code.
/// The executor makes one object for each archive. It owns the file that is not yet in place.
///
/// A file is deflated in pieces, on the given number of threads, the caller's included. The other
/// threads have ended when AddNewFile() returns. The archive does not depend on their number.
class CZipArchive final {
public:
    static constexpr int kCreate = 2;         // the one mode of Open()
    static constexpr int kDefaultLevel = -1;  // else 0 (store) to 9 (smallest)
    static constexpr int kSafeSmartness = 7;
    static constexpr int kNormalClose = 0;

    explicit CZipArchive(unsigned threadCount = tkcore::hardwareThreads());
    ~CZipArchive();

    CZipArchive(const CZipArchive&) = delete;
    CZipArchive& operator=(const CZipArchive&) = delete;

    /// AddNewFile() calls the listener with the number of bytes of the file that were packed since
    /// the last call. An exception of the listener is a failure of AddNewFile().
    void reportProgressTo(std::function<void(std::uint64_t)> listener);

    /// AddNewFile() calls the listener when the archive is valid but doubtful: a file became
    /// shorter while it was packed.
    void reportDoubtsTo(std::function<void(const std::string&)> listener);

    /// Close() calls it when the archive is complete, right before the archive takes its place. An
    /// exception is a failure of Close(), and nothing is delivered.
    void beforeDelivery(std::function<void()> lastLook);

    /// Volumes are not supported: volumeSize is 0.
    void Open(const std::string& path, int mode, int volumeSize = 0);

    /// Adds a file as it is now, or a directory as an entry without its contents, under its full
    /// path or the last component of it. Smartness and buffer size change nothing: a file that does
    /// not shrink is stored anyway, unless its first piece does by far. Always returns true.
    bool AddNewFile(const std::string& path, int level = kDefaultLevel, bool fullPath = true,
                    int smartness = kSafeSmartness, unsigned long bufferSize = 65536);
    bool AddNewFile(const tkcore::LongFileName& file, int level = kDefaultLevel,
                    bool fullPath = true, int smartness = kSafeSmartness,
                    unsigned long bufferSize = 65536);

    /// After an exception (not 0) the archive is dropped. updateTimeStamp is not supported.
    void Close(int afterException = kNormalClose, bool updateTimeStamp = false);

private:
    void add(const tkcore::LongFileName& file, const std::string& path, int level, bool fullPath);
    void addFile(const ZipEntry& entry, Original& original, int level);
    void addPieces(const ZipEntry& entry, ZipMethod method, Original& original, PieceLine& line,
                   const Piece* first);
    void addStored(const ZipEntry& entry, Original& original);
    void doubt(const std::string& path, const Original& original) const;
    void write(std::span<const std::byte> bytes, std::size_t originalSize);
    /// The tools for this level. They are kept until another level is asked for.
    PieceTools& toolsFor(int level);
    ZipContainer& openContainer();

    unsigned threads;
    int toolsLevel = 0;
    std::unique_ptr<PieceTools> tools;
    std::function<void(std::uint64_t)> progress;
    std::function<void(const std::string&)> doubts;
    std::function<void()> delivery = [] {};
    std::optional<ZipContainer> container;
};

}  // namespace velextracta
