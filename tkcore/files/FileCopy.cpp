#include "tkcore/files/FileCopy.h"

#include <cstddef>
#include <system_error>
#include <vector>

#include <boost/filesystem.hpp>

#include "tkcore/files/InputFile.h"
#include "tkcore/files/OutputFile.h"
#include "tkcore/files/Path.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/Interruption.h"

namespace tkcore {

void copyToNewFile(const LongFileName& source, const LongFileName& target) {
    constexpr std::size_t kBufferSize = std::size_t{1} << 17U;
    InputFile input(source);
    input.requireFile("copy");
    OutputFile output(target, OutputFile::IfThere::kFail, input.permissions());
    std::vector<char> buffer(kBufferSize);
    for (std::size_t count = buffer.size(); count == buffer.size();) {
        throwIfInterrupted();
        count = input.read(buffer.data(), buffer.size());
        output.write({buffer.data(), count});
    }
}

void requireReplaceable(const LongFileName& target) {
    namespace fs = boost::filesystem;
    boost::system::error_code unknown;
    const fs::path path = toPath(target);
    if (fs::is_directory(fs::symlink_status(path, unknown)) && !fs::is_empty(path, unknown) &&
        !unknown) {
        throwPathFailure(std::make_error_code(std::errc::directory_not_empty), "replace the folder",
                         target);
    }
    requireReplaceableFile(target);
}

}  // namespace tkcore
