#include "tkcore/programs/inside/ProgramPath.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include <boost/filesystem/path.hpp>
#include <windows.h>

#include "tkcore/files/PathStatus.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

/// 0 if the file can be started, as far as can be told, else the reason.
int startError(const LongFileName& file) {
    if (!isThere(file)) {
        return ERROR_FILE_NOT_FOUND;
    }
    return isDirectory(file) ? ERROR_ACCESS_DENIED : 0;
}

/// Sets path to the first of the candidates that can be started.
int chooseProgram(const std::vector<LongFileName>& candidates, std::string& path) {
    int result = ERROR_FILE_NOT_FOUND;
    for (const LongFileName& candidate : candidates) {
        const int error = startError(candidate);
        if (error == 0) {
            path = VEL_ANSI(candidate);
            return 0;
        }
        result = error == ERROR_FILE_NOT_FOUND ? result : error;
    }
    return result;
}

LongFileName ourProgram() {
    std::wstring program(32768, L'\0');  // the longest path there is
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    return LongFileName(program);
}

/// Our own folder, then those of PATH that are absolute; one with a semicolon stands in quotes.
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

int findProgram(const std::string& name, std::string& path) {
    const AString text(name);
    if (name.empty()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const bool hasExtension = fs::path(text.wide()).has_extension();
    const AString fullName = hasExtension ? text : text + ".exe";
    if (text.wide().find_first_of(L"\\/:") != std::wstring::npos) {
        return chooseProgram({LongFileName(fullName), LongFileName(text)}, path);
    }
    // A file without extension may be a script that other systems know what to do with.
    std::vector<LongFileName> candidates;
    for (const LongFileName& folder : searchedFolders()) {
        candidates.push_back(folder.in(fullName));
    }
    return chooseProgram(candidates, path);
}

bool isThisProgram(const std::string& path) {
    return isSameFile(LongFileName(AString(path)), ourProgram());
}

}  // namespace tkcore
