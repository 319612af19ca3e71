#pragma once

#include <array>
#include <compare>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "tkcore/text/CodePage.h"

namespace tkcore {

/// Wide text: paths, net names, messages. VEL_ANSI() gives the narrow form.
class AString final {
public:
    AString() = default;
    AString(const char* narrowText) : text(widen(narrowText)) {}
    AString(const std::string& narrowText) : text(widen(narrowText)) {}
    AString(std::string_view narrowText) : text(widen(narrowText)) {}
    AString(const wchar_t* wideText) : text(wideText) {}
    AString(std::wstring wideText) : text(std::move(wideText)) {}

    /// Text made by a printf format. Each argument is written by its type, whatever letter the
    /// conversion has. Missing and surplus arguments are ignored.
    template <typename... Arguments>
    static AString Format(const AString& format, const Arguments&... arguments);

    bool Match(const AString& other) const { return text == other.text; }

    /// Whether the texts are equal if "A" to "Z" count as "a" to "z".
    bool MatchNoCase(const AString& other) const;

    /// The pieces between the separator characters, in order. Empty pieces only if keepEmpty.
    std::vector<AString> TokenizeString(const AString& separators, bool keepEmpty) const;

    bool empty() const noexcept { return text.empty(); }
    const wchar_t* c_str() const noexcept { return text.c_str(); }
    const std::wstring& wide() const noexcept { return text; }

    AString& operator+=(const AString& other) {
        text += other.text;
        return *this;
    }
    /// Appends narrow text without an intermediate copy.
    AString& append(std::string_view narrowText) {
        appendWide(narrowText, text);
        return *this;
    }
    friend AString operator+(AString left, const AString& right) { return left += right; }
    friend bool operator==(const AString&, const AString&) = default;

private:
    using FormatValue = std::variant<std::wstring, long long, unsigned long long, double>;

    template <typename Argument>
    static FormatValue formatValue(const Argument& argument);
    static AString formatValues(const AString& format, std::span<const FormatValue> values);

    std::wstring text;
};

/// The text in the system's narrow code page, for files, paths and other libraries.
inline std::string VEL_ANSI(const AString& string) {
    return narrow(string.wide());
}

template <typename Argument>
AString::FormatValue AString::formatValue(const Argument& argument) {
    if constexpr (std::is_floating_point_v<Argument>) {
        return static_cast<double>(argument);
    } else if constexpr (std::is_unsigned_v<Argument>) {
        return static_cast<unsigned long long>(argument);
    } else if constexpr (std::is_arithmetic_v<Argument>) {
        return static_cast<long long>(argument);
    } else {
        return AString(argument).text;
    }
}

template <typename... Arguments>
AString AString::Format(const AString& format, const Arguments&... arguments) {
    const std::array<FormatValue, sizeof...(arguments)> values{formatValue(arguments)...};
    return formatValues(format, values);
}

}  // namespace tkcore
