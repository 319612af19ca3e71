#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

#include <boost/container/small_vector.hpp>

namespace velextracta {

/// The fields of one record: an ordered list of narrow texts of any bytes, which it owns. To save
/// memory the texts stand in one buffer, each after its length: a survey has a record for every
/// piece of metal of a design. A record with a net name of up to 30 bytes takes 56 bytes and no
/// allocation.
class FieldList final {
public:
    using value_type = std::string_view;
    using reference = value_type;
    using size_type = std::size_t;
    class Iterator;
    using iterator = Iterator;
    using const_iterator = Iterator;

    void push_back(std::string_view text);

    /// Walks the list, as size() does: records have few fields, and most lookups are for the first.
    [[nodiscard]] std::optional<std::string_view> field(size_type index) const;
    [[nodiscard]] size_type size() const;

    [[nodiscard]] bool empty() const noexcept { return packed.empty(); }
    [[nodiscard]] Iterator begin() const noexcept;
    [[nodiscard]] Iterator end() const noexcept;
    void swap(FieldList& other) { packed.swap(other.packed); }

private:
    boost::container::small_vector<char, 32> packed;
};

class FieldList::Iterator final {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using reference = value_type;
    using pointer = void;

    Iterator() = default;
    explicit Iterator(const char* packedField) : position(packedField) {}

    std::string_view operator*() const;
    Iterator& operator++();
    Iterator operator++(int) {  // NOLINT(cert-dcl21-cpp): standard algorithms want no const here
        const Iterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

private:
    const char* position = nullptr;
};

// A length has seven bits in each byte, lowest first; the high bit means that more bytes follow.
inline constexpr unsigned kLengthBits = 7;
inline constexpr unsigned char kMoreLength = 1U << kLengthBits;

inline void FieldList::push_back(std::string_view text) {
    size_type length = text.size();
    for (; length >= kMoreLength; length >>= kLengthBits) {
        packed.push_back(static_cast<char>(length % kMoreLength | kMoreLength));
    }
    packed.push_back(static_cast<char>(length));
    packed.insert(packed.end(), text.begin(), text.end());
}

inline std::string_view FieldList::Iterator::operator*() const {
    const char* text = position;
    size_type length = 0;
    for (unsigned shift = 0;; shift += kLengthBits) {
        const auto digit = static_cast<unsigned char>(*text++);
        length |= static_cast<size_type>(digit % kMoreLength) << shift;
        if (digit < kMoreLength) {
            return {text, length};
        }
    }
}

inline FieldList::Iterator& FieldList::Iterator::operator++() {
    const std::string_view text = **this;
    position = text.data() + text.size();
    return *this;
}

inline FieldList::Iterator FieldList::begin() const noexcept {
    return Iterator(packed.data());
}

inline FieldList::Iterator FieldList::end() const noexcept {
    return Iterator(packed.data() + packed.size());
}

inline std::optional<std::string_view> FieldList::field(size_type index) const {
    const Iterator found = std::ranges::next(begin(), static_cast<std::ptrdiff_t>(index), end());
    return found == end() ? std::nullopt : std::optional(*found);
}

inline FieldList::size_type FieldList::size() const {
    return static_cast<size_type>(std::distance(begin(), end()));
}

}  // namespace velextracta
