#include "reader/ViewFileInput.h"

#include <algorithm>
#include <string_view>

#include "tkcore/system/Interruption.h"

namespace velextracta {

namespace {

// For larger steps the system needs larger blocks of memory. Finding those may take several times
// as long once its cache is full.
constexpr std::size_t kBufferSize = std::size_t{1} << 17U;

}  // namespace

ViewFileInput::ViewFileInput(const tkcore::LongFileName& path) : file(path), buffer(kBufferSize) {
    file.requireFile();
}

void ViewFileInput::passLine(const Take& take) {
    bool isReturnPending = false;  // a CR belongs to the line unless LF follows
    for (auto bytes = readBytes(); !bytes.empty(); bytes = readBytes()) {
        tkcore::throwIfInterrupted();
        const auto lineEnd = std::ranges::find(bytes, '\n');
        const auto line = bytes.first(static_cast<std::size_t>(lineEnd - bytes.begin()));
        if (!line.empty()) {
            take(std::string_view("\r").substr(isReturnPending ? 0 : 1));
            isReturnPending = line.back() == '\r';
            take(line.first(line.size() - (isReturnPending ? 1 : 0)));
        }
        if (lineEnd != bytes.end()) {
            // The rest of the buffer is for the next call.
            position = end - static_cast<std::size_t>(bytes.end() - lineEnd) + 1;
            return;
        }
    }
    take(std::string_view("\r").substr(isReturnPending ? 0 : 1));
}

std::span<const char> ViewFileInput::readBytes() {
    if (position == end) {
        position = 0;
        end = file.readSome(buffer.data(), buffer.size());
    }
    const std::span<const char> bytes = buffered();
    position = end;
    return bytes;
}

}  // namespace velextracta
