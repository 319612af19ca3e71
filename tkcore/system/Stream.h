#pragma once

#include <string_view>

namespace tkcore {

/// The two outputs of the process itself.
enum class Stream { kOutput, kErrors };

/// Opens those standard streams that the caller of the program has closed, on the null device. Else
/// the next files that are opened would become the standard streams.
void openMissingStreams() noexcept;

/// Writes the text as it is. While nobody reads it waits, but no longer than until a request to end
/// the program has come; false if not all has been written.
bool writeTo(Stream stream, std::string_view text) noexcept;

}  // namespace tkcore
