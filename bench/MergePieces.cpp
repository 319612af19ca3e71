// bench-merge COMBINED PIECE...: merges connectivity view files as a run does.

#include <exception>
#include <iostream>
#include <span>

#include "executor/ConnectivityMerge.h"

int main(int argc, char* argv[]) {
    if (argc < 3) {
        std::cerr << "usage: bench-merge COMBINED PIECE...\n";
        return 2;
    }
    try {
        velextracta::ConnectivityMerge merge(argv[1]);
        for (const char* piece : std::span(argv + 2, argv + argc)) {
            merge.append(piece);
        }
    } catch (const std::exception& exception) {
        std::cerr << "bench-merge: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
