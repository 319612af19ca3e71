#include "archive/CZipArchive.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>

#include <libdeflate.h>

#include "archive/EntryName.h"
#include "tkcore/InputFile.h"
#include "tkcore/Interruption.h"

namespace velextracta {

namespace {

/// Packs view files tighter than the level 6 of common zip programs, and faster than level 6 here.
constexpr int kDefaultWholeLevel = 5;
constexpr int kDefaultStreamLevel = 6;
constexpr int kHighestLevel = 9;
constexpr std::size_t kStreamBufferSize = std::size_t{1} << 20U;

int levelOr(int defaultLevel, int level) {
    return level < 0 ? defaultLevel : std::min(level, kHighestLevel);
}

/// A buffer whose pages are only taken once they are written to.
class Buffer final {
public:
    explicit Buffer(std::size_t size)
        : bytes(std::make_unique_for_overwrite<std::byte[]>(size)), all(bytes.get(), size) {}
    std::span<std::byte> span() const { return all; }

private:
    std::unique_ptr<std::byte[]> bytes;
    std::span<std::byte> all;
};

/// The number of bytes that the target then holds; 0 if they do not fit.
std::size_t deflateWhole(std::span<const std::byte> original, int level,
                         std::span<std::byte> target) {
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!compressor) {
        throw std::bad_alloc();
    }
    return libdeflate_deflate_compress(compressor.get(), original.data(), original.size(),
                                       target.data(), target.size());
}

void throwIfInterrupted() {
    if (tkcore::interruption() != 0) {
        throw std::runtime_error("interrupted");
    }
}

}  // namespace

CZipArchive::~CZipArchive() = default;

void CZipArchive::Open(const std::string& path, int mode, int volumeSize) {
    if (mode != kCreate || volumeSize != 0) {
        throw std::invalid_argument("cannot open " + path +
                                    ": only new archives of one volume are supported");
    }
    if (container) {
        throw std::logic_error("cannot open " + path + ": another archive is open");
    }
    container.emplace(path);
}

bool CZipArchive::AddNewFile(const std::string& path, int level, bool fullPath, int /*smartness*/,
                             unsigned long /*bufferSize*/) {
    try {
        throwIfInterrupted();
        openContainer();
        tkcore::InputFile file(path);
        ZipEntry entry{entryName(path, fullPath), file.modificationTime(), file.permissions()};
        if (entry.name.empty()) {
            throw std::runtime_error("cannot add " + path + ": it has no name");
        }
        if (file.isDirectory()) {
            entry.name += '/';
        }
        if (!addWhole(entry, file, levelOr(kDefaultWholeLevel, level))) {
            tkcore::InputFile fromStart(path);
            addStreaming(entry, fromStart, levelOr(kDefaultStreamLevel, level));
        }
    } catch (...) {
        container.reset();
        throw;
    }
    return true;
}

void CZipArchive::Close(int afterException, bool updateTimeStamp) {
    if (updateTimeStamp) {
        throw std::invalid_argument("the time stamp of an archive is that of its writing");
    }
    if (afterException == kNormalClose) {
        openContainer().finish();
    }
    container.reset();
}

bool CZipArchive::addWhole(const ZipEntry& entry, tkcore::InputFile& file, int level) {
    if (file.size() > mostMemory / 3 * 2) {
        return false;  // view files shrink to a fifth: half of the size is room enough
    }
    const Buffer buffer(static_cast<std::size_t>(file.size()));
    // It may have become shorter.
    const auto original =
        buffer.span().first(file.read(buffer.span().data(), buffer.span().size()));
    throwIfInterrupted();
    const std::uint32_t checksum = libdeflate_crc32(0, original.data(), original.size());
    const Buffer room(std::min(original.size(), mostMemory - original.size()));
    const auto deflated = room.span().first(deflateWhole(original, level, room.span()));
    throwIfInterrupted();
    if (deflated.empty() && room.span().size() < original.size()) {
        return false;
    }
    const bool shrinks = !deflated.empty() && deflated.size() < original.size();
    container->add(entry, shrinks ? ZipMethod::kDeflated : ZipMethod::kStored,
                   shrinks ? deflated : original, original.size(), checksum);
    return true;
}

void CZipArchive::addStreaming(const ZipEntry& entry, tkcore::InputFile& file, int level) {
    container->begin(entry, level, file.size());
    const Buffer buffer(kStreamBufferSize);
    // What is appended to the file from now on is not ours: the entry is begun for this size.
    std::uint64_t left = file.size();
    while (left > 0) {
        throwIfInterrupted();
        const auto wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(left, kStreamBufferSize));
        const std::size_t received = file.read(buffer.span().data(), wanted);
        container->write(buffer.span().first(received));
        left = received < wanted ? 0 : left - received;  // it may have become shorter
    }
    container->end();
}

ZipContainer& CZipArchive::openContainer() {
    if (!container) {
        throw std::logic_error("no archive is open");
    }
    return *container;
}

}  // namespace velextracta
