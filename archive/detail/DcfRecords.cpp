#include "archive/detail/DcfRecords.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "Common/Common/Endian.h"

namespace dcf {

namespace {

using Zelmarik::LoadBig;
using Zelmarik::LoadLittle;
using Zelmarik::StoreBig;
using Zelmarik::StoreLittle;

constexpr std::size_t kFolderTextOffset = 1;
constexpr std::size_t kFolderTextWidth = 16;
constexpr std::size_t kFileCountOffset = 20;
constexpr std::size_t kFolderCountOffset = 24;
constexpr std::size_t kTotalSizeOffset = 32;
constexpr std::size_t kNameLengthOffset = 40;

constexpr std::size_t kFileTextOffset = 8;
constexpr std::size_t kFileTextWidth = 12;
constexpr std::size_t kTagFlagOffset = 24;
constexpr std::size_t kTagLengthOffset = 32;

constexpr std::string_view kFolderText = "FOLDERCRYPT";
constexpr std::string_view kFileText = "FILECRYPT";
constexpr std::string_view kEndOfHeaderText = "SEND";

constexpr std::size_t kNameRaiseUnit = 16;
constexpr std::size_t kTagRaiseUnit = 16;
constexpr std::uint64_t kPieceLimit = std::uint64_t{1} << 31;

// Writes `text` and its terminator; the field is zero already.
void StoreText(std::uint8_t* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
}

// True when the zero-terminated text in a field of `width` bytes equals `text`.
bool FieldHoldsText(std::span<const std::uint8_t> field, std::string_view text) {
    return field.size() > text.size() && std::memcmp(field.data(), text.data(), text.size()) == 0 &&
           field[text.size()] == 0;
}

void AppendName(std::vector<std::uint8_t>& block, const std::u16string& name) {
    for (const char16_t unit : name) {
        block.push_back(static_cast<std::uint8_t>(unit));
        block.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    block.push_back(0);
    block.push_back(0);
}

// Reads `count` zero-terminated names from `units` starting at `position`; false when one runs
// past the end.
bool TakeNames(std::span<const std::uint8_t> block, std::size_t& position, std::uint32_t count,
               std::vector<std::u16string>& names) {
    const std::size_t unitCount = block.size() / 2;
    // Every name takes at least its terminator: a count beyond the units can't be met.
    if (count > unitCount - position) {
        return false;
    }
    names.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::u16string name;
        for (;;) {
            if (position >= unitCount) {
                return false;
            }
            const auto unit = LoadLittle<std::uint16_t>(block.data() + 2 * position++);
            if (unit == 0) {
                break;
            }
            name.push_back(static_cast<char16_t>(unit));
        }
        names.push_back(std::move(name));
    }
    return true;
}

}  // namespace

std::vector<std::uint8_t> EncodePreamble(std::span<const std::uint8_t> categoryBlock) {
    constexpr std::uint64_t kAroundBlock = 20;
    if (categoryBlock.size() > std::numeric_limits<std::uint32_t>::max() - kAroundBlock) {
        return {};
    }
    const auto blockSize = static_cast<std::uint32_t>(categoryBlock.size());
    std::vector<std::uint8_t> preamble(kPreambleHeadSize);
    std::copy(kSignature.begin(), kSignature.end(), preamble.begin());
    StoreBig<std::uint32_t>(preamble.data() + kSignatureSize, blockSize + kAroundBlock);
    preamble.insert(preamble.end(), kPreambleStartMarker.begin(), kPreambleStartMarker.end());
    std::uint8_t sizeField[4];
    StoreBig<std::uint32_t>(sizeField, blockSize);
    preamble.insert(preamble.end(), sizeField, sizeField + 4);
    preamble.insert(preamble.end(), categoryBlock.begin(), categoryBlock.end());
    preamble.insert(preamble.end(), kPreambleEndMarker.begin(), kPreambleEndMarker.end());
    return preamble;
}

bool HasSignature(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= kSignatureSize &&
           std::equal(kSignature.begin(), kSignature.end(), bytes.begin());
}

std::uint32_t DecodePreambleLength(std::span<const std::uint8_t, 4> field) {
    return LoadBig<std::uint32_t>(field.data());
}

std::optional<std::span<const std::uint8_t>> PreambleCategoryBytes(
    std::span<const std::uint8_t> afterLength) {
    if (afterLength.size() < kPreambleBlockOffset ||
        !std::equal(kPreambleStartMarker.begin(), kPreambleStartMarker.end(),
                    afterLength.begin())) {
        return std::nullopt;
    }
    return afterLength.subspan(kPreambleBlockOffset);
}

void StoreKeyBlockFields(std::span<std::uint8_t, kKeyBlockSize> block,
                         const KeyBlockFields& fields) {
    std::uint8_t* slot = block.data();
    std::fill(slot + kMagicOffset, slot + kMasterKeyOffset, std::uint8_t{0});
    std::copy(kFileMagic.begin(), kFileMagic.end(), slot + kMagicOffset);
    StoreBig<std::uint16_t>(slot + kVersionOffset, fields.version);
    StoreBig<std::uint16_t>(slot + kVersionOffset + 2, kKeyBlockSecondWord);
    StoreBig<std::uint32_t>(slot + kCrcOffset, fields.crc);
    StoreBig<std::uint64_t>(slot + kCreatedOffset, fields.created);
    StoreBig<std::uint32_t>(slot + kPrfIdOffset, fields.prfId);
    StoreBig<std::uint32_t>(slot + kSuiteIdOffset, fields.suiteId);
}

KeyBlockFields LoadKeyBlockFields(std::span<const std::uint8_t> block) {
    KeyBlockFields fields;
    if (block.size() < kMasterKeyOffset) {
        return fields;
    }
    const std::uint8_t* slot = block.data();
    fields.version = LoadBig<std::uint16_t>(slot + kVersionOffset);
    fields.crc = LoadBig<std::uint32_t>(slot + kCrcOffset);
    fields.created = LoadBig<std::uint64_t>(slot + kCreatedOffset);
    fields.prfId = LoadBig<std::uint32_t>(slot + kPrfIdOffset);
    fields.suiteId = LoadBig<std::uint32_t>(slot + kSuiteIdOffset);
    return fields;
}

bool HasFileMagic(std::span<const std::uint8_t> block) {
    return block.size() >= kMagicOffset + kFileMagic.size() &&
           std::equal(kFileMagic.begin(), kFileMagic.end(), block.begin() + kMagicOffset);
}

void BuildRsaMessage(std::span<const std::uint8_t, kKeyBlockSize> plainBlock,
                     std::span<std::uint8_t, kRsaSlotSize> message) {
    std::copy_n(plainBlock.begin(), kMessageMasterKeyOffset, message.begin());
    std::copy_n(plainBlock.begin() + kMasterKeyOffset, kMasterKeySize,
                message.begin() + kMessageMasterKeyOffset);
    std::fill(message.begin() + kMessageMasterKeyOffset + kMasterKeySize, message.end(),
              std::uint8_t{0});
}

void RestoreMasterKeyPosition(std::span<std::uint8_t, kRsaSlotSize> message) {
    if (LoadBig<std::uint16_t>(message.data() + kVersionOffset) > 1) {
        std::memmove(message.data() + kMasterKeyOffset, message.data() + kMessageMasterKeyOffset,
                     kMasterKeySize);
    }
}

std::optional<Zelmarik::SecureVector<std::uint8_t>> PasswordBytes(std::u16string_view password) {
    Zelmarik::SecureVector<std::uint8_t> bytes;
    bytes.reserve(kMaxPasswordBytes);
    for (const char16_t unit : password) {
        const auto low = static_cast<std::uint8_t>(unit);
        if (low == 0) {
            break;  // the bytes are zero-terminated: a unit with a zero low byte ends them
        }
        if (bytes.size() == kMaxPasswordBytes) {
            return std::nullopt;
        }
        bytes.push_back(low);
    }
    return bytes;
}

void EncodeFolderHeader(const FolderHeader& header,
                        std::span<std::uint8_t, kFolderHeaderSize> record) {
    std::fill(record.begin(), record.end(), std::uint8_t{0});
    record[0] = header.formatVersion;
    StoreText(record.data() + kFolderTextOffset, kFolderText);
    StoreLittle<std::uint32_t>(record.data() + kFileCountOffset, header.fileCount);
    StoreLittle<std::uint32_t>(record.data() + kFolderCountOffset, header.folderCount);
    StoreLittle<std::uint64_t>(record.data() + kTotalSizeOffset, header.totalSize);
    StoreLittle<std::uint64_t>(record.data() + kNameLengthOffset, header.nameBlockLength);
}

std::optional<FolderHeader> DecodeFolderHeader(
    std::span<const std::uint8_t, kFolderHeaderSize> record) {
    if (!FieldHoldsText(record.subspan(kFolderTextOffset, kFolderTextWidth), kFolderText)) {
        return std::nullopt;
    }
    FolderHeader header;
    header.formatVersion = record[0];
    header.fileCount = LoadLittle<std::uint32_t>(record.data() + kFileCountOffset);
    header.folderCount = LoadLittle<std::uint32_t>(record.data() + kFolderCountOffset);
    header.totalSize = LoadLittle<std::uint64_t>(record.data() + kTotalSizeOffset);
    header.nameBlockLength = LoadLittle<std::uint64_t>(record.data() + kNameLengthOffset);
    return header;
}

bool HasEndOfHeaderBlock(std::uint8_t formatVersion) {
    return formatVersion >= 3;
}

bool ReadsTagBlock(std::uint8_t formatVersion) {
    return formatVersion == 3;
}

bool UsesChunks(std::uint8_t formatVersion) {
    return formatVersion >= 2;
}

void EncodeEndOfHeader(std::span<std::uint8_t, kEndOfHeaderSize> record) {
    std::fill(record.begin(), record.end(), std::uint8_t{0});
    StoreText(record.data(), kEndOfHeaderText);
}

bool IsEndOfHeader(std::span<const std::uint8_t, kEndOfHeaderSize> record) {
    return std::memcmp(record.data(), kEndOfHeaderText.data(), kEndOfHeaderText.size()) == 0;
}

std::uint64_t RaisedNameUnits(std::uint64_t units) {
    return (units / kNameRaiseUnit + 1) * kNameRaiseUnit;
}

std::vector<std::uint8_t> EncodeNameBlock(const std::vector<std::u16string>& folders,
                                          const std::vector<std::u16string>& files) {
    std::vector<std::uint8_t> block;
    for (const auto& name : folders) {
        AppendName(block, name);
    }
    for (const auto& name : files) {
        AppendName(block, name);
    }
    block.resize(2 * RaisedNameUnits(block.size() / 2), 0);
    return block;
}

std::optional<NameLists> ParseNameBlock(std::span<const std::uint8_t> block,
                                        std::uint32_t folderCount, std::uint32_t fileCount) {
    NameLists lists;
    std::size_t position = 0;
    if (!TakeNames(block, position, folderCount, lists.folders) ||
        !TakeNames(block, position, fileCount, lists.files)) {
        return std::nullopt;
    }
    return lists;
}

void EncodeFileHeader(const FileHeader& header, std::span<std::uint8_t, kFileHeaderSize> record) {
    std::fill(record.begin(), record.end(), std::uint8_t{0});
    StoreLittle<std::uint64_t>(record.data(), header.size);
    StoreText(record.data() + kFileTextOffset, kFileText);
    record[kTagFlagOffset] = header.tagFlag;
    StoreLittle<std::uint64_t>(record.data() + kTagLengthOffset, header.tagBlockLength);
}

std::optional<FileHeader> DecodeFileHeader(std::span<const std::uint8_t, kFileHeaderSize> record) {
    if (!FieldHoldsText(record.subspan(kFileTextOffset, kFileTextWidth), kFileText)) {
        return std::nullopt;
    }
    FileHeader header;
    header.size = LoadLittle<std::uint64_t>(record.data());
    header.tagFlag = record[kTagFlagOffset];
    header.tagBlockLength = LoadLittle<std::uint64_t>(record.data() + kTagLengthOffset);
    return header;
}

std::uint64_t RaisedTagBlockLength(std::uint64_t length) {
    return (length + kTagRaiseUnit - 1) / kTagRaiseUnit * kTagRaiseUnit;
}

std::vector<std::uint8_t> EncodeTagBlock(std::span<const std::uint8_t> categoryBlock) {
    std::vector<std::uint8_t> block(categoryBlock.begin(), categoryBlock.end());
    block.resize(RaisedTagBlockLength(block.size()), 0);
    return block;
}

std::size_t PieceSize(std::size_t blockSize) {
    return kBlocksPerPiece * blockSize;
}

std::uint64_t PieceCount(std::uint64_t fileSize, std::size_t blockSize) {
    const std::uint64_t piece = PieceSize(blockSize);
    return fileSize / piece + (fileSize % piece != 0 ? 1 : 0);
}

bool PieceCountFits(std::uint64_t fileSize, std::size_t blockSize) {
    return fileSize / PieceSize(blockSize) < kPieceLimit;
}

std::uint64_t ChunkDataBlocks(std::uint64_t compressedLength, std::size_t blockSize) {
    return compressedLength / blockSize + 1;
}

std::uint64_t ChunkStoredSize(std::uint64_t compressedLength, std::size_t blockSize) {
    return (1 + ChunkDataBlocks(compressedLength, blockSize)) * blockSize;
}

std::uint64_t LegacyBlockCount(std::uint64_t fileSize, std::size_t blockSize) {
    return fileSize / blockSize + 1;
}

bool LegacyBlockCountFits(std::uint64_t fileSize, std::size_t blockSize) {
    return LegacyBlockCount(fileSize, blockSize) < kPieceLimit;
}

void EncodeChunkLength(std::uint32_t compressedLength, std::span<std::uint8_t> block) {
    std::fill(block.begin(), block.end(), std::uint8_t{0});
    if (block.size() >= 4) {
        StoreLittle<std::uint32_t>(block.data(), compressedLength);
    }
}

std::uint32_t DecodeChunkLength(std::span<const std::uint8_t> block) {
    return block.size() >= 4 ? LoadLittle<std::uint32_t>(block.data()) : 0;
}

}  // namespace dcf
