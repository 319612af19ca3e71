#include "tkcore/files/ReplacementFile.h"

#include <array>
#include <cstdio>
#include <random>

#include "tkcore/files/ReplacementTarget.h"
#include "tkcore/files/inside/PathFailure.h"

namespace tkcore {

namespace {

// For larger steps the system needs larger blocks of memory. Finding those may take several times
// as long once its cache is full.
constexpr std::size_t kBufferSize = std::size_t{1} << 17U;

}  // namespace

std::string randomHiddenName() {
    // No stream: the first one in a process is a call of the system, and this is needed between the
    // point of no return and the delivery.
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".unfinished-%08x%08x", random(), random());
    return name.data();
}

ReplacementFile::ReplacementFile(const LongFileName& filePath)
    : path(filePath), target(openReplacementTarget(path)) {
    buffer.reserve(kBufferSize);
}

ReplacementFile::~ReplacementFile() = default;

template <typename Action>
void ReplacementFile::perform(const Action& action) {
    try {
        action(*target);
    } catch (const std::system_error& error) {
        failure = error.code();
        throw;
    }
}

void ReplacementFile::write(const void* data, std::size_t size) {
    throwEarlierFailure();
    if (buffer.size() + size > kBufferSize) {
        flush();
    }
    const char* bytes = static_cast<const char*>(data);
    if (size >= kBufferSize) {
        perform([&](ReplacementTarget& file) { file.writeAt(bufferOffset, bytes, size); });
        bufferOffset += size;
    } else {
        buffer.insert(buffer.end(), bytes, bytes + size);
    }
}

void ReplacementFile::seek(std::uint64_t offset) {
    throwEarlierFailure();
    if (offset != tell()) {
        flush();
        bufferOffset = offset;
    }
}

void ReplacementFile::commit(const std::function<void()>& beforeIt) {
    throwEarlierFailure();
    flush();
    perform([&](ReplacementTarget& file) {
        file.bringToDisk();
        file.putInPlace(beforeIt);
    });
}

void ReplacementFile::flush() {
    perform([this](ReplacementTarget& file) {
        file.writeAt(bufferOffset, buffer.data(), buffer.size());
    });
    bufferOffset += buffer.size();
    buffer.clear();
}

void ReplacementFile::throwEarlierFailure() const {
    if (failure) {
        throwPathFailure(failure, "write", path);
    }
}

}  // namespace tkcore
