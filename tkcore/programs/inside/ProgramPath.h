#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/PathStatus.h"

// What VeltCreateProcess builds on.

namespace tkcore {

/// Sets path to the absolute path of the program to start. A name without a separator is looked up
/// along PATH alone, where the system's programs expect it in the folder of the running program
/// before that, and never in the current directory, unless PATH names it. Returns 0 or the system's
/// error code; a path to the program that runs here is refused.
int findProgram(const std::string& name, std::string& path);

// What findProgram asks the system for.

/// The places where a program of that name may be, the first one first.
struct ProgramPlaces final {
    std::vector<LongFileName> paths;
    bool areSearched = false;  // the name says no place: what cannot be looked at is passed over
};

ProgramPlaces placesOfProgram(const std::string& name);

/// Whether this user may start what is there, as far as can be told.
bool mayBeStarted(const LongFileName& file, const PathStatus& status);

/// The program that runs here.
LongFileName ourProgram();

/// Codes of the system.
struct ProgramErrors final {
    int notThere;
    int notAllowed;
    int ourselves;
};
extern const ProgramErrors kProgramErrors;

}  // namespace tkcore
