#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tkcore/text/AString.h"

namespace tkcore {

/// A run of extracta failed, or its output could not be read. The message is narrow text of any
/// bytes; what() shows it up to its first NUL.
class ExtractaParserException final : public std::runtime_error {
public:
    explicit ExtractaParserException(const char* message)
        : ExtractaParserException(std::string(message)) {}
    explicit ExtractaParserException(const AString& message)
        : ExtractaParserException(VEL_ANSI(message)) {}
    // All copies share one text: it may be the whole output of an extractor.
    explicit ExtractaParserException(std::string message)
        : std::runtime_error(""), text(std::make_shared<std::string>(std::move(message))) {}

    const char* what() const noexcept override { return text->c_str(); }
    const std::string& message() const noexcept { return *text; }

private:
    std::shared_ptr<const std::string> text;
};

/// The message of an exception; that of an ExtractaParserException in full, not cut off at a NUL.
inline std::string_view messageOf(const std::exception& exception) noexcept {
    const auto* ours = dynamic_cast<const ExtractaParserException*>(&exception);
    return ours != nullptr ? std::string_view(ours->message()) : exception.what();
}

}  // namespace tkcore
