#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tkcore {

/// Writes texts from a thread of its own, as a console may take none for as long as somebody has
/// selected text on it, and whoever writes there himself stands still meanwhile. Belongs to the
/// terminal's half for Windows, the only one that needs a thread outside the archive. A thread
/// that waits for the console ends with the process.
class ConsoleWriter final {
public:
    using Write = std::function<void(const std::wstring&)>;

    explicit ConsoleWriter(Write write);
    ~ConsoleWriter();  // waits for nobody
    ConsoleWriter(const ConsoleWriter&) = delete;
    ConsoleWriter& operator=(const ConsoleWriter&) = delete;

    /// Takes the place of what has been shown and is not yet written.
    void show(std::wstring line);
    /// Comes behind all that is not yet written, instead of what is shown.
    void print(const std::wstring& text);

    /// Until all is written, or for so long; false if that has not sufficed.
    bool waitFor(std::chrono::milliseconds patience);

private:
    struct Work;
    std::shared_ptr<Work> work;  // with the thread, which may outlive this object
};

}  // namespace tkcore
