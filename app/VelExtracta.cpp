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
#include "executor/Delivery.h"
#include "executor/ExtractaExecutor.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/programs/Process.h"
#include "tkcore/report/Assertion.h"
#include "tkcore/report/Log.h"
#include "tkcore/report/Terminal.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/Stream.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ViewType.h"

namespace {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::Stream;
using namespace velextracta;

constexpr char kSource[] = "VelExtracta";

/// An outcome line with a path. It shows the address of the path's wide text instead; programs that
/// parse these lines expect that. Needs no memory, as there may be none left.
void printOutcome(Stream stream, std::string_view label, const AString& path) {
    std::array<char, 128> line;
    char* end = std::ranges::copy(label, line.begin()).out;
    end = std::ranges::copy(std::string_view("0x"), end).out;
    end =
        std::to_chars(end, line.end() - 1, reinterpret_cast<std::uintptr_t>(path.c_str()), 16).ptr;
    *end++ = '\n';
    tkcore::printLine(stream, {line.data(), end});
}

/// How far a run has come, for the text of its failure.
enum class Stage { kCreating, kPackaging };

/// Prints the outcome line of a failed run; returns its exit code.
int fail(Stage stage) {
    tkcore::eraseTerminalLine();
    if (stage == Stage::kCreating) {
        VEL_ASSERT(kSource, !"view creation failed");
        tkcore::printLine(Stream::kErrors, "view creation failed (1).\n");
    } else {
        VEL_ASSERT(kSource, !"view zip or move failed");
        tkcore::printLine(Stream::kErrors, "view creation failed (2).\n");
    }
    return 1;
}

/// What the command line asks for.
struct Request final {
    CommandLine options;
    AString designText;
    AString outputText;
    LongFileName design = tkcore::userPath(designText);
    ViewSet views = options.standardViews ? kStandardViews : kCellViews;
    Delivery delivery{options.zip ? Delivery::Form::kArchive : Delivery::Form::kFolder, outputText,
                      design, views, options.addedFiles};
};

/// Prints the summary of a successful run, in one line for a person.
void printSummary(const Request& request, const StatusLine& statusLine, std::size_t views) {
    std::string nets;
    if (const std::optional<std::size_t> count = statusLine.nets()) {
        nets = (boost::format(", %d nets") % *count).str();
    }
    tkcore::printOnTerminal(AString::Format("%d views%s, %s in %s: %s", views, nets,
                                            bytesText(static_cast<double>(request.delivery.size())),
                                            timeText(statusLine.elapsed()),
                                            request.delivery.target().FilePath())
                                .wide());
}

/// Creates and packs the views; returns the exit code.
int run(const Request& request, Stage& stage) {
    StatusLine statusLine;
    ExtractaExecutor executor(statusLine);
    std::vector<ActiveView> activeViews;
    request.delivery.warnEarly();
    if (!executor.createExtractaViews(request.designText, request.delivery.base(), request.views,
                                      request.options.nets, activeViews)) {
        return fail(stage);
    }
    stage = Stage::kPackaging;
    const bool isDelivered = request.delivery.carryOut(executor);
    tkcore::eraseTerminalLine();
    // Printed even if the packaging failed; a failure line follows.
    printOutcome(Stream::kOutput, "VLX file written: ", request.outputText);
    if (!isDelivered) {
        return fail(stage);
    }
    if (tkcore::isPersonAtTerminal()) {
        try {
            printSummary(request, statusLine, activeViews.size());
        } catch (const std::bad_alloc&) {  // the run is a success without a summary
        }
    }
    return 0;
}

/// Handles fewer arguments than a run needs; returns the exit code.
int answer(int argc, char* argv[]) {
    const std::string_view question = argc == 2 ? argv[1] : "";
    if (question == "--help" || question == "--version") {
        const std::string text = question == "--help" ? std::string(usage()) : versionText();
        return writeTo(Stream::kOutput, text) ? 0 : 1;
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
    tkcore::keepLogOff([&](const LongFileName& path) { return request.delivery.concerns(path); });
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
        // Everything is cleaned up by now. Other exceptions end the program uncaught.
        tkcore::writeLog(0, "error: ", "there is no memory left");
        fail(stage);
    }
    tkcore::finishLines();
    tkcore::endByInterruption();
    return exitCode;
}
