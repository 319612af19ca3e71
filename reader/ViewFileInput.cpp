#include "reader/ViewFileInput.h"

#include <algorithm>
#include <system_error>

namespace velextracta {

namespace {

// In larger steps the system looks for larger stretches of memory, which may take several times as
// long once it has filled its cache.
constexpr std::size_t kBufferSize = std::size_t{1} << 17U;

}  // namespace

ViewFileInput::ViewFileInput(const std::string& path) : file(path), buffer(kBufferSize) {
    if (file.isDirectory()) {
        throw std::system_error(std::make_error_code(std::errc::is_a_directory), path);
    }
}

std::string ViewFileInput::readLine() {
    std::string line;
    for (auto bytes = readBytes(); !bytes.empty(); bytes = readBytes()) {
        const auto lineEnd = std::ranges::find(bytes, '\n');
        line.append(bytes.begin(), lineEnd);
        if (lineEnd != bytes.end()) {
            // The rest of what was read is for the next call.
            position = end - static_cast<std::size_t>(bytes.end() - lineEnd) + 1;
            break;
        }
    }
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
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

std::string doubtAboutHeader(const std::string& header, const std::string& jRecord) {
    if (header.starts_with("A!") && jRecord.starts_with("J!")) {
        return {};
    }
    return "its first two lines do not begin with A! and J!";
}

std::string doubtAboutViewFile(const std::string& path) {
    try {
        ViewFileInput file(path);
        const std::string header = file.readLine();
        return doubtAboutHeader(header, file.readLine());
    } catch (const std::system_error& error) {
        return error.what();
    }
}

}  // namespace velextracta
