#include "tkcore/text/CodePage.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

#include <boost/locale/utf.hpp>

// The narrow code page is UTF-8, whatever the locale: a script's LANG=C must not change the output
// of a run.

namespace tkcore {

namespace {

using boost::locale::utf::code_point;
using Utf8 = boost::locale::utf::utf_traits<char>;
using Wide = boost::locale::utf::utf_traits<wchar_t>;

constexpr code_point kEscapedByte = 0xDC00;
constexpr code_point kFirstEscape = kEscapedByte + 0x80;
constexpr code_point kLastEscape = kEscapedByte + 0xFF;

// ASCII has a fast path: nearly all text is ASCII, and a child may print hundreds of megabytes.
constexpr code_point kLastAscii = 0x7F;

bool isAscii(char character) {
    return static_cast<unsigned char>(character) <= kLastAscii;
}

// If a wide character has 16 bits, characters beyond the first plane take two of them.
constexpr bool kHasPairs = sizeof(wchar_t) == 2;

/// Whether the text begins with the two halves of one character. An invalid byte in the form of
/// widen() looks like a second half, but never follows a first half.
bool startsWithPair(std::wstring_view text) {
    using Utf16 = boost::locale::utf::utf_traits<char16_t>;
    return kHasPairs && text.size() > 1 &&
           Utf16::is_first_surrogate(static_cast<std::uint16_t>(text[0])) &&
           Utf16::is_second_surrogate(static_cast<std::uint16_t>(text[1]));
}

}  // namespace

std::wstring widen(std::string_view narrowText) {
    std::wstring wideText;
    appendWide(narrowText, wideText);
    return wideText;
}

void appendWide(std::string_view narrowText, std::wstring& wideText) {
    wideText.reserve(wideText.size() + narrowText.size());
    for (const char* position = narrowText.begin(); position != narrowText.end();) {
        if (isAscii(*position)) {
            wideText.push_back(*position++);
            continue;
        }
        const char* next = position;
        const auto character = Utf8::decode(next, narrowText.end());
        if (boost::locale::utf::is_valid_codepoint(character)) {
            Wide::encode(character, std::back_inserter(wideText));
            position = next;
        } else {
            wideText.push_back(
                static_cast<wchar_t>(kEscapedByte + static_cast<unsigned char>(*position)));
            ++position;
        }
    }
}

bool isValidNarrow(std::string_view narrowText) {
    for (const char* position = narrowText.begin(); position != narrowText.end();) {
        if (!boost::locale::utf::is_valid_codepoint(Utf8::decode(position, narrowText.end()))) {
            return false;
        }
    }
    return true;
}

std::string narrow(std::wstring_view wideText) {
    std::string narrowText;
    narrowText.reserve(wideText.size());
    while (!wideText.empty()) {
        const std::size_t length = startsWithPair(wideText) ? 2 : 1;
        const wchar_t* position = wideText.data();
        const auto character =
            length == 2 ? Wide::decode_valid(position) : static_cast<code_point>(wideText.front());
        wideText.remove_prefix(length);
        if (character <= kLastAscii) {
            narrowText.push_back(static_cast<char>(character));
        } else if (character >= kFirstEscape && character <= kLastEscape) {
            narrowText.push_back(static_cast<char>(character - kEscapedByte));
        } else {
            Utf8::encode(character, std::back_inserter(narrowText));
        }
    }
    return narrowText;
}

}  // namespace tkcore
