#include "tkcore/programs/inside/CommandLine.windows.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "tkcore/files/Path.h"

namespace tkcore {

namespace {

std::wstring quoted(std::wstring_view argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        // Backslashes are ordinary characters, except before a quote.
        const bool isQuote = character == L'"';
        text.append(isQuote ? backslashes + 1 : 0, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        text += character;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

}  // namespace

std::wstring commandLineOf(const std::vector<std::string>& arguments) {
    constexpr std::wstring_view kPlain =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./\\:";
    std::wstring line;
    for (const std::string& argument : arguments) {
        const std::wstring wide = widen(argument);
        const bool isPlain = !wide.empty() && wide.find_first_not_of(kPlain) == std::wstring::npos;
        line.append(line.empty() ? L"" : L" ").append(isPlain ? wide : quoted(wide));
    }
    return line;
}

bool isBatchFile(const std::string& program) {
    const AString type(toPath(AString(program)).extension().native());
    return type.MatchNoCase(".bat") || type.MatchNoCase(".cmd");
}

std::string argumentForAnInterpreter(const std::vector<std::string>& arguments) {
    const auto found = std::ranges::find_if(arguments, [](const std::string& argument) {
        return argument.find('%') != std::string::npos;
    });
    return found == arguments.end() ? "" : *found;
}

}  // namespace tkcore
