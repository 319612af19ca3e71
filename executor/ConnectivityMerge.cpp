#include "executor/ConnectivityMerge.h"

#include <string>

#include "process/ExtractaViewGenerator.h"
#include "views/ExtractaParserException.h"

namespace velextracta {

using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;

/// The next line without its line end, CR LF or LF; empty when there is none.
std::string readLine(std::istream& input) {
    std::string line;
    std::getline(input, line);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
}

}  // namespace

ConnectivityMerge::ConnectivityMerge(const AString& combinedPath)
    : combined(VEL_ANSI(combinedPath), std::ios::out | std::ios::trunc | std::ios::binary),
      buffer(kBufferSize) {}

void ConnectivityMerge::append(const AString& path) {
    std::ifstream input(VEL_ANSI(path), std::ios::in | std::ios::binary);
    if (!input.is_open()) {
        throw ExtractaParserException("createExtractaControlFileAndViewsMP failed to open file " +
                                      path);
    }
    const std::string header = readLine(input);
    const std::string jRecord = readLine(input);
    if (first) {
        combined << header << "\r\n" << jRecord << "\r\n";
        first = false;
    }
    if (input.bad()) {
        throw ExtractaParserException(
            "createExtractaControlFileAndViewsMP missing header in file " + path);
    }
    appendRecords(input);
    if (!combined.flush().good()) {
        throw ExtractaParserException("createExtractaControlFileAndViewsMP error adding " + path +
                                      " to combined connectivity file");
    }
}

void ConnectivityMerge::appendRecords(std::ifstream& input) {
    while (input.good() && combined.good()) {
        input.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        combined.write(buffer.data(), input.gcount());
        // A large file takes its time: finished children are reaped and queued ones started
        // meanwhile.
        ExtractaViewGenerator::pollProcesses();
    }
}

}  // namespace velextracta
