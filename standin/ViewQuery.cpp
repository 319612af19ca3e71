#include "standin/ViewQuery.h"

#include <algorithm>
#include <stdexcept>

namespace standin {
namespace {

std::vector<std::string> columnsOf(const Database& design, const ViewBlock& block) {
    // Compare the name as bytes: SQL itself ignores case in names.
    Statement query(design,
                    "SELECT c.name FROM sqlite_master AS t, pragma_table_info(t.name) AS c "
                    "WHERE t.type = 'table' AND t.name = ? ORDER BY c.cid");
    query.bind(1, block.keyword);
    std::vector<std::string> columns;
    while (query.step()) {
        columns.emplace_back(query.text(0));
    }
    if (columns.empty()) {
        throw ControlFileError(block.lineNumber, "the design has no view " + block.keyword);
    }
    return columns;
}

void requireColumn(const ViewBlock& block, const std::vector<std::string>& columns,
                   const std::string& field) {
    if (std::find(columns.begin(), columns.end(), field) == columns.end()) {
        throw ControlFileError(block.lineNumber,
                               "the view " + block.keyword + " has no field " + field);
    }
}

// A field that a record does not have compares like an empty one.
std::string comparable(const std::string& field) {
    return "COALESCE(CAST(" + quotedName(field) + " AS TEXT), '')";
}

std::string groupSql(const ConditionGroup& group) {
    std::string sql;
    for (const Condition& condition : group) {
        sql += sql.empty() ? "(" : " AND ";
        sql += comparable(condition.field);
        sql += condition.comparison == Comparison::kEqual ? " = ?" : " != ?";
    }
    return sql + ")";
}

std::string querySql(const ViewBlock& block, const std::vector<std::string>& columns) {
    std::string selected;
    std::string order;
    for (const std::string& field : block.fields.empty() ? columns : block.fields) {
        requireColumn(block, columns, field);
        selected += (selected.empty() ? "" : ", ") + quotedName(field);
        if (field.ends_with("_SORT") && !block.fields.empty()) {
            order += comparable(field) + ", ";
        }
    }
    std::string filter;
    for (const ConditionGroup& group : block.alternatives) {
        for (const Condition& condition : group) {
            requireColumn(block, columns, condition.field);
        }
        filter += (filter.empty() ? " WHERE " : " OR ") + groupSql(group);
    }
    return "SELECT " + selected + " FROM " + quotedName(block.keyword) + filter + " ORDER BY " +
           order + "rowid";
}

void appendField(std::string& record, std::string_view value) {
    if (value.find('!') != std::string_view::npos || value.find("\r\n") != std::string_view::npos) {
        throw std::runtime_error("a view file cannot hold the value \"" + std::string(value) +
                                 "\"");
    }
    record.append(value) += '!';
}

std::string recordOf(std::string_view tag, const std::vector<std::string>& values) {
    std::string record(tag);
    for (const std::string& value : values) {
        appendField(record, value);
    }
    return record;
}

}  // namespace

ViewQuery::ViewQuery(const Database& design, const ViewBlock& block)
    : ViewQuery(design, block, columnsOf(design, block)) {}

ViewQuery::ViewQuery(const Database& design, const ViewBlock& block,
                     const std::vector<std::string>& columns)
    : fields(block.fields.empty() ? columns : block.fields),
      statement(design, querySql(block, columns)) {
    int position = 0;
    for (const ConditionGroup& group : block.alternatives) {
        for (const Condition& condition : group) {
            statement.bind(++position, condition.value);
        }
    }
}

void ViewQuery::writeTo(const std::string& outputPath, const std::vector<std::string>& jFields,
                        OutputShape shape) {
    if (shape == OutputShape::kNone) {
        return;
    }
    OutputFile output(outputPath);
    const std::string_view lineEnd = shape == OutputShape::kBareLineFeeds ? "\n" : "\r\n";
    const std::string header = recordOf("A!", fields);
    if (shape == OutputShape::kHalfHeader) {
        output.write(std::string_view(header).substr(0, header.size() / 2));
    } else if (shape != OutputShape::kEmpty) {
        output.write(header);
        output.write(lineEnd);
    }
    if (shape == OutputShape::kWhole || shape == OutputShape::kBareLineFeeds) {
        std::string record = recordOf("J!", jFields).append(lineEnd);
        output.write(record);
        const int fieldCount = static_cast<int>(fields.size());
        while (statement.step()) {
            record = "S!";
            for (int column = 0; column < fieldCount; ++column) {
                appendField(record, statement.text(column));
            }
            output.write(record.append(lineEnd));
        }
    }
    output.close();
}

std::vector<std::string> designRecord(const Database& design, const std::string& designPath) {
    std::vector<std::string> values{designPath};
    Statement hasProperties(design, "SELECT 1 FROM sqlite_master WHERE name = 'design'");
    if (hasProperties.step()) {
        Statement properties(design, "SELECT value FROM design ORDER BY rowid");
        while (properties.step()) {
            values.emplace_back(properties.text(0));
        }
    }
    return values;
}

}  // namespace standin
