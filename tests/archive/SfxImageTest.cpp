#include "archive/detail/SfxImage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "archive/Archive.h"
#include "archive/detail/FileFormatDCF.h"
#include "tests/TestFolder.h"

namespace {

using platform::File;
using platform::OpenMode;

// Writes `stub` bytes (sparse), then `image`, then a trailer that claims `claimed` bytes of image.
void WriteSfx(const std::u16string& path, std::uint64_t stubSize, const std::string& image,
              std::uint64_t claimed) {
    File file;
    ASSERT_EQ(file.Open(path, OpenMode::CreateAlways), platform::kErrorSuccess);
    if (stubSize > 0) {
        ASSERT_EQ(file.Seek(stubSize - 1), platform::kErrorSuccess);
        ASSERT_EQ(file.Write("M", 1), platform::kErrorSuccess);
    }
    ASSERT_EQ(file.Write(image.data(), image.size()), platform::kErrorSuccess);
    const SfxTrailerBytes trailer = BuildSfxTrailer(claimed);
    ASSERT_EQ(file.Write(trailer.data(), trailer.size()), platform::kErrorSuccess);
}

// The trailer is what the stub looks for: its bytes are the contract between writer and stub.
TEST(SfxTrailer, LayoutIsExactToTheByte) {
    const SfxTrailerBytes trailer = BuildSfxTrailer(0x0102030405060708ull);
    std::vector<std::uint8_t> expected(1024, 0);
    const std::string head = "SFXCRYPTOR\x01";
    std::copy(head.begin(), head.end(), expected.begin());
    for (int i = 0; i < 8; ++i) {
        expected[12 + i] = static_cast<std::uint8_t>(8 - i);
    }
    expected[1010] = 5;
    EXPECT_EQ(std::vector<std::uint8_t>(trailer.begin(), trailer.end()), expected);
    EXPECT_EQ(SfxImageSize(trailer), 0x0102030405060708ull);
    SfxTrailerBytes damaged = trailer;
    damaged[9] = 'Q';
    EXPECT_FALSE(HasSfxSignature(damaged));
}

TEST(SfxImage, StartsBehindStubsOfAnySizeBeyondFourGiBToo) {
    tests::TestFolder folder;
    const std::string image = "DCF-IMAGE-BYTES";
    for (const std::uint64_t stub : {std::uint64_t{1}, std::uint64_t{1024}, std::uint64_t{70000},
                                     (std::uint64_t{5} << 30) + 3}) {
        SCOPED_TRACE(stub);
        const std::u16string path = folder.Path(u"s.exe");
        WriteSfx(path, stub, image, image.size());
        File stream;
        ASSERT_EQ(OpenSfxImage(path, stream), FORMAT_OK);
        std::uint64_t at = 0;
        ASSERT_EQ(stream.Tell(at), platform::kErrorSuccess);
        EXPECT_EQ(at, stub);
        std::string read(image.size(), '\0');
        std::size_t got = 0;
        EXPECT_EQ(stream.Read(read.data(), read.size(), got), platform::kErrorSuccess);
        EXPECT_EQ(read, image);
        EXPECT_TRUE(DCCFileFormatSFX().IsFormatOf(path));
    }
}

TEST(SfxImage, RefusesFilesAndTrailersThatHoldNoImage) {
    tests::TestFolder folder;
    const std::u16string path = folder.Path(u"t.exe");
    const std::string image(600, 'i');
    File stream;
    EXPECT_EQ(OpenSfxImage(folder.Path(u"missing.exe"), stream), FORMAT_SOURCE_EMPTY);
    ASSERT_EQ(File().Open(path, OpenMode::CreateAlways), platform::kErrorSuccess);
    EXPECT_EQ(OpenSfxImage(path, stream), FORMAT_SOURCE_EMPTY);
    {
        File file;  // shorter than a trailer
        ASSERT_EQ(file.Open(path, OpenMode::CreateAlways), platform::kErrorSuccess);
        ASSERT_EQ(file.Write(image.data(), image.size()), platform::kErrorSuccess);
    }
    EXPECT_EQ(OpenSfxImage(path, stream), FORMAT_FAILED);
    EXPECT_FALSE(DCCFileFormatSFX().IsFormatOf(path));

    struct Row {
        std::uint64_t stub;
        std::string image;
        std::uint64_t claimed;
        FormatResult expected;
    };
    for (const Row& row : {Row{0, image, image.size(), FORMAT_NO_PAYLOAD_ROOM},
                           Row{10, image, image.size() + 11, FORMAT_FAILED},
                           Row{10, image, ~std::uint64_t{0}, FORMAT_FAILED},
                           Row{0, "", 0, FORMAT_NO_PAYLOAD_ROOM}}) {
        SCOPED_TRACE(row.claimed);
        WriteSfx(path, row.stub, row.image, row.claimed);
        EXPECT_EQ(OpenSfxImage(path, stream), row.expected);
    }
    EXPECT_FALSE(DCCFileFormatSFX().IsFormatOf(path));  // a trailer and nothing else
}

// The format class wants its extension; a program asking IsSelfExtractingFile does not.
TEST(SfxImage, IsFormatOfNeedsExtensionAndSignature) {
    tests::TestFolder folder;
    DCCFileFormatSFX sfx;
    const std::u16string good = folder.Path(u"UPPER.EXE");
    WriteSfx(good, 100, "img", 3);
    EXPECT_TRUE(sfx.IsFormatOf(good));
    const std::u16string otherExtension = folder.Path(u"a.dcf");
    WriteSfx(otherExtension, 100, "img", 3);
    EXPECT_FALSE(sfx.IsFormatOf(otherExtension));
    EXPECT_TRUE(IsSelfExtractingFile(otherExtension));
    const std::u16string plain = folder.Path(u"plain.exe");
    {
        File file;
        ASSERT_EQ(file.Open(plain, OpenMode::CreateAlways), platform::kErrorSuccess);
        ASSERT_EQ(file.Write(std::string(5000, 'z').data(), 5000), platform::kErrorSuccess);
    }
    EXPECT_FALSE(sfx.IsFormatOf(plain));
    EXPECT_FALSE(IsSelfExtractingFile(plain));
}

TEST(FileFormat, ExtensionMatchIgnoresCaseAndNeedsTheWholeExtension) {
    DCCFileFormatDCF dcf;
    for (const char16_t* name : {u"archive.dcf", u"ARCHIVE.DCF", u".Dcf"}) {
        EXPECT_TRUE(dcf.IsFormatOf(name));
    }
    for (const char16_t* name : {u"dcf", u"archive.dcf ", u"archive_dcf", u""}) {
        EXPECT_FALSE(dcf.IsFormatOf(name));
    }
    EXPECT_EQ(FoldCase(u"\u00C9T\u00C9 \u0416 \u0401"), u"\u00E9t\u00E9 \u0436 \u0451");
}

}  // namespace
