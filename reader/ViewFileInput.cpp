#include "reader/ViewFileInput.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "tkcore/system/Interruption.h"

namespace velextracta {

namespace {

// In larger steps the system looks for larger stretches of memory, which may take several times as
// long once it has filled its cache.
constexpr std::size_t kBufferSize = std::size_t{1} << 17U;

/// What is looked at of a file that is not read: some is without a line end, and as long as a disk.
constexpr std::size_t kHeadSize = std::size_t{1} << 16U;

}  // namespace

ViewFileInput::ViewFileInput(const tkcore::LongFileName& path) : file(path), buffer(kBufferSize) {
    if (file.isDirectory()) {
        throw std::system_error(std::make_error_code(std::errc::is_a_directory), VEL_ANSI(path));
    }
}

void ViewFileInput::passLine(const Take& take) {
    bool isReturnPending = false;  // which is part of the line unless its end follows
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
            // The rest of what was read is for the next call.
            position = end - static_cast<std::size_t>(bytes.end() - lineEnd) + 1;
            return;
        }
    }
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

std::string doubtAboutViewFile(const tkcore::LongFileName& path) {
    try {
        tkcore::InputFile file(path);
        if (file.isDirectory()) {
            return "it is a directory";
        }
        std::string head(kHeadSize, '\0');
        head.resize(file.read(head.data(), head.size()));
        const std::size_t second = head.find('\n');
        const bool isView = head.starts_with("A!") && second != std::string::npos &&
                            head.compare(second + 1, 2, "J!") == 0;
        return isView ? "" : "its first two lines do not begin with A! and J!";
    } catch (const std::system_error& error) {
        return error.what();
    }
}

}  // namespace velextracta
