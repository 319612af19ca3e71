#pragma once

#include <string>
#include <string_view>

#include "standin/System.h"

namespace standin {

// A file to write from its start to its end, with a large buffer. Failures throw std::runtime_error
// with the path and the system's reason.
class OutputFile final {
public:
    explicit OutputFile(std::string path);

    void write(std::string_view bytes);
    // Call this at the end: a full disk may be reported only here.
    void close();

private:
    void flush();
    [[noreturn]] void fail(const char* what) const;

    std::string path;
    std::string buffer;
    WritableFile file;
};

}  // namespace standin
