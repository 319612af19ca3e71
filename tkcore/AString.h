#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/format.hpp>

#include "tkcore/CodePage.h"

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

    /// Text made by a printf format. Every argument is written by its own type, whatever letter
    /// its conversion has; an argument too few or too many is left out.
    template <typename... Arguments>
    static AString Format(const AString& format, const Arguments&... arguments);

    bool Match(const AString& other) const { return text == other.text; }

    /// Comparison that takes "A" to "Z" for "a" to "z".
    bool MatchNoCase(const AString& other) const;

    /// The pieces between the separator characters, in order; empty ones only if keepEmpty.
    std::vector<AString> TokenizeString(const AString& separators, bool keepEmpty) const;

    bool empty() const noexcept { return text.empty(); }
    const wchar_t* c_str() const noexcept { return text.c_str(); }
    const std::wstring& wide() const noexcept { return text; }

    AString& operator+=(const AString& other) {
        text += other.text;
        return *this;
    }
    friend AString operator+(AString left, const AString& right) { return left += right; }
    friend bool operator==(const AString&, const AString&) = default;
    friend std::wostream& operator<<(std::wostream& stream, const AString& string);

private:
    template <typename Argument>
    static decltype(auto) formatArgument(const Argument& argument);

    std::wstring text;
};

/// The text in the system's narrow code page: what files, paths and other libraries are given.
inline std::string VEL_ANSI(const AString& string) {
    return narrow(string.wide());
}

template <typename Argument>
decltype(auto) AString::formatArgument(const Argument& argument) {
    // Narrow text goes through the code page; a wide stream would take it byte by byte.
    if constexpr (!std::is_arithmetic_v<Argument> && std::is_convertible_v<Argument, AString>) {
        return AString(argument);
    } else {
        return (argument);
    }
}

template <typename... Arguments>
AString AString::Format(const AString& format, const Arguments&... arguments) {
    boost::wformat formatter;
    formatter.exceptions(boost::io::no_error_bits);
    formatter.parse(format.wide());
    return (formatter % ... % formatArgument(arguments)).str();
}

}  // namespace tkcore
