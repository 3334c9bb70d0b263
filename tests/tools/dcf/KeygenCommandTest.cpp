// dcf keygen, run as a program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "crypto/SecurityKey.h"
#include "tests/TestFolder.h"
#include "tests/tools/dcf/DcfProgram.h"

namespace {

using namespace dcftest;

class KeygenCommandTest : public ::testing::Test {
protected:
    // Runs dcf with `arguments`, its output going to a log in the folder; true on exit code 0.
    bool Dcf(const std::string& arguments) {
        const std::string command = std::string("\"") + DCF_TOOL_PATH + "\" " + arguments +
                                    " >>\"" + (folder_.Native() / "log").string() + "\" 2>&1";
        return std::system(command.c_str()) == 0;
    }
    std::string Prefix() const { return "\"" + (folder_.Native() / "key").string() + "\""; }
    fs::path PrivatePath() const { return folder_.Native() / "key.privkey"; }
    fs::path PublicPath() const { return folder_.Native() / "key.pubkey"; }

    // Loads the private key file; that the pair works is shown by the archives sealed with it.
    void ExpectPair(const std::u16string& name, std::int32_t validity) {
        Zelmarik::DCCSecurityKey key;
        ASSERT_EQ(key.PrivateFromFile(PrivatePath().u16string().c_str()), 0u);
        EXPECT_EQ(key.Name, name);
        EXPECT_EQ(key.ValidityYears, validity);
    }

    tests::TestFolder folder_;
};

TEST_F(KeygenCommandTest, WritesAPairAndReplacesItOnlyWhenForced) {
    ASSERT_TRUE(Dcf("keygen --name \"Ana \xC3\xB1\" --validity 2 --out " + Prefix()));
    ExpectPair(u"Ana \u00f1", 2);
    EXPECT_EQ(ReadAll(PublicPath()).size(), 1024u);
    const fs::perms others = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(PrivatePath()).permissions() & others, fs::perms::none);

    const std::string privateBefore = ReadAll(PrivatePath());
    const std::string publicBefore = ReadAll(PublicPath());
    EXPECT_FALSE(Dcf("keygen --name other --out " + Prefix()));
    EXPECT_EQ(ReadAll(PrivatePath()), privateBefore);
    EXPECT_EQ(ReadAll(PublicPath()), publicBefore);

    ASSERT_TRUE(Dcf("keygen --name other --out " + Prefix() + " --force"));
    EXPECT_NE(ReadAll(PrivatePath()), privateBefore);
    ExpectPair(u"other", -1);
}

TEST_F(KeygenCommandTest, RefusesIncompleteOrBadArguments) {
    EXPECT_FALSE(Dcf("keygen --out " + Prefix()));
    EXPECT_FALSE(Dcf("keygen --name x --validity -2 --out " + Prefix()));
    EXPECT_FALSE(fs::exists(PrivatePath()));
    // A folder that is not there is an output failure, told before the key is made.
    ExpectFailure(RunDcf(folder_.Native(), "keygen --name x --out nowhere/key"), kIo, "keygen",
                  "nowhere/key: its folder does not exist");
}

}  // namespace
