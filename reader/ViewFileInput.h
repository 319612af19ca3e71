#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tkcore/InputFile.h"

namespace velextracta {

/// A view file read from its start: first its header lines, then the rest as bytes, in constant
/// memory. Every failure is a std::system_error that names the path; an end is never one.
class ViewFileInput final {
public:
    /// Refuses anything but a regular file.
    explicit ViewFileInput(const std::string& path);

    /// The next line without its line end, CR LF or LF; empty when there is none.
    std::string readLine();

    /// The next bytes, none at the end of the file. Good until the next call.
    std::span<const char> readBytes();

private:
    std::span<const char> buffered() const { return {buffer.data() + position, end - position}; }

    tkcore::InputFile file;
    std::vector<char> buffer;
    std::size_t position = 0;
    std::size_t end = 0;
};

/// Why the file is no view file as far as its first two lines tell ("A!" and "J!"), for a warning;
/// empty if there is nothing to say.
std::string doubtAboutViewFile(const std::string& path);

/// The same for two lines that have been read.
std::string doubtAboutHeader(const std::string& header, const std::string& jRecord);

}  // namespace velextracta
