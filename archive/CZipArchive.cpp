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

/// False when the bytes would not become fewer.
bool deflateWhole(std::span<const std::byte> original, int level,
                  std::vector<std::byte>& deflated) {
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!compressor) {
        throw std::bad_alloc();
    }
    deflated.resize(original.size());
    deflated.resize(libdeflate_deflate_compress(compressor.get(), original.data(), original.size(),
                                                deflated.data(), deflated.size()));
    return !deflated.empty() && deflated.size() < original.size();
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
        if (file.size() <= mostInMemory) {
            addWhole(entry, file, levelOr(kDefaultWholeLevel, level));
        } else {
            addStreaming(entry, file, levelOr(kDefaultStreamLevel, level));
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

void CZipArchive::addWhole(const ZipEntry& entry, tkcore::InputFile& file, int level) {
    original.resize(file.size());
    original.resize(file.read(original.data(), original.size()));  // it may have become shorter
    throwIfInterrupted();
    const std::uint32_t checksum = libdeflate_crc32(0, original.data(), original.size());
    if (deflateWhole(original, level, deflated)) {
        container->add(entry, ZipMethod::kDeflated, deflated, original.size(), checksum);
    } else {
        container->add(entry, ZipMethod::kStored, original, original.size(), checksum);
    }
}

void CZipArchive::addStreaming(const ZipEntry& entry, tkcore::InputFile& file, int level) {
    container->begin(entry, level, file.size());
    original.resize(kStreamBufferSize);
    // What is appended to the file from now on is not ours: the entry is begun for this size.
    std::uint64_t left = file.size();
    while (left > 0) {
        throwIfInterrupted();
        const auto wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(left, original.size()));
        const std::size_t received = file.read(original.data(), wanted);
        container->write(std::span(original).first(received));
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
