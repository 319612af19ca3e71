#include "tkcore/programs/ProgramFailure.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <windows.h>

#include "tkcore/files/PathStatus.h"

namespace tkcore {

namespace {

struct CodeMeaning final {
    DWORD code;
    std::string_view text;
};

constexpr std::array kCodes{
    CodeMeaning{STATUS_ACCESS_VIOLATION, "an access to memory that is not its own"},
    CodeMeaning{STATUS_STACK_OVERFLOW, "no room left on its stack"},
    CodeMeaning{STATUS_INTEGER_DIVIDE_BY_ZERO, "a division by zero"},
    CodeMeaning{STATUS_ILLEGAL_INSTRUCTION, "an instruction that this processor does not have"},
    CodeMeaning{STATUS_CONTROL_C_EXIT, "an end by Ctrl-C, Ctrl-Break or its console's closing"},
    CodeMeaning{0xC0000135, "that a library (DLL) of it is not there"},
    CodeMeaning{0xC0000142, "that a library (DLL) of it could not begin"},
    CodeMeaning{0xC0000409, "that it gave up"},
};

}  // namespace

AString meaningOfExitCode(int code) {
    const auto* found = std::ranges::find(kCodes, static_cast<DWORD>(code), &CodeMeaning::code);
    return found == kCodes.end() ? AString() : AString(found->text);
}

AString obstacleToStart(const std::string& name, int error) {
    const bool isPath = name.find_first_of("\\/:") != std::string::npos;
    switch (static_cast<DWORD>(error)) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return isPath ? "there is no " + userPath(AString(name)).FilePath()
                          : AString("neither the folder of this program nor one of PATH holds it");
        case ERROR_BAD_EXE_FORMAT:
            return "it is no program of this system";
        default:
            return {};
    }
}

}  // namespace tkcore
