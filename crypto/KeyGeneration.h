#pragma once
// New RSA key pairs: two 2048-bit primes, the public exponent 65537, and the two texts that
// carry them, a *.privkey file and a recipient's public key text.

#include <cstdint>
#include <string>

#include "Common/Common/SecureBuffer.h"
#include "platform/ErrorCodes.h"

namespace Zelmarik {

using SecureText = std::basic_string<char, std::char_traits<char>, WipingAllocator<char>>;

// The marker line of the *.privkey files made here: lines 4 to 6 hold d mod (p - 1),
// d mod (q - 1) and q^-1 mod p.
inline constexpr const char* kPrivateKeyFormatMarker = "RSA-4096 CRT";

struct GeneratedKeyPair {
    // Name, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p, marker, local date, validity; one
    // a line, ended by LF.
    SecureText privateKeyText;
    // The 1024 hexadecimal digits of the modulus, most significant first, nothing else.
    std::string publicKeyText;
};

enum class KeyGenerationResult {
    Ok,
    BadName,   // a line break or a zero character would break the key file
    NoRandom,  // the system's random generator failed
};

// Makes a key pair for `name` valid for `validityYears` years (-1: no end).
KeyGenerationResult GenerateKeyPair(const std::u16string& name, std::int32_t validityYears,
                                    GeneratedKeyPair& pair);

// Writes the private key text, readable by its owner alone, and the public key text. Without
// `replace` neither file may exist yet; nothing is written when one does. 0 or a Windows error.
platform::ErrorCode WriteKeyPairFiles(const GeneratedKeyPair& pair,
                                      const std::u16string& privateKeyPath,
                                      const std::u16string& publicKeyPath, bool replace);

}  // namespace Zelmarik
