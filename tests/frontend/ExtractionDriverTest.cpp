#include "frontend/ExtractionDriver.h"

#include <gtest/gtest.h>

#include "frontend/ExtractionParameters.h"
#include "platform/File.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"

namespace {

// Every missing level is made, with either separator; a drive root is taken as it is, and a
// file on the way fails.
TEST(CreateFolderPath, CreatesEveryMissingLevelButNotBelowAFile) {
    tests::TestFolder folder;
    EXPECT_TRUE(CreateFolderPath(folder.Root() + u"/a/b\\c/"));
    const std::u16string sep(1, platform::kPathSeparator);
    const std::u16string created = folder.Path(u"a") + sep + u"b" + sep + u"c";
    EXPECT_TRUE(platform::IsDirectory(created));
    for (const std::u16string& done :
         {created, std::u16string(), std::u16string(u"Q:\\"), std::u16string(u"Q:/")}) {
        EXPECT_TRUE(CreateFolderPath(done)) << platform::Utf16ToUtf8(done);
    }
    const std::u16string file = folder.Path(u"plain");
    ASSERT_EQ(platform::File().Open(file, platform::OpenMode::CreateAlways),
              platform::kErrorSuccess);
    EXPECT_FALSE(CreateFolderPath(file + sep + u"sub" + sep + u"deeper"));
}

class RunExtractionTest : public ::testing::Test {
protected:
    void SetUp() override { ExtractionParameters = CExtractionParameters(); }
    void TearDown() override { ExtractionParameters = CExtractionParameters(); }
    tests::TestFolder folder_;
};

TEST_F(RunExtractionTest, RefusesMissingOrEmptySourceBeforeCreatingTheTarget) {
    ExtractionParameters.passwordGiven = true;
    ExtractionParameters.password = u"pw";
    ExtractionParameters.targetPath = folder_.Path(u"out");
    ExtractionParameters.sourcePath = folder_.Path(u"missing.exe");
    EXPECT_FALSE(RunExtraction());

    const std::u16string empty = folder_.Path(u"empty.exe");
    ASSERT_EQ(platform::File().Open(empty, platform::OpenMode::CreateAlways),
              platform::kErrorSuccess);
    ExtractionParameters.sourcePath = empty;
    EXPECT_FALSE(RunExtraction());
    EXPECT_FALSE(platform::PathExists(folder_.Path(u"out")));
}

}  // namespace
