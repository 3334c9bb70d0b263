#include <string>

#include "platform/Text.h"
#include "tests/Shared/Tagger/TaggerTestSupport.h"

namespace tests {
namespace {

using Zelmarik::CTagger;
using Zelmarik::TaggerException;

// Tags `path` and gives what it raised; fails the test when nothing was raised.
TaggerException FailureOf(const std::u16string& path,
                          const Zelmarik::CCategoryContainer& categories) {
    try {
        CTagger::WriteThrow(path.c_str(), categories, nullptr);
    } catch (const TaggerException& error) {
        return error;
    }
    ADD_FAILURE() << "no TaggerException for " << platform::Utf16ToUtf8(path);
    return TaggerException("", 0, 0, 0, nullptr, "none");
}

std::string Utf8LongPath(const std::u16string& path) {
    return platform::Utf16ToUtf8(Zelmarik::ToLongPath(path.c_str()));
}

// The context is in UTF-8, the attributes in hex; no source location.
TEST_F(TaggerTest, MissingTargetFailsAsTheTargetFileWithTheContextInTheText) {
    const std::u16string path = folder_.Path(u"missing \u00e9.txt");
    const TaggerException error = FailureOf(path, Categories({1}));
    EXPECT_EQ(error.Type, TaggerException::kTargetFile);
    EXPECT_EQ(error.ErrorCode, 2);
    EXPECT_EQ(error.Text, "Unable to open target file, error: 2, \r\nType: 2, File: " +
                              Utf8LongPath(path) + ", Stream-File: " + Utf8LongPath(path) +
                              ":ZelTag5, Size: 0, Attributes: 0, flags = RevertTimes: NO, "
                              "RevertAttributes: NO, DeleteStreamOnClose: NO");
    EXPECT_FALSE(platform::PathExists(path));
}

TEST_F(TaggerTest, UnwritableTargetThatIsNotReadOnlyFailsWithAccessDenied) {
    // A folder cannot be opened as a file, and clearing a read-only bit would not help.
    const std::u16string path = folder_.Path(u"folder");
    ASSERT_EQ(platform::MakeDirectory(path), platform::kErrorSuccess);
    const TaggerException error = FailureOf(path, Categories({1}));
    EXPECT_EQ(error.Type, TaggerException::kTargetFile);
    EXPECT_EQ(error.ErrorCode, 5);
    EXPECT_EQ(error.Text.rfind("Unable to open target file, error: 5, \r\nType: 2, ", 0), 0u)
        << error.Text;
    // The attributes read on the way stay in the description; nothing is to be restored.
    EXPECT_NE(error.Text.find(", Attributes: 10, flags = RevertTimes: NO, RevertAttributes: NO"),
              std::string::npos)
        << error.Text;
    EXPECT_FALSE(HasStream(path));
}

TEST_F(TaggerTest, NullContextCannotBeWritten) {
    try {
        CTagger::TagFileWrite(nullptr, Categories({1}));
        FAIL() << "no exception";
    } catch (const TaggerException& error) {
        EXPECT_EQ(error.Type, TaggerException::kStream);
        EXPECT_EQ(error.ErrorCode, 87);
        EXPECT_EQ(error.Text, "Context is nullptr");
    }
}

// A stream may not grow without bound everywhere (extended attributes have a size limit): then
// the failing category is named, and what was written before it stays.
TEST_F(TaggerTest, FailedWriteNamesTheCategoryAndKeepsWhatWasWritten) {
    const std::u16string file = MakeFile(u"large.txt");
    std::vector<std::uint32_t> seeds;
    for (std::uint32_t i = 0; i < 4100; ++i) {
        seeds.push_back(i);
    }
    const Zelmarik::CCategoryContainer categories = Categories(seeds);
    const platform::FileStamps before = StampsOf(file);
    try {
        CTagger::WriteThrow(file.c_str(), categories, nullptr);
        EXPECT_EQ(StreamOf(file), Records(categories));
    } catch (const TaggerException& error) {
        const std::vector<std::uint8_t> written = StreamOf(file);
        ASSERT_EQ(written.size() % 16, 0u);
        const std::size_t failed = written.size() / 16;
        ASSERT_LT(failed, seeds.size());
        const std::vector<std::uint8_t> all = Records(categories);
        EXPECT_TRUE(std::equal(written.begin(), written.end(), all.begin()));

        EXPECT_EQ(error.Type, TaggerException::kStream);
        const std::string expected =
            "Unable to write category " +
            platform::Utf16ToUtf8(Category(seeds[failed]).DebugLog()) +
            " to stream file, error: " + std::to_string(error.ErrorCode) +
            ", \r\nType: 1, File: " + Utf8LongPath(file) + ", Stream-File: " + Utf8LongPath(file) +
            ":ZelTag5, Size: " + std::to_string(written.size()) +
            ", Attributes: 0, flags = RevertTimes: YES, RevertAttributes: NO, "
            "DeleteStreamOnClose: NO";
        EXPECT_EQ(error.Text, expected);
    }
    ExpectSameStamps(before, StampsOf(file));
}

// Only where a file system without extended attributes is at hand: the process files.
TEST_F(TaggerTest, VolumeWithoutStreamsReportsAnInvalidName) {
    const std::u16string file = u"/proc/self/comm";
    if (platform::kPathSeparator != u'/' || !platform::PathExists(file)) {
        GTEST_SKIP() << "no file system without streams here";
    }
    const TaggerException error = FailureOf(file, Categories({1}));
    EXPECT_EQ(error.Type, TaggerException::kStream);
    EXPECT_EQ(error.ErrorCode, 123);
    EXPECT_EQ(error.Text.rfind("Unable to open stream file, original error: 2, but reported as "
                               "invalid name, \r\nType: 1, ",
                               0),
              0u)
        << error.Text;
    EXPECT_NE(error.Text.find("RevertTimes: YES"), std::string::npos) << error.Text;
}

}  // namespace
}  // namespace tests
