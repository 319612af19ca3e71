#pragma once

#include <string_view>

namespace tkcore {

/// The two outputs of the process itself.
enum class Stream { kOutput, kErrors };

/// Opens the null device for each standard stream that the program's caller has closed. Otherwise
/// the next files to be opened would become the standard streams.
void openMissingStreams() noexcept;

/// Writes the text as it is. Waits for the reader, but not after a request to end the program;
/// false if not all was written.
bool writeTo(Stream stream, std::string_view text) noexcept;

}  // namespace tkcore
