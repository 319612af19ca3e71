#pragma once

#include <string>
#include <string_view>

namespace standin {

// Writes all bytes to a descriptor, whatever portions it takes. False on failure, errno is set.
bool writeWhole(int descriptor, std::string_view bytes);

// A file that is written from front to back through a large buffer. Failures throw
// std::runtime_error with the path and the system's reason.
class OutputFile final {
public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    // A full disk may be reported as late as here; without it the file counts as abandoned.
    void close();

private:
    void flush();
    [[noreturn]] void fail(const char* what) const;

    std::string path;
    std::string buffer;
    int descriptor;
};

}  // namespace standin
