#include "archive/inside/ZipRecords.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "archive/inside/EntryName.h"
#include "tkcore/system/System.h"

namespace velextracta {

namespace {

constexpr std::uint32_t kLocalHeader = 0x04034B50;
constexpr std::uint32_t kDirectoryHeader = 0x02014B50;
constexpr std::uint32_t kZip64End = 0x06064B50;
constexpr std::uint32_t kZip64Locator = 0x07064B50;
constexpr std::uint32_t kEnd = 0x06054B50;

constexpr std::uint16_t kZip64Field = 0x0001;
constexpr std::uint16_t kTimeField = 0x5455;
constexpr std::string_view kOnlyModificationTime = "\x01";

// Values of every archive that we write.
constexpr std::uint16_t kFirstVolume = 0;
constexpr std::uint32_t kOneVolume = 1;
constexpr std::uint16_t kNoComment = 0;
constexpr std::uint16_t kNotKnownAsText = 0;
constexpr std::uint64_t kRestOfZip64End = 44;

// Versions of the format: those that a reader must know, and that of this writer (UTF-8 names).
constexpr std::uint16_t kKnowsDeflating = 20;
constexpr std::uint16_t kKnowsZip64 = 45;
constexpr std::uint16_t kMadeOnUnix = 3U << 8U | 63U;
constexpr std::uint16_t kUtf8Name = 1U << 11U;

constexpr std::uint32_t kUnixRegularFile = 0100000;
constexpr std::uint32_t kUnixDirectory = 0040000;
constexpr std::uint32_t kAnyWrite = 0222;
constexpr std::uint32_t kDosReadOnly = 0x01;
constexpr std::uint32_t kDosDirectory = 0x10;

/// A record of little-endian numbers, on any machine.
class Record final {
public:
    Record& number16(std::uint16_t value) { return number(value, 2); }
    Record& number32(std::uint32_t value) { return number(value, 4); }
    Record& number64(std::uint64_t value) { return number(value, 8); }
    Record& text(std::string_view more) {
        bytes += more;
        return *this;
    }
    /// The text's length, in 16 bits.
    Record& length(std::string_view of) { return number(of.size(), 2); }
    /// An extra field, or nothing if the contents are empty.
    Record& field(std::uint16_t kind, std::string_view contents) {
        return contents.empty() ? *this : number16(kind).length(contents).text(contents);
    }

    std::string bytes;

private:
    Record& number(std::uint64_t value, unsigned size) {
        for (; size > 0; --size, value >>= 8U) {
            bytes += static_cast<char>(value & 0xFFU);
        }
        return *this;
    }
};

bool isDirectory(const ZipEntry& entry) {
    return entry.name.ends_with('/');
}

std::uint32_t externalAttributes(const ZipEntry& entry) {
    const std::uint32_t type = isDirectory(entry) ? kUnixDirectory : kUnixRegularFile;
    return ((type | entry.permissions) << 16U) | (isDirectory(entry) ? kDosDirectory : 0) |
           ((entry.permissions & kAnyWrite) == 0 ? kDosReadOnly : 0);
}

/// Local time in steps of two seconds, limited to the years that the format can express.
std::uint32_t dosTime(std::time_t time) {
    constexpr std::uint32_t kFirst = 1U << 21U | 1U << 16U;  // 1980-01-01
    constexpr std::uint32_t kLast = 0xFF9FBF7D;              // 2107-12-31 23:59:58
    const std::optional<std::tm> local = tkcore::localTime(time);
    if (!local || local->tm_year < 80) {
        return kFirst;
    }
    if (local->tm_year > 207) {
        return kLast;
    }
    const auto field = [](int value, unsigned shift) {
        return static_cast<std::uint32_t>(value) << shift;
    };
    return field(local->tm_year - 80, 25) | field(local->tm_mon + 1, 21) |
           field(local->tm_mday, 16) | field(local->tm_hour, 11) | field(local->tm_min, 5) |
           field(std::min(local->tm_sec, 59) / 2, 0);
}

/// The modification time in seconds, UTC. Empty for times that readers would misread.
std::string exactTime(std::time_t time) {
    if (time < 0 || time > std::numeric_limits<std::int32_t>::max()) {
        return {};
    }
    return Record().text(kOnlyModificationTime).number32(static_cast<std::uint32_t>(time)).bytes;
}

/// The number, or the mark of a number that is in a 64-bit field.
std::uint16_t in16Bits(std::uint64_t number) {
    return static_cast<std::uint16_t>(std::min<std::uint64_t>(number, kZip64Mark16));
}
std::uint32_t in32Bits(std::uint64_t number) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, kZip64Mark));
}

std::string extraFields(const ZipHeader& header, const Record& wideNumbers) {
    return Record()
        .field(kTimeField, exactTime(header.entry.modificationTime))
        .field(kZip64Field, wideNumbers.bytes)
        .bytes;
}

/// Writes the fields that both headers have in common, up to the checksum.
Record& describe(Record& record, const ZipHeader& header) {
    const bool usesZip64 = header.hasWideSizes || header.offset >= kZip64Mark;
    return record.number16(usesZip64 ? kKnowsZip64 : kKnowsDeflating)
        .number16(needsUtf8Mark(header.entry.name) ? kUtf8Name : 0)
        .number16(static_cast<std::uint16_t>(header.method))
        .number32(dosTime(header.entry.modificationTime))
        .number32(header.checksum);
}

}  // namespace

std::string localHeader(const ZipHeader& header) {
    const std::string& name = header.entry.name;
    if (name.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw std::runtime_error("too long a name for a zip archive: " + name);
    }
    Record wideSizes;
    if (header.hasWideSizes) {
        wideSizes.number64(header.size).number64(header.packedSize);
    }
    const std::string extra = extraFields(header, wideSizes);
    Record record;
    return describe(record.number32(kLocalHeader), header)
        .number32(header.hasWideSizes ? kZip64Mark : in32Bits(header.packedSize))
        .number32(header.hasWideSizes ? kZip64Mark : in32Bits(header.size))
        .length(name)
        .length(extra)
        .text(name)
        .text(extra)
        .bytes;
}

std::string directoryHeader(const ZipHeader& header) {
    const std::string& name = header.entry.name;
    Record wideNumbers;
    // A size equal to the mark stays in 32 bits where the format allows it: if it is in 64 bits,
    // unzip 6 misreads the following entries.
    if (std::max(header.size, header.packedSize) > kZip64Mark || header.offset >= kZip64Mark) {
        for (const std::uint64_t number : {header.size, header.packedSize, header.offset}) {
            if (number >= kZip64Mark) {
                wideNumbers.number64(number);
            }
        }
    }
    const std::string extra = extraFields(header, wideNumbers);
    Record record;
    return describe(record.number32(kDirectoryHeader).number16(kMadeOnUnix), header)
        .number32(in32Bits(header.packedSize))
        .number32(in32Bits(header.size))
        .length(name)
        .length(extra)
        .number16(kNoComment)
        .number16(kFirstVolume)
        .number16(kNotKnownAsText)
        .number32(externalAttributes(header.entry))
        .number32(in32Bits(header.offset))
        .text(name)
        .text(extra)
        .bytes;
}

std::string endRecords(std::uint64_t entryCount, std::uint64_t directoryOffset,
                       std::uint64_t directorySize) {
    Record record;
    if (entryCount >= kZip64Mark16 || std::max(directoryOffset, directorySize) >= kZip64Mark) {
        record.number32(kZip64End)
            .number64(kRestOfZip64End)
            .number16(kMadeOnUnix)
            .number16(kKnowsZip64)
            .number32(kFirstVolume)
            .number32(kFirstVolume)
            .number64(entryCount)
            .number64(entryCount)
            .number64(directorySize)
            .number64(directoryOffset)
            .number32(kZip64Locator)
            .number32(kFirstVolume)
            .number64(directoryOffset + directorySize)
            .number32(kOneVolume);
    }
    return record.number32(kEnd)
        .number16(kFirstVolume)
        .number16(kFirstVolume)
        .number16(in16Bits(entryCount))
        .number16(in16Bits(entryCount))
        .number32(in32Bits(directorySize))
        .number32(in32Bits(directoryOffset))
        .number16(kNoComment)
        .bytes;
}

}  // namespace velextracta
