#include "tkcore/programs/inside/ProgramPath.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include <boost/filesystem/path.hpp>
#include <windows.h>

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

/// Our own folder, then the absolute ones of PATH. A folder with a semicolon is in quotes there.
std::vector<LongFileName> searchedFolders() {
    std::vector<LongFileName> folders{ourProgram().folder()};
    const char* variable = std::getenv("PATH");
    std::wstring folder;
    bool isQuoted = false;
    for (const wchar_t character : AString(variable == nullptr ? "" : variable).wide() + L";") {
        if (character == L'"') {
            isQuoted = !isQuoted;
        } else if (character != L';' || isQuoted) {
            folder += character;
        } else {
            if (fs::path(folder).is_absolute()) {
                folders.emplace_back(folder);
            }
            folder.clear();
        }
    }
    return folders;
}

}  // namespace

const ProgramErrors kProgramErrors{ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED};

ProgramPlaces placesOfProgram(const std::string& name) {
    const AString text(name);
    const bool hasExtension = fs::path(text.wide()).has_extension();
    const AString fullName = hasExtension ? text : text + ".exe";
    if (text.wide().find_first_of(L"\\/:") != std::wstring::npos) {
        return {{userPath(fullName), userPath(text)}};
    }
    // Not the name without extension: such a file may be a script for other systems.
    ProgramPlaces places{{}, true};
    for (const LongFileName& folder : searchedFolders()) {
        if (!name.empty()) {
            places.paths.push_back(folder.in(fullName));
        }
    }
    return places;
}

bool mayBeStarted(const LongFileName& /*file*/, const PathStatus& status) {
    return status.kind != PathStatus::Kind::kDirectory;
}

LongFileName ourProgram() {
    std::wstring program(32768, L'\0');  // for the longest possible path
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    return LongFileName(program);
}

}  // namespace tkcore
