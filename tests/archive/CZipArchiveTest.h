#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "archive/CZipArchive.h"
#include "archive/inside/Piece.h"
#include "support/Archive.h"
#include "support/Contents.h"
#include "support/TemporaryDirectory.h"

namespace velextracta {

namespace fs = std::filesystem;

inline constexpr std::size_t kPiece = Piece::kMostBytes;

class CZipArchiveTest : public testing::Test {
protected:
    void pack(const std::vector<fs::path>& paths, unsigned threads = 3,
              int level = CZipArchive::kDefaultLevel,
              const std::function<void(std::uint64_t)>& listener = {}) {
        CZipArchive zip(threads);
        zip.reportProgressTo(listener);
        zip.reportDoubtsTo([this](const std::string& doubt) { doubts.push_back(doubt); });
        zip.Open(output.string(), CZipArchive::kCreate, 0);
        for (const fs::path& path : paths) {
            zip.AddNewFile(path.string(), level, true, CZipArchive::kSafeSmartness, 65536);
        }
        zip.Close(CZipArchive::kNormalClose, false);
    }
    /// The path without the part before its first folder, with "/" between its names.
    static std::string entryNameOf(const fs::path& path) {
        return path.relative_path().generic_string();
    }
    /// A little-endian field of the central header of an archive's only entry.
    unsigned centralField(std::size_t offset, std::size_t bytes) const {
        const std::string zip = readFile(output);
        return littleEndian(zip, zip.find("PK\x01\x02") + offset, bytes);
    }

    std::vector<std::string> doubts;
    TemporaryDirectory folder;
    const fs::path output = folder / "out.vlx";
    const fs::path input = folder / "view.txt";
};

}  // namespace velextracta
