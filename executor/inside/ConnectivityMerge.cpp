#include "executor/inside/ConnectivityMerge.h"

#include <string_view>
#include <system_error>
#include <utility>

#include "reader/ViewFileInput.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;

namespace {

/// Calls the action. Logs a failure of the system, and throws the exception with the message.
template <typename Action>
void orThrow(const AString& message, const Action& action) {
    try {
        action();
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
        throw tkcore::ExtractaParserException("createExtractaControlFileAndViewsMP " + message);
    }
}

}  // namespace

ConnectivityMerge::ConnectivityMerge(const LongFileName& combinedFile, Meanwhile whatToDo)
    : meanwhile(std::move(whatToDo)) {
    try {
        combined.emplace(combinedFile, tkcore::OutputFile::IfThere::kReplace);
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
    }
}

void ConnectivityMerge::append(const LongFileName& piece) {
    std::optional<ViewFileInput> input;
    orThrow("failed to open file " + piece.FilePath(), [&] { input.emplace(piece); });

    constexpr int kHeaderLines = 2;
    const bool isHeaderWanted = std::exchange(isFirst, false);
    const AString cannotAdd = "error adding " + piece.FilePath() + " to combined connectivity file";
    for (int line = 0; line < kHeaderLines; ++line) {
        orThrow("missing header in file " + piece.FilePath(), [&] {
            input->passLine([&](std::span<const char> bytes) {
                if (isHeaderWanted) {
                    orThrow(cannotAdd, [&] { write(bytes); });
                }
            });
        });
        if (isHeaderWanted) {
            orThrow(cannotAdd, [&] { write(std::string_view("\r\n")); });
        }
    }
    orThrow(cannotAdd, [&] {
        for (auto bytes = input->readBytes(); !bytes.empty(); bytes = input->readBytes()) {
            write(bytes);
            meanwhile(bytes.size());
        }
    });
}

void ConnectivityMerge::write(std::span<const char> bytes) {
    if (!combined) {
        throw std::system_error(std::make_error_code(std::errc::bad_file_descriptor),
                                "the combined file is not open");
    }
    combined->write(bytes);
}

}  // namespace velextracta
