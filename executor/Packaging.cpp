#include <exception>
#include <vector>

#include "archive/CZipArchive.h"
#include "executor/ExtractaExecutor.h"
#include "executor/PathStatus.h"
#include "tkcore/Assertion.h"
#include "tkcore/Log.h"

namespace velextracta {

using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

namespace fs = boost::filesystem;

constexpr char kSource[] = "ExtractaExecutor";
constexpr unsigned long kReadBufferSize = 65536;

/// The top-level entries with the extension, in the order the listing delivers them. Listed
/// before any is moved: a listing of a directory that changes may skip entries.
std::vector<fs::path> entriesWithExtension(const fs::path& directory, const AString& extension) {
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (extension.empty() || AString(entry.path().extension().string()).Match(extension)) {
            entries.push_back(entry.path());
        }
    }
    return entries;
}

void addToArchive(CZipArchive& archive, const fs::path& workingpath, const AString& extension) {
    if (!isThere(workingpath)) {
        return;
    }
    for (const fs::path& entry : entriesWithExtension(workingpath, extension)) {
        archive.AddNewFile(entry.string(), CZipArchive::kDefaultLevel, true,
                           CZipArchive::kSafeSmartness, kReadBufferSize);
    }
}

}  // namespace

bool ExtractaExecutor::addFilesToWorkingDir(const std::vector<AString>& files) {
    if (!tkcore::LFN_IsExistingDirectory(workingDir)) {
        return false;
    }
    const fs::path workingpath(VEL_ANSI(workingDir.FilePath()));
    VEL_ASSERT(kSource, fs::is_directory(workingpath));
    for (const AString& text : files) {
        const fs::path file(VEL_ANSI(text));
        if (isThere(file)) {
            fs::copy_file(file, workingpath / file.filename(), fs::copy_options::none);
        }
    }
    return true;
}

bool ExtractaExecutor::zipActiveViews(const AString& outputPath, const AString& extension) {
    const fs::path outpath(VEL_ANSI(outputPath));
    VEL_ASSERT_TEXT(kSource, "!fs::is_directory(outpath)", !isDirectory(outpath));
    CZipArchive archive;
    try {
        archive.Open(outpath.string(), CZipArchive::kCreate, 0);
    } catch (const std::exception& exception) {
        tkcore::VelDebug(1, "*zipActiveViews: %s\n", exception.what());
        VEL_ASSERT(kSource, !"open archive failed");
        return false;
    }
    try {
        addToArchive(archive, VEL_ANSI(workingDir.FilePath()), extension);
        // Inside the guarded block: a disk may fill up as late as here.
        archive.Close(0, false);
    } catch (const std::exception& exception) {
        tkcore::VelDebug(1, "*zipActiveViews: %s\n", exception.what());
        VEL_ASSERT(kSource, !"ExtractaExecutor::zipActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

bool ExtractaExecutor::moveActiveViews(const AString& outputPath, const AString& extension) {
    const fs::path outpath(VEL_ANSI(outputPath));
    VEL_ASSERT_TEXT(kSource, "fs::is_directory(outpath)", isDirectory(outpath));
    try {
        const fs::path workingpath(VEL_ANSI(workingDir.FilePath()));
        if (!isThere(workingpath)) {
            return true;
        }
        for (const fs::path& entry : entriesWithExtension(workingpath, extension)) {
            const fs::path target = outpath / entry.filename();
            if (isThere(target)) {
                fs::remove(target);
            }
            fs::rename(entry, target);
        }
    } catch (const fs::filesystem_error& error) {
        tkcore::VelDebug(1, "*moveActiveViews: %s\n", error.what());
        VEL_ASSERT(kSource, !"ExtractaExecutor::moveActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

}  // namespace velextracta
