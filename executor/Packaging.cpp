#include <algorithm>
#include <exception>
#include <vector>

#include "archive/CZipArchive.h"
#include "executor/ExtractaExecutor.h"
#include "tkcore/Assertion.h"
#include "tkcore/FileCopy.h"
#include "tkcore/Interruption.h"
#include "tkcore/Log.h"
#include "tkcore/PathStatus.h"

namespace velextracta {

using tkcore::AString;
using tkcore::isDirectory;
using tkcore::isThere;
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

/// A file whose name says that it is a design, whatever the case of its letters.
bool isNamedLikeADesign(const fs::path& path) {
    static const AString kEnding(".mcm");
    const std::wstring name = AString(path.string()).wide();
    const std::size_t start = name.size() - std::min(name.size(), kEnding.wide().size());
    return AString(name.substr(start)).MatchNoCase(kEnding);
}

/// Keeps designs from being replaced, by whatever path: a slip of the command line, such as
/// "*.mcm", makes one of them the output.
void refuseDesign(const fs::path& target, const tkcore::LongFileName& design) {
    if (!isThere(target)) {
        return;
    }
    boost::system::error_code error;
    if (tkcore::isSameFile(target, VEL_ANSI(design.FilePath())) ||
        (!isDirectory(target) &&
         (isNamedLikeADesign(target) || isNamedLikeADesign(fs::canonical(target, error))))) {
        throw fs::filesystem_error("a design is never replaced", target,
                                   make_error_code(boost::system::errc::operation_not_permitted));
    }
}

/// Moves the entries into the directory; checks all of them before the first.
void moveEntries(const std::vector<fs::path>& entries, const fs::path& directory,
                 const tkcore::LongFileName& design) {
    for (const fs::path& entry : entries) {
        refuseDesign(directory / entry.filename(), design);
    }
    for (const fs::path& entry : entries) {
        const fs::path target = directory / entry.filename();
        if (isThere(target)) {
            fs::remove(target);
        }
        fs::rename(entry, target);
    }
}

/// The reason behind an assertion that only tells where a packaging failed.
void logReason(const std::exception& exception) {
    tkcore::writeLog(0, "error: ", exception.what());
}

}  // namespace

bool ExtractaExecutor::addFilesToWorkingDir(const std::vector<AString>& files) {
    if (!tkcore::LFN_IsExistingDirectory(workingDirectory())) {
        return false;
    }
    const fs::path workingpath(VEL_ANSI(workingDirectory().FilePath()));
    VEL_ASSERT(kSource, fs::is_directory(workingpath));
    try {
        for (const AString& text : files) {
            const fs::path file(VEL_ANSI(text));
            if (isThere(file)) {
                tkcore::copyToNewFile(file.string(), (workingpath / file.filename()).string());
            }
        }
    } catch (const tkcore::Interrupted&) {
        return false;  // which nobody looks at: the packaging behind it fails for the same reason
    }
    return true;
}

bool ExtractaExecutor::zipActiveViews(const AString& outputPath, const AString& extension) {
    const fs::path outpath(VEL_ANSI(outputPath));
    VEL_ASSERT_TEXT(kSource, "!fs::is_directory(outpath)", !isDirectory(outpath));
    CZipArchive archive;
    try {
        refuseDesign(outpath, design);
        archive.Open(outpath.string(), CZipArchive::kCreate, 0);
    } catch (const std::exception& exception) {
        logReason(exception);
        VEL_ASSERT(kSource, !"open archive failed");
        return false;
    }
    try {
        addToArchive(archive, VEL_ANSI(workingDirectory().FilePath()), extension);
        // Inside the guarded block: a disk may fill up as late as here.
        archive.Close(0, false);
    } catch (const std::exception& exception) {
        logReason(exception);
        VEL_ASSERT(kSource, !"ExtractaExecutor::zipActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

bool ExtractaExecutor::moveActiveViews(const AString& outputPath, const AString& extension) {
    const fs::path outpath(VEL_ANSI(outputPath));
    VEL_ASSERT_TEXT(kSource, "fs::is_directory(outpath)", isDirectory(outpath));
    try {
        const fs::path workingpath(VEL_ANSI(workingDirectory().FilePath()));
        if (!isThere(workingpath)) {
            return true;
        }
        if (outpath.empty()) {
            // Joined with a name it would mean the current directory.
            throw fs::filesystem_error(
                "the output path is empty",
                make_error_code(boost::system::errc::no_such_file_or_directory));
        }
        moveEntries(entriesWithExtension(workingpath, extension), outpath, design);
    } catch (const fs::filesystem_error& error) {
        logReason(error);
        VEL_ASSERT(kSource, !"ExtractaExecutor::moveActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

}  // namespace velextracta
