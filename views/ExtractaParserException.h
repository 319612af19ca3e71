#pragma once

#include <stdexcept>
#include <string>

#include "tkcore/AString.h"

namespace velextracta {

/// The one exception type of this system: a run of extracta, or the reading of what it wrote,
/// failed. The message is narrow text.
class ExtractaParserException final : public std::runtime_error {
public:
    explicit ExtractaParserException(const char* message) : std::runtime_error(message) {}
    explicit ExtractaParserException(const std::string& message) : std::runtime_error(message) {}
    explicit ExtractaParserException(const tkcore::AString& message)
        : std::runtime_error(tkcore::VEL_ANSI(message)) {}
};

}  // namespace velextracta
