#pragma once
// AES-256 schedule layout shared by the table-driven and the AES-NI code: the 15 round keys of
// the cipher, then the 15 round keys of the equivalent inverse cipher in the order decryption
// uses them. Each round key is four column words (row 0 in the most significant byte) in the
// machine's own order, which the tables use as they stand and AES-NI byte-swaps once per call.

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
// The chunk chain's serial encryption with the round keys kept in registers.
void AesNiChainEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count,
                       std::uint8_t* chain, const std::uint8_t* whitening);
// Its decryption, eight blocks in flight: the chain bytes come from the ciphertext alone.
void AesNiChainDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count,
                       std::uint8_t* chain, const std::uint8_t* whitening);

}  // namespace crypto::detail
