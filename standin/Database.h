#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace standin {

class DatabaseError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Database final {
public:
    // The flags are those of sqlite3_open_v2. Opening reads nothing: if the file is no database,
    // the first statement fails.
    Database(std::string path, int flags);

    void execute(const std::string& sql);
    [[nodiscard]] sqlite3* get() const { return connection.get(); }
    [[noreturn]] void fail() const;

private:
    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };
    std::string path;
    std::unique_ptr<sqlite3, Close> connection;
};

// A prepared statement; must not outlive its database.
class Statement final {
public:
    Statement(const Database& database, const std::string& sql);

    // Positions count from 1. The text is not copied and must stay until the statement is rewound.
    void bind(int position, std::string_view text);
    bool step();  // true while there is a row
    // Prepares the statement for another execution and sets every parameter to NULL.
    void rewind();
    // Columns count from 0; NULL reads as the empty text. Valid until the next step.
    [[nodiscard]] std::string_view text(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };
    const Database& database;
    std::unique_ptr<sqlite3_stmt, Finalize> statement;
};

// A name in SQL's quotes. Only for names of letters, digits and underscores.
inline std::string quotedName(std::string_view name) {
    return '"' + std::string(name) + '"';
}

}  // namespace standin
