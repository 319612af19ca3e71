#include "tkcore/programs/inside/ProgramArguments.h"

#include "tkcore/files/Path.h"

namespace tkcore {

std::vector<std::string> plainArguments(std::span<const AString> argv) {
    std::vector<std::string> arguments;
    arguments.reserve(argv.size());
    for (const AString& text : argv) {
        const std::wstring& argument = text.wide();
        const bool isWrapped =
            argument.size() >= 2 && argument.front() == L'"' && argument.back() == L'"';
        arguments.push_back(
            VEL_ANSI(isWrapped ? pathForPrograms(argument.substr(1, argument.size() - 2)) : text));
    }
    return arguments;
}

}  // namespace tkcore
