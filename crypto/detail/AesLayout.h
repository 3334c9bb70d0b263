#pragma once
// AES-256 schedule layout shared by the table-driven and the AES-NI code: the 15 round keys of
// the cipher as bytes (FIPS 197 order), then the 15 round keys of the equivalent inverse cipher
// in the order decryption uses them.

#include <cstddef>
#include <cstdint>

namespace crypto::detail {

inline constexpr int kAesRounds = 14;
inline constexpr std::size_t kAesRoundKeyBytes = 16 * (kAesRounds + 1);
inline constexpr std::size_t kAesEncryptKeysOffset = 0;
inline constexpr std::size_t kAesDecryptKeysOffset = kAesRoundKeyBytes;
inline constexpr std::size_t kAesScheduleSpace = 2 * kAesRoundKeyBytes;

// The AES-NI forms; only AesNi.cpp is compiled with the instructions they need.
void AesNiExpandKey(const std::uint8_t* key, std::uint8_t* schedule);
void AesNiEncryptBlocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count);
void AesNiDecryptBlocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count);

}  // namespace crypto::detail
