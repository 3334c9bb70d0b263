#include "archive/detail/DcfReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "Common/Common/Endian.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchiveNames.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/FileFormatDCF.h"
#include "platform/File.h"
#include "platform/TaggedFile.h"
#include "tests/RecipientKey.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/archive/ReaderFixture.h"

namespace {

using tests::Bytes;
using tests::DcfReaderTest;
using tests::EntrySpec;
using tests::ImageSettings;
using tests::OneCategoryBlock;
using tests::ReadBytes;
namespace fs = std::filesystem;

// The temporary files ("st...") a run left in `folder`.
std::size_t Temporaries(const fs::path& folder) {
    std::size_t found = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        found += entry.path().filename().string().rfind("st", 0) == 0;
    }
    return found;
}

TEST_F(DcfReaderTest, SampleImageExtractsWithEventsProgressAndTags) {
    // One folder, a tagged file of 5000 bytes, an empty untagged file, 100-byte category blocks.
    Bytes categoryBlock = OneCategoryBlock();
    categoryBlock.resize(100, 0);  // its own length field still says where it ends
    const Bytes content = tests::Noise(5000, 7);
    ASSERT_EQ(Extract(tests::BuildImage(
                  ImageSettings{}, {u"\\docs"},
                  {{u"\\docs\\a.txt", content, categoryBlock}, {u"\\docs\\empty.txt", {}, {}}},
                  categoryBlock)),
              FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "docs" / "a.txt"), content);
    EXPECT_EQ(ReadBytes(Out() / "docs" / "empty.txt"), Bytes{});
    const std::u16string docs =
        request_.targetPath + platform::kPathSeparator + u"docs" + platform::kPathSeparator;
    EXPECT_EQ(format_.ExtractedFiles(),
              (std::vector<std::u16string>{docs + u"a.txt", docs + u"empty.txt"}));
    EXPECT_EQ(recorder_.events, (std::vector<std::string>{"write a.txt", "done a.txt",
                                                          "write empty.txt", "done empty.txt"}));
    // Progress rises strictly, ends at 100 after the last chunk and was told once per chunk.
    EXPECT_EQ(recorder_.percents, (std::vector<std::uint32_t>{40, 81, 100}));

    // The category of a.txt went to its tag stream, where the file system keeps streams.
    std::vector<std::uint8_t> stream;
    const platform::ErrorCode tagged = platform::ReadTagStream(docs + u"a.txt:ZelTag5", stream);
    if (tagged != platform::kErrorFileNotFound && tagged != platform::kErrorNotSupported) {
        ASSERT_EQ(tagged, platform::kErrorSuccess);
        EXPECT_EQ(stream, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0, 0, 0, 0, 0, 0}));
    }
}

TEST_F(DcfReaderTest, FormatVersionsZeroToFour) {
    const Bytes content = tests::Noise(3000, 3);
    for (const std::uint8_t version : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(static_cast<int>(version));
        ResetOut();
        ImageSettings settings;
        settings.formatVersion = version;
        // Versions other than 3 carry the tag flag without a tag block: it must not be read.
        // Legacy streams tell progress at every (n / 100 + 1)-th block, risen or not.
        const Bytes image = tests::BuildImage(
            settings, {u"\\d"},
            {{u"\\d\\f.bin", content, OneCategoryBlock()}, {u"\\d\\g.bin", Bytes(17, 'g'), {}}});
        recorder_.percents.clear();
        ASSERT_EQ(Extract(image), FORMAT_OK);
        EXPECT_EQ(ReadBytes(Out() / "d" / "f.bin"), content);
        EXPECT_EQ(ReadBytes(Out() / "d" / "g.bin"), Bytes(17, 'g'));
        EXPECT_EQ(recorder_.percents.size(), version < 2 ? 94u + 2u : 3u);
        EXPECT_EQ(recorder_.percents.back(), 100u);
    }
}

TEST_F(DcfReaderTest, EverySuiteOpensThroughThePasswordTrial) {
    const Bytes content = tests::Noise(5000, 9);
    for (std::uint32_t suite = 1; suite <= 9; ++suite) {
        SCOPED_TRACE(suite);
        ImageSettings settings;
        settings.suite = suite;
        settings.seed = suite;
        const std::u16string name = u"\\s" + std::u16string(1, static_cast<char16_t>(u'0' + suite));
        ASSERT_EQ(Extract(tests::BuildImage(settings, {}, {{name, content, {}}})), FORMAT_OK);
        EXPECT_EQ(ReadBytes(Out() / fs::path(name.substr(1))), content);
    }
}

TEST_F(DcfReaderTest, DecompressedChunkIsCutToTheEntrySize) {
    tests::ImageBuilder builder(ImageSettings{});
    builder.Preamble({});
    builder.KeyBlock();
    const Bytes names = dcf::EncodeNameBlock({}, {u"\\cut"});
    builder.FolderHeader({3, 1, 0, 10, names.size()});
    builder.EndOfHeader();
    builder.NameBlock({}, {u"\\cut"});
    builder.FileHeader({10, 0, 0});
    builder.DataStream(Bytes(100, 'x'));  // one chunk of 100 bytes for a size of 10
    ASSERT_EQ(Extract(builder.Image()), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "cut"), Bytes(10, 'x'));
}

TEST_F(DcfReaderTest, FoldersListedBeforeTheirParentsAreMade) {
    const std::vector<std::u16string> folders = {u"\\b", u"\\a\\b", u"\\a"};
    const Bytes image =
        tests::BuildImage(ImageSettings{}, folders, {{u"\\a\\b\\f", Bytes(5, 'f'), {}}});
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_TRUE(fs::is_directory(Out() / "a" / "b"));
    EXPECT_TRUE(fs::is_directory(Out() / "b"));
    EXPECT_EQ(ReadBytes(Out() / "a" / "b" / "f"), Bytes(5, 'f'));
}

TEST_F(DcfReaderTest, SkipConsumesTheStreamAndMovesProgress) {
    const Bytes first = tests::Noise(6000, 11);
    const Bytes second = tests::Noise(3000, 12);
    std::ofstream(Out() / "first") << "old";
    std::ofstream(Out() / "none") << "kept";
    settings_.overwriteMode = OVERWRITE_SKIP;
    const Bytes image = tests::BuildImage(
        ImageSettings{}, {},
        {{u"\\first", first, {}}, {u"\\none", {}, {}}, {u"\\second", second, {}}});
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "first"), (Bytes{'o', 'l', 'd'}));
    EXPECT_EQ(ReadBytes(Out() / "none"), (Bytes{'k', 'e', 'p', 't'}));  // nothing read for it
    EXPECT_EQ(ReadBytes(Out() / "second"), second);
    EXPECT_EQ(recorder_.events,
              (std::vector<std::string>{"skip first", "skip none", "write second", "done second"}));
    EXPECT_EQ(format_.ExtractedFiles().size(), 1u);
    const std::vector<std::uint32_t> skippedPercents = recorder_.percents;
    // Mode 100 replaces, an empty entry included; progress moves as it did for the skips.
    settings_.overwriteMode = OVERWRITE_REPLACE;
    recorder_.percents.clear();
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_EQ(recorder_.percents, skippedPercents);
    EXPECT_EQ(ReadBytes(Out() / "none"), Bytes{});
}

TEST_F(DcfReaderTest, AskingWithAndWithoutTheCallback) {
    std::ofstream(Out() / "f") << "old";
    const Bytes image = tests::BuildImage(ImageSettings{}, {}, {{u"\\f", Bytes(9, 'n'), {}}});
    settings_.overwriteMode = OVERWRITE_ASK;
    recorder_.answer = OVERWRITE_NUMBERED;  // replaces like 100
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "f"), Bytes(9, 'n'));
    EXPECT_EQ(recorder_.events.front(), "exists f");

    std::ofstream(Out() / "f", std::ios::trunc) << "old";
    settings_.onFileExists = nullptr;  // under 103 this ends the run at the first existing file
    EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
    EXPECT_EQ(ReadBytes(Out() / "f"), (Bytes{'o', 'l', 'd'}));

    settings_.overwriteMode = OVERWRITE_CANCEL;
    EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
    EXPECT_EQ(ReadBytes(Out() / "f"), (Bytes{'o', 'l', 'd'}));
}

// In a folder the run made, only the run's own names can meet: a file given twice is asked
// about the second time, and a file named like a folder of the archive finds that folder.
TEST_F(DcfReaderTest, NamesSharedInAFolderTheRunMadeAreLookedAt) {
    settings_.overwriteMode = OVERWRITE_ASK;
    recorder_.answer = OVERWRITE_SKIP;
    WriteArchive(tests::BuildImage(ImageSettings{}, {u"\\d", u"\\d\\sub"},
                                   {{u"\\d\\a.txt", Bytes(3, '1'), {}},
                                    {u"\\d\\a.txt", Bytes(3, '2'), {}},
                                    {u"\\d\\sub", Bytes(1, 'x'), {}}}));
    platform::File stream;
    ASSERT_EQ(stream.Open(request_.sourcePath, platform::OpenMode::Read), platform::kErrorSuccess);
    std::vector<std::u16string> files;
    ArchiveReport report;
    EXPECT_EQ(ReadArchiveBody(stream, request_, settings_, files, nullptr, report),
              FORMAT_TARGET_OPEN_FAILED);
    EXPECT_EQ(report.obstacle, TargetObstacle::Folder);
    EXPECT_EQ(ReadBytes(Out() / "d" / "a.txt"), Bytes(3, '1'));
    EXPECT_EQ(recorder_.events, (std::vector<std::string>{"write a.txt", "done a.txt",
                                                          "exists a.txt", "skip a.txt"}));
}

TEST_F(DcfReaderTest, CancelBetweenAndInsideEntries) {
    const Bytes big = tests::Noise(20000, 4);
    const Bytes image =
        tests::BuildImage(ImageSettings{}, {}, {{u"\\a", Bytes(10, 'a'), {}}, {u"\\b", big, {}}});
    recorder_.cancelAfterFiles = 1;
    EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
    EXPECT_TRUE(fs::exists(Out() / "a"));
    EXPECT_FALSE(fs::exists(Out() / "b"));

    // Inside b: two chunks are written, then the flag is up; workers that inflated more chunks
    // of the batch must not write them.
    recorder_.cancelAfterFiles = -1;
    for (const unsigned workers : {1u, 3u}) {
        SCOPED_TRACE(workers);
        ResetOut();
        settings_.codecWorkers = workers;
        recorder_.cancel = 0;
        recorder_.percents.clear();
        recorder_.cancelAfterPercents = 2;
        EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
        EXPECT_EQ(ReadBytes(Out() / "a"), Bytes(10, 'a'));
        EXPECT_EQ(ReadBytes(Out() / "b"), Bytes(big.begin(), big.begin() + 2 * 2048));
        EXPECT_EQ(format_.ExtractedFiles().size(), 1u);
    }
}

TEST_F(DcfReaderTest, FailureTableRowByRow) {
    // Records: preamble, key, folder header, end of header, names, a, its stream, b, its stream.
    std::vector<std::size_t> at;
    const Bytes good = tests::BuildImage(
        ImageSettings{}, {u"\\d"},
        {{u"\\d\\a", Bytes(10, 'a'), {}}, {u"\\d\\b", Bytes(20, 'b'), {}}}, {}, &at);
    ASSERT_EQ(at.size(), 9u);
    EXPECT_EQ(format_.ExtractArchive(nullptr, &settings_), FORMAT_BAD_ARGUMENT);
    EXPECT_EQ(format_.ExtractArchive(&request_, nullptr), FORMAT_BAD_ARGUMENT);

    request_.sourcePath = folder_.Path(u"missing.dcf");
    EXPECT_EQ(format_.ExtractArchive(&request_, &settings_), FORMAT_FAILED);
    request_.sourcePath = folder_.Path(u"archive.dcf");

    // The signature, the encrypted "FOLDERCRYPT", the end of the header.
    for (const std::size_t offset : {std::size_t{0}, at[2] + 5, at[3]}) {
        Bytes bad = good;
        bad[offset] ^= 1;
        EXPECT_EQ(Extract(bad), FORMAT_FAILED) << offset;
    }
    EXPECT_EQ(FilesUnderOut(), 0u);

    request_.password = u"wrong";
    EXPECT_EQ(Extract(good), FORMAT_BAD_KEY);
    request_.password = u"secret";
    EXPECT_EQ(FilesUnderOut(), 0u);

    // The second file header damaged: the first file stays.
    Bytes badFileHeader = good;
    badFileHeader[at[7] + 9] ^= 1;
    EXPECT_EQ(Extract(badFileHeader), FORMAT_FAILED);
    EXPECT_EQ(ReadBytes(Out() / "d" / "a"), Bytes(10, 'a'));
    EXPECT_FALSE(fs::exists(Out() / "d" / "b"));
}

TEST_F(DcfReaderTest, HostileNamesAreRefusedBeforeAnythingIsWritten) {
    // The rule is tested name by name with the archive names; here that the reader applies it.
    const std::vector<std::u16string> hostile = {u"\\..\\f", u"\\a/../../f", u"\\c:\\f",
                                                 u"\\\\server\\share\\f"};
    for (const auto& name : hostile) {
        SCOPED_TRACE(fs::path(name).string());
        EXPECT_EQ(Extract(tests::BuildImage(
                      ImageSettings{}, {u"\\ok"},
                      {{u"\\ok\\good", Bytes(3, 'g'), {}}, {name, Bytes(3, 'h'), {}}})),
                  FORMAT_FAILED);
        EXPECT_EQ(FilesUnderOut(), 0u);
        EXPECT_EQ(Extract(tests::BuildImage(ImageSettings{}, {name}, {})), FORMAT_FAILED);
        EXPECT_EQ(FilesUnderOut(), 0u);
    }
}

TEST_F(DcfReaderTest, NoWriteThroughALinkInTheTarget) {
    const fs::path elsewhere = folder_.Native() / "elsewhere";
    fs::create_directory(elsewhere);
    std::ofstream(elsewhere / "victim") << "outside";
    std::error_code error;
    fs::create_directory_symlink(elsewhere, Out() / "d", error);
    if (error) {
        GTEST_SKIP() << "no symbolic links here";
    }
    // A link as a folder of the entry.
    EXPECT_EQ(
        Extract(tests::BuildImage(ImageSettings{}, {u"\\d"}, {{u"\\d\\f", Bytes(3, 'x'), {}}})),
        FORMAT_TARGET_OPEN_FAILED);
    // A link at the entry's own path, pointing out of the target or nowhere: never written
    // through, never replaced, skipped when the user says so.
    recorder_.events.clear();
    fs::create_symlink(elsewhere / "victim", Out() / "f");
    fs::create_symlink(elsewhere / "gone", Out() / "g");
    for (const char16_t* name : {u"\\f", u"\\g"}) {
        const Bytes image = tests::BuildImage(ImageSettings{}, {}, {{name, Bytes(3, 'x'), {}}});
        for (const OverwriteMode mode : {OVERWRITE_REPLACE, OVERWRITE_ASK, OVERWRITE_SKIP}) {
            settings_.overwriteMode = mode;
            EXPECT_EQ(Extract(image),
                      mode == OVERWRITE_SKIP ? FORMAT_OK : FORMAT_TARGET_OPEN_FAILED);
        }
    }
    EXPECT_EQ(recorder_.events, (std::vector<std::string>{"skip f", "skip g"}));
    EXPECT_TRUE(fs::is_symlink(Out() / "f") && fs::is_symlink(Out() / "g"));
    EXPECT_EQ(ReadBytes(elsewhere / "victim"), Bytes({'o', 'u', 't', 's', 'i', 'd', 'e'}));
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), fs::directory_iterator()), 1);
}

// An unpaired surrogate is no valid UTF-16, yet a name may hold one; the link test once threw for
// it and ended the process.
TEST_F(DcfReaderTest, NamesWithUnpairedSurrogatesExtractWhereThePlatformPutsThem) {
    settings_ = DCCArchiveUserSettings();  // the recorder's callbacks print names as paths
    const std::u16string folder = u"\\d\xD800";
    const std::u16string file = folder + u"\\f\xDC00";
    const FormatResult result =
        Extract(tests::BuildImage(ImageSettings{}, {folder}, {{file, Bytes(3, 'x'), {}}}));
    if (platform::kPathSeparator != u'/') {
        // NTFS holds such names; under Wine the host's UTF-8 file system can't, and the folder
        // fails to be made. Either way the run ends in order.
        EXPECT_TRUE(result == FORMAT_OK || result == FORMAT_TARGET_OPEN_FAILED) << result;
        return;
    }
    ASSERT_EQ(result, FORMAT_OK);
    EXPECT_TRUE(platform::PathExists(JoinArchiveName(request_.targetPath, file)));

    // Where such a name becomes U+FFFD (UTF-8 file names), a link of that name is still seen.
    ResetOut();
    fs::create_directory(folder_.Native() / "elsewhere");
    std::error_code error;
    fs::create_directory_symlink(folder_.Native() / "elsewhere", Out() / "d\xEF\xBF\xBD", error);
    ASSERT_FALSE(error);
    EXPECT_EQ(Extract(tests::BuildImage(ImageSettings{}, {}, {{file, Bytes(3, 'x'), {}}})),
              FORMAT_TARGET_OPEN_FAILED);
    EXPECT_TRUE(fs::is_empty(folder_.Native() / "elsewhere"));
}

TEST_F(DcfReaderTest, ArchiveThatContainsItselfReplacesItAtTheEndOnlyWhereAllowed) {
    // The target folder is the archive's own folder, and the archive holds a file of its name.
    request_.targetPath = folder_.Root();
    const Bytes replacement(77, 'r');
    const Bytes image =
        tests::BuildImage(ImageSettings{}, {},
                          {{u"\\archive.dcf", replacement, {}}, {u"\\other", Bytes(2, 'o'), {}}});

    // Unless the caller allows it, the archive is never replaced, whatever the mode says; it is
    // not offered to the user either.
    for (const OverwriteMode mode : {OVERWRITE_SKIP, OVERWRITE_REPLACE, OVERWRITE_ASK}) {
        settings_.overwriteMode = mode;
        recorder_.events.clear();
        EXPECT_EQ(Extract(image), mode == OVERWRITE_SKIP ? FORMAT_OK : FORMAT_TARGET_OPEN_FAILED);
        EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"), image);
        const std::string first = recorder_.events.empty() ? "" : recorder_.events.front();
        EXPECT_EQ(first, mode == OVERWRITE_SKIP ? "skip archive.dcf" : "");
        EXPECT_EQ(Temporaries(folder_.Native()), 0u);
    }
    // A second name of the archive is the archive too.
    std::error_code error;
    fs::create_hard_link(folder_.Native() / "archive.dcf", folder_.Native() / "alias", error);
    if (!error) {
        settings_.overwriteMode = OVERWRITE_REPLACE;
        EXPECT_EQ(Extract(tests::BuildImage(ImageSettings{}, {}, {{u"\\alias", replacement, {}}})),
                  FORMAT_TARGET_OPEN_FAILED);
        EXPECT_NE(ReadBytes(folder_.Native() / "archive.dcf"), replacement);
        fs::remove(folder_.Native() / "alias");
    }
}

TEST_F(DcfReaderTest, TruncatedImagesLeaveWhatTheTablePromises) {
    // Records: preamble, key block, folder header, end of header, names, then the first file's
    // header, tag block and stream, then the second's header and stream. (Names longer than one
    // letter: under Wine the stream of a file "a" is "a:ZelTag5", which reads as a drive.)
    const Bytes a = tests::Noise(5000, 21);
    std::vector<std::size_t> borders;
    const Bytes image = tests::BuildImage(
        ImageSettings{}, {u"\\t"},
        {{u"\\t\\first", a, OneCategoryBlock()}, {u"\\t\\second", Bytes(3, 'b'), {}}},
        OneCategoryBlock(), &borders);
    ASSERT_EQ(borders.size(), 12u);  // a's stream is three chunks
    borders.erase(borders.begin() + 8, borders.begin() + 10);
    enum Record { kNames = 4, kHeaderA = 5, kStreamA = 7, kHeaderB = 8, kStreamB = 9 };

    for (std::size_t record = 0; record < borders.size(); ++record) {
        const std::size_t end = record + 1 < borders.size() ? borders[record + 1] : image.size();
        for (const std::size_t cut : {borders[record], borders[record] + 1, end - 1}) {
            SCOPED_TRACE(testing::Message() << "record " << record << ", cut at " << cut);
            ResetOut();
            const FormatResult result = Extract(Bytes(image.begin(), image.begin() + cut));
            const auto fileA = ReadBytes(Out() / "t" / "first");
            const auto fileB = ReadBytes(Out() / "t" / "second");
            if (record <= kNames) {
                // Up to the names nothing is touched; a short name block is no failure.
                EXPECT_EQ(result, record == kNames ? FORMAT_OK : FORMAT_FAILED);
                EXPECT_EQ(FilesUnderOut(), 0u);
                continue;
            }
            EXPECT_EQ(result, FORMAT_FAILED);
            EXPECT_TRUE(fs::is_directory(Out() / "t"));
            if (record < kStreamA) {
                EXPECT_EQ(FilesUnderOut(), 1u);
            } else if (record == kStreamA) {
                // The file in work keeps the whole chunks written before the cut.
                ASSERT_TRUE(fileA.has_value());
                EXPECT_LT(fileA->size(), a.size());
                EXPECT_TRUE(std::equal(fileA->begin(), fileA->end(), a.begin()));
                EXPECT_FALSE(fileB.has_value());
            } else {
                EXPECT_EQ(fileA, a);
                EXPECT_EQ(fileB.has_value(), record == kStreamB);
                EXPECT_NE(fileB, Bytes(3, 'b'));
            }
        }
    }
}

// An image of one file whose records up to the file header are given, with the stream left to
// the caller: the folder header says what `header` holds whatever the names are.
tests::ImageBuilder OneFileImage(const dcf::FolderHeader& header, const dcf::FileHeader& file,
                                 const ImageSettings& settings = {}) {
    tests::ImageBuilder builder(settings);
    builder.Preamble({});
    builder.KeyBlock();
    builder.FolderHeader(header);
    if (dcf::HasEndOfHeaderBlock(header.formatVersion)) {
        builder.EndOfHeader();
    }
    builder.NameBlock({}, {u"\\f"});
    builder.FileHeader(file);
    return builder;
}

constexpr std::uint64_t kOneFileNames = 32;  // "\f" and its terminator, raised to 16 units

TEST_F(DcfReaderTest, LengthsAndCountsBeyondTheImageAreRefused) {
    struct Case {
        const char* what;
        dcf::FolderHeader header;
        dcf::FileHeader file;
        FormatResult expected;
    };
    const std::uint64_t pieces31 = std::uint64_t{1} << 31;
    const Case cases[] = {
        {"name block over 32 bits", {3, 1, 0, 3, std::uint64_t{1} << 32}, {3}, FORMAT_FAILED},
        // Longer than the file: the name block is unreadable, which extracts nothing.
        {"name block past the end", {3, 1, 0, 3, 1u << 30}, {3}, FORMAT_OK},
        {"more files than names", {3, 3, 0, 3, kOneFileNames}, {3}, FORMAT_FAILED},
        {"more folders than names", {3, 1, 4, 3, kOneFileNames}, {3}, FORMAT_FAILED},
        {"tag block past the end", {3, 1, 0, 3, kOneFileNames}, {3, 1, 1ull << 40}, FORMAT_FAILED},
        {"tag block not whole blocks", {3, 1, 0, 3, kOneFileNames}, {3, 1, 17}, FORMAT_FAILED},
        {"2^31 pieces", {3, 1, 0, 0, kOneFileNames}, {pieces31 * 2048}, FORMAT_FAILED},
        {"2^31 legacy blocks", {1, 1, 0, 0, kOneFileNames}, {pieces31 * 16}, FORMAT_FAILED},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ResetOut();
        tests::ImageBuilder builder = OneFileImage(c.header, c.file);
        builder.DataStream(Bytes(3, 'x'));
        EXPECT_EQ(Extract(builder.Image()), c.expected);
        EXPECT_FALSE(fs::exists(Out() / "f") && fs::file_size(Out() / "f") != 0);
    }
}

TEST_F(DcfReaderTest, PreambleIsReadByItsLengthAlone) {
    std::vector<std::size_t> at;
    const Bytes image = tests::BuildImage(ImageSettings{}, {}, {{u"\\f", Bytes(5, 'p'), {}}},
                                          OneCategoryBlock(), &at);
    // L = 0: the key block follows the length field at once.
    Bytes bare(image.begin(), image.begin() + dcf::kPreambleHeadSize);
    Zelmarik::StoreBig<std::uint32_t>(bare.data() + dcf::kSignatureSize, 0);
    bare.insert(bare.end(), image.begin() + at[1], image.end());
    ASSERT_EQ(Extract(bare), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "f"), Bytes(5, 'p'));

    // Neither a lost start marker nor a damaged category block fails the archive.
    for (const std::size_t offset : {dcf::kPreambleHeadSize, dcf::kPreambleHeadSize + 12}) {
        Bytes damaged = image;
        damaged[offset] ^= 0x55;
        ResetOut();
        ASSERT_EQ(Extract(damaged), FORMAT_OK);
        EXPECT_EQ(ReadBytes(Out() / "f"), Bytes(5, 'p'));
    }

    // An L that runs past the file is a failed read.
    Bytes overlong = image;
    Zelmarik::StoreBig<std::uint32_t>(overlong.data() + dcf::kSignatureSize, 0xFFFFFFF0u);
    ResetOut();
    EXPECT_EQ(Extract(overlong), FORMAT_FAILED);
    EXPECT_EQ(FilesUnderOut(), 0u);
}

// 1280·B is the bound before and after decompression: a length field below it is read, one at
// it is refused even when its bytes are there and would decompress (they would not fit the
// slot); a chunk that decompresses to one byte more than the bound is refused.
TEST_F(DcfReaderTest, ChunksAtTheReadersBounds) {
    const std::size_t bound = dcf::kMaxChunkBlocks * 16;
    const Bytes full(bound, 'z');
    // A zlib stream ends by itself: the bytes behind it in the chunk are ignored.
    Bytes padded = tests::Compress(full);
    padded.resize(bound, 0xA5);
    struct Row {
        std::uint32_t lengthField;
        Bytes stored;
        Bytes content;
        FormatResult expected;
    };
    const Row rows[] = {
        {static_cast<std::uint32_t>(bound - 1), Bytes(padded.begin(), padded.end() - 1), full,
         FORMAT_OK},
        {static_cast<std::uint32_t>(bound), padded, full, FORMAT_FAILED},
        {0xFFFFFFFFu, Bytes(64, 0), Bytes(100, 'z'), FORMAT_FAILED},
        {0, tests::Compress(Bytes(bound + 1, 'y')), Bytes(bound + 1, 'y'), FORMAT_FAILED},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lengthField);
        ResetOut();
        const std::size_t size = row.content.size();
        tests::ImageBuilder builder = OneFileImage({3, 1, 0, size, kOneFileNames}, {size});
        builder.StartStream();
        builder.Chunk(
            row.lengthField != 0 ? row.lengthField : static_cast<std::uint32_t>(row.stored.size()),
            row.stored);
        ASSERT_EQ(Extract(builder.Image()), row.expected);
        if (row.expected == FORMAT_OK) {
            EXPECT_EQ(ReadBytes(Out() / "f"), row.content);
        }
    }
}

TEST_F(DcfReaderTest, LegacyStreamCornersAndItsDeafnessToCancel) {
    ImageSettings settings;
    settings.formatVersion = 1;
    // An empty file still has one block, a size at a multiple of B one more block than it needs;
    // the next entry must follow each at once.
    const Bytes sixteen = tests::Noise(16, 61);
    const Bytes image = tests::BuildImage(settings, {},
                                          {{u"\\empty", {}, {}},
                                           {u"\\sixteen", sixteen, {}},
                                           {u"\\odd", Bytes(33, 'o'), {}},
                                           {u"\\last", Bytes(2, 'l'), {}}});
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "empty"), Bytes{});
    EXPECT_EQ(ReadBytes(Out() / "sixteen"), sixteen);
    EXPECT_EQ(ReadBytes(Out() / "odd"), Bytes(33, 'o'));
    EXPECT_EQ(ReadBytes(Out() / "last"), Bytes(2, 'l'));

    // A legacy stream runs to its end whatever the flag says; the next entry sees it.
    ResetOut();
    const Bytes big = tests::Noise(3000, 62);
    const Bytes two = tests::BuildImage(settings, {}, {{u"\\a", big, {}}, {u"\\b", big, {}}});
    recorder_.percents.clear();
    recorder_.cancelAfterPercents = 1;
    EXPECT_EQ(Extract(two), FORMAT_CANCELLED);
    EXPECT_EQ(ReadBytes(Out() / "a"), big);
    EXPECT_FALSE(fs::exists(Out() / "b"));
}

TEST_F(DcfReaderTest, FailedTaggingLeavesTheFileAndTheRunGoesOn) {
    // More categories than an extended attribute can hold: the tagger fails where streams are
    // attributes; where they are streams the tagging succeeds.
    Zelmarik::CCategoryContainer many;
    for (std::uint32_t i = 0; i < 5000; ++i) {
        Zelmarik::CDlpCategory category;
        std::array<std::uint8_t, 16> id{0xC0};
        Zelmarik::StoreLittle<std::uint32_t>(id.data() + 4, i);
        category.Id = Zelmarik::CGuid(id);
        many.Add(category);
    }
    const Zelmarik::Blob blob = Zelmarik::WriteCategoryBlock(many);
    const Bytes block(blob.Data(), blob.Data() + blob.Size());
    const Bytes image = tests::BuildImage(
        ImageSettings{}, {}, {{u"\\tagged", Bytes(6, 't'), block}, {u"\\next", Bytes(2, 'n'), {}}});
    ASSERT_EQ(Extract(image), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "tagged"), Bytes(6, 't'));
    EXPECT_EQ(ReadBytes(Out() / "next"), Bytes(2, 'n'));
    EXPECT_EQ(format_.ExtractedFiles().size(), 2u);
    if (platform::kPathSeparator == u'/') {
        // The attribute keeps what went in before the tagger gave up.
        std::vector<std::uint8_t> stream;
        platform::ReadTagStream(folder_.Path(u"out/tagged:ZelTag5"), stream);
        EXPECT_LT(stream.size(), many.Categories.size() * 16);
    }
}

TEST_F(DcfReaderTest, PendingReplacementOfTheArchiveItself) {
    request_.targetPath = folder_.Root();
    request_.mayReplaceSource = true;
    const Bytes replacement(50, 'r');
    std::vector<std::size_t> at;
    const Bytes image = tests::BuildImage(
        ImageSettings{}, {}, {{u"\\archive.dcf", replacement, {}}, {u"\\other", Bytes(2, 'o'), {}}},
        {}, &at);

    // A failure that leaves the loop still carries the replacement out, where an open file can
    // be deleted; on Windows the archive stays and the replacement goes.
    const bool openFilesDeletable = platform::kPathSeparator == u'/';
    Bytes badHeader = image;
    badHeader[at[7] + 9] ^= 1;  // records: ..., names, the archive's entry, other's header
    EXPECT_EQ(Extract(badHeader), FORMAT_FAILED);
    EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"),
              openFilesDeletable ? replacement : badHeader);
    EXPECT_EQ(Temporaries(folder_.Native()), 0u);

    // Two entries of the archive's name: the last takes its place, the first leaves nothing.
    if (openFilesDeletable) {
        const Bytes twice = tests::BuildImage(
            ImageSettings{}, {},
            {{u"\\archive.dcf", Bytes(5, '1'), {}}, {u"\\archive.dcf", replacement, {}}});
        EXPECT_EQ(Extract(twice), FORMAT_OK);
        EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"), replacement);
        EXPECT_EQ(Temporaries(folder_.Native()), 0u);
    }

    // A run that ends directly leaves the archive as it is, and no temporary file.
    recorder_.cancelAfterFiles = 1;
    EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
    EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"), image);
    EXPECT_EQ(Temporaries(folder_.Native()), 0u);
}

// Archives sealed for the test program's recipient.
class DcfReaderKeyTest : public DcfReaderTest {
protected:
    void SetUp() override {
        DcfReaderTest::SetUp();
        request_.securityKey = tests::Recipient().privateKey;
        request_.password.Clear();
    }

    Bytes Sealed(std::uint16_t keyBlockVersion, std::uint32_t suite, const Bytes& content) {
        ImageSettings settings;
        settings.keyBlockVersion = keyBlockVersion;
        settings.suite = suite;
        settings.modulus = tests::Recipient().modulus.data();
        return tests::BuildImage(settings, {}, {{u"\\k", content, {}}});
    }
};

TEST_F(DcfReaderKeyTest, PrivateKeyRouteWithKeyBlockVersionsAndSuites) {
    const Bytes content = tests::Noise(3000, 41);
    // Version 3 moves the master key area in the message, version 1 does not; a cascade of
    // mode 2 is only reachable through the suite id of the key block.
    for (const auto& [version, suite] :
         {std::pair<std::uint16_t, std::uint32_t>{3, 1}, {1, 1}, {3, 16}, {3, 5}}) {
        SCOPED_TRACE(testing::Message() << version << "/" << suite);
        ResetOut();
        ASSERT_EQ(Extract(Sealed(version, suite, content)), FORMAT_OK);
        EXPECT_EQ(ReadBytes(Out() / "k"), content);
    }
}

TEST_F(DcfReaderKeyTest, PasswordTakesPrecedenceAndZeroNumbersMeanNoKey) {
    const Bytes image = Sealed(3, 1, Bytes(5, 'k'));
    const Zelmarik::DCCSecurityKey& key = tests::Recipient().privateKey;
    request_.password = u"wrong";  // the password route is taken though the key is good
    EXPECT_EQ(Extract(image), FORMAT_BAD_KEY);
    request_.password = u"secret";
    EXPECT_EQ(Extract(image), FORMAT_OK);

    request_.password.Clear();
    request_.securityKey.PrivateKey->Numbers[3].fill(0);
    EXPECT_EQ(Extract(image), FORMAT_BAD_KEY);
    // A key of another recipient: the message shows no "FILE".
    ResetOut();
    request_.securityKey = key;
    request_.securityKey.PrivateKey->Numbers[0][0] ^= 2;
    EXPECT_EQ(Extract(image), FORMAT_BAD_KEY);
    EXPECT_EQ(FilesUnderOut(), 0u);
}

TEST_F(DcfReaderKeyTest, SuiteNamedByTheKeyBlockDecides) {
    // By the RSA slot the suite id of the key block is taken as it stands: an empty row fails
    // the opening; another suite than the one in force opens keys that read no folder header.
    ImageSettings settings;
    settings.modulus = tests::Recipient().modulus.data();
    for (const auto& [declared, expected] :
         {std::pair<std::uint32_t, FormatResult>{11, FORMAT_BAD_KEY},
          {0xFFFFFFFFu, FORMAT_BAD_KEY},
          {13, FORMAT_FAILED},
          {2, FORMAT_FAILED}}) {
        SCOPED_TRACE(declared);
        settings.declaredSuite = declared;
        EXPECT_EQ(Extract(tests::BuildImage(settings, {}, {{u"\\k", Bytes(5, 'k'), {}}})),
                  expected);
        EXPECT_EQ(FilesUnderOut(), 0u);
    }
}

class DcfInspectTest : public DcfReaderTest {
protected:
    FormatResult Inspect(const Bytes& image, ArchiveReport& report) {
        WriteArchive(image);
        platform::File stream;
        EXPECT_EQ(stream.Open(request_.sourcePath, platform::OpenMode::Read),
                  platform::kErrorSuccess);
        return InspectArchiveBody(stream, request_, settings_, report);
    }
};

TEST_F(DcfInspectTest, WalksEveryEntryAndWritesNothing) {
    std::vector<std::size_t> at;
    const Bytes content = tests::Noise(5000, 51);
    const Bytes image = tests::BuildImage(
        ImageSettings{}, {u"\\d"},
        {{u"\\d\\a", content, OneCategoryBlock()}, {u"\\d\\b", Bytes(20, 'b'), {}}},
        OneCategoryBlock(), &at);
    ArchiveReport report;
    ASSERT_EQ(Inspect(image, report), FORMAT_OK);
    EXPECT_EQ(FilesUnderOut(), 0u);
    EXPECT_TRUE(report.keysOpened && report.headerRead && report.namesRead);
    EXPECT_EQ(report.totalSize, 5020u);
    ASSERT_EQ(report.entries.size(), 2u);
    EXPECT_EQ(report.entries[0].name, u"\\d\\a");
    EXPECT_EQ(report.entries[0].categories.Categories.size(), 1u);
    EXPECT_FALSE(report.entries[1].tagged);
    EXPECT_EQ(recorder_.percents.back(), 100u);

    // Damage in the first stream stops the walk at that entry.
    Bytes damaged = image;
    damaged[at[7] + 16 + 40] ^= 0x10;  // records: ..., names, a, its tag block, its stream
    ArchiveReport partial;
    EXPECT_EQ(Inspect(damaged, partial), FORMAT_FAILED);
    EXPECT_EQ(partial.entries.size(), 1u);

    // A name block cut short is no failure of the format, but the report tells it.
    ArchiveReport cut;
    EXPECT_EQ(Inspect(Bytes(image.begin(), image.begin() + at[4] + 8), cut), FORMAT_OK);
    EXPECT_TRUE(cut.headerRead);
    EXPECT_FALSE(cut.namesRead);
}

}  // namespace
