#pragma once
// Digests and the key derivation: SHA-256 (FIPS 180-4), HMAC-SHA-256 (RFC 2104), PBKDF2
// (RFC 2898), the SHA-1 compression function and CRC-32 (ISO 3309, as in zlib).

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace crypto {

inline constexpr std::size_t kSha256DigestSize = 32;
inline constexpr std::size_t kSha256BlockSize = 64;

struct Sha256Context {
    std::array<std::uint32_t, 8> state;
    std::array<std::uint8_t, kSha256BlockSize> pending;
    std::uint64_t totalBytes;
};

void Sha256Init(Sha256Context& context);
void Sha256Update(Sha256Context& context, std::span<const std::uint8_t> data);
// Writes the digest and wipes the context.
void Sha256Final(Sha256Context& context, std::span<std::uint8_t, kSha256DigestSize> digest);

// The pseudorandom function of the key derivation: fills `digest` (its size is the hash length).
using PseudoRandomFunction = void (*)(std::span<const std::uint8_t> key,
                                      std::span<const std::uint8_t> message,
                                      std::span<std::uint8_t> digest);

// HMAC-SHA-256; writes the first min(digest.size(), 32) bytes of the MAC.
void HmacSha256(std::span<const std::uint8_t> key, std::span<const std::uint8_t> message,
                std::span<std::uint8_t> digest);

inline constexpr std::size_t kMaxPrfHashLength = 64;

// PBKDF2 (RFC 2898) with any `prf` of hash length `hashLength`, block index big-endian from 1.
// Result 0; 1 when hashLength is 0 or above kMaxPrfHashLength, or iterations is below 1.
int DeriveKey(PseudoRandomFunction prf, std::size_t hashLength,
              std::span<const std::uint8_t> password, std::span<const std::uint8_t> salt,
              std::uint32_t iterations, std::span<std::uint8_t> derived);

// One SHA-1 compression of a 64-byte block into five state words; no padding, no length.
void Sha1Transform(std::span<std::uint32_t, 5> state, std::span<const std::uint8_t, 64> block);
// Two independent compressions, as two calls of Sha1Transform would do them; the SHA extensions
// overlap them.
void Sha1TransformPair(std::span<std::uint32_t, 5> first,
                       std::span<const std::uint8_t, 64> firstBlock,
                       std::span<std::uint32_t, 5> second,
                       std::span<const std::uint8_t, 64> secondBlock);

// CRC-32, reflected polynomial 0xEDB88320. The standard form starts with all ones and inverts
// its result ("123456789" gives 0xCBF43926); the plain form starts at `crc` (0 at first) and
// returns the register as it stands, so it may be continued.
std::uint32_t Crc32(std::span<const std::uint8_t> data);
std::uint32_t Crc32Plain(std::span<const std::uint8_t> data, std::uint32_t crc = 0);

}  // namespace crypto
