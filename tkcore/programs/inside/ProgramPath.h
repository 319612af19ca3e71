#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/PathStatus.h"

// A part of VeltCreateProcess.

namespace tkcore {

/// Sets path to the absolute path of the program to start. A name without a separator is looked up
/// in the folders of PATH, on Windows first in the folder of the running program, and in the
/// current directory only if PATH names it. Returns 0 or the system's error code. Refuses the
/// running program itself.
int findProgram(const std::string& name, std::string& path);

// The parts of findProgram() that depend on the system.

/// The places where a program of that name may be, in the order of the search.
struct ProgramPlaces final {
    std::vector<LongFileName> paths;
    bool areSearched = false;  // the name has no folder; skip places that cannot be looked at
};

ProgramPlaces placesOfProgram(const std::string& name);

/// Whether this user may start the file, as far as the system shows it.
bool mayBeStarted(const LongFileName& file, const PathStatus& status);

/// The running program.
LongFileName ourProgram();

/// Error codes of the system.
struct ProgramErrors final {
    int notThere;
    int notAllowed;
    int ourselves;
};
extern const ProgramErrors kProgramErrors;

}  // namespace tkcore
