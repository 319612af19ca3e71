#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// All that the stand-in's programs ask of the operating system itself. The texts are UTF-8 or,
// where the system allows it, any bytes.

namespace standin {

/// The path of a text, whatever its length, and the text of a path.
std::filesystem::path toPath(const std::string& text);
std::string pathText(const std::filesystem::path& path);

/// A file open for writing.
class WritableFile final {
public:
    enum class Mode { kReplace, kAppend };

    WritableFile(const std::string& path, Mode mode);
    ~WritableFile();
    WritableFile(const WritableFile&) = delete;
    WritableFile& operator=(const WritableFile&) = delete;

    /// Both are false on failure, lastFailure() then tells why. What is appended is written in one
    /// piece, so that the lines of processes that run side by side do not mix.
    [[nodiscard]] bool isOpen() const;
    bool write(std::string_view bytes);
    /// A full disk may be reported as late as here.
    bool close();

private:
    struct OpenFile;
    std::unique_ptr<OpenFile> file;
};

/// The system's text on why the last of these has failed.
std::string lastFailure();

/// Writes all of the bytes as they are; false on failure.
bool writeToStandardOutput(std::string_view bytes);

bool isStandardErrorATerminal();

unsigned long processNumber();

/// The path by which this program was started, links followed.
std::filesystem::path ownProgram();

[[noreturn]] void sleepForEver();

/// Ends this process by the signal or, where there are none, with exit code 128 + signal.
void endBySignal(int signal);

/// Starts a program and does not wait for it. In a session of its own nothing reaches it that is
/// sent to the programs of this terminal. Throws std::system_error.
enum class Session { kOurs, kItsOwn };
void start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
           Session session);

/// Goes on as another program with the arguments that main() was given, and ends as that one does.
/// Throws std::system_error.
[[noreturn]] void become(const std::filesystem::path& program, char** argv);

/// Throws std::system_error, always where the system has none.
void makeFifo(const std::filesystem::path& path);

/// The name of the database library's access to files that knows paths of any length; null: the
/// usual one does.
const char* databaseFileAccess();

}  // namespace standin
