#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tkcore/text/AString.h"

namespace tkcore {

struct OpenFolder;

/// An absolute path: the only type for paths inside the program. A relative text starts from the
/// caller's current directory; an empty text means that directory. Nothing else of the text is
/// changed. If the current directory has been removed, a relative text names no file.
///
/// If a path isReserved(), nothing is found and nothing is written: looking and writing must never
/// reach two different files.
///
/// A file in() a directory that is held open (see PrivateDirectory) is in that directory, whatever
/// the directory's name leads to by then.
class LongFileName final {
public:
    /// An uninitialised path, which names no file.
    LongFileName() = default;
    explicit LongFileName(const AString& text);

    bool IsInitialized() const noexcept { return path.has_value(); }

    /// Whether the system would read the path as something else: a device, a part of a file or,
    /// because it drops some characters at the end of a name, another file.
    bool isReserved() const;

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
    /// The path without its last name.
    LongFileName folder() const;
    /// A file of this name in the directory that the path leads to.
    LongFileName in(const AString& fileName) const;

    /// The same path, with the open directory that it leads to.
    LongFileName heldOpen(std::shared_ptr<const OpenFolder> directory) const;
    /// The open directory in which to look for name(); null for none.
    const OpenFolder* openFolder() const noexcept { return isInFolder ? held.get() : nullptr; }

private:
    std::optional<AString> path;
    std::shared_ptr<const OpenFolder> held;  // this directory, or the file's
    bool isInFolder = false;
};

/// The path of a user's text, on the command line or in a variable; no path for an empty text.
/// Every text of a user becomes a path here.
LongFileName userPath(const AString& text);

/// The path's text in the system's narrow code page.
inline std::string VEL_ANSI(const LongFileName& file) {
    return VEL_ANSI(file.FilePath());
}

/// Creates one directory; fails if anything has the name already.
bool LFN_CreateDirectory(const LongFileName& directory);

bool LFN_IsExistingDirectory(const LongFileName& directory);

/// Removes a file, or a directory with its contents; follows no link.
bool LFN_Delete(const LongFileName& file);

}  // namespace tkcore
