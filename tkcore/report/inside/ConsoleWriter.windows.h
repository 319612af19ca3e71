#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tkcore {

/// Writes texts from a separate thread. A console blocks writers while somebody has selected text
/// on it; with this thread the run goes on. Used by the terminal's half for Windows. A thread that
/// waits for the console ends with the process.
class ConsoleWriter final {
public:
    using Write = std::function<void(const std::wstring&)>;

    explicit ConsoleWriter(Write write);
    ~ConsoleWriter();  // waits for nobody
    ConsoleWriter(const ConsoleWriter&) = delete;
    ConsoleWriter& operator=(const ConsoleWriter&) = delete;

    /// Shows the line; it replaces a line that is shown but not yet written.
    void show(std::wstring line);
    /// Prints the text after the texts that are not yet written, and drops the shown line.
    void print(const std::wstring& text);

    /// Waits until everything is written, but not longer than that; false if the time was too
    /// short.
    bool waitFor(std::chrono::milliseconds patience);

private:
    struct Work;
    std::shared_ptr<Work> work;  // with the thread, which may outlive this object
};

}  // namespace tkcore
