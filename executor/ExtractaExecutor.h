#pragma once

#include <exception>
#include <string_view>
#include <vector>

#include "executor/inside/WorkingDirectory.h"
#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ViewType.h"

namespace velextracta {

/// One extraction run. Owns its working directory, creates the views in it with one extracta
/// process or several, and packs or moves the files afterwards. The front end makes one for each
/// run.
///
/// The operations return false when they fail. Those that create something leave a text in
/// lastError(). The log has every reason of a failure and every doubt about a success.
class ExtractaExecutor {
public:
    /// Reports to the observer, which must outlive it.
    explicit ExtractaExecutor(RunObserver& runObserver = nobody()) : observer(runObserver) {}

    /// Removes the working directory, unless VELTAR_EXTRACTA_DEBUG is in the environment.
    virtual ~ExtractaExecutor();

    ExtractaExecutor(const ExtractaExecutor&) = delete;
    ExtractaExecutor& operator=(const ExtractaExecutor&) = delete;

    /// Creates a new directory "extract" + local wall-clock seconds since 1970 under the base
    /// (empty: the current directory) and removes this object's previous one. Throws
    /// std::runtime_error if the system cannot give the local time.
    bool createWorkingDir(const tkcore::AString& base);

    /// Removes the working directory if this run has created it.
    bool deleteWorkingDir();

    /// Creates the views of the set, restricted to the nets (none: all), under a new working
    /// directory in the base, and adds them to the active views.
    bool createExtractaViews(const tkcore::AString& designFile, const tkcore::AString& base,
                             const ViewSet& views, const std::vector<tkcore::AString>& nets,
                             std::vector<ActiveView>& activeViews);

    /// Copies the files into the working directory; skips those that do not exist. Throws a
    /// filesystem error if a copy fails or the name is taken there.
    bool addFilesToWorkingDir(const std::vector<tkcore::AString>& files);

    /// Packs the working directory's top-level entries with the extension (empty: all) into a zip
    /// archive at the output path. Never replaces the design or another file named like a design.
    bool zipActiveViews(const tkcore::AString& outputPath, const tkcore::AString& extension);

    /// Moves the same entries into the output directory. Replaces files of the same name, except
    /// designs.
    bool moveActiveViews(const tkcore::AString& outputPath, const tkcore::AString& extension);

    tkcore::LongFileName workingDirectory() const { return workingDir.name(); }
    const tkcore::AString& lastError() const { return errorMessage; }

private:
    bool createViewsWithOneProcess(const ViewSet& views, const std::vector<tkcore::AString>& nets,
                                   std::vector<ActiveView>& activeViews);

    /// Creates each view with its own process, and connectivity with several.
    bool createExtractaControlFileAndViewsMP(const tkcore::AString& designFile,
                                             const ViewSet& views,
                                             const std::vector<tkcore::AString>& nets,
                                             std::vector<ActiveView>& activeViews);

    /// Both keep and log the text, and return false for the caller to return.
    bool fail(const tkcore::AString& message);
    bool fail(std::string_view prefix, const std::exception& exception);

    tkcore::AString errorMessage;
    WorkingDirectory workingDir;
    bool generatorOption = true;
    [[maybe_unused]] bool spareFlag = false;
    tkcore::LongFileName design;  // set by createExtractaViews()
    RunObserver& observer;
};

}  // namespace velextracta
