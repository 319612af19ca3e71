#include "executor/OutputCheck.h"

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <system_error>

#include "executor/Packaging.h"
#include "executor/Warnings.h"
#include "tkcore/Path.h"
#include "tkcore/PathStatus.h"
#include "tkcore/ReplacementFile.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

namespace fs = boost::filesystem;

constexpr std::uint64_t kBytesPerMegabyte = 1'000'000;

/// Begins a new file at the path just as the archive will be begun, and drops it: only the system
/// knows all that may be in the way.
void tryToWrite(const fs::path& path) {
    const tkcore::ReplacementFile dropped(VEL_ANSI(tkcore::pathText(path)));
}

void refuseFolder(const fs::path& folder) {
    if (!tkcore::isDirectory(folder)) {
        throw std::runtime_error("there is no folder " + VEL_ANSI(tkcore::pathText(folder)));
    }
    try {
        tryToWrite(folder / fs::unique_path());
    } catch (const std::system_error& error) {
        throw std::runtime_error("cannot write to the folder " +
                                 VEL_ANSI(tkcore::pathText(folder)) + ": " +
                                 error.code().message());
    }
}

}  // namespace

void warnAboutArchive(RunObserver& observer, const fs::path& archive, const LongFileName& design) {
    try {
        refuseDesign(archive, design);
        tryToWrite(archive);
    } catch (const std::exception& failure) {
        warn(observer, AString("the archive will not be written: ").append(failure.what()));
    }
}

void warnAboutFolder(RunObserver& observer, const fs::path& folder,
                     const std::vector<fs::path>& names, const LongFileName& design) {
    try {
        refuseFolder(folder);
        for (const fs::path& name : names) {
            refuseDesign(tkcore::pathIn(folder, name), design);
        }
    } catch (const std::exception& failure) {
        warn(observer, AString("the views will not be moved: ").append(failure.what()));
    }
}

void warnAboutRoom(RunObserver& observer, const std::vector<fs::path>& folders,
                   const LongFileName& design) {
    const std::uint64_t size = tkcore::fileSize(tkcore::toPath(design.FilePath()));
    for (const fs::path& folder : folders) {
        boost::system::error_code unknown;
        const fs::space_info disk = fs::space(folder.empty() ? "." : folder, unknown);
        // A file system without a size has no room that could be told.
        if (!unknown && disk.capacity > 0 && disk.available < size) {
            return warn(observer, AString::Format(
                                      "the disk of %s will hardly hold the views: it has room "
                                      "for %d MB, and the design alone takes %d MB",
                                      tkcore::pathText(folder), disk.available / kBytesPerMegabyte,
                                      size / kBytesPerMegabyte));
        }
    }
}

}  // namespace velextracta
