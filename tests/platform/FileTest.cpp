#include "platform/File.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Text.h"
#include "tests/TestFolder.h"

namespace {

using platform::File;
using platform::OpenMode;

std::vector<unsigned char> ReadAll(const std::u16string& path) {
    File file;
    EXPECT_EQ(file.Open(path, OpenMode::Read), platform::kErrorSuccess);
    std::vector<unsigned char> data(1 << 16);
    std::size_t got = 0;
    EXPECT_EQ(file.Read(data.data(), data.size(), got), platform::kErrorSuccess);
    data.resize(got);
    return data;
}

void WriteText(const std::u16string& path, const std::string& text, OpenMode mode) {
    File file;
    ASSERT_EQ(file.Open(path, mode), platform::kErrorSuccess);
    ASSERT_EQ(file.Write(text.data(), text.size()), platform::kErrorSuccess);
}

TEST(PlatformFile, OpenModesKeepTheirPromises) {
    tests::TestFolder folder;
    const std::u16string path = folder.Path(u"modes.txt");
    File file;
    EXPECT_EQ(file.Open(path, OpenMode::Read), platform::kErrorFileNotFound);
    EXPECT_FALSE(file.IsOpen());

    WriteText(path, "one", OpenMode::CreateNew);
    EXPECT_EQ(file.Open(path, OpenMode::CreateNew), platform::kErrorFileExists);
    WriteText(path, "two", OpenMode::Append);
    EXPECT_EQ(ReadAll(path), std::vector<unsigned char>({'o', 'n', 'e', 't', 'w', 'o'}));
    WriteText(path, "x", OpenMode::CreateAlways);
    EXPECT_EQ(ReadAll(path), std::vector<unsigned char>({'x'}));

    // Operations on a closed file fail instead of touching a stale handle.
    std::size_t got = 0;
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1, got), platform::kErrorInvalidHandle);
    EXPECT_EQ(file.Write(&byte, 1), platform::kErrorInvalidHandle);
    EXPECT_EQ(file.Seek(0), platform::kErrorInvalidHandle);
}

TEST(PlatformFile, MoveNeverReplacesAndCopyDoes) {
    tests::TestFolder folder;
    const std::u16string a = folder.Path(u"a");
    const std::u16string b = folder.Path(u"b");
    const std::u16string c = folder.Path(u"c");
    WriteText(a, "alpha", OpenMode::CreateAlways);
    WriteText(b, "beta", OpenMode::CreateAlways);

    EXPECT_NE(platform::MoveFileNoReplace(a, b), platform::kErrorSuccess);
    EXPECT_EQ(ReadAll(b), std::vector<unsigned char>({'b', 'e', 't', 'a'}));
    EXPECT_EQ(platform::MoveFileNoReplace(a, c), platform::kErrorSuccess);
    EXPECT_FALSE(platform::PathExists(a));
    EXPECT_EQ(platform::CopyFileReplacing(c, b), platform::kErrorSuccess);
    EXPECT_EQ(ReadAll(b), ReadAll(c));
    EXPECT_EQ(platform::CopyFileReplacing(folder.Path(u"missing"), a),
              platform::kErrorFileNotFound);

    EXPECT_EQ(platform::RemoveFile(c), platform::kErrorSuccess);
    EXPECT_EQ(platform::RemoveFile(c), platform::kErrorFileNotFound);
}

TEST(PlatformFile, DirectoriesAndMissingSizes) {
    tests::TestFolder folder;
    const std::u16string sub = folder.Path(u"sub");
    EXPECT_EQ(platform::MakeDirectory(sub), platform::kErrorSuccess);
    EXPECT_EQ(platform::MakeDirectory(sub), platform::kErrorAlreadyExists);
    EXPECT_TRUE(platform::IsDirectory(sub));
    EXPECT_EQ(platform::MakeDirectory(folder.Path(u"no") + platform::kPathSeparator + u"x"),
              platform::kErrorPathNotFound);
    std::uint64_t size = 99;
    EXPECT_FALSE(platform::QueryFileSize(folder.Path(u"missing"), size));
}

TEST(PlatformFile, TempFilesAreUniqueAndInTheFolder) {
    tests::TestFolder folder;
    std::u16string first;
    std::u16string second;
    ASSERT_EQ(platform::CreateTempFile(folder.Root(), u"st", first), platform::kErrorSuccess);
    ASSERT_EQ(platform::CreateTempFile(folder.Root(), u"st", second), platform::kErrorSuccess);
    EXPECT_NE(first, second);
    EXPECT_TRUE(platform::PathExists(first));
    EXPECT_EQ(first.rfind(folder.Path(u"st"), 0), 0u);
}

}  // namespace
