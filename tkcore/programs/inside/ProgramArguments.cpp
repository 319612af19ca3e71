#include "tkcore/programs/inside/ProgramArguments.h"

namespace tkcore {

std::vector<std::string> plainArguments(std::span<const AString> argv) {
    std::vector<std::string> arguments;
    arguments.reserve(argv.size());
    for (const AString& text : argv) {
        std::string argument = VEL_ANSI(text);
        if (argument.size() >= 2 && argument.front() == '"' && argument.back() == '"') {
            argument = argument.substr(1, argument.size() - 2);
        }
        arguments.push_back(std::move(argument));
    }
    return arguments;
}

}  // namespace tkcore
