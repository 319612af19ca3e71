// bench-pool LIMIT DIRECTORY NAME...: runs one child for each name through the pool. Prints how
// long it has waited once every child was started or queued, and the processor time that it took
// itself meanwhile, without the children; both in seconds.

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "process/ExtractaViewGenerator.h"

namespace {

using namespace velextracta;

std::uint32_t parseLimit(const char* text) {
    std::uint32_t limit = 0;
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, limit);
    if (error != std::errc() || stop != end || limit == 0) {
        throw std::invalid_argument(std::string("not a limit of processes: ") + text);
    }
    return limit;
}

using Generators = std::vector<std::unique_ptr<ExtractaViewGenerator>>;

Generators startChildren(const tkcore::AString& directory, std::span<char*> names) {
    tkcore::LongFileName workingDirectory(directory);
    workingDirectory.MakeItDirectory();
    const tkcore::LongFileName design(directory + "/design");
    Generators generators;
    for (const char* name : names) {
        generators.push_back(std::make_unique<ExtractaViewGenerator>(
            design, ExtractaViewDef(ViewType::net, {}, false), workingDirectory, false, name));
    }
    return generators;
}

double ownProcessorTime() {
    constexpr double kMicroseconds = 1e-6;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           kMicroseconds * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

void waitForChildren(const Generators& generators) {
    const auto begin = std::chrono::steady_clock::now();
    const double processorTimeBefore = ownProcessorTime();
    for (const auto& generator : generators) {
        generator->waitForViewFile();
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    std::cout << elapsed.count() << ' ' << ownProcessorTime() - processorTimeBefore << '\n';
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 4) {
        std::cerr << "usage: bench-pool LIMIT DIRECTORY NAME...\n";
        return 2;
    }
    try {
        ExtractaViewGenerator::maxConcurrentExtractas = parseLimit(argv[1]);
        waitForChildren(startChildren(argv[2], std::span(argv + 3, argv + argc)));
    } catch (const std::exception& exception) {
        std::cerr << "bench-pool: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
