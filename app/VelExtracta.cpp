#include <cstddef>
#include <cstdint>
#include <iostream>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "app/CommandLine.h"
#include "app/StatusLine.h"
#include "executor/ExtractaExecutor.h"
#include "executor/OutputCheck.h"
#include "tkcore/AString.h"
#include "tkcore/Assertion.h"
#include "tkcore/Interruption.h"
#include "tkcore/Log.h"
#include "tkcore/Path.h"
#include "tkcore/PathStatus.h"
#include "tkcore/Terminal.h"
#include "views/ActiveView.h"
#include "views/ExtractaViewControl.h"
#include "views/ViewType.h"

namespace {

namespace fs = boost::filesystem;

using tkcore::AString;
using namespace velextracta;

constexpr char kSource[] = "VelExtracta";

/// A path on the outcome lines: the address of its wide text. Whoever reads these lines is used
/// to it.
const void* outcomeValue(const AString& path) {
    return path.c_str();
}

/// Where the working directory goes: into the output directory if there is one, else beside the
/// design file.
AString workingDirectoryBase(const AString& designPath, const AString& outputPath) {
    return tkcore::isDirectory(tkcore::toPath(outputPath))
               ? outputPath
               : tkcore::pathText(tkcore::toPath(designPath).parent_path());
}

bool package(ExtractaExecutor& executor, const CommandLine& options, const AString& outputPath) {
    if (!options.addedFiles.empty()) {
        executor.addFilesToWorkingDir(options.addedFiles);
    }
    const AString extension = options.addedFiles.empty() ? ".txt" : "";
    return options.zip ? executor.zipActiveViews(outputPath, extension)
                       : executor.moveActiveViews(outputPath, extension);
}

/// The names under which the views and the added files are delivered.
std::vector<fs::path> deliveredNames(const CommandLine& options, const ViewSet& views) {
    std::vector<fs::path> names;
    names.reserve(static_cast<std::size_t>(views.GetCount()) + options.addedFiles.size());
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        names.push_back(tkcore::toPath(MakeViewFileName(views.GetAt(n), "")));
    }
    for (const AString& text : options.addedFiles) {
        if (const fs::path file = tkcore::toPath(text); tkcore::isThere(file)) {
            names.push_back(file.filename());
        }
    }
    return names;
}

void checkOutput(RunObserver& observer, const CommandLine& options, const ViewSet& views,
                 const tkcore::LongFileName& design, const fs::path& base, const fs::path& output) {
    if (options.zip) {
        warnAboutArchive(observer, output, design);
        warnAboutRoom(observer, {base, output.parent_path()}, design);
    } else {
        warnAboutFolder(observer, output, deliveredNames(options, views), design);
        warnAboutRoom(observer, {base}, design);
    }
}

/// Creates and packs the views; returns the exit code.
int run(const CommandLine& options, const AString& designPath, const AString& outputPath) {
    StatusLine statusLine;
    ExtractaExecutor executor(statusLine);
    std::vector<ActiveView> activeViews;
    const AString base = workingDirectoryBase(designPath, outputPath);
    const ViewSet& views = options.standardViews ? kStandardViews : kCellViews;
    checkOutput(statusLine, options, views, tkcore::LongFileName(designPath), tkcore::toPath(base),
                tkcore::toPath(outputPath));
    if (!executor.createExtractaViews(designPath, base, views, options.nets, activeViews)) {
        tkcore::eraseTerminalLine();
        VEL_ASSERT(kSource, !"view creation failed");
        std::cerr << "view creation failed (1).\n";
        return 1;
    }
    const bool packaged = package(executor, options, outputPath);
    tkcore::eraseTerminalLine();
    // Printed whatever the packaging came to; a failure line follows it.
    std::cout << "VLX file written: " << outcomeValue(outputPath) << '\n' << std::flush;
    if (!packaged) {
        VEL_ASSERT(kSource, !"view zip or move failed");
        std::cerr << "view creation failed (2).\n";
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    tkcore::noteInterruptions();
    tkcore::logUncaughtExceptions();
    if (argc < 3) {
        VEL_ASSERT(kSource, argc >= 3);
        return 1;
    }
    const CommandLine options = scanCommandLine(argc, argv);
    const AString designPath(argv[argc - 2]);
    const AString outputPath(argv[argc - 1]);
    if (!tkcore::isThere(tkcore::toPath(designPath))) {
        tkcore::VelDebug(0, "error: there is no design %s", designPath);
        VEL_ASSERT(kSource, !"mcm file does not exist");
        std::cerr << "mcm file does not exist: " << outcomeValue(designPath) << '\n';
        return 1;
    }
    const int exitCode = run(options, designPath, outputPath);
    tkcore::endByInterruption();
    return exitCode;
}
