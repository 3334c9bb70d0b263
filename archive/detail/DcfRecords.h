#pragma once
// Every record of a DCF image, encoded and decoded in one place for the reader and the writer.
// Plain records (preamble, key block) hold big-endian integers; the encrypted records hold
// little-endian ones. Nothing here encrypts: the callers run the regions and streams through the
// cipher suite. Every decoder checks the lengths it is given before it reads.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Common/SecureBuffer.h"

namespace dcf {

// --- Category preamble ---------------------------------------------------------------------

inline constexpr std::size_t kSignatureSize = 16;
inline constexpr std::array<std::uint8_t, kSignatureSize> kSignature = {
    0x44, 0x43, 0x46, 0x7E, 0x09, 0x1F, 0x3A, 0x0D, 0x40, 0x54, 0x53, 0x1A, 0x2F, 0x14, 0x26, 0x5E};
inline constexpr std::array<std::uint8_t, 8> kPreambleStartMarker = {0x1C, 0x5B, 0x1F, 0x2A,
                                                                     0x0D, 0x53, 0x54, 0x53};
inline constexpr std::array<std::uint8_t, 8> kPreambleEndMarker = {0x10, 0x13, 0x3E, 0x53,
                                                                   0x0D, 0x16, 0x13, 0x2C};
// The signature and the length field L in front of the L bytes.
inline constexpr std::size_t kPreambleHeadSize = kSignatureSize + 4;
// Where the category block starts within the L bytes: start marker and S.
inline constexpr std::size_t kPreambleBlockOffset = 12;

// The whole preamble around a category block: 40 + S bytes. Empty when S + 20 does not fit
// 32 bits.
std::vector<std::uint8_t> EncodePreamble(std::span<const std::uint8_t> categoryBlock);
bool HasSignature(std::span<const std::uint8_t> bytes);
// L from the 4 bytes behind the signature.
std::uint32_t DecodePreambleLength(std::span<const std::uint8_t, 4> field);
// The category block inside the L bytes behind the length field: everything from offset 12 on.
// Nothing when the L bytes do not begin with the start marker.
std::optional<std::span<const std::uint8_t>> PreambleCategoryBytes(
    std::span<const std::uint8_t> afterLength);

// --- Key block ------------------------------------------------------------------------------

inline constexpr std::size_t kKeyBlockSize = 1024;
inline constexpr std::size_t kSaltSize = 64;
inline constexpr std::size_t kMagicOffset = 64;
inline constexpr std::size_t kVersionOffset = 68;
inline constexpr std::size_t kCrcOffset = 72;
inline constexpr std::size_t kCreatedOffset = 76;
inline constexpr std::size_t kPrfIdOffset = 84;
inline constexpr std::size_t kSuiteIdOffset = 88;
inline constexpr std::size_t kMasterKeyOffset = 256;
inline constexpr std::size_t kMasterKeySize = 256;
// The part of the key block that the password key seals, as one region.
inline constexpr std::size_t kPasswordSlotOffset = 64;
inline constexpr std::size_t kPasswordSlotSize = 448;
inline constexpr std::size_t kRsaSlotOffset = 512;
inline constexpr std::size_t kRsaSlotSize = 512;
// The master key area's place in the RSA message of key block versions above 1.
inline constexpr std::size_t kMessageMasterKeyOffset = 252;

inline constexpr std::uint16_t kKeyBlockVersion = 3;
inline constexpr std::uint16_t kKeyBlockSecondWord = 2;
inline constexpr std::uint32_t kPrfHmacSha256 = 1;
inline constexpr std::uint32_t kIterations = 100;
// Split of the master key area and of the derived password key alike.
inline constexpr std::size_t kIvAreaSize = 32;
inline constexpr std::size_t kWhiteningOffset = 8;
inline constexpr std::size_t kWhiteningSize = 8;
// 32 bytes of IV area and the largest key of a suite that the password trial reaches.
inline constexpr std::size_t kDerivedKeySize = 96;
inline constexpr std::size_t kMaxPasswordBytes = 64;

inline constexpr std::array<std::uint8_t, 4> kFileMagic = {'F', 'I', 'L', 'E'};

using KeyBlock = std::array<std::uint8_t, kKeyBlockSize>;
using RsaMessage = std::array<std::uint8_t, kRsaSlotSize>;

// The plain fields of a key block (the salt and the master key area travel separately).
struct KeyBlockFields {
    std::uint16_t version = kKeyBlockVersion;
    std::uint32_t crc = 0;  // CRC-32 of the master key area
    std::uint64_t created = 0;
    std::uint32_t prfId = kPrfHmacSha256;
    std::uint32_t suiteId = 1;
};

// Writes "FILE", the fields, and the zeros in front of the master key area into the password
// slot of `block`. The salt, the master key area and the RSA slot are left as they are.
void StoreKeyBlockFields(std::span<std::uint8_t, kKeyBlockSize> block,
                         const KeyBlockFields& fields);
// The fields of a decrypted password slot, or of an RSA message put back in place (both share
// the offsets from 64 to 91).
KeyBlockFields LoadKeyBlockFields(std::span<const std::uint8_t> block);
// True when the bytes at offset 64 are "FILE"; false for anything shorter.
bool HasFileMagic(std::span<const std::uint8_t> block);

// The RSA message m of a plain key block: bytes 0 to 251, the master key area four bytes lower,
// and a zero top word that keeps m below the modulus.
void BuildRsaMessage(std::span<const std::uint8_t, kKeyBlockSize> plainBlock,
                     std::span<std::uint8_t, kRsaSlotSize> message);
// Puts the master key area of an opened message back to offset 256, where key block versions
// above 1 moved it from. The version is read from the message itself.
void RestoreMasterKeyPosition(std::span<std::uint8_t, kRsaSlotSize> message);

// The password as the format takes it: the low byte of each code unit, up to the first zero
// byte. Nothing when that is more than 64 bytes.
std::optional<Zelmarik::SecureVector<std::uint8_t>> PasswordBytes(std::u16string_view password);

// --- Folder header, end-of-header block -----------------------------------------------------

inline constexpr std::size_t kFolderHeaderSize = 1024;
inline constexpr std::uint8_t kFormatVersion = 3;

struct FolderHeader {
    std::uint8_t formatVersion = kFormatVersion;
    std::uint32_t fileCount = 0;
    std::uint32_t folderCount = 0;
    std::uint64_t totalSize = 0;
    std::uint64_t nameBlockLength = 0;
};

// The plain record, zero where it carries nothing.
void EncodeFolderHeader(const FolderHeader& header,
                        std::span<std::uint8_t, kFolderHeaderSize> record);
// Nothing unless the text at offset 1 is "FOLDERCRYPT".
std::optional<FolderHeader> DecodeFolderHeader(
    std::span<const std::uint8_t, kFolderHeaderSize> record);

// What a format version holds.
bool HasEndOfHeaderBlock(std::uint8_t formatVersion);
bool ReadsTagBlock(std::uint8_t formatVersion);
bool UsesChunks(std::uint8_t formatVersion);

inline constexpr std::size_t kEndOfHeaderSize = 16;
void EncodeEndOfHeader(std::span<std::uint8_t, kEndOfHeaderSize> record);
bool IsEndOfHeader(std::span<const std::uint8_t, kEndOfHeaderSize> record);

// --- Name block -----------------------------------------------------------------------------

// Code units of a name list (terminators included) raised by 1 to 16 to a multiple of 16.
std::uint64_t RaisedNameUnits(std::uint64_t units);
// The plain name block: folder names, then file names, each zero-terminated, and the fill.
std::vector<std::uint8_t> EncodeNameBlock(const std::vector<std::u16string>& folders,
                                          const std::vector<std::u16string>& files);

struct NameLists {
    std::vector<std::u16string> folders;
    std::vector<std::u16string> files;
};
// The two lists out of a decrypted name block. Nothing when the counts run past its end.
std::optional<NameLists> ParseNameBlock(std::span<const std::uint8_t> block,
                                        std::uint32_t folderCount, std::uint32_t fileCount);

// --- File header, tag block -----------------------------------------------------------------

inline constexpr std::size_t kFileHeaderSize = 1024;

struct FileHeader {
    std::uint64_t size = 0;
    std::uint8_t tagFlag = 0;  // non-zero: a tag block follows
    std::uint64_t tagBlockLength = 0;
};

void EncodeFileHeader(const FileHeader& header, std::span<std::uint8_t, kFileHeaderSize> record);
// Nothing unless the text at offset 8 is "FILECRYPT".
std::optional<FileHeader> DecodeFileHeader(std::span<const std::uint8_t, kFileHeaderSize> record);

// A category block raised with zeros to a multiple of 16.
std::uint64_t RaisedTagBlockLength(std::uint64_t length);
std::vector<std::uint8_t> EncodeTagBlock(std::span<const std::uint8_t> categoryBlock);

// --- Data streams ---------------------------------------------------------------------------

inline constexpr std::size_t kBlocksPerPiece = 128;
// A reader's bound, in blocks, on a chunk before and after decompression.
inline constexpr std::size_t kMaxChunkBlocks = 1280;

// Bytes of file data in one piece: 128·B.
std::size_t PieceSize(std::size_t blockSize);
// Pieces of a file, the last one shorter; none for an empty file.
std::uint64_t PieceCount(std::uint64_t fileSize, std::size_t blockSize);
// Whether the whole pieces of a file stay below 2^31.
bool PieceCountFits(std::uint64_t fileSize, std::size_t blockSize);
// Blocks that carry C compressed bytes: floor(C / B) + 1, so a C at a multiple of B gains a
// zero block.
std::uint64_t ChunkDataBlocks(std::uint64_t compressedLength, std::size_t blockSize);
// Length block and data blocks of one chunk, in bytes.
std::uint64_t ChunkStoredSize(std::uint64_t compressedLength, std::size_t blockSize);
// Blocks of a legacy stream: floor(size / B) + 1; an empty file still has one.
std::uint64_t LegacyBlockCount(std::uint64_t fileSize, std::size_t blockSize);
bool LegacyBlockCountFits(std::uint64_t fileSize, std::size_t blockSize);

// The plain length block: C little-endian in the first four bytes, zeros behind.
void EncodeChunkLength(std::uint32_t compressedLength, std::span<std::uint8_t> block);
std::uint32_t DecodeChunkLength(std::span<const std::uint8_t> block);

}  // namespace dcf
