#include "tkcore/files/InputFile.h"

#include <system_error>

#include "tkcore/files/inside/PathFailure.h"

namespace tkcore {

void InputFile::requireFile(std::string_view action) const {
    if (directory) {
        throwPathFailure(std::make_error_code(std::errc::is_a_directory), action, path);
    }
}

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
