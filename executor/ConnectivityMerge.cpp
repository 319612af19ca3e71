#include "executor/ConnectivityMerge.h"

#include <string_view>
#include <system_error>
#include <utility>

#include "reader/ViewFileInput.h"
#include "tkcore/ExtractaParserException.h"
#include "tkcore/Log.h"

namespace velextracta {

using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

/// A failure of the system becomes the exception with the message; its reason goes to the log.
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

ConnectivityMerge::ConnectivityMerge(const AString& combinedPath, Meanwhile whatToDo)
    : meanwhile(std::move(whatToDo)) {
    try {
        combined.emplace(VEL_ANSI(combinedPath), tkcore::OutputFile::IfThere::kTruncate);
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
    }
}

std::string ConnectivityMerge::append(const AString& path) {
    std::optional<ViewFileInput> input;
    orThrow("failed to open file " + path, [&] { input.emplace(VEL_ANSI(path)); });

    std::string header;
    std::string jRecord;
    orThrow("missing header in file " + path, [&] {
        header = input->readLine();
        jRecord = input->readLine();
    });

    orThrow("error adding " + path + " to combined connectivity file", [&] {
        if (std::exchange(isFirst, false)) {
            write(header + "\r\n" + jRecord + "\r\n");
        }
        for (auto bytes = input->readBytes(); !bytes.empty(); bytes = input->readBytes()) {
            write({bytes.data(), bytes.size()});
            meanwhile(bytes.size());
        }
    });
    return doubtAboutHeader(header, jRecord);
}

void ConnectivityMerge::write(std::string_view bytes) {
    if (!combined) {
        throw std::system_error(std::make_error_code(std::errc::bad_file_descriptor),
                                "the combined file is not open");
    }
    combined->write(bytes);
}

}  // namespace velextracta
