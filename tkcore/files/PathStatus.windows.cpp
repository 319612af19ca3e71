#include "tkcore/files/PathStatus.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include <boost/filesystem.hpp>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/Path.h"

namespace tkcore {

namespace fs = boost::filesystem;

using Kind = PathStatus::Kind;

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestPath = 32766;

constexpr std::wstring_view kSeparators = L"\\/";

// With a digit, also in superscript, these are ports: COM1 to COM9.
constexpr auto kDevices =
    std::to_array<std::wstring_view>({L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"});
constexpr auto kPorts = std::to_array<std::wstring_view>({L"COM", L"LPT"});
constexpr std::wstring_view kPortNumbers = L"123456789\u00B9\u00B2\u00B3";

/// Whether the predicate holds for a name in the path, drive and separators left out.
template <typename Predicate>
bool anyName(std::wstring_view path, const Predicate& predicate) {
    if (path.size() >= 2 && path[1] == L':') {
        path.remove_prefix(2);
    }
    while (!path.empty()) {
        const std::wstring_view name = path.substr(0, path.find_first_of(kSeparators));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        if (predicate(name)) {
            return true;
        }
    }
    return false;
}

bool isDevice(std::wstring_view name) {
    // The extension, and blanks before it, do not matter.
    std::wstring stem(name.substr(0, name.find(L'.')));
    stem.erase(stem.find_last_not_of(L' ') + 1);
    const AString text(stem);
    const auto matches = [&](std::wstring_view device) {
        return text.MatchNoCase(std::wstring(device));
    };
    if (std::ranges::any_of(kDevices, matches)) {
        return true;
    }
    return stem.size() == 4 && kPortNumbers.find(stem.back()) != std::wstring_view::npos &&
           std::ranges::any_of(kPorts, [&](std::wstring_view port) {
               return AString(stem.substr(0, 3)).MatchNoCase(std::wstring(port));
           });
}

bool isReservedName(std::wstring_view name) {
    if (name.empty() || name == L"." || name == L"..") {
        return false;
    }
    // The system drops dots and blanks at the end of a name; a colon leads to a part of a file.
    return name.back() == L'.' || name.back() == L' ' ||
           name.find_first_of(L"<>:\"|?*") != std::wstring_view::npos ||
           std::ranges::any_of(name, [](wchar_t character) { return character < L' '; }) ||
           isDevice(name);
}

}  // namespace

bool isReservedText(const AString& text) {
    std::wstring_view path = text.wide();
    if (path.starts_with(L"\\\\?\\")) {
        path.remove_prefix(4);
    }
    return anyName(path, isReservedName);
}

PathStatus statusOf(const LongFileName& path) {
    const fs::path native = toPath(path);
    if (!path.IsInitialized()) {
        return {Kind::kNothing, 0, std::make_error_code(std::errc::no_such_file_or_directory)};
    }
    if (path.isReserved()) {
        return {Kind::kUnknown, 0, {ERROR_INVALID_NAME, std::system_category()}};
    }
    boost::system::error_code error;
    const fs::file_type type = fs::status(native, error).type();
    const std::error_code reason(error.value(), std::system_category());
    switch (type) {
        case fs::regular_file: {
            const std::uint64_t size = fs::file_size(native, error);
            return {Kind::kFile, error ? 0 : size, {}};
        }
        case fs::directory_file:
            return {Kind::kDirectory, 0, {}};
        case fs::file_not_found:
            return {Kind::kNothing, 0, reason};
        case fs::status_error:
            return {Kind::kUnknown, 0, reason};
        case fs::reparse_file: {
            // The library does not recognise a folder of a cloud service, so try to list it.
            const fs::directory_iterator listing(native, error);
            return {error ? Kind::kOther : Kind::kDirectory, 0, {}};
        }
        default:
            return {Kind::kOther, 0, {}};
    }
}

bool isSameName(const AString& left, const AString& right) {
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool isSameFile(const LongFileName& left, const LongFileName& right) {
    boost::system::error_code error;
    return isThere(left) && isThere(right) && fs::equivalent(toPath(left), toPath(right), error) &&
           !error;
}

bool isTooLong(const LongFileName& path) {
    const std::wstring& text = path.FilePath().wide();
    return text.size() > kLongestPath ||
           anyName(text, [](std::wstring_view name) { return name.size() > kLongestName; });
}

bool isTooLongForPrograms(const LongFileName& path) {
    return path.FilePath().wide().size() >= MAX_PATH;
}

}  // namespace tkcore
