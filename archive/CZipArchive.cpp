#include "archive/CZipArchive.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "archive/inside/EntryName.h"
#include "archive/inside/Original.h"
#include "archive/inside/PieceDeflater.h"
#include "archive/inside/PieceLine.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {

namespace {

/// Gives smaller archives of view files than level 6 of common zip programs, and is faster than
/// level 6 here.
constexpr int kLevelOfDefault = 5;
constexpr int kHighestLevel = 9;

PieceLine::Read reading(Original& original) {
    return [&original](std::span<std::byte> room) { return original.read(room); };
}

ZipMethod methodFor(std::uint64_t deflatedSize, std::uint64_t originalSize) {
    return deflatedSize + kDeflateEnd.size() < originalSize ? ZipMethod::kDeflated
                                                            : ZipMethod::kStored;
}

/// If the first piece does, the file is deflated without a look at the others. At worst it grows by
/// a ten-thousandth, as a piece does that does not shrink.
bool shrinksALot(const Piece& piece) {
    return piece.deflated.size() < piece.original.size() / 8 * 7;
}

ZipMethod methodForAll(PieceLine& line, const Piece* first) {
    std::uint64_t deflatedSize = 0;
    std::uint64_t originalSize = 0;
    for (const Piece* piece = first; piece != nullptr; piece = line.next()) {
        tkcore::throwIfInterrupted();
        deflatedSize += piece->deflated.size();
        originalSize += piece->original.size();
    }
    return methodFor(deflatedSize, originalSize);
}

}  // namespace

CZipArchive::CZipArchive(unsigned threadCount) : threads(threadCount) {}

CZipArchive::~CZipArchive() = default;

void CZipArchive::reportProgressTo(std::function<void(std::uint64_t)> listener) {
    progress = std::move(listener);
}

void CZipArchive::reportDoubtsTo(std::function<void(const std::string&)> listener) {
    doubts = std::move(listener);
}

void CZipArchive::beforeDelivery(std::function<void()> lastLook) {
    delivery = std::move(lastLook);
}

void CZipArchive::Open(const std::string& path, int mode, int volumeSize) {
    if (mode != kCreate || volumeSize != 0) {
        throw std::invalid_argument("cannot open " + path +
                                    ": only new archives of one volume are supported");
    }
    if (container) {
        throw std::logic_error("cannot open " + path + ": another archive is open");
    }
    container.emplace(tkcore::LongFileName(tkcore::AString(path)));
}

bool CZipArchive::AddNewFile(const std::string& path, int level, bool fullPath, int /*smartness*/,
                             unsigned long /*bufferSize*/) {
    add(tkcore::LongFileName(tkcore::AString(path)), path, level, fullPath);
    return true;
}

bool CZipArchive::AddNewFile(const tkcore::LongFileName& file, int level, bool fullPath,
                             int /*smartness*/, unsigned long /*bufferSize*/) {
    add(file, VEL_ANSI(file), level, fullPath);
    return true;
}

void CZipArchive::add(const tkcore::LongFileName& source, const std::string& path, int level,
                      bool fullPath) {
    try {
        tkcore::throwIfInterrupted();
        openContainer();
        Original original(source);
        const tkcore::InputFile& file = original.file();
        ZipEntry entry{entryName(path, fullPath), file.modificationTime(), file.permissions()};
        if (entry.name.empty()) {
            throw std::runtime_error("cannot add " + path + ": it has no name");
        }
        if (file.isDirectory()) {
            entry.name += '/';
        }
        addFile(entry, original, level < 0 ? kLevelOfDefault : std::min(level, kHighestLevel));
        doubt(path, original);
    } catch (const UnprovedPiece& failure) {
        container.reset();
        throw std::runtime_error("cannot pack " + path + ": " + failure.what());
    } catch (...) {
        container.reset();
        throw;
    }
}

void CZipArchive::Close(int afterException, bool updateTimeStamp) {
    if (updateTimeStamp) {
        throw std::invalid_argument("the time stamp of an archive is that of its writing");
    }
    if (afterException == kNormalClose) {
        openContainer().finish(delivery);
    }
    container.reset();
}

void CZipArchive::addFile(const ZipEntry& entry, Original& original, int level) {
    ZipMethod method = ZipMethod::kStored;
    if (level > 0) {
        PieceLine line(reading(original), toolsFor(level));
        const Piece* first = line.next();
        const bool isAll = original.file().size() <= Piece::kMostBytes;
        if (first != nullptr && (isAll || shrinksALot(*first))) {
            method = methodFor(first->deflated.size(), first->original.size());
            return addPieces(entry, method, original, line, first);
        }
        method = methodForAll(line, first);
    }
    original.rewind();
    if (method == ZipMethod::kStored) {
        return addStored(entry, original);
    }
    PieceLine line(reading(original), toolsFor(level));
    addPieces(entry, method, original, line, line.next());
}

void CZipArchive::addPieces(const ZipEntry& entry, ZipMethod method, Original& original,
                            PieceLine& line, const Piece* first) {
    const bool isDeflated = method == ZipMethod::kDeflated;
    container->begin(entry, method, original.file().size());
    for (const Piece* piece = first; piece != nullptr; piece = line.next()) {
        write(isDeflated ? piece->deflated : piece->original, piece->original.size());
    }
    if (isDeflated) {
        container->write(kDeflateEnd);
    }
    container->end(original.size(), original.checksum());
}

void CZipArchive::addStored(const ZipEntry& entry, Original& original) {
    container->begin(entry, ZipMethod::kStored, original.file().size());
    Piece piece;
    while (const std::size_t size = original.read(piece.room())) {
        write(piece.room().first(size), size);
    }
    container->end(original.size(), original.checksum());
}

void CZipArchive::doubt(const std::string& path, const Original& original) const {
    const std::uint64_t sizeBefore = original.file().size();
    if (doubts && original.size() < sizeBefore) {
        doubts(path + " has become shorter while it was packed: of " + std::to_string(sizeBefore) +
               " bytes the archive holds " + std::to_string(original.size()));
    }
}

void CZipArchive::write(std::span<const std::byte> bytes, std::size_t originalSize) {
    tkcore::throwIfInterrupted();
    container->write(bytes);
    if (progress) {
        progress(originalSize);
    }
}

PieceTools& CZipArchive::toolsFor(int level) {
    if (!tools || toolsLevel != level) {
        tools = std::make_unique<PieceTools>(
            [level] { return std::make_unique<PieceDeflater>(level); }, threads);
        toolsLevel = level;
    }
    return *tools;
}

ZipContainer& CZipArchive::openContainer() {
    if (!container) {
        throw std::logic_error("no archive is open");
    }
    return *container;
}

}  // namespace velextracta
