// Follows a script, for tests that need an extracta with a special behaviour. The script's path is
// the program's path and ".commands". Each of its lines is one of the commands below.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "standin/System.h"

namespace {

namespace fs = std::filesystem;
using Mode = standin::WritableFile::Mode;

std::vector<char*> arguments;  // the program first, null after the last

std::string argument(std::size_t number) {
    return number + 1 < arguments.size() ? arguments[number] : "";
}

/// Replaces the names of values by extracta's arguments, found by their position.
std::string expand(std::string text) {
    const std::pair<std::string_view, std::string> values[] = {
        {"$design", argument(4)},
        {"$control", argument(5)},
        {"$first", argument(6)},
        {"$folder", standin::pathText(standin::toPath(argument(4)).parent_path())},
        {"$run", standin::pathText(standin::toPath(argument(6)).parent_path())},
        {"$stem", standin::pathText(standin::toPath(argument(5)).stem())},
        {"$pid", std::to_string(standin::processNumber())}};
    for (std::size_t at = 0; (at = text.find('$', at)) != std::string::npos;) {
        std::size_t taken = 1;
        for (const auto& [name, value] : values) {
            if (text.compare(at, name.size(), name) == 0) {
                text.replace(at, name.size(), value);
                taken = value.size();
                break;
            }
        }
        at += taken;
    }
    return text;
}

std::string unescape(const std::string& text) {
    constexpr std::string_view kLetters = "rn0\\";
    constexpr std::string_view kMeanings("\r\n\0\\", 4);
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bytes += text[at] == '\\' ? kMeanings.at(kLetters.find(text.at(++at))) : text[at];
    }
    return bytes;
}

std::pair<std::string, std::string> cutFirstWord(const std::string& line) {
    const std::size_t blank = line.find(' ');
    return {line.substr(0, blank), blank == std::string::npos ? "" : line.substr(blank + 1)};
}

void put(const std::string& path, const std::string& bytes, Mode mode) {
    standin::WritableFile file(path, mode);
    if (!file.isOpen() || !file.write(bytes) || !file.close()) {
        const std::string reason = standin::lastFailure();  // before anything can change it
        throw std::runtime_error(path + ": " + reason);
    }
}

void print(const std::string& bytes) {
    if (!standin::writeToStandardOutput(bytes)) {
        throw std::runtime_error("cannot write: " + standin::lastFailure());
    }
}

void awaitUntil(const auto& condition) {
    // Poll ever more slowly: hundreds of waiting processes must not take the processor from those
    // that they wait for.
    constexpr std::chrono::milliseconds kLongest{100};
    std::chrono::milliseconds pause{2};
    while (!condition()) {
        std::this_thread::sleep_for(pause);
        pause = std::min(pause + pause / 2, kLongest);
    }
}

std::size_t countOf(const fs::path& prefix) {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(fs::absolute(prefix).parent_path())) {
        const std::string name = standin::pathText(entry.path().filename());
        count += name.starts_with(standin::pathText(prefix.filename())) ? 1 : 0;
    }
    return count;
}

std::string listArguments() {
    std::string lines;
    for (std::size_t number = 1; number + 1 < arguments.size(); ++number) {
        lines += argument(number) + "\n";
    }
    return lines + standin::pathText(fs::current_path()) + "\n";
}

/// A program beside this one.
void start(const std::string& name, standin::Session session) {
    const fs::path own = standin::ownProgram();
    standin::start(own.parent_path() / (standin::toPath(name) += own.extension()), {}, session);
}

void obey(const std::string& line);

void obeyIf(bool wanted, const std::string& part, const std::string& line) {
    if ((expand("$stem").find(part) != std::string::npos) == wanted) {
        obey(line);
    }
}

struct Command {
    std::string_view name;
    void (*obey)(const std::string& word, const std::string& text);  // the rest of the line is text
};

constexpr Command kCommands[] = {
    // The first word is a file or folder.
    {"arguments", [](auto& file, auto&) { put(file, listArguments(), Mode::kReplace); }},
    {"write", [](auto& file, auto& text) { put(file, text, Mode::kReplace); }},
    {"append", [](auto& file, auto& text) { put(file, text, Mode::kAppend); }},
    {"copy",
     [](auto& from, auto& to) { fs::copy_file(standin::toPath(from), standin::toPath(to)); }},
    {"remove", [](auto& path, auto&) { fs::remove_all(standin::toPath(path)); }},
    {"rename",
     [](auto& from, auto& to) { fs::rename(standin::toPath(from), standin::toPath(to)); }},
    {"link",
     [](auto& to, auto& link) { fs::create_symlink(standin::toPath(to), standin::toPath(link)); }},
    {"hard-link",
     [](auto& to, auto& link) {
         fs::create_hard_link(standin::toPath(to), standin::toPath(link));
     }},
    {"permissions",
     [](auto& path, auto& octal) {
         fs::permissions(standin::toPath(path), fs::perms(std::stoi(octal, nullptr, 8)));
     }},
    {"grow",
     [](auto& file, auto& size) { fs::resize_file(standin::toPath(file), std::stoull(size)); }},
    {"make-folder", [](auto& path, auto&) { fs::create_directory(standin::toPath(path)); }},
    {"make-fifo", [](auto& path, auto&) { standin::makeFifo(standin::toPath(path)); }},
    {"await",
     [](auto& file, auto&) { awaitUntil([&] { return fs::exists(standin::toPath(file)); }); }},
    {"hold",
     [](auto& file, auto&) {
         static const standin::WritableFile held(file, Mode::kAppend);  // until this process ends
     }},
    {"await-count",
     [](auto& prefix, auto& count) {
         awaitUntil([&] { return countOf(standin::toPath(prefix)) >= std::stoul(count); });
     }},
    // The name of a program beside this one.
    {"start", [](auto& name, auto&) { start(name, standin::Session::kOurs); }},
    {"start-detached", [](auto& name, auto&) { start(name, standin::Session::kItsOwn); }},
    // A number.
    {"flood", [](auto& bytes, auto&) { print(std::string(std::stoul(bytes), 'x')); }},
    {"sleep",
     [](auto& time, auto&) {
         std::this_thread::sleep_for(std::chrono::milliseconds(std::stoul(time)));
     }},
    {"end-by", [](auto& signal, auto&) { standin::endBySignal(std::stoi(signal)); }},
    {"exit", [](auto& code, auto&) { std::exit(static_cast<int>(std::stoul(code))); }},
};

void obey(const std::string& line) {
    const auto [command, rest] = cutFirstWord(line);
    if (command == "print" || command == "complain") {
        const std::string text = expand(unescape(rest));
        command == "print" ? print(text) : void(std::cerr << text);
        return;
    }
    if (command == "become") {
        standin::become(standin::toPath(rest), arguments.data());
    }
    const auto [word, text] = cutFirstWord(rest);
    if (command == "if" || command == "unless") {
        obeyIf(command == "if", word, text);
        return;
    }
    for (const Command& row : kCommands) {
        if (row.name == command) {
            row.obey(expand(word), expand(unescape(text)));
            return;
        }
    }
    throw std::runtime_error("cannot obey \"" + line + "\"");
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kMisused = 99;
    try {
        arguments.assign(argv, argv + argc + 1);
        fs::path commands = standin::ownProgram();
        if (commands.extension() == ".exe") {
            commands.replace_extension();
        }
        std::ifstream file(commands += ".commands", std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            obey(line);
        }
        return file.eof() ? 0 : kMisused;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return kMisused;
    }
}
