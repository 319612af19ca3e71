#include <gtest/gtest.h>

#include "archive/inside/EntryName.h"
#include "support/TestSystem.h"

namespace velextracta {
namespace {

TEST(EntryName, keepsThePathWithoutWhatLeadsOutOfAFolder) {
    struct Case {
        const char* path;
        const char* fullName;
        const char* leaf;
        On system = On::kBoth;
    };
    constexpr Case kCases[] = {
        {"/data/extract17/layer.txt", "data/extract17/layer.txt", "layer.txt"},
        {"layer.txt", "layer.txt", "layer.txt"},
        {"//data//layer.txt", "data/layer.txt", "layer.txt"},
        {"./../data/./a/../layer.txt", "data/a/layer.txt", "layer.txt"},
        {"/data/extract17/", "data/extract17", "extract17"},
        {"C:/data/layer.txt", "data/layer.txt", "layer.txt"},
        {"c:\\data", "\\data", "\\data", On::kPosix},
        {"c:\\data", "data", "data", On::kWindows},
        {R"(\\?\c:\data\layer.txt)", "data/layer.txt", "layer.txt", On::kWindows},
        {R"(\\?\UNC\server\a\..\b)", "server/a/b", "b", On::kWindows},
        {"/a\\b/..c/.d", "a\\b/..c/.d", ".d", On::kPosix},
        {"d:layer", "d:layer", "d:layer"},
        {"/../.", "", ""},
        {"", "", ""},
    };
    for (const Case& row : kCases) {
        if (!isHere(row.system)) {
            continue;
        }
        EXPECT_EQ(entryName(row.path, true), row.fullName) << row.path;
        EXPECT_EQ(entryName(row.path, false), row.leaf) << row.path;
    }
}

}  // namespace
}  // namespace velextracta
