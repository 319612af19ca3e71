#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "standin/Database.h"
#include "standin/DesignTables.h"

namespace standin {

// A field name as a template argument: a name that the table does not have fails to compile.
template <std::size_t kSize>
struct FieldName {
    // Not explicit, so that a literal converts to a field name.
    consteval FieldName(const char (&literal)[kSize]) {  // NOLINT(modernize-avoid-c-arrays)
        std::copy_n(literal, kSize, text.begin());
    }
    [[nodiscard]] constexpr std::string_view view() const { return {text.data(), kSize - 1}; }
    std::array<char, kSize> text{};
};

// Creates the table of one view and writes its rows, one at a time.
template <const auto& kTable>
class TableWriter final {
public:
    explicit TableWriter(Database& database) : statement(createTable(database), insertSql()) {}

    template <FieldName kName>
    void set(std::string_view value) {
        constexpr std::size_t index = indexOf(kName.view());
        static_assert(index < kTable.fields.size(), "the view has no such field");
        replace(values[index], value);
    }

    // The named field and those that follow it in the table.
    template <FieldName kName>
    void setFrom(std::initializer_list<std::string_view> texts) {
        auto* value = &values.at(indexOf(kName.view()));
        for (const std::string_view text : texts) {
            replace(*value++, text);
        }
    }

    // Inserts a whole row in the order of the table.
    template <typename... Texts>
    void insertRow(const Texts&... texts) {
        static_assert(sizeof...(Texts) == kTable.fields.size(), "a row has a value for each field");
        auto* value = values.data();
        (replace(*value++, texts), ...);
        insert();
    }

    // Fields that are not set stay NULL.
    void insert() {
        for (std::size_t index = 0; index < values.size(); ++index) {
            if (!values[index].empty()) {
                statement.bind(static_cast<int>(index + 1), values[index]);
            }
        }
        statement.step();
        statement.rewind();
        for (std::string& value : values) {
            value.clear();
        }
    }

private:
    static void replace(std::string& value, std::string_view text) {
        value.clear();
        value.append(text);
    }

    static constexpr std::size_t indexOf(std::string_view name) {
        std::size_t index = 0;
        while (index < kTable.fields.size() && kTable.fields[index] != name) {
            ++index;
        }
        return index;
    }

    static const Database& createTable(Database& database) {
        std::string columns;
        for (const std::string_view field : kTable.fields) {
            columns += (columns.empty() ? "" : ", ") + quotedName(field) + " TEXT";
        }
        database.execute("CREATE TABLE " + quotedName(kTable.keyword) + " (" + columns + ")");
        return database;
    }

    static std::string insertSql() {
        std::string parameters = "?";
        for (std::size_t index = 1; index < kTable.fields.size(); ++index) {
            parameters += ", ?";
        }
        return "INSERT INTO " + quotedName(kTable.keyword) + " VALUES (" + parameters + ")";
    }

    Statement statement;
    std::array<std::string, kTable.fields.size()> values;
};

}  // namespace standin
