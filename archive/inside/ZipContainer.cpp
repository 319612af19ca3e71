#include "archive/inside/ZipContainer.h"

#include <algorithm>
#include <stdexcept>

namespace velextracta {

namespace {

/// Whether the header needs room for sizes of 64 bits. It is written before the sizes are known.
/// Deflating adds less than a 256th to the size.
bool mayNeedWideSizes(ZipMethod method, std::uint64_t mostSize) {
    constexpr std::uint64_t kRoomToGrow = kZip64Mark / 256;
    return mostSize > (method == ZipMethod::kStored ? kZip64Mark : kZip64Mark - kRoomToGrow);
}

}  // namespace

ZipContainer::ZipContainer(const tkcore::LongFileName& filePath) : file(filePath) {}

void ZipContainer::begin(const ZipEntry& entry, ZipMethod method, std::uint64_t mostSize) {
    header = {entry, method, mayNeedWideSizes(method, mostSize), file.tell()};
    put(localHeader(header));
    firstByte = file.tell();
}

void ZipContainer::write(std::span<const std::byte> bytes) {
    file.write(bytes.data(), bytes.size());
}

void ZipContainer::end(std::uint64_t size, std::uint32_t checksum) {
    const std::uint64_t end = file.tell();
    header.size = size;
    header.packedSize = end - firstByte;
    header.checksum = checksum;
    if (!header.hasWideSizes && std::max(size, header.packedSize) > kZip64Mark) {
        throw std::logic_error("more bytes than were announced: " + header.entry.name);
    }
    file.seek(header.offset);
    put(localHeader(header));
    file.seek(end);
    directory += directoryHeader(header);
    ++entryCount;
}

void ZipContainer::finish(const std::function<void()>& beforeIt) {
    const std::uint64_t directoryOffset = file.tell();
    put(directory);
    put(endRecords(entryCount, directoryOffset, directory.size()));
    file.commit(beforeIt);
}

void ZipContainer::put(const std::string& record) {
    file.write(record.data(), record.size());
}

}  // namespace velextracta
