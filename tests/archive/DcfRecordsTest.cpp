// The record rules the known-answer archives do not pin (the layouts and the RSA message are
// matched byte for byte there), and the key block's refusals.
#include "archive/detail/DcfRecords.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "archive/detail/KeyContext.h"
#include "tests/archive/ImageBuilder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DcfRecords, PasswordBytesAreLowBytesUpToSixtyFour) {
    const auto bytes = dcf::PasswordBytes(u"p\u0141ss");
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(Bytes(bytes->begin(), bytes->end()), (Bytes{'p', 0x41, 's', 's'}));

    EXPECT_TRUE(dcf::PasswordBytes(std::u16string(64, u'x')).has_value());
    EXPECT_FALSE(dcf::PasswordBytes(std::u16string(65, u'x')).has_value());
    // A unit whose low byte is zero ends the bytes, whatever follows.
    const auto cut = dcf::PasswordBytes(u"ab\u0100" + std::u16string(80, u'x'));
    ASSERT_TRUE(cut.has_value());
    EXPECT_EQ(cut->size(), 2u);
    EXPECT_TRUE(dcf::PasswordBytes(u"")->empty());
}

TEST(DcfRecords, NameBlockParsingAndItsBounds) {
    const std::vector<std::u16string> folders = {u"\\docs"};
    const std::vector<std::u16string> files = {u"\\docs\\a.txt", u"\\docs\\empty.txt"};
    const Bytes block = dcf::EncodeNameBlock(folders, files);
    ASSERT_EQ(block.size(), 96u);  // 6 + 12 + 16 = 34 units, raised to 48
    const auto lists = dcf::ParseNameBlock(block, 1, 2);
    ASSERT_TRUE(lists.has_value());
    EXPECT_EQ(lists->folders, folders);
    EXPECT_EQ(lists->files, files);

    // Counts beyond the names: the fill gives empty names until the block ends, then nothing.
    const auto filled = dcf::ParseNameBlock(block, 1, 16);
    ASSERT_TRUE(filled.has_value());
    EXPECT_EQ(filled->files.back(), u"");
    EXPECT_FALSE(dcf::ParseNameBlock(block, 1, 17).has_value());
    EXPECT_FALSE(dcf::ParseNameBlock(block, 0xFFFFFFFF, 0xFFFFFFFF).has_value());
    // A name that runs into the end of the block without its terminator.
    EXPECT_FALSE(dcf::ParseNameBlock(std::span(block).first(8), 1, 0).has_value());
    EXPECT_FALSE(dcf::ParseNameBlock(std::span(block).first(7), 1, 0).has_value());
}

// Off-by-one faults at the borders of pieces, chunks and the 2^31 limits.
TEST(DcfRecords, ChunkAndPieceCountsAtTheirBorders) {
    EXPECT_EQ(dcf::PieceCount(2048, 16), 1u);  // no empty last piece
    EXPECT_EQ(dcf::PieceCount(2049, 16), 2u);
    EXPECT_EQ(dcf::PieceCount(0, 16), 0u);
    EXPECT_EQ(dcf::ChunkDataBlocks(31, 16), 2u);
    EXPECT_EQ(dcf::ChunkDataBlocks(32, 16), 3u);  // C at a multiple of B gains a zero block
    EXPECT_EQ(dcf::LegacyBlockCount(0, 16), 1u);
    EXPECT_EQ(dcf::LegacyBlockCount(16, 16), 2u);
    EXPECT_EQ(dcf::LegacyBlockCount(17, 8), 3u);

    const std::uint64_t pieceLimit = (std::uint64_t{1} << 31) * 2048;
    EXPECT_TRUE(dcf::PieceCountFits(pieceLimit - 1, 16));
    EXPECT_FALSE(dcf::PieceCountFits(pieceLimit, 16));
    EXPECT_TRUE(dcf::LegacyBlockCountFits((std::uint64_t{1} << 31) * 16 - 17, 16));
    EXPECT_FALSE(dcf::LegacyBlockCountFits((std::uint64_t{1} << 31) * 16 - 16, 16));
}

// The key block of an image made with `settings`, and the keys it must open to.
struct SealedKeyBlock {
    explicit SealedKeyBlock(const tests::ImageSettings& settings) : builder(settings) {
        builder.KeyBlock();
        std::copy_n(builder.Image().begin(), dcf::kKeyBlockSize, block.begin());
    }
    tests::ImageBuilder builder;
    dcf::KeyBlock block{};
};

std::span<const std::uint8_t> Password(const char* text) {
    return {reinterpret_cast<const std::uint8_t*>(text), std::strlen(text)};
}

TEST(KeyContext, WrongPasswordAndDamagedMasterKeyAreaAreRefused) {
    const SealedKeyBlock sealed{tests::ImageSettings{}};
    KeyContextPtr context;
    EXPECT_EQ(OpenKeyBlock(sealed.block, Password("Secret"), context, nullptr, nullptr),
              kKeyBlockRefused);
    EXPECT_FALSE(context);

    // "FILE" still decrypts, but the master key area no longer matches its CRC.
    dcf::KeyBlock damaged = sealed.block;
    damaged[300] ^= 1;
    EXPECT_EQ(OpenKeyBlock(damaged, Password("secret"), context, nullptr, nullptr),
              kKeyBlockRefused);
    EXPECT_FALSE(context);

    // Primes with a password: the password route decides, and null primes never take the
    // RSA route.
    const std::array<std::uint32_t, 64> prime{3};
    EXPECT_EQ(OpenKeyBlock(sealed.block, Password("secret"), context, prime.data(), prime.data()),
              kKeyBlockOpened);
    EXPECT_EQ(OpenKeyBlock(sealed.block, {}, context, prime.data(), nullptr), kKeyBlockRefused);
}

}  // namespace
