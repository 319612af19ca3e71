#include "tkcore/files/FileCopy.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <system_error>
#include <vector>

#include <boost/filesystem.hpp>

#include "tkcore/files/InputFile.h"
#include "tkcore/files/OutputFile.h"
#include "tkcore/files/Path.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"

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

void waitUntilReplaceable(const std::vector<LongFileName>& targets) {
    std::optional<OpenElsewhere> obstacle;
    tryForAMoment([&] {
        obstacle.reset();
        throwIfInterrupted();
        try {
            std::ranges::for_each(targets, requireReplaceable);
        } catch (const OpenElsewhere& error) {
            obstacle = error;
        }
        return !obstacle;
    });
    if (obstacle) {
        throw OpenElsewhere(*obstacle);
    }
}

}  // namespace tkcore
