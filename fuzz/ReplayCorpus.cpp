#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/Fuzzer.h"

namespace {

std::string readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    promise(file.is_open() && !file.bad(), "the corpus can be read");
    return bytes;
}

}  // namespace

/// Gives a fuzzer each file of the directories on the command line once.
int main(int argc, char* argv[]) {
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::cout << entry.path().filename() << std::endl;  // flushed, as it may crash
            const std::string bytes = readBytes(entry.path());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++replayed;
        }
    }
    promise(replayed > 0, "the corpus has files");
}
