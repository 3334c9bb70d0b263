#include "frontend/ExtractionDriver.h"

#include <gtest/gtest.h>

#include "frontend/ExtractionParameters.h"
#include "platform/File.h"
#include "tests/TestFolder.h"

namespace {

TEST(CreateFolderPath, CreatesEveryMissingLevelWithEitherSeparator) {
    tests::TestFolder folder;
    const std::u16string deep = folder.Root() + u"/a/b\\c/";
    EXPECT_TRUE(CreateFolderPath(deep));
    const std::u16string created =
        folder.Path(u"a") + platform::kPathSeparator + u"b" + platform::kPathSeparator + u"c";
    EXPECT_TRUE(platform::IsDirectory(created));
    EXPECT_TRUE(CreateFolderPath(created));  // exists already
    EXPECT_TRUE(CreateFolderPath(u""));
}

TEST(CreateFolderPath, FailsBelowAFile) {
    tests::TestFolder folder;
    const std::u16string file = folder.Path(u"plain");
    ASSERT_EQ(platform::File().Open(file, platform::OpenMode::CreateAlways),
              platform::kErrorSuccess);
    EXPECT_FALSE(CreateFolderPath(file + platform::kPathSeparator + u"sub" +
                                  platform::kPathSeparator + u"deeper"));
}

TEST(CreateFolderPath, DriveRootIsTakenAsItIs) {
    // A drive root with its separator answers true before anything is created.
    EXPECT_TRUE(CreateFolderPath(u"Q:\\"));
    EXPECT_TRUE(CreateFolderPath(u"Q:/"));
}

class RunExtractionTest : public ::testing::Test {
protected:
    void SetUp() override { ExtractionParameters = CExtractionParameters(); }
    void TearDown() override { ExtractionParameters = CExtractionParameters(); }
    tests::TestFolder folder_;
};

TEST_F(RunExtractionTest, RefusesWithoutKeyOrPassword) {
    ExtractionParameters.sourcePath = folder_.Path(u"any.exe");
    ExtractionParameters.targetPath = folder_.Path(u"out");
    EXPECT_FALSE(RunExtraction());
    EXPECT_FALSE(platform::PathExists(folder_.Path(u"out")));  // nothing was created
}

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
