// Extraction into a target that someone else prepared or changes while we write: pipes, hard
// links, folders swapped with links, and a disk that fills.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "platform/Text.h"
#include "tests/archive/ReaderFixture.h"
#include "tests/archive/posix/FileSizeLimit.h"

namespace tests {
namespace {

std::size_t Temporaries(const fs::path& folder) {
    std::size_t found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        found += entry.path().filename().string().rfind("st", 0) == 0;
    }
    return found;
}

// A pipe at an entry's path is neither opened, which would wait for a writer, nor replaced.
TEST_F(DcfReaderTest, APipeAtAnEntrysPathIsLeftAlone) {
    ASSERT_EQ(::mkfifo((Out() / "f").c_str(), 0600), 0);
    // Our own end keeps an open of the other one from blocking, should the reader try.
    const int pipe = ::open((Out() / "f").c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(pipe, 0);
    const Bytes image = BuildImage(ImageSettings{}, {}, {{u"\\f", Bytes(3000, 'x'), {}}});
    for (const OverwriteMode mode : {OVERWRITE_REPLACE, OVERWRITE_SKIP}) {
        settings_.overwriteMode = mode;
        EXPECT_EQ(Extract(image), mode == OVERWRITE_SKIP ? FORMAT_OK : FORMAT_TARGET_OPEN_FAILED);
    }
    char byte = 0;
    EXPECT_EQ(::read(pipe, &byte, 1), -1);  // nothing was written into it
    ::close(pipe);
    EXPECT_TRUE(fs::is_fifo(Out() / "f"));
}

TEST_F(DcfReaderTest, AHardLinkToAnOutsideFileIsReplacedNotRewritten) {
    const fs::path outside = folder_.Native() / "outside";
    std::ofstream(outside) << "outside";
    fs::create_hard_link(outside, Out() / "f");
    settings_.overwriteMode = OVERWRITE_REPLACE;
    ASSERT_EQ(Extract(BuildImage(ImageSettings{}, {}, {{u"\\f", Bytes(5, 'x'), {}}})), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "f"), Bytes(5, 'x'));
    EXPECT_EQ(ReadBytes(outside), Bytes({'o', 'u', 't', 's', 'i', 'd', 'e'}));
}

// A write that fails part way: the file cut short stays under its name as the format says, or,
// where the caller wants no incomplete file, goes, and an old file of that name stays whole.
TEST_F(DcfReaderTest, AFailedWriteKeepsOrDropsTheFileCutShort) {
    const Bytes image = BuildImage(ImageSettings{}, {}, {{u"\\big", Bytes(300000, 'w'), {}}});
    WriteArchive(image);
    const auto extractWithin = [this](std::uint64_t limit) {
        const FileSizeLimit restricted(limit);
        return format_.ExtractArchive(&request_, &settings_);
    };
    EXPECT_EQ(extractWithin(100000), FORMAT_OUTPUT_WRITE_FAILED);
    EXPECT_EQ(fs::file_size(Out() / "big"), 100000u);

    std::ofstream(Out() / "big", std::ios::trunc) << "old";
    request_.keepPartialFile = false;
    EXPECT_EQ(extractWithin(100000), FORMAT_OUTPUT_WRITE_FAILED);
    EXPECT_EQ(ReadBytes(Out() / "big"), Bytes({'o', 'l', 'd'}));
    fs::remove(Out() / "big");
    EXPECT_EQ(extractWithin(100000), FORMAT_OUTPUT_WRITE_FAILED);
    EXPECT_TRUE(fs::is_empty(Out()));
}

// Another process keeps swapping the folder that receives the files with a link to a folder
// outside the target, for a moment each time, so that a test of the path before the open would
// mostly pass. Files may fail, but none may land outside.
TEST(DcfReaderRaceTest, AFolderSwappedWithALinkDuringExtraction) {
    const TestFolder folder(fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path());
    const fs::path out = folder.Native() / "out";
    const fs::path outside = folder.Native() / "outside";
    fs::create_directory(out);
    fs::create_directory(outside);
    fs::create_directory_symlink(outside, out / "swap");
    std::vector<EntrySpec> files;
    for (int i = 0; i < 1000; ++i) {
        files.push_back({u"\\d\\f" + platform::Utf8ToUtf16(std::to_string(i)), Bytes(10, 'x'), {}});
    }
    const Bytes image = BuildImage(ImageSettings{}, {u"\\d"}, files);
    WriteBytes(folder.Native() / "archive.dcf", image);
    ArchiveExtractRequest request;
    request.sourcePath = folder.Path(u"archive.dcf");
    request.targetPath = folder.Path(u"out");
    request.password = u"secret";
    DCCArchiveUserSettings settings;
    DCCFileFormatDCF format;
    for (int run = 0; run < 8; ++run) {
        std::atomic<bool> done{false};
        std::thread swapper([&] {
            const std::string d = (out / "d").string();
            const std::string link = (out / "swap").string();
            while (!done) {
                ::renameat2(AT_FDCWD, d.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
                ::renameat2(AT_FDCWD, d.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
                ::usleep(100);
            }
        });
        const FormatResult result = format.ExtractArchive(&request, &settings);
        done = true;
        swapper.join();
        EXPECT_TRUE(result == FORMAT_OK || result == FORMAT_TARGET_OPEN_FAILED) << result;
        ASSERT_TRUE(fs::is_empty(outside)) << "run " << run;
        EXPECT_EQ(Temporaries(out), 0u);
        fs::remove_all(out / (fs::is_symlink(out / "d") ? "swap" : "d"));
        if (fs::is_symlink(out / "d")) {
            fs::rename(out / "d", out / "swap");
        }
    }
}

}  // namespace
}  // namespace tests
