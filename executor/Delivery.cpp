#include "executor/Delivery.h"

#include "executor/inside/OutputCheck.h"
#include "tkcore/files/PathStatus.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;

namespace {

/// The extension of views, and of all files of a delivery without added files.
constexpr char kViewExtension[] = ".txt";

}  // namespace

Delivery::Delivery(Form deliveredForm, const AString& targetAsGiven, const LongFileName& designFile,
                   const ViewSet& deliveredViews, const std::vector<AString>& filesToAdd)
    : form(deliveredForm),
      text(targetAsGiven),
      place(tkcore::userPath(text)),
      design(designFile),
      views(deliveredViews),
      addedFiles(filesToAdd) {}

AString Delivery::base() const {
    const bool isLost = !place.IsInitialized() && !text.empty();
    if (isLost && form == Form::kFolder) {
        return text;  // it fails later, with the right reason
    }
    return tkcore::isDirectory(place) ? place.FilePath() : design.folder().FilePath();
}

bool Delivery::concerns(const LongFileName& path) const {
    const auto isAt = [&](const LongFileName& other) {
        return tkcore::isSameFile(path, other) ||
               (tkcore::isSameName(path.name(), other.name()) &&
                tkcore::isSameFile(path.folder(), other.folder()));
    };
    const bool isView = form == Form::kFolder &&
                        tkcore::isSameName(path.extension(), kViewExtension) &&
                        tkcore::isSameFile(path.folder(), place);
    return isView || isAt(design) || isAt(place);
}

void Delivery::warnEarly() const {
    const LongFileName workingPlace(base());
    std::vector<AString> names = expectedFileNames(views);
    warnAboutAddedFiles(addedFiles, names);
    if (form == Form::kArchive) {
        warnAboutArchive(place, design);
        warnAboutRoom({workingPlace, place.folder()}, design);
        warnAboutDesignsFolder(workingPlace);
    } else {
        for (const AString& file : addedFiles) {
            names.push_back(tkcore::userPath(file).name());
        }
        warnAboutFolder(place, names, design);
        warnAboutRoom({workingPlace}, design);
    }
}

bool Delivery::carryOut(ExtractaExecutor& executor) const {
    if (!addedFiles.empty()) {
        executor.addFilesToWorkingDir(addedFiles);
    }
    const AString extension = addedFiles.empty() ? kViewExtension : "";
    return form == Form::kArchive ? executor.zipActiveViews(text, extension)
                                  : executor.moveActiveViews(text, extension);
}

std::uint64_t Delivery::size() const {
    if (form == Form::kArchive) {
        return tkcore::fileSize(place);
    }
    std::uint64_t bytes = 0;
    for (const AString& name : viewNames()) {
        bytes += tkcore::fileSize(place.in(name));
    }
    return bytes;
}

std::vector<AString> Delivery::viewNames() const {
    std::vector<AString> names;
    names.reserve(static_cast<std::size_t>(views.GetCount()));
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        names.push_back(MakeViewFileName(views.GetAt(n), ""));
    }
    return names;
}

}  // namespace velextracta
