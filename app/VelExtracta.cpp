#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/format.hpp>

#include "app/CommandLine.h"
#include "app/Reasons.h"
#include "app/StatusLine.h"
#include "app/StatusText.h"
#include "app/Usage.h"
#include "executor/ExtractaExecutor.h"
#include "executor/OutputCheck.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/programs/Process.h"
#include "tkcore/report/Assertion.h"
#include "tkcore/report/Log.h"
#include "tkcore/report/Terminal.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/Stream.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ExtractaViewControl.h"
#include "views/ViewType.h"

namespace {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::Stream;
using namespace velextracta;

constexpr char kSource[] = "VelExtracta";

/// An outcome line with a path: the address of the path's wide text stands for it, and whoever
/// reads these lines is used to it. Needs no memory: there may be none left.
void printOutcome(Stream stream, std::string_view label, const AString& path) {
    std::array<char, 128> line;
    char* end = std::ranges::copy(label, line.begin()).out;
    end = std::ranges::copy(std::string_view("0x"), end).out;
    end =
        std::to_chars(end, line.end() - 1, reinterpret_cast<std::uintptr_t>(path.c_str()), 16).ptr;
    *end++ = '\n';
    writeTo(stream, {line.data(), end});
}

/// How far a run has come, for the words that a failure is told with.
enum class Stage { kCreating, kPackaging };

/// The words for a run that has failed; returns its exit code.
int fail(Stage stage) {
    tkcore::eraseTerminalLine();
    if (stage == Stage::kCreating) {
        VEL_ASSERT(kSource, !"view creation failed");
        writeTo(Stream::kErrors, "view creation failed (1).\n");
    } else {
        VEL_ASSERT(kSource, !"view zip or move failed");
        writeTo(Stream::kErrors, "view creation failed (2).\n");
    }
    return 1;
}

/// What a run is about: options, design and output as they were given, and as paths.
struct Request final {
    CommandLine options;
    AString designText;
    AString outputText;
    LongFileName design = pathOf(designText);
    LongFileName output = pathOf(outputText);

    static LongFileName pathOf(const AString& text) {
        return text.empty() ? LongFileName() : LongFileName(text);
    }
    [[nodiscard]] const ViewSet& views() const {
        return options.standardViews ? kStandardViews : kCellViews;
    }
    /// Where the working directory goes: into the output directory if there is one, else beside
    /// the design file.
    [[nodiscard]] AString base() const {
        const bool isLost = !output.IsInitialized() && !outputText.empty();
        if (isLost && !options.zip) {
            return outputText;  // which fails for the right reason
        }
        return tkcore::isDirectory(output) ? output.FilePath() : design.folder().FilePath();
    }
};

bool package(ExtractaExecutor& executor, const Request& request) {
    const CommandLine& options = request.options;
    if (!options.addedFiles.empty()) {
        executor.addFilesToWorkingDir(options.addedFiles);
    }
    const AString extension = options.addedFiles.empty() ? ".txt" : "";
    return options.zip ? executor.zipActiveViews(request.outputText, extension)
                       : executor.moveActiveViews(request.outputText, extension);
}

std::vector<AString> viewNames(const ViewSet& views) {
    std::vector<AString> names;
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        names.push_back(MakeViewFileName(views.GetAt(n), ""));
    }
    return names;
}

void checkOutput(RunObserver& observer, const Request& request) {
    const LongFileName base(request.base());
    std::vector<AString> names = viewNames(request.views());
    warnAboutAddedFiles(observer, request.options.addedFiles, names);
    if (request.options.zip) {
        warnAboutArchive(observer, request.output, request.design);
        warnAboutRoom(observer, {base, request.output.folder()}, request.design);
        warnAboutDesignsFolder(observer, base);
    } else {
        for (const AString& text : request.options.addedFiles) {
            names.push_back(LongFileName(text).name());
        }
        warnAboutFolder(observer, request.output, names, request.design);
        warnAboutRoom(observer, {base}, request.design);
    }
}

/// Whether a log at the path would be the design, or what the run delivers.
bool isNoLog(const Request& request, const LongFileName& path) {
    const LongFileName& output = request.output;
    const bool isArchive = request.options.zip && path.name() == output.name() &&
                           tkcore::isSameFile(path.folder(), output.folder());
    const bool isView = !request.options.zip && path.extension() == ".txt" &&
                        tkcore::isSameFile(path.folder(), output);
    return isArchive || isView || tkcore::isSameFile(path, request.design) ||
           tkcore::isSameFile(path, output);
}

/// What a success came to, in one line for a person.
void printSummary(const Request& request, const StatusLine& statusLine,
                  const std::vector<ActiveView>& views) {
    std::uint64_t bytes = request.options.zip ? tkcore::fileSize(request.output) : 0;
    for (const ActiveView& view : views) {
        const LongFileName moved = request.output.in(MakeViewFileName(view.viewType, ""));
        bytes += request.options.zip ? 0 : tkcore::fileSize(moved);
    }
    std::string nets;
    if (const std::optional<std::size_t> count = statusLine.nets()) {
        nets = (boost::format(", %d nets") % *count).str();
    }
    tkcore::printOnTerminal(AString::Format("%d views%s, %s in %s: %s", views.size(), nets,
                                            bytesText(static_cast<double>(bytes)),
                                            timeText(statusLine.elapsed()),
                                            request.output.FilePath())
                                .wide());
}

/// Creates and packs the views; returns the exit code.
int run(const Request& request, Stage& stage) {
    StatusLine statusLine;
    ExtractaExecutor executor(statusLine);
    std::vector<ActiveView> activeViews;
    checkOutput(statusLine, request);
    if (!executor.createExtractaViews(request.designText, request.base(), request.views(),
                                      request.options.nets, activeViews)) {
        return fail(stage);
    }
    stage = Stage::kPackaging;
    const bool packaged = package(executor, request);
    tkcore::eraseTerminalLine();
    // Printed whatever the packaging came to; a failure line follows it.
    printOutcome(Stream::kOutput, "VLX file written: ", request.outputText);
    if (!packaged) {
        return fail(stage);
    }
    if (tkcore::isPersonAtTerminal()) {
        try {
            printSummary(request, statusLine, activeViews);
        } catch (const std::bad_alloc&) {  // what is delivered is delivered
        }
    }
    return 0;
}

/// For fewer arguments than a run takes; returns the exit code.
int answer(int argc, char* argv[]) {
    const std::string_view question = argc == 2 ? argv[1] : "";
    if (question == "--help" || question == "--version") {
        writeTo(Stream::kOutput, question == "--help" ? std::string(usage()) : versionText());
        return 0;
    }
    VEL_ASSERT(kSource, argc >= 3);
    if (tkcore::isPersonAtTerminal()) {
        writeTo(Stream::kErrors, shortUsage());
    }
    return 1;
}

int runFromCommandLine(int argc, char* argv[], Stage& stage) {
    if (argc < 3) {
        return answer(argc, argv);
    }
    const Request request{scanCommandLine(argc, argv), argv[argc - 2], argv[argc - 1]};
    tkcore::keepLogOff([&](const LongFileName& path) { return isNoLog(request, path); });
    if (const AString doubt = tkcore::doubtAboutLog(); !doubt.empty()) {
        tkcore::printOnTerminal((AString("warning: ") + doubt).wide());
    }
    Reasons reasons;
    if (const tkcore::PathStatus status = statusOf(request.design);
        status.kind == tkcore::PathStatus::Kind::kNothing ||
        status.kind == tkcore::PathStatus::Kind::kUnknown) {
        tkcore::VelDebug(0, "error: there is no design %s: %s", request.designText,
                         status.reason.message());
        if (const AString slip = misplacedOption(request.designText, request.outputText);
            !slip.empty()) {
            tkcore::VelDebug(0, "error: %s", slip);
        }
        VEL_ASSERT(kSource, !"mcm file does not exist");
        printOutcome(Stream::kErrors, "mcm file does not exist: ", request.designText);
        reasons.print();
        return 1;
    }
    const int exitCode = run(request, stage);
    if (exitCode != 0) {
        reasons.print();
    }
    return exitCode;
}

}  // namespace

int main(int argc, char* argv[]) {
    tkcore::openMissingStreams();
    tkcore::lendCommandLine(argv);
    tkcore::noteInterruptions();
    tkcore::logUncaughtExceptions();
    tkcore::suspendWith(
        [] {
            tkcore::eraseTerminalLine();
            tkcore::suspendPrograms();
        },
        tkcore::resumePrograms);
    Stage stage = Stage::kCreating;
    int exitCode = 1;
    try {
        exitCode = runFromCommandLine(argc, argv, stage);
    } catch (const std::bad_alloc&) {
        // What was made is cleaned up by now. Other exceptions end the program as they are.
        tkcore::writeLog(0, "error: ", "there is no memory left");
        fail(stage);
    }
    tkcore::endByInterruption();
    return exitCode;
}
