#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>
#include <vector>

namespace velextracta {

/// A text of any length, read in blocks while it is parsed. Memory holds the current block, or the
/// current field if that is longer.
class ViewWindow final {
public:
    /// Reads at most size next bytes to the destination and returns their number; 0 only at the
    /// end.
    using Source = std::function<std::size_t(char* destination, std::size_t size)>;

    ViewWindow(Source source, std::size_t blockSize);

    /// Whether the text has a byte at the position. Reads on if necessary.
    bool reaches(std::uint64_t position) { return position < end || readFrom(position); }
    /// The byte at a position for which reaches() returned true.
    char at(std::uint64_t position) const {
        return buffer[static_cast<std::size_t>(position - begin)];
    }
    /// The field that begins at the position; valid until more is read.
    std::string_view field(std::uint64_t position);

private:
    std::size_t filled() const { return static_cast<std::size_t>(end - begin); }
    std::string_view textFrom(std::uint64_t position) const;
    bool readFrom(std::uint64_t position);
    void makeRoom(std::uint64_t needed);

    const Source read;
    std::vector<char> buffer;
    // The positions of the buffer's first byte and of the byte after its last.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// A position in a ViewWindow's text, or its end. It goes back by the length of a grammar's literal
/// at most: earlier bytes may no longer be in memory.
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
