#pragma once
// Random probable primes: trial division by small primes over a sieved run of candidates, then
// Miller-Rabin with random bases.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

// Odd primes below this bound divide candidates out before Miller-Rabin.
inline constexpr std::uint32_t kSieveBound = 1u << 14;
// The odd primes below kSieveBound, ascending.
const std::vector<std::uint32_t>& SmallPrimes();

// Miller-Rabin rounds that bound the error for any odd number at 4^-64 = 2^-128.
inline constexpr int kMillerRabinRounds = 64;

// Fills `limbs` with random bits from the system generator; false when it fails.
bool RandomLimbs(Limb* limbs, std::size_t n);

// Miller-Rabin with `rounds` random bases; n must be odd and above 3. False also when the
// random generator fails, which `randomFailed` tells.
bool IsProbablePrime(const Limb* n, std::size_t limbs, int rounds, bool& randomFailed);

// A random prime of exactly `bits` bits (a multiple of the limb size) with the top two bits set
// and p mod e != 1, so that the prime e is coprime to p - 1; false when the random generator
// fails.
bool RandomPrime(Limb* p, std::size_t bits, std::uint32_t e);

}  // namespace Zelmarik::rsa
