#include "tkcore/CodePage.h"

#include <cstddef>
#include <iterator>

#include <boost/locale/utf.hpp>

// The narrow code page is UTF-8 whatever the locale says: a script's LANG=C must not change what
// a run writes.

namespace tkcore {

namespace {

using Utf8 = boost::locale::utf::utf_traits<char>;

constexpr wchar_t kEscapedByte = 0xDC00;
constexpr wchar_t kFirstEscape = kEscapedByte + 0x80;
constexpr wchar_t kLastEscape = kEscapedByte + 0xFF;

// Nearly all text is ASCII, and a child may print hundreds of megabytes of it.
constexpr wchar_t kLastAscii = 0x7F;

bool isAscii(char character) {
    return static_cast<unsigned char>(character) <= kLastAscii;
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
            wideText.push_back(static_cast<wchar_t>(character));
            position = next;
        } else {
            wideText.push_back(kEscapedByte + static_cast<unsigned char>(*position));
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
    for (const wchar_t character : wideText) {
        if (character >= 0 && character <= kLastAscii) {
            narrowText.push_back(static_cast<char>(character));
        } else if (character >= kFirstEscape && character <= kLastEscape) {
            narrowText.push_back(static_cast<char>(character - kEscapedByte));
        } else {
            Utf8::encode(static_cast<boost::locale::utf::code_point>(character),
                         std::back_inserter(narrowText));
        }
    }
    return narrowText;
}

}  // namespace tkcore
