// bench-pack [--threads N] [--level L] ARCHIVE FILE...: packs the files as the end of a run does.

#include <charconv>
#include <exception>
#include <iostream>
#include <span>
#include <string_view>

#include "archive/CZipArchive.h"

namespace {

constexpr int kUsageError = 2;

using Arguments = std::span<char*>;

/// Takes an option with its number off the arguments; the other one if it is not there.
int numberOption(Arguments& arguments, std::string_view name, int otherwise) {
    if (arguments.size() > 1 && arguments[0] == name) {
        const std::string_view text = arguments[1];
        std::from_chars(text.data(), text.data() + text.size(), otherwise);
        arguments = arguments.subspan(2);
    }
    return otherwise;
}

}  // namespace

int main(int argc, char* argv[]) {
    using velextracta::CZipArchive;

    Arguments arguments(argv + 1, argv + argc);
    const int threads =
        numberOption(arguments, "--threads", static_cast<int>(tkcore::hardwareThreads()));
    const int level = numberOption(arguments, "--level", CZipArchive::kDefaultLevel);
    if (arguments.size() < 2) {
        std::cerr << "usage: bench-pack [--threads N] [--level L] ARCHIVE FILE...\n";
        return kUsageError;
    }
    try {
        CZipArchive archive(static_cast<unsigned>(threads));
        archive.Open(arguments[0], CZipArchive::kCreate);
        for (const char* file : arguments.subspan(1)) {
            archive.AddNewFile(file, level);
        }
        archive.Close();
    } catch (const std::exception& exception) {
        std::cerr << "bench-pack: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
