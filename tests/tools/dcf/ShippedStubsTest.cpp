// The stubs dcf finds by itself: a copy of dcf in an installed layout and in a build tree's,
// with stand-in stubs whose digests are published SHA-256 test vectors.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/TestFolder.h"
#include "tests/tools/dcf/DcfProgram.h"

namespace {

using namespace dcftest;

// FIPS 180-2 examples: "abc" and the two-block message.
const std::string kWindowsStub = "abc";
const std::string kWindowsDigest =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const std::string kLinuxStub = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
const std::string kLinuxDigest = "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1";

class ShippedStubsTest : public ::testing::Test {
protected:
    void SetUp() override {
        WriteAll(Path("data/notes/n.txt"), "a note");
        WriteAll(Path("password"), "secret\n");
    }

    fs::path Path(const std::string& name) const { return folder_.Native() / name; }

    // A copy of dcf at `program`, below the test folder.
    fs::path InstallDcf(const std::string& program) const {
        fs::create_directories(Path(program).parent_path());
        fs::copy_file(DCF_TOOL_PATH, Path(program));
        return Path(program);
    }

    // The stand-in stubs for windows and linux, and the digests of the real ones' SHA256SUMS.
    void PlaceStubs(const std::string& folder) const {
        WriteAll(Path(folder + "/windows/Vomdrel.exe"), kWindowsStub);
        WriteAll(Path(folder + "/linux/Vomdrel"), kLinuxStub);
        WriteAll(Path(folder + "/SHA256SUMS"),
                 kWindowsDigest + "  windows/Vomdrel.exe\n" + kLinuxDigest + "  linux/Vomdrel\n");
    }

    Outcome Run(const fs::path& program, const std::string& arguments) const {
        return RunDcf(folder_.Native(), arguments, "", program);
    }

    tests::TestFolder folder_;
};

TEST_F(ShippedStubsTest, BuildTreeDcfFindsStubsBesideItAndNamesTheOneMissing) {
    const fs::path dcf = InstallDcf("build/tools/dcf/dcf");
    PlaceStubs("build/tools/dcf/stubs");

    ASSERT_EQ(
        Run(dcf, "create tux data/notes --sfx --stub-for linux --password-file password -q").code,
        0);
    EXPECT_EQ(ReadAll(Path("tux")).substr(0, kLinuxStub.size()), kLinuxStub);

    const Outcome missing =
        Run(dcf, "create x64 data/notes --sfx --stub-for windows-x64 --password-file password");
    ExpectFailure(missing, kIo, "create", "no stub for windows-x64");
    EXPECT_NE(missing.err.find(Path("build/tools/dcf/stubs/windows-x64/Vomdrel.exe").string()),
              std::string::npos)
        << missing.err;
    EXPECT_NE(missing.err.find("DCF_WINDOWS_STUBS=ON"), std::string::npos);
    EXPECT_FALSE(fs::exists(Path("x64.exe")));
}

}  // namespace
