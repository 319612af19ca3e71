#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include <archive.h>
#include <archive_entry.h>

/// The entries of a zip archive, bytes by name, read with another library than the one that
/// writes our archives. Throws if it is not a whole archive.
inline std::map<std::string, std::string> readArchive(const std::filesystem::path& path) {
    const std::unique_ptr<archive, int (*)(archive*)> reader(archive_read_new(), archive_read_free);
    archive_read_support_format_zip(reader.get());
    const auto check = [&](la_ssize_t result) {
        if (result < ARCHIVE_OK) {
            throw std::runtime_error(archive_error_string(reader.get()));
        }
        return result;
    };
    check(archive_read_open_filename(reader.get(), path.c_str(), 1 << 16));
    std::map<std::string, std::string> entries;
    archive_entry* entry = nullptr;
    while (check(archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK) {
        std::string& bytes = entries[archive_entry_pathname(entry)];
        char buffer[1 << 16];
        while (const la_ssize_t count =
                   check(archive_read_data(reader.get(), buffer, sizeof buffer))) {
            bytes.append(buffer, static_cast<std::size_t>(count));
        }
    }
    return entries;
}
