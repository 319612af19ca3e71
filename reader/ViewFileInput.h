#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "tkcore/files/InputFile.h"

namespace velextracta {

/// Reads a view file from its start in constant memory: first its header lines, then the rest as
/// bytes. Every failure is a std::system_error that names the path. The end of the file is no
/// failure.
class ViewFileInput final {
public:
    using Take = std::function<void(std::span<const char>)>;

    /// Refuses anything but a regular file.
    explicit ViewFileInput(const tkcore::LongFileName& path);

    /// Passes on the next line without its line end (CR LF or LF), in parts if it is long; nothing
    /// if there is none. Throws Interrupted, too.
    void passLine(const Take& take);

    /// The next bytes, none at the end of the file. Valid until the next call.
    std::span<const char> readBytes();

private:
    std::span<const char> buffered() const { return {buffer.data() + position, end - position}; }

    tkcore::InputFile file;
    std::vector<char> buffer;
    std::size_t position = 0;
    std::size_t end = 0;
};

}  // namespace velextracta
