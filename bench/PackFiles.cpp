// bench-pack ARCHIVE FILE...: packs the files as the end of a run does.

#include <exception>
#include <iostream>
#include <span>

#include "archive/CZipArchive.h"

int main(int argc, char* argv[]) {
    if (argc < 3) {
        std::cerr << "usage: bench-pack ARCHIVE FILE...\n";
        return 2;
    }
    try {
        velextracta::CZipArchive archive;
        archive.Open(argv[1], velextracta::CZipArchive::kCreate);
        for (const char* file : std::span(argv + 2, argv + argc)) {
            archive.AddNewFile(file);
        }
        archive.Close();
    } catch (const std::exception& exception) {
        std::cerr << "bench-pack: " << exception.what() << '\n';
        return 1;
    }
    return 0;
}
