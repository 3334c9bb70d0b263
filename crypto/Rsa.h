#pragma once
// RSA on fixed-size numbers: arrays of 32-bit words, least significant word first, zero above
// their top word. A 4096-bit modulus of two 2048-bit primes, the public exponent 65537, and no
// padding around the value.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelmarik {

inline constexpr std::size_t kRsaPrimeWords = 64;    // 2048 bits
inline constexpr std::size_t kRsaNumberWords = 128;  // 4096 bits: modulus, exponent, message
inline constexpr std::size_t kRsaBlockBytes = 512;   // one RSA value as little-endian bytes
inline constexpr std::uint32_t kRsaPublicExponent = 65537;

// Results of RsaOpenBlock.
inline constexpr int kRsaNullBuffer = 1;
inline constexpr int kRsaNullPrime = 14;
inline constexpr int kRsaNoScratch = 15;
inline constexpr int kRsaModExpFailed = 21;

// Results of NumberModExp.
inline constexpr int kModExpZeroModulus = 1;
inline constexpr int kModExpNoMemory = 2;

// Conversions of key texts and byte strings to numbers.
class DCRSA {
public:
    virtual ~DCRSA() = default;

    // Hexadecimal digits, most significant first, of `text` (which ends at its first zero
    // character), looking at no more than `digitCount` characters; any other character is
    // skipped. Gives the number of words written: the words that half the text's length in
    // bytes fills, at most `wordCount`.
    static std::size_t NumberFromHex(std::uint32_t* number, std::size_t wordCount,
                                     std::string_view text, std::size_t digitCount);
    // A big-endian byte string into `wordCount` words; gives the number of words filled.
    static std::size_t NumberFromBytes(std::uint32_t* number, std::size_t wordCount,
                                       const std::uint8_t* bytes, std::size_t byteCount);
};

// result = base ^ exponent mod modulus, all kRsaNumberWords words; 0 or a kModExp... result.
// `result` may be the same array as `base`.
int NumberModExp(std::uint32_t* result, const std::uint32_t* base, const std::uint32_t* exponent,
                 const std::uint32_t* modulus);

// The private operation: plain = block ^ d mod (prime1 * prime2), with d the inverse of 65537
// modulo (prime1 - 1)(prime2 - 1), or 0 when there is none. `block` and `plain` hold
// kRsaNumberWords words, the primes kRsaPrimeWords each. 0 or a kRsa... result.
int RsaOpenBlock(const std::uint32_t* block, std::uint32_t* plain, const std::uint32_t* prime1,
                 const std::uint32_t* prime2);

// What keeps a recipient's modulus (kRsaNumberWords words) from sealing a key block that its
// owner can open, in words for the user; empty when nothing does. It must have all 4096 bits,
// be odd, and have no prime factor below 2^14, as a product of two large primes has none.
std::string PublicModulusProblem(const std::uint32_t* modulus);

}  // namespace Zelmarik
