#pragma once

#include <string_view>

namespace tkcore {

/// The two outputs of the process itself.
enum class Stream { kOutput, kErrors };

/// Gives the process those of its standard streams that its caller has left closed, as ones that
/// lead nowhere: else the first files that are opened would be taken for them.
void openMissingStreams() noexcept;

/// Writes the text as it is. While nobody reads it waits, but no longer than until a request to end
/// the program has come; false if not all has been written.
bool writeTo(Stream stream, std::string_view text) noexcept;

}  // namespace tkcore
