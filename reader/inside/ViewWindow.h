#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>
#include <vector>

namespace velextracta {

/// A text of any length that is read in blocks while it is parsed. In memory is the block that is
/// parsed, or the field, if that is longer.
class ViewWindow final {
public:
    /// Puts the next bytes at the destination, at most as many as asked for, and returns how many;
    /// none only at the end.
    using Source = std::function<std::size_t(char* destination, std::size_t size)>;

    ViewWindow(Source source, std::size_t blockSize);

    /// Whether the text has a byte at the position, which may have to be read.
    bool reaches(std::uint64_t position) { return position < end || readFrom(position); }
    /// A byte of which reaches() has told.
    char at(std::uint64_t position) const {
        return buffer[static_cast<std::size_t>(position - begin)];
    }
    /// The field that begins at the position; good until more is read.
    std::string_view field(std::uint64_t position);

private:
    std::size_t filled() const { return static_cast<std::size_t>(end - begin); }
    std::string_view textFrom(std::uint64_t position) const;
    bool readFrom(std::uint64_t position);
    void makeRoom(std::uint64_t needed);

    const Source read;
    std::vector<char> buffer;
    // The positions of the first byte of the buffer and of the one behind its last.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// A place in such a text, or its end. It only goes forward, but for as many bytes as a literal of
/// the grammar has: what lies further behind the foremost place that was looked at may be gone.
class ViewIterator final {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::int64_t;
    using reference = char;
    using pointer = void;

    ViewIterator() = default;  // the end
    explicit ViewIterator(ViewWindow& viewWindow) : window(&viewWindow) {}

    char operator*() const { return window->at(position); }
    ViewIterator& operator++() { return *this += 1; }
    // NOLINTNEXTLINE(cert-dcl21-cpp): standard algorithms want no const here
    ViewIterator operator++(int) {
        const ViewIterator before = *this;
        ++*this;
        return before;
    }
    ViewIterator& operator+=(difference_type distance) {
        position += static_cast<std::uint64_t>(distance);
        return *this;
    }
    friend bool operator==(const ViewIterator& left, const ViewIterator& right) {
        return left.isEnd() ? right.isEnd() : !right.isEnd() && left.position == right.position;
    }
    friend std::string_view fieldAt(const ViewIterator& place, const ViewIterator& /*end*/) {
        return place.window->field(place.position);
    }

private:
    bool isEnd() const { return window == nullptr || !window->reaches(position); }

    ViewWindow* window = nullptr;
    std::uint64_t position = 0;
};

}  // namespace velextracta
