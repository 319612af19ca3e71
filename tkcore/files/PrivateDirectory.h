#pragma once

#include <memory>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// A directory that its owner makes for himself and removes again; held open in between, and known
/// by that and not by its name, which others may give to something else. Every failure is a
/// std::system_error that names the path. Its owner removes it; dropped, it stays.
class PrivateDirectory final {
public:
    /// Makes it, with all rights for its owner; fails on anything that has the name already.
    explicit PrivateDirectory(const LongFileName& path);
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// Its path; files in() it are reached through the open directory.
    [[nodiscard]] const LongFileName& path() const noexcept { return heldPath; }

    /// What its name leads to by now: this directory, nothing that the system would tell of, or
    /// something else.
    enum class Name { kOurs, kNothing, kOther };
    [[nodiscard]] Name name() const;

    /// The names of what it contains, not of what is further down, in the order of the listing.
    [[nodiscard]] std::vector<AString> contents() const;

    /// Removes it with all that it contains, wherever it has been moved by then; follows no link
    /// and touches nothing else.
    void remove();

private:
    struct System;

    LongFileName heldPath;
    std::unique_ptr<System> system;
};

}  // namespace tkcore
