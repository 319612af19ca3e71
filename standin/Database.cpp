#include "standin/Database.h"

#include <utility>

#include "standin/System.h"

namespace standin {

Database::Database(std::string databasePath, int flags) : path(std::move(databasePath)) {
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(pathText(toPath(path)).c_str(), &opened, flags, databaseFileAccess());
    connection.reset(opened);
    if (result != SQLITE_OK) {
        fail();
    }
    // On Windows processes that begin to read at the same moment lock each other out.
    constexpr int kPatienceMilliseconds = 60'000;
    sqlite3_busy_timeout(opened, kPatienceMilliseconds);
}

void Database::fail() const {
    throw DatabaseError(path + ": " +
                        (connection ? sqlite3_errmsg(connection.get()) : "out of memory"));
}

void Database::execute(const std::string& sql) {
    if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

Statement::Statement(const Database& owner, const std::string& sql) : database(owner) {
    sqlite3_stmt* prepared = nullptr;
    const int result = sqlite3_prepare_v2(owner.get(), sql.c_str(), static_cast<int>(sql.size()),
                                          &prepared, nullptr);
    statement.reset(prepared);
    if (result != SQLITE_OK) {
        owner.fail();
    }
}

void Statement::bind(int position, std::string_view text) {
    // A null pointer would bind NULL, which equals nothing.
    const char* bytes = text.empty() ? "" : text.data();
    if (sqlite3_bind_text64(statement.get(), position, bytes, text.size(), SQLITE_STATIC,
                            SQLITE_UTF8) != SQLITE_OK) {
        database.fail();
    }
}

bool Statement::step() {
    const int result = sqlite3_step(statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        database.fail();
    }
    return result == SQLITE_ROW;
}

void Statement::rewind() {
    sqlite3_reset(statement.get());
    sqlite3_clear_bindings(statement.get());
}

std::string_view Statement::text(int column) const {
    // Read a blob, not a text, so that bytes that are not UTF-8 are not converted.
    const void* bytes = sqlite3_column_blob(statement.get(), column);
    const int size = sqlite3_column_bytes(statement.get(), column);
    return bytes == nullptr
               ? std::string_view()
               : std::string_view(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

}  // namespace standin
