#include "archive/inside/EntryName.h"

#include <algorithm>

#include "tkcore/files/Path.h"
#include "tkcore/text/CodePage.h"

namespace velextracta {

namespace {

constexpr char kSeparator = '/';

bool isLetter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

/// A letter and a colon are a drive only if a separator follows; otherwise they begin a file name.
bool startsWithDrive(std::string_view path) {
    return path.size() >= 3 && isLetter(path[0]) && path[1] == ':' &&
           (path[2] == kSeparator || path[2] == '\\');
}

}  // namespace

std::string entryName(std::string_view givenPath, bool fullPath) {
    const std::string portable = tkcore::portablePath(std::string(givenPath));
    std::string_view path = portable;
    if (startsWithDrive(path)) {
        path.remove_prefix(2);
    }
    std::string name;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find(kSeparator));
        path.remove_prefix(std::min(path.size(), component.size() + 1));
        if (component.empty() || component == "." || component == "..") {
            continue;
        }
        if (!fullPath) {
            name.clear();
        } else if (!name.empty()) {
            name += kSeparator;
        }
        name += component;
    }
    return name;
}

bool needsUtf8Mark(std::string_view name) {
    const bool isAscii = std::all_of(name.begin(), name.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x80;
    });
    return !isAscii && tkcore::isValidNarrow(name);
}

}  // namespace velextracta
