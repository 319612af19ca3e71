#include "reader/inside/ViewWindow.h"

#include <algorithm>
#include <utility>

#include "reader/inside/FieldParser.h"

namespace velextracta {

namespace {

// The length of the grammar's longest literal: if it does not match, the grammar goes back so far.
constexpr std::uint64_t kLookBack = 2;

}  // namespace

ViewWindow::ViewWindow(Source source, std::size_t blockSize)
    : read(std::move(source)), buffer(blockSize) {}

std::string_view ViewWindow::textFrom(std::uint64_t position) const {
    return {buffer.data() + (position - begin), static_cast<std::size_t>(end - position)};
}

std::string_view ViewWindow::field(std::uint64_t position) {
    std::size_t length = fieldLength(textFrom(position));
    while (length == textFrom(position).size() && readFrom(position)) {
        length -= std::min<std::size_t>(length, 1);  // a CR may be half a line end
        length += fieldLength(textFrom(position + length));
    }
    return textFrom(position).substr(0, length);
}

/// Reads more. The text before the position is no longer needed.
bool ViewWindow::readFrom(std::uint64_t position) {
    if (filled() == buffer.size()) {
        makeRoom(std::max(begin, position - std::min(position, kLookBack)));
    }
    const std::size_t count = read(buffer.data() + filled(), buffer.size() - filled());
    end += count;
    return count != 0;
}

/// Moves the needed text to the front. If that text fills most of the buffer, doubles the buffer
/// instead, so that a long field is not moved again and again.
void ViewWindow::makeRoom(std::uint64_t needed) {
    if (end - needed > needed - begin) {
        buffer.resize(2 * buffer.size());
        return;
    }
    std::ranges::copy(textFrom(needed), buffer.begin());
    begin = needed;
}

}  // namespace velextracta
