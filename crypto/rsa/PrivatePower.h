#pragma once
// The private RSA power c^d mod pq, through the two primes where they allow it.

#include <cstddef>
#include <cstdint>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

// result[0, 2P) = c ^ d mod (p * q) exactly, for c and d of 2P limbs and p, q of P limbs, with
// d the inverse of e modulo (p - 1)(q - 1) or zero. p * q must not be zero.
void PrivatePower(Limb* result, const Limb* c, const Limb* d, const Limb* p, const Limb* q,
                  std::size_t primeLimbs, std::uint32_t e);

}  // namespace Zelmarik::rsa
