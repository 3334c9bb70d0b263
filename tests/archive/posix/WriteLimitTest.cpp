// Archives whose writing fails part way: the process may not grow a file beyond a limit, so a
// write of the archive fails at a chosen byte. Each failure gives the result of what was being
// written and leaves neither an archive nor a temporary file.
#include <gtest/gtest.h>

#include "archive/detail/FileFormatSFX.h"
#include "tests/archive/WriterFixture.h"
#include "tests/archive/posix/FileSizeLimit.h"

namespace tests {
namespace {

class WriteLimitTest : public WriterFixture {
protected:
    // The size of the archive that a write without a limit makes; that archive is removed.
    std::uint64_t FullSize(DCCFileFormat& format, const fs::path& archive) {
        EXPECT_EQ(Write(format), FORMAT_OK);
        const std::uint64_t size = fs::file_size(archive);
        fs::remove(archive);
        return size;
    }
    FormatResult WriteWithin(DCCFileFormat& format, std::uint64_t limit) {
        const FileSizeLimit restricted(limit);
        return Write(format);
    }
};

TEST_F(WriteLimitTest, FailedWritesOfADcfImageAreTheirsAndLeaveNothing) {
    AddFile("small.txt", Noise(3000, 1));
    AddFile("large.bin", Noise(1 << 20, 2));  // its stream is flushed before its end
    AddFile("after.txt", Noise(10, 3));
    const std::uint64_t full = FullSize(dcf_, ArchivePath());
    struct Row {
        std::uint64_t limit;
        FormatResult result;
        std::size_t filesDone;
    };
    // The first bytes: the preamble, key block and headers, flushed together. Then the middle of
    // the large file's data, and the very last byte, which the final flush writes.
    for (const Row row :
         {Row{100, FORMAT_OUTPUT_WRITE_FAILED, 0}, Row{400 * 1024, FORMAT_WRITE_FAILED, 1},
          Row{full - 1, FORMAT_WRITE_FAILED, 3}}) {
        SCOPED_TRACE(row.limit);
        done.clear();
        EXPECT_EQ(WriteWithin(dcf_, row.limit), row.result);
        EXPECT_EQ(done.size(), row.filesDone);
        EXPECT_TRUE(LeftInFolder().empty());
    }
    EXPECT_EQ(WriteWithin(dcf_, full), FORMAT_OK);  // the limit itself is no failure
    ASSERT_EQ(Extract(u"secret"), FORMAT_OK);
    ExpectExtractedTree();
}

TEST_F(WriteLimitTest, FailedWritesOfASelfExtractingFileAreTheirsAndLeaveNothing) {
    AddFile("one.txt", Noise(5000, 4));
    const Bytes stub = Noise(64 * 1024, 5);
    const fs::path stubPath = folder_.Native() / "stub.bin";
    WriteBytes(stubPath, stub);
    DCCFileFormatSFX sfx(stubPath.u16string());
    const std::uint64_t full = FullSize(sfx, ArchivePath("archive.exe"));
    const std::set<std::string> stubOnly{"stub.bin"};

    EXPECT_EQ(WriteWithin(sfx, stub.size() / 2), FORMAT_STUB_COPY_FAILED);
    EXPECT_EQ(LeftInFolder(), stubOnly);
    EXPECT_EQ(WriteWithin(sfx, stub.size() + 100), FORMAT_OUTPUT_WRITE_FAILED);
    EXPECT_EQ(LeftInFolder(), stubOnly);
    EXPECT_EQ(WriteWithin(sfx, full - 1), FORMAT_OUTPUT_WRITE_FAILED);  // inside the trailer
    EXPECT_EQ(LeftInFolder(), stubOnly);
}

}  // namespace
}  // namespace tests
