#include "standin/OutputFile.h"

#include <stdexcept>
#include <utility>

namespace standin {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;

}  // namespace

OutputFile::OutputFile(std::string outputPath)
    : path(std::move(outputPath)), file(path, WritableFile::Mode::kReplace) {
    if (!file.isOpen()) {
        fail("cannot open the output file");
    }
    buffer.reserve(kBufferSize);
}

void OutputFile::write(std::string_view bytes) {
    if (buffer.size() + bytes.size() > kBufferSize) {
        flush();
    }
    buffer.append(bytes);
}

void OutputFile::flush() {
    if (!file.write(buffer)) {
        fail("cannot write the output file");
    }
    buffer.clear();
}

void OutputFile::close() {
    flush();
    if (!file.close()) {
        fail("cannot close the output file");
    }
}

void OutputFile::fail(const char* what) const {
    const std::string reason = lastFailure();  // before anything can change it
    throw std::runtime_error(path + ": " + what + ": " + reason);
}

}  // namespace standin
