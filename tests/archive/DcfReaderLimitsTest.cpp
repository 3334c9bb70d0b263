// The reader against lengths and counts that no writer makes, chunks at the reader's bounds,
// the legacy stream's corners, and the rows of the failure table that need a staged image.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "Common/Common/Endian.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/DcfRecords.h"
#include "platform/File.h"
#include "platform/TaggedFile.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/archive/ReaderFixture.h"

namespace {

using tests::Bytes;
using tests::DcfReaderTest;
using tests::ImageSettings;
using tests::OneCategoryBlock;
using tests::ReadBytes;
namespace fs = std::filesystem;

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
    const auto strayTemporaries = [this] {
        std::vector<Bytes> found;
        for (const auto& entry : fs::directory_iterator(folder_.Native())) {
            if (entry.path().filename().string().rfind("st", 0) == 0) {
                found.push_back(*ReadBytes(entry.path()));
            }
        }
        return found;
    };

    // A failure that leaves the loop still carries the replacement out, where an open file can
    // be deleted; on Windows the archive stays and the replacement goes.
    const bool openFilesDeletable = platform::kPathSeparator == u'/';
    Bytes badHeader = image;
    badHeader[at[7] + 9] ^= 1;  // records: ..., names, the archive's entry, other's header
    EXPECT_EQ(Extract(badHeader), FORMAT_FAILED);
    EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"),
              openFilesDeletable ? replacement : badHeader);
    EXPECT_TRUE(strayTemporaries().empty());

    // Two entries of the archive's name: the last takes its place, the first leaves nothing.
    if (openFilesDeletable) {
        const Bytes twice = tests::BuildImage(
            ImageSettings{}, {},
            {{u"\\archive.dcf", Bytes(5, '1'), {}}, {u"\\archive.dcf", replacement, {}}});
        EXPECT_EQ(Extract(twice), FORMAT_OK);
        EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"), replacement);
        EXPECT_TRUE(strayTemporaries().empty());
    }

    // A run that ends directly leaves the archive as it is, and no temporary file.
    recorder_.cancelAfterFiles = 1;
    EXPECT_EQ(Extract(image), FORMAT_CANCELLED);
    EXPECT_EQ(ReadBytes(folder_.Native() / "archive.dcf"), image);
    EXPECT_TRUE(strayTemporaries().empty());
}

}  // namespace
