#include <algorithm>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <libdeflate.h>

#include "archive/inside/PieceDeflater.h"
#include "archive/inside/ZipContainer.h"
#include "support/ProgramRun.h"
#include "support/TemporaryDirectory.h"

namespace velextracta {
namespace {

constexpr std::uint64_t kMark = kZip64Mark;
constexpr std::uint32_t kPermissions = 0644;
const std::string kLast = "last";  // name and contents of each archive's last entry

/// Commands of other programs that list an archive's entries, a line each, and read the last one.
constexpr struct {
    const char* list;
    const char* read;
} kPrograms[] = {
    {"unzip -l out.zip", "unzip -p out.zip last"},
    {"7z l out.zip", "7z e -so out.zip last"},
    {"bsdtar -tvf out.zip", "bsdtar -xOf out.zip last"},
    {"python3 -m zipfile -l out.zip",
     R"(python3 -c 'import zipfile; print(zipfile.ZipFile("out.zip").read("last"))')"}};

std::uint32_t checksumOf(const std::string& bytes) {
    return libdeflate_crc32(0, bytes.data(), bytes.size());
}

/// Archives at the limits of the format, read by other programs. They read every header, but not
/// the bytes of very large entries; scripts/check-archive-limits makes them read those.
class ZipLimits : public testing::Test {
protected:
    /// Fast if each call asks for more zeros than the one before.
    std::uint32_t checksumOfZeros(std::uint64_t size) {
        if (size < zerosCounted) {
            zerosCounted = zerosChecksum = 0;
        }
        while (zerosCounted < size) {
            const std::uint64_t step = std::min<std::uint64_t>(size - zerosCounted, zeros.size());
            zerosChecksum = libdeflate_crc32(zerosChecksum, zeros.data(), step);
            zerosCounted += step;
        }
        return zerosChecksum;
    }
    /// A piece of so many zeros.
    std::vector<std::byte> deflatedPiece(std::size_t size) const {
        Piece piece;
        piece.original = std::as_bytes(std::span(zeros)).first(size);
        PieceDeflater(1).work(piece);
        return piece.deflated;
    }
    static void store(ZipContainer& zip, const std::string& name, const std::string& bytes,
                      std::uint64_t mostSize) {
        zip.begin({name, 0, kPermissions}, ZipMethod::kStored, mostSize);
        zip.write(std::as_bytes(std::span(bytes)));
        zip.end(bytes.size(), checksumOf(bytes));
    }
    std::string outputOf(const std::string& command) const {
        const Outcome outcome = runProgram({{"/bin/sh", "-c", command}, {}, folder.path(), {}});
        EXPECT_EQ(outcome.exitCode, 0) << command;
        EXPECT_EQ(outcome.errors, "") << command;
        EXPECT_EQ(outcome.output.find("Error"), std::string::npos) << command << outcome.output;
        return outcome.output;
    }
    /// Expects each program to list so many entries, one of them of that size, without complaint.
    void expectListed(std::size_t entries, std::uint64_t size) const {
        const std::string word = ' ' + std::to_string(size) + ' ';
        for (const auto& [list, read] : kPrograms) {
            std::istringstream lines(outputOf(list));
            std::size_t listed = 0;
            std::size_t ofThatSize = 0;
            for (std::string line; std::getline(lines, line);) {
                const bool isEntry = line.find("entry") != std::string::npos;
                listed += isEntry || line.find(kLast) != std::string::npos;
                ofThatSize += isEntry && (' ' + line + ' ').find(word) != std::string::npos;
            }
            EXPECT_EQ(listed, entries) << list;
            EXPECT_GE(ofThatSize, 1U) << list << size;
        }
    }
    void expectLastIsRead() const {
        for (const auto& [list, read] : kPrograms) {
            EXPECT_NE(outputOf(read).find(kLast), std::string::npos) << read;
        }
    }

    const std::string zeros = std::string(Piece::kMostBytes, '\0');
    std::uint64_t zerosCounted = 0;
    std::uint32_t zerosChecksum = 0;
    const TemporaryDirectory folder;
    const tkcore::LongFileName output{tkcore::AString((folder / "out.zip").string())};
};

class ZipLimitsOf : public ZipLimits, public testing::WithParamInterface<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Entries, ZipLimitsOf, testing::Range<std::size_t>(65'534, 65'538));

TEST_P(ZipLimitsOf, soManyEntries) {
    ZipContainer zip(output);
    for (std::size_t number = 1; number < GetParam(); ++number) {
        store(zip, "entry" + std::to_string(number), "S!", 2);
    }
    store(zip, kLast, kLast, kLast.size());
    zip.finish([] {});
    expectListed(GetParam(), 2);
}

TEST_F(ZipLimits, ofTheSizeOfAnEntry) {
    const auto piece = deflatedPiece(zeros.size());
    for (const std::uint64_t size : std::initializer_list<std::uint64_t>{
             0xEFFFFFFF, 0xF0000001, 0xFF000001, kMark - 1, kMark, kMark + 1}) {
        ZipContainer zip(output);
        zip.begin({"entry", 0, kPermissions}, ZipMethod::kDeflated, size);
        for (std::uint64_t rest = size / zeros.size(); rest > 0; --rest) {
            zip.write(piece);
        }
        zip.write(deflatedPiece(size % zeros.size()));
        zip.write(kDeflateEnd);
        zip.end(size, checksumOfZeros(size));
        store(zip, "entryOfAFileThatShrinks", "S!", size);
        store(zip, kLast, kLast, kLast.size());
        zip.finish([] {});
        expectListed(3, size);
        expectLastIsRead();
    }
}

/// The file has a hole before the last entry, so the test need not write the bytes.
TEST_F(ZipLimits, ofTheOffsetOfAnEntryOrTheDirectory) {
    ZipHeader first{{"entry", 0, kPermissions}, ZipMethod::kStored};
    ZipHeader last{{kLast, 0, kPermissions}, ZipMethod::kStored};
    last.size = last.packedSize = kLast.size();
    last.checksum = checksumOf(kLast);
    const std::uint64_t firstHeader = localHeader(first).size();
    const std::uint64_t lastEntry = localHeader(last).size() + kLast.size();
    // On the limit: the directory, the last entry, the size of the first.
    for (const std::uint64_t offset :
         {kMark - 1 - lastEntry, kMark - lastEntry, kMark - 1, kMark, kMark + firstHeader}) {
        last.offset = offset;
        first.size = first.packedSize = offset - firstHeader;
        first.checksum = checksumOfZeros(first.size);
        std::ofstream file(folder / "out.zip", std::ios::binary);
        file << localHeader(first);
        file.seekp(static_cast<std::streamoff>(offset));
        const std::string directory = directoryHeader(first) + directoryHeader(last);
        file << localHeader(last) << kLast << directory
             << endRecords(2, offset + lastEntry, directory.size()) << std::flush;
        expectListed(2, first.size);
        expectLastIsRead();
    }
}

}  // namespace
}  // namespace velextracta
