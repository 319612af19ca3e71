#include "tkcore/files/Path.h"

#include <algorithm>
#include <string_view>

#include <boost/filesystem.hpp>
#include <windows.h>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace fs = boost::filesystem;

namespace {

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedShare = L"\\\\?\\UNC\\";

bool isSeparator(wchar_t character) {
    return character == L'\\' || character == L'/';
}

/// Whether the path begins with two separators, "?" or ".", and a separator: the system takes it as
/// it is.
bool isDevicePath(std::wstring_view path) {
    return path.size() >= 4 && isSeparator(path[0]) && isSeparator(path[1]) &&
           (path[2] == L'?' || path[2] == L'.') && isSeparator(path[3]);
}

}  // namespace

std::wstring fullPath(const std::wstring& path) {
    std::wstring full(path.size() + MAX_PATH, L'\0');
    DWORD size =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size >= full.size()) {
        full.resize(size);
        size = GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
    }
    full.resize(size);
    return full;
}

std::wstring withoutLimit(const std::wstring& path) {
    // Leave room for a name in a folder: the system's limit for folders is lower.
    constexpr std::size_t kMostAsItIs = 240;
    if (path.empty() || isDevicePath(path) || isReservedText(path)) {
        return path;
    }
    const std::wstring full = fullPath(path);
    if (full.size() <= kMostAsItIs) {
        return path;
    }
    return full.starts_with(L"\\\\") ? std::wstring(kExtendedShare) + full.substr(2)
                                     : std::wstring(kExtended) + full;
}

std::wstring withLimit(const std::wstring& path) {
    if (path.starts_with(kExtendedShare)) {
        return L"\\\\" + path.substr(kExtendedShare.size());
    }
    // Without the prefix, a path with a drive stays the same path; that of a volume would be
    // invalid.
    const std::size_t colon = kExtended.size() + 1;
    return path.starts_with(kExtended) && path.size() > colon && path[colon] == L':'
               ? path.substr(kExtended.size())
               : path;
}

std::wstring nativePath(const LongFileName& path, const char* action) {
    if (path.isReserved()) {
        throwPathFailure(systemError(ERROR_INVALID_NAME), action, path,
                         ", a name that the system keeps for itself");
    }
    return withoutLimit(path.FilePath().wide());
}

void throwLastError(const char* action, const LongFileName& path) {
    const DWORD error = GetLastError();
    throwPathFailure(systemError(error), action, path);
}

fs::path toPath(const AString& text) {
    return {withoutLimit(text.wide())};
}

AString pathText(const fs::path& path) {
    return withLimit(path.native());
}

std::optional<AString> absoluteText(const AString& text) {
    const fs::path given(text.wide());
    if (given.is_absolute() || isDevicePath(text.wide())) {
        // A name appended to it may have slashes, which are no separators in the form without
        // limit.
        return withLimit(text.wide());
    }
    // "\name" depends on the current drive, "X:name" on a drive's current directory. Let the system
    // complete only that: from the rest it would drop the characters that make a name reserved.
    if (given.has_root_path()) {
        const fs::path root = given.has_root_name() ? given.root_name() : given.root_directory();
        return AString(
            withLimit((fs::path(fullPath(root.native())) / given.relative_path()).native()));
    }
    boost::system::error_code error;
    const fs::path here = fs::current_path(error);
    return error ? std::nullopt : std::optional(AString(withLimit((here / given).native())));
}

AString pathForPrograms(const AString& text) {
    std::wstring path = text.wide();
    if (fs::path(path).is_absolute()) {
        std::ranges::replace(path, L'/', L'\\');
    }
    return path;
}

std::string portablePath(std::string path) {
    path = narrow(withLimit(widen(path)));
    std::ranges::replace(path, '\\', '/');
    return path;
}

}  // namespace tkcore
