#include "crypto/rsa/PrivatePower.h"

#include "crypto/rsa/Montgomery.h"
#include "crypto/rsa/NumberTheory.h"
#include "crypto/rsa/Reducer.h"

namespace Zelmarik::rsa {

namespace {

bool IsOddAboveOne(const Limb* a, std::size_t n) {
    return (a[0] & 1) != 0 && !Equals(a, n, 1);
}

// c^(e^-1 mod (p - 1)) mod p: for a prime p the power c^d mod p with the exponent cut down.
bool PowerModPrime(Limb* result, const Limb* c, std::size_t cLimbs, const Limb* p, std::size_t n,
                   std::uint32_t e) {
    Limbs pMinusOne(p, p + n);
    SubtractLimb(pMinusOne.data(), n, 1);
    Limbs exponent(n);
    if (!InverseOfSmall(exponent.data(), pMinusOne.data(), n, e)) {
        return false;
    }
    Limbs reduced(n);
    Reducer(p, n, cLimbs).Reduce(reduced.data(), c, cLimbs);
    Clear(result, n);
    if (IsZero(reduced.data(), n)) {
        return true;  // p divides c, and d is not zero
    }
    Montgomery(p, n).Power(result, reduced.data(), exponent.data(), n);
    return true;
}

// Chinese remaindering of c^d mod p and mod q; false where the primes do not allow it.
bool PowerByPrimes(Limb* result, const Limb* c, const Limb* p, const Limb* q, std::size_t n,
                   std::uint32_t e) {
    if (!IsOddAboveOne(p, n) || !IsOddAboveOne(q, n) || Compare(p, q, n) == 0) {
        return false;
    }
    Limbs mp(n), mq(n), qInverse(n), h(n);
    if (!PowerModPrime(mp.data(), c, 2 * n, p, n, e) ||
        !PowerModPrime(mq.data(), c, 2 * n, q, n, e)) {
        return false;
    }
    Reducer byP(p, n, n);
    byP.Reduce(qInverse.data(), q, n);
    if (!InverseModOdd(qInverse.data(), qInverse.data(), p, n)) {
        return false;
    }
    // h = (mp - mq) * q^-1 mod p, result = mq + h * q.
    byP.Reduce(h.data(), mq.data(), n);
    if (Subtract(h.data(), mp.data(), h.data(), n) != 0) {
        Add(h.data(), h.data(), p, n);
    }
    Montgomery modP(p, n);
    modP.Multiply(h.data(), h.data(), qInverse.data());
    modP.ToMontgomery(h.data(), h.data());
    Multiply(result, h.data(), n, q, n);
    const Limb carry = Add(result, result, mq.data(), n);
    AddLimb(result + n, n, carry);
    return true;
}

// True when result^e = c mod m: the primes were what they claim.
bool RaisesBack(const Limb* result, const Limb* c, const Limb* m, std::size_t n, std::uint32_t e) {
    Limbs exponent(1), back(n), reduced(n);
    exponent[0] = e;
    Montgomery(m, n).Power(back.data(), result, exponent.data(), 1);
    Reducer(m, n, n).Reduce(reduced.data(), c, n);
    return Compare(back.data(), reduced.data(), n) == 0;
}

}  // namespace

void PrivatePower(Limb* result, const Limb* c, const Limb* d, const Limb* p, const Limb* q,
                  std::size_t primeLimbs, std::uint32_t e) {
    const std::size_t n = 2 * primeLimbs;
    Limbs modulus(n);
    Multiply(modulus.data(), p, primeLimbs, q, primeLimbs);
    if (!IsZero(d, n) && PowerByPrimes(result, c, p, q, primeLimbs, e) &&
        RaisesBack(result, c, modulus.data(), n, e)) {
        return;
    }
    // Numbers that are not two distinct primes, or a zero exponent: the power as it stands.
    ModularPower(result, c, n, d, n, modulus.data(), n);
}

}  // namespace Zelmarik::rsa
