#pragma once
// Cipher suites: the small number an archive holds instead of naming ciphers. Two constant
// tables describe the ciphers and which of them, in which mode, make a suite; the operations
// set up schedules and transform blocks and regions in place, on the caller's buffers, without
// allocating. None of them notices a wrong key: a wrong key decrypts to noise.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace crypto {

inline constexpr std::uint32_t kCipherAes = 1;
inline constexpr std::uint32_t kCipherSerpent = 2;
inline constexpr std::uint32_t kCipherTwofish = 3;
inline constexpr std::uint32_t kCipherMars = 4;
inline constexpr std::uint32_t kCipherBlowfish = 5;
inline constexpr std::uint32_t kCipherCast5 = 6;
inline constexpr std::uint32_t kCipherCast6 = 7;
inline constexpr std::uint32_t kCipherRc5 = 8;
inline constexpr std::uint32_t kCipherRc6 = 9;

// The suite new archives use: AES with a 256-bit key.
inline constexpr std::uint32_t kSuiteAes = 1;

// Modes of a suite: one pass over the region for each cipher (1 and 3), or each block through
// all ciphers before the next (2).
inline constexpr std::uint32_t kModeCipherByCipher = 1;
inline constexpr std::uint32_t kModeBlockByBlock = 2;
inline constexpr std::uint32_t kModeCipherByCipherAlso = 3;

inline constexpr std::size_t kMaxBlockSize = 16;
inline constexpr std::size_t kMaxSuiteCiphers = 3;
// Room for the schedules of the largest suite (Serpent, Twofish, AES): the schedule block of a
// key context. Every schedule fits in it.
inline constexpr std::size_t kScheduleBlockSize = 5336;
inline constexpr std::size_t kIvSize = 16;
inline constexpr std::size_t kWhiteningSize = 8;

struct CipherInfo {
    std::uint32_t id;  // 0 ends the table
    std::string_view name;
    std::uint32_t blockSize;
    std::uint32_t keySize;       // key bytes the cipher takes from the key material
    std::uint32_t scheduleSize;  // space of its schedule in a schedule block
};

struct SuiteInfo {
    std::array<std::uint32_t, kMaxSuiteCiphers + 1> ciphers;  // in encryption order, 0 ends
    std::uint32_t mode;
};

// The cipher table up to and including its row of zeros.
std::span<const CipherInfo> CipherTable();
// The suite table, indexed by suite id from 0; empty rows have no cipher and mode 0.
std::span<const SuiteInfo> SuiteTable();

// Columns of the cipher table; 0 for an id the table does not hold.
std::uint32_t CipherBlockSize(std::uint32_t cipher);
std::uint32_t CipherKeySize(std::uint32_t cipher);
std::uint32_t CipherScheduleSize(std::uint32_t cipher);

// Sums over the ciphers of a suite row; 0 for an empty or unknown suite.
std::uint32_t SuiteKeySize(std::uint32_t suite);
std::uint32_t SuiteScheduleSize(std::uint32_t suite);
// The greatest SuiteKeySize from suite 1 up to the first empty row: 64.
std::uint32_t SuiteMaxKeySize();
// The last cipher id of the row, 0 for an empty or unknown suite.
std::uint32_t SuiteLastCipher(std::uint32_t suite);
// B: the block size of the row's first cipher, 0 for an empty or unknown suite.
std::uint32_t SuiteBlockSize(std::uint32_t suite);

// Builds the schedule of one cipher from the first CipherKeySize bytes of `key`. False, with
// nothing written, for an unknown cipher, a short key or a short schedule area.
[[nodiscard]] bool CipherInit(std::uint32_t cipher, std::span<const std::uint8_t> key,
                              std::span<std::uint8_t> schedule);

// For each cipher of the row in order: CipherInit, then key and schedule advance by its key
// size and schedule size. False, with nothing written, for an empty or unknown suite (such as
// 11 and 12), a key shorter than SuiteKeySize, or a schedule shorter than the suite needs.
[[nodiscard]] bool SuiteInit(std::uint32_t suite, std::span<const std::uint8_t> key,
                             std::span<std::uint8_t> schedule);

// One block in place: the first CipherBlockSize bytes of `block`. An unknown cipher, a block or
// a schedule too short leave the block untouched.
void CipherEncryptBlock(std::uint32_t cipher, std::span<std::uint8_t> block,
                        std::span<const std::uint8_t> schedule);
void CipherDecryptBlock(std::uint32_t cipher, std::span<std::uint8_t> block,
                        std::span<const std::uint8_t> schedule);

// Every whole block of `blocks` in place, each on its own (no chaining); a tail stays.
void CipherEncryptBlocks(std::uint32_t cipher, std::span<std::uint8_t> blocks,
                         std::span<const std::uint8_t> schedule);
void CipherDecryptBlocks(std::uint32_t cipher, std::span<std::uint8_t> blocks,
                         std::span<const std::uint8_t> schedule);

// Chained encryption of a whole region in place (cipher block chaining from `iv`, then the
// 8 `whitening` bytes XORed onto what is stored), by the mode of the suite. Every call starts
// from `iv`; a tail shorter than a block stays. `iv` needs 16 bytes (8 are read for an 8-byte
// block), `whitening` 8. False, with the buffer untouched, for an empty or unknown suite, an
// unknown mode, a short schedule, iv or whitening.
[[nodiscard]] bool RegionEncrypt(std::span<std::uint8_t> buffer,
                                 std::span<const std::uint8_t> schedule,
                                 std::span<const std::uint8_t> iv,
                                 std::span<const std::uint8_t> whitening, std::uint32_t suite);
[[nodiscard]] bool RegionDecrypt(std::span<std::uint8_t> buffer,
                                 std::span<const std::uint8_t> schedule,
                                 std::span<const std::uint8_t> iv,
                                 std::span<const std::uint8_t> whitening, std::uint32_t suite);

}  // namespace crypto
