#pragma once

#include <string>
#include <string_view>

#include "standin/System.h"

namespace standin {

// A file that is written from front to back through a large buffer. Failures throw
// std::runtime_error with the path and the system's reason.
class OutputFile final {
public:
    explicit OutputFile(std::string path);

    void write(std::string_view bytes);
    // A full disk may be reported as late as here; without it the file counts as abandoned.
    void close();

private:
    void flush();
    [[noreturn]] void fail(const char* what) const;

    std::string path;
    std::string buffer;
    WritableFile file;
};

}  // namespace standin
