#pragma once

#include <string>
#include <string_view>

namespace tkcore {

/// Wide form of a text in the system's narrow code page.
///
/// A byte that is no part of a valid character becomes a lone low surrogate (0xDC00 + byte), so
/// that narrow() gives back exactly the bytes that came in.
std::wstring widen(std::string_view narrowText);

/// Appends the wide form to a text.
void appendWide(std::string_view narrowText, std::wstring& wideText);

/// Whether the text holds nothing but valid characters of the code page.
bool isValidNarrow(std::string_view narrowText);

/// Narrow form of a wide text; the inverse of widen() for everything that widen() made.
std::string narrow(std::wstring_view wideText);

}  // namespace tkcore
