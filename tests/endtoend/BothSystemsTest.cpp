#include "endtoend/EndToEnd.h"
#include "support/Contents.h"

namespace fs = std::filesystem;

namespace {

/// The programs for Windows, and those for this system, from the same sources.
class BothSystems : public EndToEnd {
protected:
    struct Member final {
        std::string bytes;
        unsigned mode;
        std::string packed;  // deflated, behind all of its header but times and name
    };

    /// The contents of the archive in the test's directory, by name without folder.
    std::map<std::string, Member> members() const {
        const std::string zip = readFile(directory / "out.vlx");
        std::map<std::string, Member> found;
        std::size_t at = 0;
        for (const ArchiveEntry& entry : readArchive(directory / "out.vlx")) {
            const std::size_t data =
                at + 30 + littleEndian(zip, at + 26, 2) + littleEndian(zip, at + 28, 2);
            const std::size_t size = littleEndian(zip, at + 18, 4);
            found[fs::path(entry.name).filename()] = {
                entry.bytes, entry.mode,
                zip.substr(at, 10) + zip.substr(at + 14, 16) + zip.substr(data, size)};
            at = data + size;
        }
        return found;
    }

    void runHere(Strings designOptions, Strings arguments) const {
        designOptions.insert(designOptions.begin(), NATIVE_MAKE_DESIGN);
        designOptions.push_back(design);
        ASSERT_EQ(runProgram({designOptions, {}, {}, {}}).exitCode, 0);
        const std::map<std::string, std::string> standin{
            {"VELTAR_EXTRACTA_PATHOVERRIDE", NATIVE_EXTRACTA_STANDIN}};
        arguments.insert(arguments.begin(), NATIVE_VELEXTRACTA);
        ASSERT_EQ(runProgram({arguments, standin, directory.path(), {}}).exitCode, 0);
    }
};

TEST_F(BothSystems, packTheSameViewsInTheSameBytes) {
    const Strings options{"--nets", "30", "--records", "3000", "--odd-names"};
    const Strings odd{
        "-z", "-n", "A',''= 'x' OR,NET\tTAB,\xCE\x94V_\xC3\x9CTILITY,VDD*?\"<>|:;#%&$@[]{}^~`+5V"};
    // Several pieces, and some that do not shrink.
    writeFile(directory / "added.txt", velextracta::viewText(2'000'000));
    writeFile(directory / "added.bin", velextracta::randomBytes(1'000'000));
    for (Strings arguments : {Strings{"-z", "-add", "added.txt,added.bin"}, odd,
                              Strings{"-cell", odd[0], odd[1], odd[2]}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        arguments.insert(arguments.end(), {"design.mcm", "out.vlx"});
        makeDesign(options);
        ASSERT_EQ(run(arguments).exitCode, 0);
        auto there = members();
        runHere(options, arguments);
        const auto here = members();
        EXPECT_EQ(there.size(), here.size());
        for (const auto& [name, member] : here) {
            auto& [bytes, mode, packed] = there[name];
            const std::size_t path = bytes.find(nameThere(design));
            if (path == std::string::npos) {
                EXPECT_TRUE(packed == member.packed) << name;
            } else {  // in its J line
                bytes.replace(path, nameThere(design).size(), design.string());
            }
            EXPECT_TRUE(bytes == member.bytes) << name;
            EXPECT_EQ(mode, member.mode) << name;
        }
    }
}

}  // namespace
