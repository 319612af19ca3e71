// Writes a design database of a made-up package for extracta-standin.

#include <array>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "standin/Database.h"
#include "standin/DesignGenerator.h"
#include "standin/System.h"

namespace {

using namespace standin;

constexpr const char* kUsage =
    R"(usage: make-design [--nets N] [--records N] [--seed N] [--odd-names] FILE

Writes a made-up package substrate design to FILE. The same options give the same design.
  --nets N      named nets, at most 100000 (200); a few supply nets hold most records
  --records N   connectivity records, at most 1000000000 (20000), and as many of full geometry
  --seed N      seed of the generator (1)
  --odd-names   add nets whose names hold quotes, blanks, commas, punctuation and bytes that are
                no UTF-8, two of which differ only in such characters, among the largest nets
)";

struct Options {
    DesignSize size;
    std::string file;
};

struct NumberOption {
    std::string_view name;
    std::uint64_t DesignSize::*target;
    std::uint64_t greatest;
};

constexpr auto kNumberOptions = std::to_array<NumberOption>({
    {"--nets", &DesignSize::nets, kMostNets},
    {"--records", &DesignSize::records, kMostRecords},
    {"--seed", &DesignSize::seed, UINT64_MAX},
});

std::uint64_t parseNumber(const NumberOption& option, const std::string& text) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || parsed != end || number > option.greatest) {
        throw std::runtime_error(std::string(option.name) + " needs a number from 0 to " +
                                 std::to_string(option.greatest) + ", not \"" + text + "\"");
    }
    return number;
}

const NumberOption* findNumberOption(std::string_view word) {
    for (const NumberOption& option : kNumberOptions) {
        if (option.name == word) {
            return &option;
        }
    }
    return nullptr;
}

Options parseOptions(const std::vector<std::string>& words) {
    Options options;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (const NumberOption* option = findNumberOption(*word)) {
            if (++word == words.end()) {
                throw std::runtime_error(std::string(option->name) + " needs a number");
            }
            options.size.*(option->target) = parseNumber(*option, *word);
        } else if (*word == "--odd-names") {
            options.size.oddNames = true;
        } else if (word->starts_with('-')) {
            throw std::runtime_error("unknown option " + *word);
        } else if (word->empty() || !options.file.empty()) {
            throw std::runtime_error("exactly one file must be given");
        } else {
            options.file = *word;
        }
    }
    if (options.file.empty()) {
        throw std::runtime_error("exactly one file must be given");
    }
    return options;
}

// A temporary name beside the final one. The destructor removes an unfinished file there.
class UnfinishedFile final {
public:
    explicit UnfinishedFile(std::string finalPath)
        : target(std::move(finalPath)),
          path(target + ".unfinished-" + std::to_string(processNumber())) {
        std::filesystem::remove(toPath(path));
    }
    ~UnfinishedFile() {
        std::error_code ignored;
        std::filesystem::remove(toPath(path), ignored);
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    [[nodiscard]] const std::string& name() const { return path; }
    void finish() const {
        std::error_code error;
        std::filesystem::rename(toPath(path), toPath(target), error);
        if (error) {
            throw std::runtime_error(target + ": cannot be written: " + error.message());
        }
    }

private:
    std::string target;
    std::string path;
};

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterruption(int) {
    interrupted = 1;
}

void reportProgress(std::uint64_t done, std::uint64_t total) {
    if (interrupted != 0) {
        throw std::runtime_error("interrupted");
    }
    static const bool terminal = isStandardErrorATerminal();
    if (!terminal) {
        return;
    }
    constexpr std::uint64_t kWidth = 50;
    const std::uint64_t filled = total == 0 ? kWidth : done * kWidth / total;
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
    std::cerr << "\r[" << bar << "] " << done << " of " << total << " records"
              << (done == total ? "\n" : "");
}

void makeDesign(const Options& options) {
    const UnfinishedFile file(options.file);
    {
        Database database(file.name(),
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX);
        // Nobody reads the file before it is complete, so no journal is needed.
        database.execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
        generateDesign(database, options.size,
                       [&](std::uint64_t done) { reportProgress(done, options.size.records); });
    }
    file.finish();
}

}  // namespace

int main(int argumentCount, char** argumentValues) {
    try {
        const std::vector<std::string> words(argumentValues + 1, argumentValues + argumentCount);
        if (words.size() == 1 && words.front() == "--help") {
            std::cout << kUsage;
            return EXIT_SUCCESS;
        }
        for (const int signal : {SIGINT, SIGTERM}) {
            if (std::signal(signal, onInterruption) == SIG_ERR) {
                throw std::runtime_error("cannot watch for interruptions");
            }
        }
        makeDesign(parseOptions(words));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "make-design: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
