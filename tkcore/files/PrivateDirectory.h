#pragma once

#include <memory>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// A directory that its owner creates and removes. It is held open in between and known by that,
/// not by its name, because others may give the name to something else. Every failure is a
/// std::system_error that names the path. The destructor does not remove it.
class PrivateDirectory final {
public:
    /// Creates it, with all rights for its owner; fails if anything has the name already.
    explicit PrivateDirectory(const LongFileName& path);
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// Its path. Files in() it are in the open directory.
    [[nodiscard]] const LongFileName& path() const noexcept { return heldPath; }

    /// What its name leads to now: this directory, nothing that the system shows, or something
    /// else.
    enum class Name { kOurs, kNothing, kOther };
    [[nodiscard]] Name name() const;

    /// The names of its direct entries, in the order of the listing.
    [[nodiscard]] std::vector<AString> contents() const;

    /// Removes it with its contents, wherever it has been moved by then. Follows no link and
    /// touches nothing else.
    void remove();

private:
    struct System;

    LongFileName heldPath;
    std::unique_ptr<System> system;
};

}  // namespace tkcore
