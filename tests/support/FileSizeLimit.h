#pragma once

#include <csignal>

#include <sys/resource.h>

/// Plays a disk that is full beyond a file size; to be gone before the test program itself writes.
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t bytes) : olderHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &olderLimit);
        const rlimit limit{bytes, olderLimit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &olderLimit);
        std::signal(SIGXFSZ, olderHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*olderHandler)(int);
    rlimit olderLimit{};
};
