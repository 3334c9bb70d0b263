#include "archive/detail/DcfRecords.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Sequence(std::size_t size, std::uint8_t first) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

Bytes Slice(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t size) {
    return Bytes(bytes.begin() + offset, bytes.begin() + offset + size);
}

bool AllZero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}

TEST(DcfRecords, PreambleLayoutAndCategoryBytes) {
    const Bytes block = Sequence(100, 1);
    const Bytes preamble = dcf::EncodePreamble(block);
    ASSERT_EQ(preamble.size(), 140u);
    EXPECT_EQ(Slice(preamble, 0, 16), Bytes(dcf::kSignature.begin(), dcf::kSignature.end()));
    EXPECT_EQ(Slice(preamble, 16, 4), (Bytes{0, 0, 0, 120}));  // L = S + 20, big-endian
    EXPECT_EQ(Slice(preamble, 20, 8),
              Bytes(dcf::kPreambleStartMarker.begin(), dcf::kPreambleStartMarker.end()));
    EXPECT_EQ(Slice(preamble, 28, 4), (Bytes{0, 0, 0, 100}));
    EXPECT_EQ(Slice(preamble, 32, 100), block);
    EXPECT_EQ(Slice(preamble, 132, 8),
              Bytes(dcf::kPreambleEndMarker.begin(), dcf::kPreambleEndMarker.end()));

    // A reader goes by L: the category bytes start 12 bytes into the L bytes.
    EXPECT_TRUE(dcf::HasSignature(preamble));
    const std::uint32_t length = dcf::DecodePreambleLength(
        std::span<const std::uint8_t, 4>(preamble.data() + dcf::kSignatureSize, 4));
    ASSERT_EQ(length, 120u);
    const auto after = std::span<const std::uint8_t>(preamble).subspan(dcf::kPreambleHeadSize);
    ASSERT_EQ(after.size(), length);
    const auto categories = dcf::PreambleCategoryBytes(after);
    ASSERT_TRUE(categories.has_value());
    EXPECT_EQ(Slice(*categories, 0, 100), block);

    Bytes damaged(after.begin(), after.end());
    damaged[3] ^= 1;
    EXPECT_FALSE(dcf::PreambleCategoryBytes(damaged).has_value());
    EXPECT_FALSE(dcf::PreambleCategoryBytes(Slice(after, 0, 11)).has_value());
    Bytes wrongSignature = preamble;
    wrongSignature[15] ^= 0x80;
    EXPECT_FALSE(dcf::HasSignature(wrongSignature));
    EXPECT_FALSE(dcf::HasSignature(Slice(preamble, 0, 15)));
}

TEST(DcfRecords, KeyBlockFieldsAreBigEndianAtTheirOffsets) {
    dcf::KeyBlock block{};
    std::fill(block.begin(), block.end(), 0xEE);
    dcf::KeyBlockFields fields;
    fields.crc = 0x11223344;
    fields.created = 0x0102030405060708;
    fields.suiteId = 7;
    dcf::StoreKeyBlockFields(block, fields);

    EXPECT_EQ(Slice(block, 0, 64), Bytes(64, 0xEE));  // the salt is not touched
    EXPECT_EQ(Slice(block, 64, 28),
              (Bytes{'F', 'I', 'L', 'E', 0, 3, 0, 2, 0x11, 0x22, 0x33, 0x44, 1, 2,
                     3,   4,   5,   6,   7, 8, 0, 0, 0,    1,    0,    0,    0, 7}));
    EXPECT_TRUE(AllZero(Slice(block, 92, 164)));
    EXPECT_EQ(Slice(block, 256, 768), Bytes(768, 0xEE));  // master key area and RSA slot

    EXPECT_TRUE(dcf::HasFileMagic(block));
    const dcf::KeyBlockFields loaded = dcf::LoadKeyBlockFields(block);
    EXPECT_EQ(loaded.version, 3);
    EXPECT_EQ(loaded.crc, fields.crc);
    EXPECT_EQ(loaded.created, fields.created);
    EXPECT_EQ(loaded.prfId, 1u);
    EXPECT_EQ(loaded.suiteId, 7u);
    block[66] = 'X';
    EXPECT_FALSE(dcf::HasFileMagic(block));
    EXPECT_FALSE(dcf::HasFileMagic(Slice(block, 0, 67)));
}

TEST(DcfRecords, RsaMessageMovesTheMasterKeyAreaByVersion) {
    dcf::KeyBlock block{};
    const Bytes salt = Sequence(64, 0x40);
    std::copy(salt.begin(), salt.end(), block.begin());
    dcf::StoreKeyBlockFields(block, {});
    const Bytes masterKey = Sequence(256, 0x80);
    std::copy(masterKey.begin(), masterKey.end(), block.begin() + 256);

    dcf::RsaMessage message{};
    dcf::BuildRsaMessage(block, message);
    EXPECT_EQ(Slice(message, 0, 252), Slice(block, 0, 252));
    EXPECT_EQ(Slice(message, 252, 256), masterKey);
    EXPECT_TRUE(AllZero(Slice(message, 508, 4)));  // the most significant word stays zero

    dcf::RestoreMasterKeyPosition(message);
    EXPECT_EQ(Slice(message, 256, 256), masterKey);
    EXPECT_EQ(Slice(message, 64, 28), Slice(block, 64, 28));

    // Version 1 keeps the area in place.
    dcf::RsaMessage legacy{};
    std::copy_n(block.begin(), 512, legacy.begin());
    legacy[dcf::kVersionOffset + 1] = 1;
    dcf::RestoreMasterKeyPosition(legacy);
    EXPECT_EQ(Slice(legacy, 256, 256), masterKey);
}

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

TEST(DcfRecords, FolderHeaderLayout) {
    std::array<std::uint8_t, dcf::kFolderHeaderSize> record{};
    dcf::EncodeFolderHeader({3, 2, 1, 5000, 96}, record);
    const Bytes expected = {3,   'F', 'O', 'L', 'D', 'E', 'R', 'C', 'R', 'Y', 'P', 'T', 0, 0, 0, 0,
                            0,   0,   0,   0,   2,   0,   0,   0,   1,   0,   0,   0,   0, 0, 0, 0,
                            136, 19,  0,   0,   0,   0,   0,   0,   96,  0,   0,   0,   0, 0, 0, 0};
    EXPECT_EQ(Slice(record, 0, 48), expected);
    EXPECT_TRUE(AllZero(Slice(record, 48, 1024 - 48)));

    const auto header = dcf::DecodeFolderHeader(record);
    ASSERT_TRUE(header.has_value());
    EXPECT_EQ(header->formatVersion, 3);
    EXPECT_EQ(header->fileCount, 2u);
    EXPECT_EQ(header->folderCount, 1u);
    EXPECT_EQ(header->totalSize, 5000u);
    EXPECT_EQ(header->nameBlockLength, 96u);

    auto unterminated = record;
    unterminated[12] = 'X';  // "FOLDERCRYPTX" is another text
    EXPECT_FALSE(dcf::DecodeFolderHeader(unterminated).has_value());
    auto misspelt = record;
    misspelt[1] = 'f';
    EXPECT_FALSE(dcf::DecodeFolderHeader(misspelt).has_value());
}

TEST(DcfRecords, FormatVersionsDecideTheRecords) {
    struct Row {
        std::uint8_t version;
        bool endOfHeader, tagBlock, chunks;
    };
    for (const Row row :
         {Row{0, false, false, false}, Row{1, false, false, false}, Row{2, false, false, true},
          Row{3, true, true, true}, Row{4, true, false, true}, Row{255, true, false, true}}) {
        SCOPED_TRACE(row.version);
        EXPECT_EQ(dcf::HasEndOfHeaderBlock(row.version), row.endOfHeader);
        EXPECT_EQ(dcf::ReadsTagBlock(row.version), row.tagBlock);
        EXPECT_EQ(dcf::UsesChunks(row.version), row.chunks);
    }
}

TEST(DcfRecords, EndOfHeaderComparesFourCharacters) {
    std::array<std::uint8_t, dcf::kEndOfHeaderSize> record{};
    record.fill(0xAA);
    dcf::EncodeEndOfHeader(record);
    EXPECT_EQ(Slice(record, 0, 16),
              (Bytes{'S', 'E', 'N', 'D', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    record[9] = 0x55;  // only the first four bytes are compared
    EXPECT_TRUE(dcf::IsEndOfHeader(record));
    record[3] = 'T';
    EXPECT_FALSE(dcf::IsEndOfHeader(record));
}

TEST(DcfRecords, NameBlockRaiseRuleAndParsing) {
    EXPECT_EQ(dcf::RaisedNameUnits(34), 48u);
    EXPECT_EQ(dcf::RaisedNameUnits(16), 32u);  // a multiple of 16 gains 16 more
    EXPECT_EQ(dcf::RaisedNameUnits(0), 16u);
    EXPECT_EQ(dcf::RaisedNameUnits(15), 16u);

    const std::vector<std::u16string> folders = {u"\\docs"};
    const std::vector<std::u16string> files = {u"\\docs\\a.txt", u"\\docs\\empty.txt"};
    const Bytes block = dcf::EncodeNameBlock(folders, files);
    ASSERT_EQ(block.size(), 96u);  // 6 + 12 + 16 = 34 units, raised to 48
    EXPECT_EQ(Slice(block, 0, 12), (Bytes{'\\', 0, 'd', 0, 'o', 0, 'c', 0, 's', 0, 0, 0}));
    EXPECT_TRUE(AllZero(Slice(block, 68, 28)));

    const auto lists = dcf::ParseNameBlock(block, 1, 2);
    ASSERT_TRUE(lists.has_value());
    EXPECT_EQ(lists->folders, folders);
    EXPECT_EQ(lists->files, files);

    // Exactly 16 units: "\abcdefghijklmn" with its terminator.
    EXPECT_EQ(dcf::EncodeNameBlock({}, {u"\\abcdefghijklmn"}).size(), 64u);

    // Counts beyond the names: the fill gives empty names until the block ends, then nothing.
    const auto filled = dcf::ParseNameBlock(block, 1, 16);
    ASSERT_TRUE(filled.has_value());
    EXPECT_EQ(filled->files.back(), u"");
    EXPECT_FALSE(dcf::ParseNameBlock(block, 1, 17).has_value());
    EXPECT_FALSE(dcf::ParseNameBlock(block, 0xFFFFFFFF, 0xFFFFFFFF).has_value());
    // A name that runs into the end of the block without its terminator.
    EXPECT_FALSE(dcf::ParseNameBlock(Slice(block, 0, 8), 1, 0).has_value());
    EXPECT_FALSE(dcf::ParseNameBlock(Slice(block, 0, 7), 1, 0).has_value());
}

TEST(DcfRecords, FileHeaderLayoutAndTagBlockRaise) {
    std::array<std::uint8_t, dcf::kFileHeaderSize> record{};
    dcf::EncodeFileHeader({5000, 1, 112}, record);
    const Bytes expected = {136, 19,  0,   0, 0,   0, 0, 0, 'F', 'I', 'L', 'E', 'C', 'R',
                            'Y', 'P', 'T', 0, 0,   0, 0, 0, 0,   0,   1,   0,   0,   0,
                            0,   0,   0,   0, 112, 0, 0, 0, 0,   0,   0,   0};
    EXPECT_EQ(Slice(record, 0, 40), expected);
    EXPECT_TRUE(AllZero(Slice(record, 40, 1024 - 40)));
    const auto header = dcf::DecodeFileHeader(record);
    ASSERT_TRUE(header.has_value());
    EXPECT_EQ(header->size, 5000u);
    EXPECT_EQ(header->tagFlag, 1);
    EXPECT_EQ(header->tagBlockLength, 112u);
    record[17] = '!';
    EXPECT_FALSE(dcf::DecodeFileHeader(record).has_value());

    EXPECT_EQ(dcf::RaisedTagBlockLength(100), 112u);
    EXPECT_EQ(dcf::RaisedTagBlockLength(112), 112u);
    EXPECT_EQ(dcf::RaisedTagBlockLength(8), 16u);
    const Bytes tag = dcf::EncodeTagBlock(Sequence(100, 1));
    ASSERT_EQ(tag.size(), 112u);
    EXPECT_TRUE(AllZero(Slice(tag, 100, 12)));
}

TEST(DcfRecords, ChunkAndPieceCounts) {
    EXPECT_EQ(dcf::PieceSize(16), 2048u);
    EXPECT_EQ(dcf::PieceSize(8), 1024u);
    EXPECT_EQ(dcf::PieceCount(5000, 16), 3u);
    EXPECT_EQ(dcf::PieceCount(2048, 16), 1u);  // no empty last piece
    EXPECT_EQ(dcf::PieceCount(4096, 16), 2u);
    EXPECT_EQ(dcf::PieceCount(0, 16), 0u);

    // The sample's chunks: 700, 710 and 333 compressed bytes.
    EXPECT_EQ(dcf::ChunkDataBlocks(700, 16), 44u);
    EXPECT_EQ(dcf::ChunkStoredSize(700, 16), 720u);
    EXPECT_EQ(dcf::ChunkStoredSize(710, 16), 736u);
    EXPECT_EQ(dcf::ChunkStoredSize(333, 16), 352u);
    EXPECT_EQ(dcf::ChunkDataBlocks(32, 16), 3u);  // C at a multiple of B gains a zero block

    EXPECT_EQ(dcf::LegacyBlockCount(0, 16), 1u);
    EXPECT_EQ(dcf::LegacyBlockCount(16, 16), 2u);
    EXPECT_EQ(dcf::LegacyBlockCount(17, 8), 3u);

    const std::uint64_t pieceLimit = (std::uint64_t{1} << 31) * 2048;
    EXPECT_TRUE(dcf::PieceCountFits(pieceLimit - 1, 16));
    EXPECT_FALSE(dcf::PieceCountFits(pieceLimit, 16));
    EXPECT_TRUE(dcf::LegacyBlockCountFits((std::uint64_t{1} << 31) * 16 - 17, 16));
    EXPECT_FALSE(dcf::LegacyBlockCountFits((std::uint64_t{1} << 31) * 16 - 16, 16));

    std::array<std::uint8_t, 16> lengthBlock;
    lengthBlock.fill(0xFF);
    dcf::EncodeChunkLength(0x01020304, lengthBlock);
    EXPECT_EQ(Slice(lengthBlock, 0, 16), (Bytes{4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(dcf::DecodeChunkLength(lengthBlock), 0x01020304u);
}

}  // namespace
