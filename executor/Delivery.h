#pragma once

#include <vector>

#include "executor/ExtractaExecutor.h"
#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

namespace velextracta {

/// What a run delivers, and where to. The front end makes one from the command line, has it looked
/// at before the first extraction and carried out after the last.
class Delivery final {
public:
    /// An archive at the target's path, or files in the folder there.
    enum class Form { kArchive, kFolder };

    Delivery(Form deliveredForm, const tkcore::AString& targetAsGiven,
             const tkcore::LongFileName& designFile, const ViewSet& deliveredViews,
             const std::vector<tkcore::AString>& filesToAdd);

    [[nodiscard]] const tkcore::LongFileName& target() const noexcept { return place; }

    /// Where the working directory goes: into the target if that is a folder, else beside the
    /// design.
    [[nodiscard]] tkcore::AString base() const;

    /// Whether a file at the path would be what is delivered, or the design, be they there or not.
    [[nodiscard]] bool concerns(const tkcore::LongFileName& path) const;

    /// Warns of what is certain to keep the delivery, or a part of it, from its place. The run goes
    /// on all the same: it may be put right meanwhile.
    void warnEarly(RunObserver& observer) const;

    /// Adds the files and delivers all; false if the delivery has failed.
    [[nodiscard]] bool carryOut(ExtractaExecutor& executor) const;

    /// Bytes of what has been delivered, added files in a folder not included.
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
