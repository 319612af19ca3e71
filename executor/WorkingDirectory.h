#pragma once

#include "tkcore/LongFileName.h"

namespace velextracta {

/// The private directory of one run. Owned by the executor, which says when it is created and
/// removed; only a directory that this object has created is ever removed.
class WorkingDirectory final {
public:
    /// Creates "extract" + local wall-clock seconds since 1970 in the base, whose text ends in a
    /// separator, and removes the one before. False if that name is taken or cannot be created: it
    /// is then kept as the name all the same. Throws std::runtime_error if the local time cannot be
    /// told.
    bool createIn(const tkcore::LongFileName& base);

    /// False if it cannot be removed; nothing to remove is no failure.
    bool remove();

    const tkcore::LongFileName& name() const noexcept { return directory; }

private:
    tkcore::LongFileName directory;
    bool isOurs = false;
};

}  // namespace velextracta
