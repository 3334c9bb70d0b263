#include "frontend/StubEntry.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "frontend/ExtractionParameters.h"
#include "frontend/HelpText.h"
#include "tests/TestFolder.h"

namespace {

std::string RunWith(const std::vector<std::u16string>& tokens) {
    ExtractionParameters = CExtractionParameters();
    CCommandLine line;
    line.Assign(tokens);
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunStub(line), 0);
    return testing::internal::GetCapturedStdout();
}

const std::string kHelp =
    "Self-extraction archive: \r\n"
    "Run it without parameters or with undefined ones to show GUI and control extraction by "
    "it.\r\n"
    "For extraction from command line, use both of parameters -key and -target.\r\n"
    "Parameters: \r\n"
    "\t-h|-help\tPrint this help\r\n"
    "\t-key path\tSet path to private key for extraction\r\n"
    "\t-target path\tSet path to target directory for extraction\r\n"
    "\t-source path\tSet path to source archive to for extraction\r\n";

// The seven pieces, then the program's version: "Vomdrel X.Y.Z".
void ExpectHelp(const std::string& output) {
    ASSERT_GE(output.size(), kHelp.size());
    EXPECT_EQ(output.substr(0, kHelp.size()), kHelp);
    const std::string version = output.substr(kHelp.size());
    EXPECT_EQ(version.rfind("Vomdrel ", 0), 0u) << version;
    EXPECT_TRUE(version.ends_with("\r\n")) << version;
    EXPECT_EQ(std::count(version.begin(), version.end(), '.'), 2) << version;
}

TEST(StubEntry, HelpWinsOverEverythingElse) {
    ExpectHelp(RunWith({u"-h"}));
    ExpectHelp(RunWith({u"-HELP"}));
    ExpectHelp(RunWith({u"-key", u"k", u"-target", u"t", u"-h"}));
}

TEST(StubEntry, MissingKeyValueFailsWithoutTouchingTheDisk) {
    tests::TestFolder folder;
    const std::u16string target = folder.Path(u"out");
    EXPECT_EQ(RunWith({u"-target", target, u"-key"}),
              "\r\nExtracting...\r\nExtraction has failed\r\n");
    EXPECT_TRUE(ExtractionParameters.consoleMode);
    EXPECT_FALSE(ExtractionParameters.keyGiven);
    EXPECT_EQ(ExtractionParameters.targetPath, target);
    EXPECT_FALSE(platform::PathExists(target));
}

TEST(StubEntry, UnreadableKeyFileFailsAndSourceDefaultsToTheProgram) {
    tests::TestFolder folder;
    EXPECT_EQ(RunWith({u"-key", folder.Path(u"none.privkey"), u"-target", folder.Path(u"o")}),
              "\r\nExtracting...\r\nExtraction has failed\r\n");
    EXPECT_FALSE(ExtractionParameters.keyGiven);
    EXPECT_FALSE(ExtractionParameters.sourcePath.empty());
    EXPECT_NE(ExtractionParameters.sourcePath.find(u"frontend_tests"), std::u16string::npos);

    RunWith({u"-source", u"given.exe", u"-key", u"k", u"-target", u"t"});
    EXPECT_EQ(ExtractionParameters.sourcePath, u"given.exe");
}

}  // namespace
