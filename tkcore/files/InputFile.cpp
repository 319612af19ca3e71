#include "tkcore/files/InputFile.h"

namespace tkcore {

std::size_t InputFile::read(void* destination, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const std::size_t count = readSome(static_cast<char*>(destination) + done, size - done);
        if (count == 0) {
            break;
        }
        done += count;
    }
    return done;
}

}  // namespace tkcore
