#include "archive/CZipArchive.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>

#include <libdeflate.h>

#include "archive/EntryName.h"
#include "tkcore/InputFile.h"
#include "tkcore/Interruption.h"

namespace velextracta {

namespace {

/// Packs view files tighter than the level 6 of common zip programs, and faster than level 6 here.
constexpr int kLevelOfDefault = 5;
constexpr int kHighestLevel = 9;

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
        openContainer();
        tkcore::InputFile file(path);
        ZipEntry entry{entryName(path, fullPath), file.modificationTime(), file.permissions()};
        if (entry.name.empty()) {
            throw std::runtime_error("cannot add " + path + ": it has no name");
        }
        if (file.isDirectory()) {
            entry.name += '/';
        }
        addFile(entry, file, level < 0 ? kLevelOfDefault : std::min(level, kHighestLevel));
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

void CZipArchive::addFile(const ZipEntry& entry, tkcore::InputFile& file, int level) {
    // What is appended to the file from now on is not ours: the entry is begun for this size.
    std::uint64_t left = file.size();
    std::uint64_t size = 0;
    std::uint32_t checksum = libdeflate_crc32(0, nullptr, 0);
    for (bool isFirst = true, isLast = false; !isLast; isFirst = false) {
        throwIfInterrupted();
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, pieceSize));
        pieceBytes.resize(std::max(pieceBytes.size(), wanted));
        const std::span piece(pieceBytes.data(), file.read(pieceBytes.data(), wanted));
        left -= wanted;
        isLast = left == 0 || piece.size() < wanted;  // the file may have become shorter
        size += piece.size();
        checksum = libdeflate_crc32(checksum, piece.data(), piece.size());

        throwIfInterrupted();
        const auto deflated = deflater.deflate(piece, level, isLast);
        const bool isStored = isFirst && isLast && deflated.size() >= piece.size();
        if (isFirst) {
            container->begin(entry, isStored ? ZipMethod::kStored : ZipMethod::kDeflated,
                             file.size());
        }
        container->write(isStored ? piece : deflated);
    }
    container->end(size, checksum);
}

ZipContainer& CZipArchive::openContainer() {
    if (!container) {
        throw std::logic_error("no archive is open");
    }
    return *container;
}

}  // namespace velextracta
