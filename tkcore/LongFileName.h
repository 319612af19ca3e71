#pragma once

#include <optional>

#include "tkcore/AString.h"

namespace tkcore {

/// An absolute path. A relative text is taken from the caller's current directory, an empty one
/// is that directory; nothing else of the text is changed.
class LongFileName final {
public:
    /// Not initialised: names no file.
    LongFileName() = default;
    explicit LongFileName(const AString& text);

    bool IsInitialized() const noexcept { return path.has_value(); }

    /// Gives the path a trailing separator, so that a file name can be appended to its text.
    void MakeItDirectory();

    /// Whether an existing directory has this name.
    bool IsDirectory() const;

    /// The path's text; empty while not initialised.
    const AString& FilePath() const noexcept;

private:
    std::optional<AString> path;
};

/// Creates one directory; fails on anything that already has the name.
bool LFN_CreateDirectory(const LongFileName& directory);

bool LFN_IsExistingDirectory(const LongFileName& directory);

/// Removes a file, or a directory with all that it contains.
bool LFN_Delete(const LongFileName& file);

}  // namespace tkcore
