#include "tkcore/programs/inside/ProgramPath.h"

#include "tkcore/report/Log.h"

namespace tkcore {

namespace {

/// 0 if the file can be started, as far as the system shows it; otherwise the error code.
int startError(const LongFileName& file, const PathStatus& status) {
    if (status.kind == PathStatus::Kind::kNothing) {
        return kProgramErrors.notThere;
    }
    if (status.reason) {
        return status.reason.value();
    }
    return mayBeStarted(file, status) ? 0 : kProgramErrors.notAllowed;
}

}  // namespace

int findProgram(const std::string& name, std::string& path) {
    const ProgramPlaces places = placesOfProgram(name);
    int result = kProgramErrors.notThere;
    for (const LongFileName& place : places.paths) {
        const PathStatus status = statusOf(place);
        const int error = startError(place, status);
        if (error == 0 && isSameFile(place, ourProgram())) {
            VelDebug(0, "error: %s is the program that would start it", place.FilePath());
            return kProgramErrors.ourselves;
        }
        if (error == 0) {
            path = VEL_ANSI(place);
            return 0;
        }
        if (!status.reason || !places.areSearched) {
            result = error;
        }
    }
    return result;
}

}  // namespace tkcore
