#include "tkcore/ProgramPath.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include <boost/filesystem.hpp>
#include <windows.h>

#include "tkcore/Path.h"
#include "tkcore/PathStatus.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

/// 0 if the file can be started, as far as can be told, else the reason.
int startError(const fs::path& file) {
    if (!isThere(file)) {
        return ERROR_FILE_NOT_FOUND;
    }
    return isDirectory(file) ? ERROR_ACCESS_DENIED : 0;
}

/// Sets path to the first of the candidates that can be started.
int chooseProgram(const std::vector<fs::path>& candidates, std::string& path) {
    int result = ERROR_FILE_NOT_FOUND;
    for (const fs::path& candidate : candidates) {
        const int error = startError(candidate);
        if (error == 0) {
            path = VEL_ANSI(pathText(candidate));
            return 0;
        }
        result = error == ERROR_FILE_NOT_FOUND ? result : error;
    }
    return result;
}

fs::path ourFolder() {
    std::wstring program(32768, L'\0');  // the longest path there is
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    return toPath(fs::path(program).parent_path().native());
}

/// Our own folder, then those of PATH that are absolute; one with a semicolon stands in quotes.
std::vector<fs::path> searchedFolders() {
    std::vector<fs::path> folders{ourFolder()};
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
                folders.push_back(toPath(folder));
            }
            folder.clear();
        }
    }
    return folders;
}

}  // namespace

int findProgram(const std::string& name, std::string& path) {
    const AString text(name);
    if (name.empty()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const bool hasExtension = fs::path(text.wide()).has_extension();
    const AString fullName = hasExtension ? text : text + ".exe";
    if (text.wide().find_first_of(L"\\/:") != std::wstring::npos) {
        return chooseProgram({toPath(absoluteText(fullName)), toPath(absoluteText(text))}, path);
    }
    // A file without extension may be a script that other systems know what to do with.
    std::vector<fs::path> candidates;
    for (const fs::path& folder : searchedFolders()) {
        candidates.push_back(pathIn(folder, fullName.wide()));
    }
    return chooseProgram(candidates, path);
}

}  // namespace tkcore
