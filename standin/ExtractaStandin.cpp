// Stands in for the layout system's extraction tool, on designs that make-design wrote.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

#include "standin/ControlFile.h"
#include "standin/Database.h"
#include "standin/Fault.h"
#include "standin/System.h"
#include "standin/Trace.h"
#include "standin/ViewQuery.h"

namespace {

using namespace standin;

constexpr const char* kUsage =
    R"(usage: extracta-standin -k [-c] -m DESIGN CONTROLFILE OUTPUT...

Writes one view file for each view block of CONTROLFILE, taken from DESIGN, a SQLite database with
one table for each view. Failures give one line on standard output and exit code 1.

EXTRACTA_STANDIN_FAULT  MATCH=ACTION[;MATCH=ACTION...], misbehaviour for tests. A rule counts when
the file name of the first OUTPUT contains MATCH; all rules that count are followed. Actions:
  exit:CODE:TEXT       print TEXT and exit with CODE, before any output is written
  late-exit:CODE:TEXT  the same after the whole output
  no-output            succeed, but leave out the output files
  empty-output         write files of no bytes
  half-line            end the output in the middle of the header record
  header-only          write the header record alone
  bare-line-feeds      end the output's lines with LF
  hang                 start a child in a session of its own; both sleep for ever
  flood:BYTES:CODE     print BYTES bytes, then exit with CODE; code 0 goes on as usual
  sleep:MILLISECONDS   sleep, then go on as usual
  kill:SIGNAL          send signal number SIGNAL to itself; on Windows, which has no signals,
                       exit at once with code 128 + SIGNAL

EXTRACTA_STANDIN_TRACE  file to which "start NAME PID NANOSECONDS" and, unless killed, "end ..."
are appended (and "child ..." by the child of a hang). NAME is the file name of the first OUTPUT.
)";

struct Arguments {
    std::string design;
    std::string controlFile;
    std::vector<std::string> outputs;
};

Arguments parseArguments(const std::vector<std::string>& words) {
    std::size_t next = 0;
    const auto takeOption = [&](const char* option) {
        const bool present = next < words.size() && words[next] == option;
        next += present ? 1 : 0;
        return present;
    };
    const bool keeps = takeOption("-k");
    takeOption("-c");
    if (!keeps || !takeOption("-m") || words.size() < next + 3) {
        throw std::runtime_error("expected -k [-c] -m DESIGN CONTROLFILE OUTPUT...");
    }
    const auto first = words.begin() + static_cast<std::ptrdiff_t>(next);
    return {first[0], first[1], {first + 2, words.end()}};
}

std::string readWhole(const std::string& path) {
    std::ifstream file(toPath(path), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // A directory can be opened like a file; only reading it fails.
    if (!file.is_open() || file.bad() || std::filesystem::is_directory(toPath(path))) {
        throw std::runtime_error(path + ": cannot read the control file");
    }
    return text;
}

void refuseToOverwriteInput(const Arguments& arguments) {
    for (const std::string& output : arguments.outputs) {
        std::error_code missing;
        if (std::filesystem::equivalent(toPath(output), toPath(arguments.design), missing) ||
            std::filesystem::equivalent(toPath(output), toPath(arguments.controlFile), missing)) {
            throw std::runtime_error(output + ": is an input and an output at once");
        }
    }
}

std::vector<ViewBlock> readBlocks(const Arguments& arguments) {
    std::vector<ViewBlock> blocks = parseControlFile(readWhole(arguments.controlFile));
    if (blocks.size() != arguments.outputs.size()) {
        throw std::runtime_error("the control file has " + std::to_string(blocks.size()) +
                                 " view blocks, but " + std::to_string(arguments.outputs.size()) +
                                 " output files are given");
    }
    return blocks;
}

void extractViews(const Arguments& arguments, OutputShape shape) {
    try {
        const std::vector<ViewBlock> blocks = readBlocks(arguments);
        refuseToOverwriteInput(arguments);
        const Database design(arguments.design, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
        const std::vector<std::string> jFields = designRecord(design, arguments.design);
        // Make all queries first: an error in the last block must not leave output of the first.
        std::list<ViewQuery> queries;
        for (const ViewBlock& block : blocks) {
            queries.emplace_back(design, block);
        }
        auto output = arguments.outputs.begin();
        for (ViewQuery& query : queries) {
            query.writeTo(*output++, jFields, shape);
        }
    } catch (const ControlFileError& error) {
        throw std::runtime_error(arguments.controlFile + ": " + error.what());
    }
}

int run(const Arguments& arguments) {
    const std::string name = pathText(toPath(arguments.outputs.front()).filename());
    const Trace trace(name);
    const char* rules = std::getenv("EXTRACTA_STANDIN_FAULT");
    const std::vector<Fault> faults = faultsFor(rules == nullptr ? "" : rules, name);
    if (const auto exitCode = sufferBeforeOutput(faults, trace)) {
        return *exitCode;
    }
    extractViews(arguments, outputShapeOf(faults));
    return sufferAfterOutput(faults).value_or(EXIT_SUCCESS);
}

}  // namespace

int main(int argumentCount, char** argumentValues) {
    try {
        const std::vector<std::string> words(argumentValues + 1, argumentValues + argumentCount);
        if (words.size() == 1 && words.front() == "--help") {
            std::cout << kUsage;
            return EXIT_SUCCESS;
        }
        if (words.size() == 2 && words.front() == kHangingChildOption) {
            reportToTrace("child", words.back());
            sleepForEver();
        }
        return run(parseArguments(words));
    } catch (const std::exception& error) {
        // Keep it one line, whatever value or path it names.
        std::string line = error.what();
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
        std::cout << "extracta-standin: " << line << '\n';
        return EXIT_FAILURE;
    }
}
