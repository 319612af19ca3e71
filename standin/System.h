#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// All system functions that the stand-in's programs need. Texts are UTF-8 or, where the system
// allows it, any bytes.

namespace standin {

/// The path, of any length, of a text, and the text of a path.
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

    /// Both return false on failure, with the reason in lastFailure(). An appended text is one
    /// write, so that lines of several processes do not mix.
    [[nodiscard]] bool isOpen() const;
    bool write(std::string_view bytes);
    /// A full disk may be reported only here.
    bool close();

private:
    struct OpenFile;
    std::unique_ptr<OpenFile> file;
};

/// The system's text for the last failure of these functions.
std::string lastFailure();

/// Writes all of the bytes as they are; false on failure.
bool writeToStandardOutput(std::string_view bytes);

bool isStandardErrorATerminal();

unsigned long processNumber();

/// The path by which this program was started, with links followed.
std::filesystem::path ownProgram();

[[noreturn]] void sleepForEver();

/// Ends this process by the signal or, on a system without signals, with exit code 128 + signal.
void endBySignal(int signal);

/// Starts a program and does not wait for it. In its own session it does not get the signals of
/// this terminal. Throws std::system_error.
enum class Session { kOurs, kItsOwn };
void start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
           Session session);

/// Continues as another program, with main()'s arguments, and ends as that program does. Throws
/// std::system_error.
[[noreturn]] void become(const std::filesystem::path& program, char** argv);

/// Throws std::system_error; always on a system without FIFOs.
void makeFifo(const std::filesystem::path& path);

/// The name of the database library's file access for paths of any length; null for the usual one.
const char* databaseFileAccess();

}  // namespace standin
