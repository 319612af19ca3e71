#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tkcore/text/AString.h"

namespace tkcore {

struct OpenFolder;

/// An absolute path: the one form in which paths go through the program. A relative text is taken
/// from the caller's current directory, an empty one is that directory; nothing else of the text is
/// changed. A relative text names no file where the current directory has been removed.
///
/// A file in() a directory that is held open (see PrivateDirectory) is reached through that
/// directory, whatever its name leads to by then.
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

    /// The last name of the path; empty if it ends in a separator.
    AString name() const;
    /// The last name from its last dot on; empty if it has none.
    AString extension() const;
    /// What the path without its last name leads to.
    LongFileName folder() const;
    /// A file of this name in the directory that the path leads to.
    LongFileName in(const AString& fileName) const;

    /// The same path, of a directory that is held open.
    LongFileName heldOpen(std::shared_ptr<const OpenFolder> directory) const;
    /// The open directory that name() is to be looked for in, null for none.
    const OpenFolder* openFolder() const noexcept { return isInFolder ? held.get() : nullptr; }

private:
    std::optional<AString> path;
    std::shared_ptr<const OpenFolder> held;  // this directory, or the one that the file is in
    bool isInFolder = false;
};

/// The path's text in the system's narrow code page.
inline std::string VEL_ANSI(const LongFileName& file) {
    return VEL_ANSI(file.FilePath());
}

/// Creates one directory; fails on anything that already has the name.
bool LFN_CreateDirectory(const LongFileName& directory);

bool LFN_IsExistingDirectory(const LongFileName& directory);

/// Removes a file, or a directory with all that it contains; follows no link.
bool LFN_Delete(const LongFileName& file);

}  // namespace tkcore
