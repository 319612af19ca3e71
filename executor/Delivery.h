#pragma once

#include <cstdint>
#include <vector>

#include "executor/ExtractaExecutor.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

namespace velextracta {

/// What a run delivers, and where to. The front end makes one from the command line, calls
/// warnEarly() before the first extraction and carryOut() after the last.
class Delivery final {
public:
    /// An archive at the target's path, or files in the folder there.
    enum class Form { kArchive, kFolder };

    Delivery(Form deliveredForm, const tkcore::AString& targetAsGiven,
             const tkcore::LongFileName& designFile, const ViewSet& deliveredViews,
             const std::vector<tkcore::AString>& filesToAdd);

    [[nodiscard]] const tkcore::LongFileName& target() const noexcept { return place; }

    /// The folder of the working directory: the target if that is a folder, else the design's
    /// folder.
    [[nodiscard]] tkcore::AString base() const;

    /// Whether the path is that of the design or of a file to deliver, even if it does not exist.
    [[nodiscard]] bool concerns(const tkcore::LongFileName& path) const;

    /// Warns if the delivery, or a part of it, is certain to fail. The run goes on all the same, as
    /// the user may remove the obstacle meanwhile.
    void warnEarly() const;

    /// Adds the files and delivers everything; false if the delivery has failed.
    [[nodiscard]] bool carryOut(ExtractaExecutor& executor) const;

    /// The size of the delivered archive, or of the views in the folder, in bytes.
    [[nodiscard]] std::uint64_t size() const;

private:
    [[nodiscard]] std::vector<tkcore::AString> viewNames() const;

    Form form;
    tkcore::AString text;
    tkcore::LongFileName place;
    tkcore::LongFileName design;
    ViewSet views;
    std::vector<tkcore::AString> addedFiles;
};

}  // namespace velextracta
