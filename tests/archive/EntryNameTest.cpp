#include <gtest/gtest.h>

#include "archive/EntryName.h"

namespace velextracta {
namespace {

TEST(EntryName, keepsThePathWithoutWhatLeadsOutOfAFolder) {
    struct Case {
        const char* path;
        const char* fullName;
        const char* leaf;
    };
    constexpr Case kCases[] = {
        {"/data/extract17/layer.txt", "data/extract17/layer.txt", "layer.txt"},
        {"layer.txt", "layer.txt", "layer.txt"},
        {"//data//layer.txt", "data/layer.txt", "layer.txt"},
        {"./../data/./a/../layer.txt", "data/a/layer.txt", "layer.txt"},
        {"/data/extract17/", "data/extract17", "extract17"},
        {"C:/data/layer.txt", "data/layer.txt", "layer.txt"},
        {"c:\\data", "\\data", "\\data"},
        {"d:layer", "d:layer", "d:layer"},
        {"/a\\b/..c/.d", "a\\b/..c/.d", ".d"},
        {"/../.", "", ""},
        {"", "", ""},
    };
    for (const Case& row : kCases) {
        EXPECT_EQ(entryName(row.path, true), row.fullName) << row.path;
        EXPECT_EQ(entryName(row.path, false), row.leaf) << row.path;
    }
}

}  // namespace
}  // namespace velextracta
