#include "frontend/StubEntry.h"

#include <gtest/gtest.h>

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

TEST(StubEntry, HelpWinsOverEverythingElse) {
    testing::internal::CaptureStdout();
    WriteHelpText();
    const std::string kHelp = testing::internal::GetCapturedStdout();
    EXPECT_NE(kHelp.find("Vomdrel "), std::string::npos) << kHelp;
    EXPECT_EQ(RunWith({u"-HELP"}), kHelp);
    EXPECT_EQ(RunWith({u"-key", u"k", u"-target", u"t", u"-h"}), kHelp);
}

TEST(StubEntry, MissingOrUnreadableKeyFailsWithoutTouchingTheDisk) {
    tests::TestFolder folder;
    const std::u16string target = folder.Path(u"out");
    EXPECT_EQ(RunWith({u"-target", target, u"-key"}),
              "\r\nExtracting...\r\nExtraction has failed\r\n");
    EXPECT_TRUE(ExtractionParameters.consoleMode);
    EXPECT_FALSE(ExtractionParameters.keyGiven);
    EXPECT_FALSE(platform::PathExists(target));

    // An unreadable key file fails the same way; the source defaults to the program.
    EXPECT_EQ(RunWith({u"-key", folder.Path(u"none.privkey"), u"-target", folder.Path(u"o")}),
              "\r\nExtracting...\r\nExtraction has failed\r\n");
    EXPECT_FALSE(ExtractionParameters.keyGiven);
    EXPECT_FALSE(ExtractionParameters.sourcePath.empty());
    EXPECT_NE(ExtractionParameters.sourcePath.find(u"frontend_tests"), std::u16string::npos);

    RunWith({u"-source", u"given.exe", u"-key", u"k", u"-target", u"t"});
    EXPECT_EQ(ExtractionParameters.sourcePath, u"given.exe");
}

}  // namespace
