#include <gtest/gtest.h>

#include "frontend/ExtractionParameters.h"
#include "frontend/HelpText.h"
#include "frontend/StubEntry.h"

namespace {

TEST(StubEntry, WithoutBothKeyAndTargetTheInteractiveWayWithoutTerminalShowsHelp) {
    // Test runs have no terminal on their standard streams, so the interactive front end
    // explains the stub instead of asking, in the words of a terminal program.
    testing::internal::CaptureStdout();
    WriteHelpText();
    const std::string help = testing::internal::GetCapturedStdout();
    for (const char* wrong : {"GUI", "to for", "\r"}) {
        EXPECT_EQ(help.find(wrong), std::string::npos) << wrong;
    }
    for (const auto& tokens :
         std::vector<std::vector<std::u16string>>{{}, {u"-key", u"k"}, {u"unknown"}}) {
        ExtractionParameters = CExtractionParameters();
        CCommandLine line;
        line.Assign(tokens);
        testing::internal::CaptureStdout();
        EXPECT_EQ(RunStub(line), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), help);
        EXPECT_FALSE(ExtractionParameters.consoleMode);
        EXPECT_NE(ExtractionParameters.sourcePath.find(u"frontend_tests"), std::u16string::npos);
    }
}

}  // namespace
