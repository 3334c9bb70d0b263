#include "crypto/Rsa.h"

#include <algorithm>
#include <new>

#include "crypto/rsa/Limbs.h"
#include "crypto/rsa/NumberTheory.h"
#include "crypto/rsa/PrivatePower.h"
#include "platform/SecureMemory.h"

namespace Zelmarik {

namespace {

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::uint32_t HexValue(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<std::uint32_t>(c - '0');
    }
    return static_cast<std::uint32_t>((c | 0x20) - 'a' + 10);
}

constexpr std::size_t kPrimeLimbs = rsa::LimbsForWords(kRsaPrimeWords);
constexpr std::size_t kNumberLimbs = rsa::LimbsForWords(kRsaNumberWords);

}  // namespace

std::size_t DCRSA::NumberFromHex(std::uint32_t* number, std::size_t wordCount,
                                 std::string_view text, std::size_t digitCount) {
    std::fill(number, number + wordCount, 0u);
    text = text.substr(0, text.find('\0'));
    // The digits fill a big-endian byte string of half the text's length; its low words count.
    const std::size_t byteCount = (text.size() + 1) / 2;
    const std::string_view walked = text.substr(0, std::min(digitCount, text.size()));
    std::size_t position = 0;  // of the digit, counted from the least significant
    for (std::size_t i = walked.size(); i-- > 0;) {
        if (!IsHexDigit(walked[i])) {
            continue;
        }
        const std::size_t word = position / 8;
        if (word < wordCount) {
            number[word] |= HexValue(walked[i]) << (4 * (position % 8));
        }
        ++position;
    }
    return std::min(wordCount, (byteCount + 3) / 4);
}

std::size_t DCRSA::NumberFromBytes(std::uint32_t* number, std::size_t wordCount,
                                   const std::uint8_t* bytes, std::size_t byteCount) {
    std::fill(number, number + wordCount, 0u);
    const std::size_t used = std::min(byteCount, 4 * wordCount);
    for (std::size_t i = 0; i < used; ++i) {
        number[i / 4] |= static_cast<std::uint32_t>(bytes[byteCount - 1 - i]) << (8 * (i % 4));
    }
    return std::min(wordCount, (byteCount + 3) / 4);
}

int NumberModExp(std::uint32_t* result, const std::uint32_t* base, const std::uint32_t* exponent,
                 const std::uint32_t* modulus) {
    try {
        rsa::Limbs b(kNumberLimbs), x(kNumberLimbs), m(kNumberLimbs), r(kNumberLimbs);
        rsa::LimbsFromWords(m.data(), kNumberLimbs, modulus, kRsaNumberWords);
        if (rsa::IsZero(m.data(), kNumberLimbs)) {
            return kModExpZeroModulus;
        }
        rsa::LimbsFromWords(b.data(), kNumberLimbs, base, kRsaNumberWords);
        rsa::LimbsFromWords(x.data(), kNumberLimbs, exponent, kRsaNumberWords);
        rsa::ModularPower(r.data(), b.data(), kNumberLimbs, x.data(), kNumberLimbs, m.data(),
                          kNumberLimbs);
        rsa::WordsFromLimbs(result, kRsaNumberWords, r.data(), kNumberLimbs);
        return 0;
    } catch (const std::bad_alloc&) {
        return kModExpNoMemory;
    }
}

namespace {

[[gnu::noinline]] int OpenBlock(const std::uint32_t* block, std::uint32_t* plain,
                                const std::uint32_t* prime1, const std::uint32_t* prime2) {
    if (block == nullptr || plain == nullptr) {
        return kRsaNullBuffer;
    }
    if (prime1 == nullptr || prime2 == nullptr) {
        return kRsaNullPrime;
    }
    try {
        rsa::Limbs p(kPrimeLimbs), q(kPrimeLimbs), n(kNumberLimbs), phi(kNumberLimbs);
        rsa::Limbs d(kNumberLimbs), c(kNumberLimbs), m(kNumberLimbs);
        rsa::LimbsFromWords(p.data(), kPrimeLimbs, prime1, kRsaPrimeWords);
        rsa::LimbsFromWords(q.data(), kPrimeLimbs, prime2, kRsaPrimeWords);
        rsa::Multiply(n.data(), p.data(), kPrimeLimbs, q.data(), kPrimeLimbs);
        if (rsa::IsZero(n.data(), kNumberLimbs)) {
            return kRsaModExpFailed;
        }
        // d = 65537^-1 mod (p - 1)(q - 1), or zero when there is no inverse.
        rsa::Limbs p1(p), q1(q);
        rsa::SubtractLimb(p1.data(), kPrimeLimbs, 1);
        rsa::SubtractLimb(q1.data(), kPrimeLimbs, 1);
        rsa::Multiply(phi.data(), p1.data(), kPrimeLimbs, q1.data(), kPrimeLimbs);
        if (!rsa::InverseOfSmall(d.data(), phi.data(), kNumberLimbs, kRsaPublicExponent)) {
            rsa::Clear(d.data(), kNumberLimbs);
        }
        rsa::LimbsFromWords(c.data(), kNumberLimbs, block, kRsaNumberWords);
        rsa::PrivatePower(m.data(), c.data(), d.data(), p.data(), q.data(), kPrimeLimbs,
                          kRsaPublicExponent);
        rsa::WordsFromLimbs(plain, kRsaNumberWords, m.data(), kNumberLimbs);
        return 0;
    } catch (const std::bad_alloc&) {
        return kRsaNoScratch;
    }
}

}  // namespace

int RsaOpenBlock(const std::uint32_t* block, std::uint32_t* plain, const std::uint32_t* prime1,
                 const std::uint32_t* prime2) {
    const int result = OpenBlock(block, plain, prime1, prime2);
    platform::WipeStackBelow();  // the arithmetic leaves pieces of the primes on the stack
    return result;
}

}  // namespace Zelmarik
