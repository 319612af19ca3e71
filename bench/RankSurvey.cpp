// bench-survey FILE: reads a survey and counts the records of each net as a run does, and prints
// "COUNT NET" lines.

#include <exception>
#include <iostream>
#include <vector>

#include "executor/NetRanking.h"
#include "reader/ViewFile.h"

namespace {

std::vector<velextracta::RankedNet> rankFile(const char* path) {
    velextracta::ExtractaViewData survey;
    velextracta::readViewFile(path, survey);
    return velextracta::rankNets(survey, path);
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::cerr << "usage: bench-survey FILE\n";
        return 2;
    }
    try {
        for (const velextracta::RankedNet& net : rankFile(argv[1])) {
            std::cout << net.recordCount << ' ' << net.netName << '\n';
        }
    } catch (const std::exception& exception) {
        std::cerr << "bench-survey: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
