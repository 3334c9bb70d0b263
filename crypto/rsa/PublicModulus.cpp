// The test of a recipient's modulus before anything is sealed for it.
#include <string>

#include "crypto/Rsa.h"
#include "crypto/rsa/Limbs.h"
#include "crypto/rsa/Primes.h"

namespace Zelmarik {

std::string PublicModulusProblem(const std::uint32_t* modulus) {
    rsa::Limbs n(rsa::LimbsForWords(kRsaNumberWords));
    rsa::LimbsFromWords(n.data(), n.size(), modulus, kRsaNumberWords);
    // The message of the key block fills all but the top word, so only a full-size modulus is
    // above every message.
    const std::size_t bits = rsa::BitLength(n.data(), n.size());
    if (bits != kRsaNumberWords * 32) {
        return "the modulus has " + std::to_string(bits) + " bits, not " +
               std::to_string(kRsaNumberWords * 32);
    }
    if (!rsa::TestBit(n.data(), 0)) {
        return "the modulus is even";
    }
    // The product of two large primes has no small factor. (The exponent is always 65537.)
    for (const std::uint32_t prime : rsa::SmallPrimes()) {
        if (rsa::RemainderSmall(n.data(), n.size(), prime) == 0) {
            return "the modulus has the small factor " + std::to_string(prime);
        }
    }
    return {};
}

}  // namespace Zelmarik
