#pragma once
// Modular inverses and powers on limb arrays of one size.

#include <cstddef>
#include <cstdint>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

// result = e^-1 mod modulus for a small prime-or-not e; false when they share a factor or the
// modulus is zero. The inverse of anything modulo 1 is 0.
bool InverseOfSmall(Limb* result, const Limb* modulus, std::size_t n, std::uint32_t e);

// result = a^-1 mod m for odd m and a below m; false when there is none.
bool InverseModOdd(Limb* result, const Limb* a, const Limb* m, std::size_t n);

// r[0, n) = base ^ exponent mod modulus for any nonzero modulus of n limbs and a base of
// `baseLimbs` limbs; 0^0 is 1.
void ModularPower(Limb* r, const Limb* base, std::size_t baseLimbs, const Limb* exponent,
                  std::size_t exponentLimbs, const Limb* modulus, std::size_t n);

}  // namespace Zelmarik::rsa
