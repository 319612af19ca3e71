#include "tkcore/text/AString.h"

#include <algorithm>

#include <boost/format.hpp>

namespace tkcore {

namespace {

wchar_t lowerCase(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? character - L'A' + L'a' : character;
}

}  // namespace

bool AString::MatchNoCase(const AString& other) const {
    return std::ranges::equal(text, other.text, {}, lowerCase, lowerCase);
}

std::vector<AString> AString::TokenizeString(const AString& separators, bool keepEmpty) const {
    std::vector<AString> pieces;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find_first_of(separators.text, start), text.size());
        if (keepEmpty || end > start) {
            pieces.emplace_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return pieces;
}

AString AString::formatValues(const AString& format, std::span<const FormatValue> values) {
    boost::wformat formatter;
    formatter.exceptions(boost::io::no_error_bits);
    formatter.parse(format.text);
    for (const FormatValue& value : values) {
        std::visit([&formatter](const auto& plain) { formatter % plain; }, value);
    }
    return formatter.str();
}

}  // namespace tkcore
