#include "executor/Packaging.h"

#include <algorithm>

#include "tkcore/FileCopy.h"
#include "tkcore/Path.h"
#include "tkcore/PathStatus.h"

namespace velextracta {

using tkcore::AString;
using tkcore::isThere;
using tkcore::VEL_ANSI;

namespace fs = boost::filesystem;

namespace {

bool isNamedLikeADesign(const fs::path& path) {
    static const AString kEnding(".mcm");
    const std::wstring name = tkcore::pathText(path).wide();
    const std::size_t start = name.size() - std::min(name.size(), kEnding.wide().size());
    return AString(name.substr(start)).MatchNoCase(kEnding);
}

}  // namespace

std::vector<fs::path> entriesWithExtension(const fs::path& directory, const AString& extension) {
    std::vector<fs::path> entries;
    if (!isThere(directory)) {
        return entries;
    }
    // Listed before any is moved: a listing of a directory that changes may skip entries.
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (extension.empty() || tkcore::pathText(entry.path().extension()).Match(extension)) {
            entries.push_back(tkcore::pathIn(directory, entry.path().filename()));
        }
    }
    return entries;
}

void refuseDesign(const fs::path& target, const tkcore::LongFileName& design) {
    if (!isThere(target)) {
        return;
    }
    boost::system::error_code error;
    if (tkcore::isSameFile(target, tkcore::toPath(design.FilePath())) ||
        (!tkcore::isDirectory(target) &&
         (isNamedLikeADesign(target) || isNamedLikeADesign(fs::canonical(target, error))))) {
        throw fs::filesystem_error("a design is never replaced", target,
                                   make_error_code(boost::system::errc::operation_not_permitted));
    }
}

void moveEntries(const std::vector<fs::path>& entries, const fs::path& directory,
                 const tkcore::LongFileName& design) {
    if (directory.empty()) {
        // Joined with a name it would mean the current directory.
        throw fs::filesystem_error("the output path is empty",
                                   make_error_code(boost::system::errc::no_such_file_or_directory));
    }
    for (const fs::path& entry : entries) {
        refuseDesign(tkcore::pathIn(directory, entry.filename()), design);
    }
    for (const fs::path& entry : entries) {
        const fs::path target = tkcore::pathIn(directory, entry.filename());
        if (isThere(target)) {
            fs::remove(target);
        }
        fs::rename(entry, target);
    }
}

void copyFiles(const std::vector<AString>& files, const fs::path& directory) {
    for (const AString& text : files) {
        const fs::path file = tkcore::toPath(text);
        if (isThere(file)) {
            tkcore::copyToNewFile(VEL_ANSI(text),
                                  VEL_ANSI(tkcore::pathText(directory / file.filename())));
        }
    }
}

}  // namespace velextracta
