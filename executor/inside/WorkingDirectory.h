#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/PrivateDirectory.h"

namespace velextracta {

/// Seconds since 1970 on the local wall clock, low 32 bits: what a run's directory is named after.
/// Throws std::runtime_error if the local time cannot be told.
std::int32_t runNumber();

/// The private directory of one run. Owned by the executor, which says when it is created and
/// removed; only a directory that this object has created is ever removed, and it is known by its
/// identity: its name may lead elsewhere by then.
class WorkingDirectory final {
public:
    /// Creates "extract" + number in the base, whose text ends in a separator. False, with the
    /// reason in the log, if that name is taken or cannot be created; name() tells the name in any
    /// case.
    bool create(const tkcore::LongFileName& base, std::int32_t number);

    /// False if it cannot be removed, with the reason in the log; nothing to remove is no failure.
    bool remove();

    /// Files in() it are reached through it, whatever its name leads to.
    const tkcore::LongFileName& name() const noexcept { return directory; }

    /// Its top-level entries in the order of the listing; none if nothing has its name any more.
    /// Throws like requireName().
    std::vector<tkcore::LongFileName> contents() const;

    /// Throws ExtractaParserException if its name leads to something else by now: programs that are
    /// given the name would not find what is here.
    void requireName() const;

private:
    tkcore::LongFileName directory;
    std::optional<tkcore::PrivateDirectory> ours;
};

}  // namespace velextracta
