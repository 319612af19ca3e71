#include "standin/OutputFile.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace standin {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;
constexpr int kReadableAndWritable = 0666;

}  // namespace

bool writeWhole(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

OutputFile::OutputFile(std::string outputPath)
    : path(std::move(outputPath)),
      descriptor(
          ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kReadableAndWritable)) {
    if (descriptor < 0) {
        fail("cannot open the output file");
    }
    buffer.reserve(kBufferSize);
}

OutputFile::~OutputFile() {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

void OutputFile::write(std::string_view bytes) {
    if (buffer.size() + bytes.size() > kBufferSize) {
        flush();
    }
    buffer.append(bytes);
}

void OutputFile::flush() {
    if (!writeWhole(descriptor, buffer)) {
        fail("cannot write the output file");
    }
    buffer.clear();
}

void OutputFile::close() {
    flush();
    if (::close(std::exchange(descriptor, -1)) != 0) {
        fail("cannot close the output file");
    }
}

void OutputFile::fail(const char* what) const {
    throw std::runtime_error(path + ": " + what + ": " + std::generic_category().message(errno));
}

}  // namespace standin
