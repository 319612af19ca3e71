// bench-driver PART ARGUMENT...: puts one part of the product under load, for bench/run to time.
//
// The last printed line shows the cost: seconds of wall time, of processor time in user mode and of
// processor time in the system, the number of sleeps, and the peak memory in bytes.

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include "app/StatusLine.h"
#include "archive/CZipArchive.h"
#include "executor/inside/ConnectivityMerge.h"
#include "executor/inside/NetRanking.h"
#include "process/ExtractaViewGenerator.h"
#include "reader/ViewFile.h"
#include "tkcore/system/System.h"
#include "views/ExtractaViewControl.h"

namespace {

using namespace velextracta;

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using Arguments = std::span<char*>;

int parseNumber(std::string_view text) {
    int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < 0) {
        throw std::invalid_argument("not a number: " + std::string(text));
    }
    return number;
}

/// The peak memory of this program alone. The system's own count (getrusage) includes the program
/// that started this one.
long peakMemory() {
    constexpr long kUnit = 1024;
    std::ifstream status("/proc/self/status");
    std::string word;
    long peak = 0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> peak;
    return peak * kUnit;
}

using Times = std::array<double, 4>;  // wall, user mode, system, in seconds; number of sleeps

Times timesNow() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return Seconds(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec));
    };
    return {Seconds(Clock::now().time_since_epoch()).count(), seconds(usage.ru_utime).count(),
            seconds(usage.ru_stime).count(), static_cast<double>(usage.ru_nvcsw)};
}

void reportSince(const Times& begin) {
    const Times end = timesNow();
    std::ranges::transform(end, begin, std::ostream_iterator<double>(std::cout, " "), std::minus());
    std::cout << peakMemory() << '\n';
}

/// [--threads N] [--level L] ARCHIVE FILE...
void pack(Arguments arguments) {
    const Times begin = timesNow();
    unsigned threads = tkcore::hardwareThreads();
    int level = CZipArchive::kDefaultLevel;
    while (arguments.size() > 3 && std::string_view(arguments[0]).starts_with("--")) {
        if (std::string_view(arguments[0]) == "--threads") {
            threads = parseNumber(arguments[1]);
        } else if (std::string_view(arguments[0]) == "--level") {
            level = parseNumber(arguments[1]);
        } else {
            throw std::invalid_argument(std::string("unknown option: ") + arguments[0]);
        }
        arguments = arguments.subspan(2);
    }
    CZipArchive archive(threads);
    archive.Open(arguments[0], CZipArchive::kCreate);
    for (const char* file : arguments.subspan(1)) {
        archive.AddNewFile(file, level);
    }
    archive.Close();
    reportSince(begin);
}

/// COMBINED PIECE...
void merge(Arguments arguments) {
    const Times begin = timesNow();
    ConnectivityMerge merge{tkcore::LongFileName(arguments[0])};
    for (const char* piece : arguments.subspan(1)) {
        merge.append(tkcore::LongFileName(piece));
    }
    reportSince(begin);
}

/// SURVEY: prints "COUNT NET" lines.
void rank(Arguments arguments) {
    const Times begin = timesNow();
    NetSurvey survey;
    streamViewFile(tkcore::LongFileName(arguments[0]), survey);
    for (const RankedNet& net : survey.takeRanking(arguments[0])) {
        std::cout << net.recordCount << ' ' << net.netName << '\n';
    }
    reportSince(begin);
}

/// FILE: prints only the names of the view files, in the order of the control file's blocks.
void writeControlFile(Arguments arguments) {
    std::ostringstream text;
    WriteControlFile(text, kStandardViews, {});
    saveControlFile(text, tkcore::LongFileName(arguments[0]));
    std::vector<ActiveView> views;
    CollectViewFiles(kStandardViews, {}, views);
    for (const ActiveView& view : views) {
        std::cout << tkcore::VEL_ANSI(view.path) << '\n';
    }
}

/// LIMIT DIRECTORY NAME...: reports only the waiting, after every child was started or queued. On a
/// terminal, the status line shows the children.
void runPool(Arguments arguments) {
    ExtractaViewGenerator::maxConcurrentExtractas = parseNumber(arguments[0]);
    tkcore::LongFileName workingDirectory(arguments[1]);
    workingDirectory.MakeItDirectory();
    const tkcore::LongFileName design(workingDirectory.FilePath() + "design");
    StatusLine statusLine;
    const auto reporting = ExtractaViewGenerator::reportTo(statusLine);
    std::vector<std::unique_ptr<ExtractaViewGenerator>> generators;
    for (const char* name : arguments.subspan(2)) {
        generators.push_back(std::make_unique<ExtractaViewGenerator>(
            design, ExtractaViewDef(ViewType::net, {}, false), workingDirectory, false, name));
    }
    const Times begin = timesNow();
    for (const auto& generator : generators) {
        generator->waitForViewFile();
    }
    reportSince(begin);
}

/// ... NAME: sleeps for the milliseconds behind the last "_" of the name: 20 for "net7_20.txt", a
/// child's view file. Writes and prints nothing.
void sleepAsNamed(Arguments arguments) {
    std::string_view name = arguments.back();
    name.remove_prefix(name.rfind('_') + 1);
    const int milliseconds = parseNumber(name.substr(0, name.find('.')));
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

struct Part {
    std::string_view name;
    std::size_t fewestArguments;
    void (*run)(Arguments);
};

constexpr Part kParts[] = {
    {"pack", 2, pack},       {"merge", 2, merge},
    {"rank", 1, rank},       {"control-file", 1, writeControlFile},
    {"pool", 3, runPool},    {"child", 1, sleepAsNamed},
    {"-k", 1, sleepAsNamed},  // a child with extracta's command line
};

}  // namespace

int main(int argc, char* argv[]) {
    const auto* part =
        std::ranges::find(kParts, std::string_view(argc < 2 ? "" : argv[1]), &Part::name);
    const Arguments arguments = Arguments(argv, argc).subspan(std::min(argc, 2));
    if (part == std::end(kParts) || arguments.size() < part->fewestArguments) {
        std::cerr << "usage: bench-driver PART ARGUMENT..., see bench/Driver.cpp\n";
        return 2;
    }
    try {
        part->run(arguments);
    } catch (const std::exception& exception) {
        std::cerr << "bench-driver: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
