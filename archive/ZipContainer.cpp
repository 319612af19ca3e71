#include "archive/ZipContainer.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include <zip.h>
#include <zlib.h>

#include "archive/EntryName.h"

namespace velextracta {

namespace {

constexpr uLong kMadeByUnix = (3U << 8U) | 63U;
constexpr uLong kUtf8Mark = 1U << 11U;
constexpr std::uint32_t kUnixRegularFile = 0100000;
constexpr std::uint32_t kUnixDirectory = 0040000;
constexpr std::uint32_t kDosDirectory = 0x10;
constexpr std::uint32_t kDosReadOnly = 0x01;
constexpr std::uint32_t kAnyWrite = 0222;

// Bytes that do not shrink grow a little when they are deflated, so the 64-bit sizes begin early.
constexpr std::uint64_t kMost32BitSize = 0xF0000000;

bool isDirectory(const ZipEntry& entry) {
    return entry.name.ends_with('/');
}

uLong externalAttributes(const ZipEntry& entry) {
    const std::uint32_t type = isDirectory(entry) ? kUnixDirectory : kUnixRegularFile;
    return ((type | entry.permissions) << 16U) | (isDirectory(entry) ? kDosDirectory : 0) |
           ((entry.permissions & kAnyWrite) == 0 ? kDosReadOnly : 0);
}

/// Local time, as the format wants it; held within the years that the format can say.
tm_zip dosTime(std::time_t time) {
    constexpr tm_zip kFirst{0, 0, 0, 1, 0, 1980};
    constexpr tm_zip kLast{58, 59, 23, 31, 11, 2107};
    const std::tm* local = std::localtime(&time);
    if (local == nullptr || local->tm_year < 80) {
        return kFirst;
    }
    if (local->tm_year > 207) {
        return kLast;
    }
    const auto field = [](int value) { return static_cast<decltype(tm_zip::tm_sec)>(value); };
    return {field(local->tm_sec),  field(local->tm_min), field(local->tm_hour),
            field(local->tm_mday), field(local->tm_mon), field(local->tm_year + 1900)};
}

/// The extra field "UT": the modification time in seconds, UTC. Empty for times that readers
/// would take for others.
std::string exactTime(std::time_t time) {
    constexpr std::uint8_t kOnlyModificationTime = 1;
    if (time < 0 || time > std::numeric_limits<std::int32_t>::max()) {
        return {};
    }
    std::string field{'U', 'T', 5, 0, kOnlyModificationTime};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        field += static_cast<char>(static_cast<std::uint64_t>(time) >> shift);
    }
    return field;
}

}  // namespace

/// What the zip library calls to reach the file. No exception may cross it: the first one waits in
/// `failure`, and from then on the file takes no more.
struct ZipContainer::Callbacks {
    static ZipContainer& container(voidpf opaque) { return *static_cast<ZipContainer*>(opaque); }

    template <typename Action>
    static bool guarded(voidpf opaque, const Action& action) noexcept {
        ZipContainer& self = container(opaque);
        if (self.failure) {
            return false;
        }
        try {
            action(self.file);
        } catch (...) {
            self.failure = std::current_exception();
        }
        return !self.failure;
    }

    static voidpf open(voidpf opaque, const void* /*path*/, int /*mode*/) {
        return &container(opaque).file;
    }
    static uLong read(voidpf /*opaque*/, voidpf /*stream*/, void* /*bytes*/, uLong /*size*/) {
        return 0;  // a new archive is never read
    }
    static uLong write(voidpf opaque, voidpf /*stream*/, const void* bytes, uLong size) {
        const auto action = [&](tkcore::ReplacementFile& target) { target.write(bytes, size); };
        return guarded(opaque, action) ? size : 0;
    }
    static ZPOS64_T tell(voidpf opaque, voidpf /*stream*/) { return container(opaque).file.tell(); }
    static long seek(voidpf opaque, voidpf /*stream*/, ZPOS64_T offset, int origin) {
        return guarded(opaque,
                       [&](tkcore::ReplacementFile& target) {
                           if (origin != ZLIB_FILEFUNC_SEEK_SET) {
                               throw std::logic_error(
                                   "a zip archive is positioned from its start only");
                           }
                           target.seek(offset);
                       })
                   ? 0
                   : -1;
    }
    static int close(voidpf /*opaque*/, voidpf /*stream*/) { return 0; }
    static int error(voidpf opaque, voidpf /*stream*/) {
        return container(opaque).failure ? -1 : 0;
    }
};

ZipContainer::ZipContainer(const tkcore::LongFileName& filePath)
    : path(VEL_ANSI(filePath)), file(filePath) {
    zlib_filefunc64_def functions{
        &Callbacks::open, &Callbacks::read,  &Callbacks::write, &Callbacks::tell,
        &Callbacks::seek, &Callbacks::close, &Callbacks::error, this};
    writer = zipOpen2_64(path.c_str(), APPEND_STATUS_CREATE, nullptr, &functions);
    if (writer == nullptr) {
        throw std::runtime_error("cannot create the archive " + path);
    }
}

ZipContainer::~ZipContainer() {
    if (writer != nullptr) {
        // The library gives its memory back only by ending the archive: it ends in nothing.
        failure = std::make_exception_ptr(std::logic_error("abandoned"));
        zipClose(std::exchange(writer, nullptr), nullptr);
    }
}

void ZipContainer::begin(const ZipEntry& entry, ZipMethod method, std::uint64_t mostSize) {
    if (entry.name.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw std::runtime_error("too long a name for a zip archive: " + entry.name);
    }
    zip_fileinfo info{};
    info.tmz_date = dosTime(entry.modificationTime);
    info.external_fa = externalAttributes(entry);
    const std::string extra = exactTime(entry.modificationTime);
    const auto extraSize = static_cast<uInt>(extra.size());
    constexpr int kAsGiven = 1;
    check(zipOpenNewFileInZip4_64(
        writer, entry.name.c_str(), &info, extra.data(), extraSize, extra.data(), extraSize,
        nullptr, static_cast<int>(method), Z_DEFAULT_COMPRESSION, kAsGiven, -MAX_WBITS,
        DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, kMadeByUnix,
        needsUtf8Mark(entry.name) ? kUtf8Mark : 0, mostSize > kMost32BitSize ? 1 : 0));
}

void ZipContainer::write(std::span<const std::byte> bytes) {
    check(zipWriteInFileInZip(writer, bytes.data(), static_cast<unsigned>(bytes.size())));
}

void ZipContainer::end(std::uint64_t size, std::uint32_t checksum) {
    check(zipCloseFileInZipRaw64(writer, size, checksum));
}

void ZipContainer::finish(const std::function<void()>& beforeIt) {
    check(zipClose(std::exchange(writer, nullptr), nullptr));
    file.commit(beforeIt);
}

void ZipContainer::check(int result) {
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (result != ZIP_OK) {
        throw std::runtime_error("cannot write the archive " + path + " (zip code " +
                                 std::to_string(result) + ")");
    }
}

}  // namespace velextracta
