#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/PrivateDirectory.h"

namespace velextracta {

/// The number in the name of a run's directory: seconds since 1970 on the local wall clock, low 32
/// bits. Throws std::runtime_error if the system cannot give the local time.
std::int32_t runNumber();

/// The private directory of one run. The executor owns it and says when it is created and removed.
/// Only a directory that this object has created is ever removed. It is recognised by its identity,
/// because its name may lead elsewhere by then.
class WorkingDirectory final {
public:
    /// Creates "extract" + number in the base, whose text ends in a separator. False, with the
    /// reason in the log, if the name is taken or the directory cannot be created. name() gives the
    /// name in any case.
    bool create(const tkcore::LongFileName& base, std::int32_t number);

    /// Removes it. False, with the reason in the log, if that fails; true if there is none.
    bool remove();

    /// The directory's path. Files in() it are in this directory, whatever its name leads to.
    const tkcore::LongFileName& name() const noexcept { return directory; }

    /// Its top-level entries in the order of the listing; none if nothing has its name any more.
    /// Throws as requireName() does.
    std::vector<tkcore::LongFileName> contents() const;

    /// Throws ExtractaParserException if its name leads to something else by now. Programs that get
    /// the name would not find the files.
    void requireName() const;

private:
    tkcore::LongFileName directory;
    std::optional<tkcore::PrivateDirectory> ours;
};

}  // namespace velextracta
