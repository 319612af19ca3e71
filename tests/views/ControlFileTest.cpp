#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "views/ExtractaViewControl.h"

using namespace velextracta;
namespace fs = std::filesystem;
using tkcore::AString;

namespace {

std::string controlFile(const ViewSet& views, const std::vector<AString>& nets) {
    std::ostringstream text;
    EXPECT_TRUE(WriteControlFile(text, views, nets));
    return text.str();
}

ViewSet only(ViewType viewType) {
    return ViewSet(std::uint64_t{1} << (static_cast<unsigned>(viewType) & 31U));
}

/// Expects the block that docs/EXTRACTOR.md shows, or writes it for scripts/update-documents.
std::string documented(const std::string& name, const std::string& block) {
    const fs::path file = fs::path(CONTROL_FILES) / (name + ".txt");
    if (std::getenv("VELEXTRACTA_UPDATE_DOCUMENTS") != nullptr) {
        writeFile(file, block);
    }
    EXPECT_EQ(block, readFile(file)) << name;
    return block;
}

TEST(ControlFile, isForEachSelectionTheOneThatExtractaIsUsedTo) {
    for (const ViewSet& views : {kStandardViews, kCellViews}) {
        std::string blocks;
        for (std::int32_t n = 0; n < views.GetCount(); ++n) {
            const ViewType view = views.GetAt(n);
            blocks += documented(VEL_ANSI(ViewTypeName(view)), controlFile(only(view), {}));
        }
        EXPECT_EQ(controlFile(views, {}), blocks);
    }
}

TEST(ControlFile, isForEachPartOfConnectivityTheDocumentedOne) {
    const auto block = [](const ExtractaViewDef& definition) {
        std::ostringstream text;
        WriteViewBlock(definition, text);
        return text.str();
    };
    documented("connnets", block(MakeNetListDef({})));
    documented("conn0_GND_CONDUCTOR_ETCH",
               block(MakeNetClassDef("GND", connectivityClassGroups().front())));
    documented("connremainder",
               block({ViewType::conn, {"GND", "VDD_CORE", "VDDQ", "VDD_IO"}, true}));
    documented("fullgeo-of-two-nets", block({ViewType::fullgeo, {"GND", "VDD_CORE"}, false}));
}

TEST(ControlFile, repeatsTheConditionsBehindEachAlternative) {
    const std::string common =
        "\r\n\tRAT_CONNECTED != 'YES'\r\n\tRAT_CONNECTED != 'NO'\r\n\tNET_NAME != ''";
    const std::string twoNets = "CONNECTIVITY\r\n\r\n\tNET_NAME ='A'" + common +
                                "\r\n\tOR\r\n\tNET_NAME ='B'" + common +
                                "\r\n\r\n\tNET_NAME_SORT\r\n";
    EXPECT_EQ(controlFile(only(ViewType::conn), {"A", "B"}).substr(0, twoNets.size()), twoNets);
    std::string oneNet = "CONNECTIVITY\r\n\r\n";
    for (const char* name : {"CONDUCTOR", "ETCH", "PIN", "VIA CLASS"}) {
        oneNet += oneNet.ends_with("'A'") ? "\r\n\tOR\r\n" : "";
        oneNet += std::string("\tCLASS = ") + name + common + "\r\n\tNET_NAME ='A'";
    }
    EXPECT_EQ(controlFile(only(ViewType::conn), {"A"}).substr(0, oneNet.size()), oneNet);
}

TEST(ControlFile, isEmptyForNoViewsAndRefusedWithoutAnOpenFile) {
    EXPECT_EQ(controlFile(ViewSet(), {}), "");
    std::ofstream closed;
    EXPECT_FALSE(WriteControlFile(closed, kStandardViews, {}));
}

TEST(ViewFile, isNamedByTypeAndSuffixInTheOrderOfTheBlocks) {
    EXPECT_EQ(MakeViewFileName(ViewType::conn, "nets"), "connnets.txt");
    std::vector<ActiveView> files;
    const tkcore::LongFileName folder(AString("run/"));
    CollectViewFiles(kCellViews, folder, files);
    ASSERT_EQ(files.size(), 4U);
    EXPECT_EQ(files[0].path, folder.FilePath() + "layer.txt");
    EXPECT_EQ(files[2].path, folder.FilePath() + "cconn.txt");
    EXPECT_EQ(files[2].viewType, ViewType::cconn);
}

}  // namespace
