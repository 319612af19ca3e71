#pragma once

#include <string>
#include <string_view>

namespace tkcore {

/// The wide form of a text in the system's narrow code page.
///
/// A byte that is not part of a valid character becomes a lone low surrogate (0xDC00 + byte), so
/// that narrow() returns exactly the original bytes.
std::wstring widen(std::string_view narrowText);

/// Appends the wide form to a text.
void appendWide(std::string_view narrowText, std::wstring& wideText);

/// Whether the text consists of valid characters of the code page.
bool isValidNarrow(std::string_view narrowText);

/// The narrow form of a wide text; the inverse of widen() for all results of widen().
std::string narrow(std::wstring_view wideText);

}  // namespace tkcore
