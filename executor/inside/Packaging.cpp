#include "executor/inside/Packaging.h"

#include <algorithm>
#include <span>
#include <system_error>

#include "tkcore/files/FileCopy.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

bool isNamedLikeADesign(const LongFileName& path) {
    static const AString kEnding(".mcm");
    const std::wstring& name = path.FilePath().wide();
    const std::size_t start = name.size() - std::min(name.size(), kEnding.wide().size());
    return AString(name.substr(start)).MatchNoCase(kEnding);
}

[[noreturn]] void refuse(const char* reason, const LongFileName& path) {
    throw std::system_error(std::make_error_code(std::errc::operation_not_permitted),
                            reason + VEL_ANSI(path));
}

AString namesOf(std::span<const LongFileName> files) {
    AString names;
    for (const LongFileName& file : files) {
        names += (names.empty() ? "" : ", ") + file.name();
    }
    return names.empty() ? "nothing" : names;
}

}  // namespace

std::vector<LongFileName> entriesWithExtension(const WorkingDirectory& directory,
                                               const AString& extension) {
    // List all before moving any: the listing of a changing directory may skip entries.
    std::vector<LongFileName> entries = directory.contents();
    std::erase_if(entries, [&](const LongFileName& entry) {
        return !extension.empty() && !entry.extension().Match(extension);
    });
    return entries;
}

void refuseDesign(const LongFileName& target, const LongFileName& design) {
    if (!tkcore::isThere(target)) {
        return;
    }
    if (tkcore::isSameFile(target, design) ||
        (!tkcore::isDirectory(target) &&
         (isNamedLikeADesign(target) || isNamedLikeADesign(tkcore::followLinks(target))))) {
        refuse("a design is never replaced: ", target);
    }
}

void refuseInside(const LongFileName& directory, const LongFileName& file) {
    for (LongFileName folder = tkcore::followLinks(file).folder();; folder = folder.in("..")) {
        if (tkcore::isSameFile(folder, directory)) {
            refuse("nothing lasts in the working directory: ", file);
        }
        if (!tkcore::isThere(folder) || tkcore::isSameFile(folder, folder.in(".."))) {
            return;
        }
    }
}

void moveEntries(const std::vector<LongFileName>& entries, const LongFileName& folder,
                 const LongFileName& design) {
    std::vector<LongFileName> targets;
    for (const LongFileName& entry : entries) {
        targets.push_back(folder.in(entry.name()));
        refuseDesign(targets.back(), design);
    }
    tkcore::waitUntilReplaceable(targets);
    tkcore::passPointOfNoReturn();
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        try {
            tkcore::moveFile(*entry, folder.in(entry->name()));
        } catch (const std::system_error&) {
            tkcore::VelDebug(0, "error: delivered to %s: %s; not delivered: %s", folder.FilePath(),
                             namesOf({entries.begin(), entry}), namesOf({entry, entries.end()}));
            throw;
        }
    }
}

void copyFiles(const std::vector<AString>& files, const LongFileName& directory) {
    for (const AString& text : files) {
        const LongFileName file = tkcore::userPath(text);
        if (tkcore::isThere(file)) {
            tkcore::copyToNewFile(file, directory.in(file.name()));
        } else {
            tkcore::warn("there is no file " + text +
                         " to add: " + AString(tkcore::statusOf(file).reason.message()));
        }
    }
}

}  // namespace velextracta
