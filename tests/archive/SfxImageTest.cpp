#include "archive/detail/SfxImage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "archive/Archive.h"
#include "tests/TestFolder.h"

namespace {

using platform::File;
using platform::OpenMode;

// Writes `stub`, then `image`, then a trailer that claims `claimed` bytes of image.
void WriteSfx(const std::u16string& path, std::uint64_t stubSize, const std::string& image,
              std::uint64_t claimed) {
    File file;
    ASSERT_EQ(file.Open(path, OpenMode::CreateAlways), platform::kErrorSuccess);
    // A large stub is left sparse: only its last byte is written.
    if (stubSize > 0) {
        ASSERT_EQ(file.Seek(stubSize - 1), platform::kErrorSuccess);
        ASSERT_EQ(file.Write("M", 1), platform::kErrorSuccess);
    }
    ASSERT_EQ(file.Write(image.data(), image.size()), platform::kErrorSuccess);
    const SfxTrailerBytes trailer = BuildSfxTrailer(claimed);
    ASSERT_EQ(file.Write(trailer.data(), trailer.size()), platform::kErrorSuccess);
}

std::string ReadFromImage(File& stream, std::size_t size) {
    std::string text(size, '\0');
    std::size_t got = 0;
    EXPECT_EQ(stream.Read(text.data(), size, got), platform::kErrorSuccess);
    text.resize(got);
    return text;
}

TEST(SfxTrailer, LayoutIsExactToTheByte) {
    const SfxTrailerBytes trailer = BuildSfxTrailer(0x0102030405060708ull);
    EXPECT_EQ(std::string(trailer.begin(), trailer.begin() + 10), "SFXCRYPTOR");
    EXPECT_EQ(trailer[10], 1);
    EXPECT_EQ(trailer[11], 0);
    EXPECT_EQ(std::vector<std::uint8_t>(trailer.begin() + 12, trailer.begin() + 20),
              (std::vector<std::uint8_t>{8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(std::vector<std::uint8_t>(trailer.begin() + 1010, trailer.begin() + 1014),
              (std::vector<std::uint8_t>{5, 0, 0, 0}));
    std::size_t nonzero = 0;
    for (std::size_t i = 20; i < trailer.size(); ++i) {
        nonzero += (i < 1010 || i >= 1014) && trailer[i] != 0;
    }
    EXPECT_EQ(nonzero, 0u);
    EXPECT_TRUE(HasSfxSignature(trailer));
    EXPECT_EQ(SfxImageSize(trailer), 0x0102030405060708ull);

    SfxTrailerBytes damaged = trailer;
    damaged[9] = 'Q';
    EXPECT_FALSE(HasSfxSignature(damaged));
}

TEST(SfxImage, StartsBehindStubsOfAnySize) {
    tests::TestFolder folder;
    const std::string image = "DCF-IMAGE-BYTES";
    for (const std::uint64_t stub : {std::uint64_t{1}, std::uint64_t{1023}, std::uint64_t{1024},
                                     std::uint64_t{1025}, std::uint64_t{70000}}) {
        const std::u16string path = folder.Path(u"s.exe");
        WriteSfx(path, stub, image, image.size());
        File stream;
        ASSERT_EQ(OpenSfxImage(path, stream), FORMAT_OK) << stub;
        EXPECT_EQ(ReadFromImage(stream, image.size()), image) << stub;
        EXPECT_TRUE(DCCFileFormatSFX().IsFormatOf(path));
    }
}

TEST(SfxImage, StartsBehindAStubBeyondFourGiB) {
    tests::TestFolder folder;
    const std::u16string path = folder.Path(u"big.exe");
    const std::string image = "image past 4 GiB";
    WriteSfx(path, (std::uint64_t{5} << 30) + 3, image, image.size());
    File stream;
    ASSERT_EQ(OpenSfxImage(path, stream), FORMAT_OK);
    std::uint64_t at = 0;
    ASSERT_EQ(stream.Tell(at), platform::kErrorSuccess);
    EXPECT_EQ(at, (std::uint64_t{5} << 30) + 3);
    EXPECT_EQ(ReadFromImage(stream, image.size()), image);
}

TEST(SfxImage, RefusesTrailersThatLeaveNoRoomOrPointOutside) {
    tests::TestFolder folder;
    const std::u16string path = folder.Path(u"t.exe");
    const std::string image(600, 'i');
    File stream;

    WriteSfx(path, 0, image, image.size());  // a bare image: no stub in front
    EXPECT_EQ(OpenSfxImage(path, stream), FORMAT_NO_PAYLOAD_ROOM);

    WriteSfx(path, 10, image, image.size() + 11);  // claims more than the file holds
    EXPECT_EQ(OpenSfxImage(path, stream), FORMAT_FAILED);

    WriteSfx(path, 10, image, ~std::uint64_t{0});
    EXPECT_EQ(OpenSfxImage(path, stream), FORMAT_FAILED);
}

TEST(SfxImage, ShortEmptyAndMissingFiles) {
    tests::TestFolder folder;
    File stream;
    EXPECT_EQ(OpenSfxImage(folder.Path(u"missing.exe"), stream), FORMAT_SOURCE_EMPTY);

    const std::u16string empty = folder.Path(u"empty.exe");
    ASSERT_EQ(File().Open(empty, OpenMode::CreateAlways), platform::kErrorSuccess);
    EXPECT_EQ(OpenSfxImage(empty, stream), FORMAT_SOURCE_EMPTY);

    const std::u16string shorter = folder.Path(u"short.exe");
    {
        File file;
        ASSERT_EQ(file.Open(shorter, OpenMode::CreateAlways), platform::kErrorSuccess);
        ASSERT_EQ(file.Write(std::string(1000, 'x').data(), 1000), platform::kErrorSuccess);
    }
    EXPECT_EQ(OpenSfxImage(shorter, stream), FORMAT_FAILED);
    EXPECT_FALSE(DCCFileFormatSFX().IsFormatOf(shorter));

    // Exactly one trailer and nothing else: refused by IsFormatOf, no room for a stub either.
    const std::u16string trailer_only = folder.Path(u"trailer.exe");
    WriteSfx(trailer_only, 0, "", 0);
    EXPECT_FALSE(DCCFileFormatSFX().IsFormatOf(trailer_only));
    EXPECT_EQ(OpenSfxImage(trailer_only, stream), FORMAT_NO_PAYLOAD_ROOM);
}

// The format class wants its extension; a program asking IsSelfExtractingFile does not.
TEST(SfxImage, IsFormatOfNeedsExtensionAndSignature) {
    tests::TestFolder folder;
    DCCFileFormatSFX sfx;
    const std::u16string good = folder.Path(u"UPPER.EXE");
    WriteSfx(good, 100, "img", 3);
    EXPECT_TRUE(sfx.IsFormatOf(good));

    const std::u16string other_extension = folder.Path(u"a.dcf");
    WriteSfx(other_extension, 100, "img", 3);
    EXPECT_FALSE(sfx.IsFormatOf(other_extension));
    EXPECT_TRUE(IsSelfExtractingFile(other_extension));

    const std::u16string no_signature = folder.Path(u"plain.exe");
    {
        File file;
        ASSERT_EQ(file.Open(no_signature, OpenMode::CreateAlways), platform::kErrorSuccess);
        ASSERT_EQ(file.Write(std::string(5000, 'z').data(), 5000), platform::kErrorSuccess);
    }
    EXPECT_FALSE(sfx.IsFormatOf(no_signature));
    EXPECT_FALSE(IsSelfExtractingFile(no_signature));
}

}  // namespace
