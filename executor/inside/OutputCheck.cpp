#include "executor/inside/OutputCheck.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <regex>
#include <stdexcept>
#include <string>
#include <system_error>

#include <boost/filesystem.hpp>

#include "executor/inside/Packaging.h"
#include "tkcore/files/FileCopy.h"
#include "tkcore/files/Path.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/files/ReplacementFile.h"
#include "tkcore/files/ReplacementTarget.h"
#include "tkcore/report/Log.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

constexpr std::uint64_t kBytesPerMegabyte = 1'000'000;

/// Begins a file at the path exactly as the archive will begin, and drops it: only the system knows
/// all obstacles.
void tryToWrite(const LongFileName& path) {
    const tkcore::ReplacementFile dropped(path);
}

void refuseFolder(const LongFileName& folder) {
    if (const tkcore::PathStatus status = tkcore::statusOf(folder);
        status.kind != tkcore::PathStatus::Kind::kDirectory) {
        throw std::runtime_error("there is no folder " + VEL_ANSI(folder) +
                                 (status.reason ? ": " + status.reason.message() : ""));
    }
    try {
        tryToWrite(folder.in(tkcore::randomHiddenName()));
    } catch (const std::system_error& error) {
        throw std::runtime_error("cannot write to the folder " + VEL_ANSI(folder) + ": " +
                                 error.code().message());
    }
}

void refuseToReplace(const LongFileName& file, const LongFileName& design) {
    refuseDesign(file, design);
    tkcore::requireReplaceable(file);
}

/// The files of an earlier run in the folder; this run is likely to replace them.
std::vector<AString> filesOfSplitNets(const LongFileName& folder) {
    static constexpr char kAnyPiece[] = "[0-9]_.*";
    const std::regex pattern(VEL_ANSI(MakeViewFileName(ViewType::conn, kAnyPiece) + "|" +
                                      makeControlFileName(ViewType::conn, kAnyPiece)));
    std::vector<AString> names;
    boost::system::error_code error;
    boost::filesystem::directory_iterator entry(tkcore::toPath(folder), error);
    for (; !error && entry != boost::filesystem::directory_iterator(); entry.increment(error)) {
        const AString name = tkcore::pathText(entry->path().filename());
        if (std::regex_match(VEL_ANSI(name), pattern)) {
            names.push_back(name);
        }
    }
    return names;
}

/// What is wrong with an added file; empty if nothing.
std::string doubtAboutAdded(const LongFileName& file, const std::vector<AString>& names) {
    const auto isTaken = [&](const AString& name) { return tkcore::isSameName(name, file.name()); };
    const tkcore::PathStatus status = tkcore::statusOf(file);
    switch (status.kind) {
        case tkcore::PathStatus::Kind::kNothing:
            return "it is not there";
        case tkcore::PathStatus::Kind::kUnknown:
            return status.reason.message();
        case tkcore::PathStatus::Kind::kFile:
            return std::ranges::any_of(names, isTaken) ? "its name is taken" : "";
        case tkcore::PathStatus::Kind::kDirectory:
        case tkcore::PathStatus::Kind::kOther:
        default:
            return "it is no regular file";
    }
}

}  // namespace

std::vector<AString> expectedFileNames(const ViewSet& views) {
    const bool isSplit = views.Contains(ViewType::conn);
    std::vector<AString> names;
    const auto add = [&](ViewType viewType, const AString& suffix) {
        names.push_back(MakeViewFileName(viewType, suffix));
        if (isSplit) {
            names.push_back(makeControlFileName(viewType, suffix));
        }
    };
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        if (const ViewType viewType = views.GetAt(n); viewType != ViewType::conn) {
            add(viewType, "");
        }
    }
    if (isSplit) {
        add(ViewType::conn, kSurveySuffix);
        add(ViewType::conn, kRemainderSuffix);
        names.push_back(MakeViewFileName(ViewType::conn, ""));
    } else {
        names.emplace_back(kControlFileName);
    }
    return names;
}

void warnAboutArchive(const LongFileName& archive, const LongFileName& design) {
    try {
        refuseDesign(archive, design);
        tryToWrite(archive);
        tkcore::requireReplaceable(tkcore::followLinks(archive));
    } catch (const std::exception& failure) {
        tkcore::warn(AString("the archive will not be written: ").append(failure.what()));
    }
}

void warnAboutFolder(const LongFileName& folder, const std::vector<AString>& names,
                     const LongFileName& design) {
    try {
        refuseFolder(folder);
        for (const AString& name : names) {
            refuseToReplace(folder.in(name), design);
        }
    } catch (const std::exception& failure) {
        return tkcore::warn(AString("the views will not be moved: ").append(failure.what()));
    }
    const AString remainder = MakeViewFileName(ViewType::conn, kRemainderSuffix);
    const bool splitsNets = std::ranges::find(names, remainder) != names.end();
    try {
        for (const AString& name : splitsNets ? filesOfSplitNets(folder) : std::vector<AString>()) {
            refuseToReplace(folder.in(name), design);
        }
    } catch (const std::exception& failure) {
        tkcore::warn(AString("the views may not be moved: ").append(failure.what()));
    }
}

void warnAboutDesignsFolder(const LongFileName& folder) {
    try {
        refuseFolder(folder);
    } catch (const std::exception& failure) {
        tkcore::warn(AString("there is no place to work beside the design: ")
                         .append(failure.what())
                         .append(". Link the design from a folder of your own, and give that"));
    }
}

void warnAboutAddedFiles(const std::vector<AString>& files, std::vector<AString> names) {
    for (const AString& text : files) {
        const LongFileName file = tkcore::userPath(text);
        if (const std::string doubt = doubtAboutAdded(file, names); !doubt.empty()) {
            tkcore::warn("the file " + text + " cannot be added: " + AString(doubt));
        }
        names.push_back(file.name());
    }
}

void warnAboutRoom(const std::vector<LongFileName>& folders, const LongFileName& design) {
    const std::uint64_t size = tkcore::fileSize(design);
    for (const LongFileName& folder : folders) {
        const tkcore::DiskRoom disk = tkcore::roomIn(folder);
        if (disk.all > 0 && disk.free < size && size >= kBytesPerMegabyte) {
            return tkcore::warn(AString::Format(
                "the disk of %s will hardly hold the views: it has room "
                "for %d MB, and the design alone takes %d MB",
                folder.FilePath(), disk.free / kBytesPerMegabyte, size / kBytesPerMegabyte));
        }
    }
}

}  // namespace velextracta
