#pragma once

#include <clocale>
#include <ctime>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <archive.h>
#include <archive_entry.h>

struct ArchiveEntry final {
    std::string name;
    std::string bytes;
    std::time_t modificationTime = 0;
    unsigned mode = 0;
};

/// A number in so many bytes of a file.
inline unsigned littleEndian(const std::string& file, std::size_t at, std::size_t size) {
    unsigned value = 0;
    while (size-- > 0) {
        value = value << 8U | static_cast<unsigned char>(file.at(at + size));
    }
    return value;
}

/// The entries of a zip archive in its order, read with a library that is not ours. Throws if the
/// archive is not complete.
inline std::vector<ArchiveEntry> readArchive(const std::filesystem::path& path) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    const std::unique_ptr<archive, int (*)(archive*)> reader(archive_read_new(), archive_read_free);
    archive_read_support_format_zip_seekable(reader.get());
    const auto check = [&](la_ssize_t result) {
        if (result < ARCHIVE_WARN) {
            throw std::runtime_error(archive_error_string(reader.get()));
        }
        return result;
    };
    check(archive_read_open_filename(reader.get(), path.string().c_str(), 1 << 16));
    std::vector<ArchiveEntry> entries;
    archive_entry* entry = nullptr;
    while (check(archive_read_next_header(reader.get(), &entry)) != ARCHIVE_EOF) {
        const char* narrow = archive_entry_pathname(entry);  // none if the locale lacks letters
        const std::filesystem::path name =
            narrow == nullptr ? archive_entry_pathname_w(entry) : std::filesystem::path(narrow);
        entries.push_back(
            {name.string(), "", archive_entry_mtime(entry), archive_entry_mode(entry)});
        char buffer[1 << 16];
        while (const la_ssize_t count =
                   check(archive_read_data(reader.get(), buffer, sizeof buffer))) {
            entries.back().bytes.append(buffer, static_cast<std::size_t>(count));
        }
    }
    return entries;
}
