#include "standin/System.h"

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>

#include <windows.h>

namespace standin {
namespace {

/// Bytes that are not UTF-8 are changed; names on this system have none.
std::wstring wide(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}

std::string narrow(const std::wstring& text) {
    const std::u8string narrowText = std::filesystem::path(text).u8string();
    return {narrowText.begin(), narrowText.end()};
}

bool writeWhole(HANDLE handle, std::string_view bytes) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(handle, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce)),
                      &written, nullptr) == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

/// The process that has been started.
HANDLE startProcess(const std::filesystem::path& program, std::wstring line, DWORD flags) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, flags, nullptr,
                       nullptr, &startup, &started) == 0) {
        const DWORD code = GetLastError();
        throw std::system_error(static_cast<int>(code), std::system_category(), pathText(program));
    }
    CloseHandle(started.hThread);
    return started.hProcess;
}

}  // namespace

std::filesystem::path toPath(const std::string& text) {
    // A longer path needs the form without limit.
    constexpr std::size_t kMostAsItIs = 240;
    const std::wstring path = wide(text);
    std::wstring full(path.size() + MAX_PATH, L'\0');
    full.resize(
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.size() <= kMostAsItIs || full.size() > path.size() + MAX_PATH ||
        full.starts_with(L"\\\\?\\")) {
        return path;
    }
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::string pathText(const std::filesystem::path& path) {
    return narrow(path.native());
}

struct WritableFile::OpenFile {
    HANDLE handle = INVALID_HANDLE_VALUE;
};

WritableFile::WritableFile(const std::string& path, Mode mode)
    : file(std::make_unique<OpenFile>()) {
    // With only the right to append, each write goes to the present end of the file.
    const bool appends = mode == Mode::kAppend;
    file->handle =
        CreateFileW(toPath(path).c_str(), appends ? FILE_APPEND_DATA | SYNCHRONIZE : GENERIC_WRITE,
                    FILE_SHARE_READ | (appends ? FILE_SHARE_WRITE : 0), nullptr,
                    appends ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

WritableFile::~WritableFile() {
    close();
}

bool WritableFile::isOpen() const {
    return file->handle != INVALID_HANDLE_VALUE;
}

bool WritableFile::write(std::string_view bytes) {
    return writeWhole(file->handle, bytes);
}

bool WritableFile::close() {
    return !isOpen() || CloseHandle(std::exchange(file->handle, INVALID_HANDLE_VALUE)) != 0;
}

std::string lastFailure() {
    const DWORD code = GetLastError();
    wchar_t buffer[512];
    DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                code, 0, buffer, std::size(buffer), nullptr);
    while (size > 0 && buffer[size - 1] <= L' ') {
        --size;
    }
    return narrow({buffer, size});
}

bool writeToStandardOutput(std::string_view bytes) {
    return writeWhole(GetStdHandle(STD_OUTPUT_HANDLE), bytes);
}

bool isStandardErrorATerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

unsigned long processNumber() {
    return GetCurrentProcessId();
}

std::filesystem::path ownProgram() {
    std::wstring path(32768, L'\0');  // the longest there is
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

void sleepForEver() {
    while (true) {
        Sleep(INFINITE);
    }
}

void endBySignal(int signal) {
    constexpr UINT kSignalBase = 128;
    TerminateProcess(GetCurrentProcess(), kSignalBase + static_cast<UINT>(signal));
}

void start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
           Session session) {
    // No part of it has a quote or ends in a backslash.
    std::wstring line = L"\"" + program.native() + L"\"";
    for (const std::string& argument : arguments) {
        line += L" \"" + wide(argument) + L"\"";
    }
    const DWORD apart = DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP;
    CloseHandle(startProcess(program, line, session == Session::kItsOwn ? apart : 0));
}

void become(const std::filesystem::path& program, char** /*argv*/) {
    HANDLE process = startProcess(program, GetCommandLineW(), 0);
    DWORD code = 0;
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    ExitProcess(code);
}

void makeFifo(const std::filesystem::path& path) {
    throw std::system_error(ERROR_NOT_SUPPORTED, std::system_category(), pathText(path));
}

const char* databaseFileAccess() {
    return "win32-longpath";
}

}  // namespace standin
