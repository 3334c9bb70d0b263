#include "crypto/rsa/NumberTheory.h"

#include <algorithm>

#include "crypto/rsa/Montgomery.h"
#include "crypto/rsa/Reducer.h"

namespace Zelmarik::rsa {

namespace {

// x^-1 mod m for small numbers; 0 when there is none.
std::uint32_t SmallInverse(std::uint32_t x, std::uint32_t m) {
    std::int64_t r0 = m, r1 = x, t0 = 0, t1 = 1;
    while (r1 != 0) {
        const std::int64_t q = r0 / r1;
        std::int64_t next = r0 - q * r1;
        r0 = r1;
        r1 = next;
        next = t0 - q * t1;
        t0 = t1;
        t1 = next;
    }
    if (r0 != 1) {
        return 0;
    }
    return static_cast<std::uint32_t>(t0 < 0 ? t0 + m : t0);
}

// a = a - b mod m for a and b below m.
void SubtractMod(Limb* a, const Limb* b, const Limb* m, std::size_t n) {
    if (Subtract(a, a, b, n) != 0) {
        Add(a, a, m, n);
    }
}

// x = x / 2 mod m for odd m and x below m.
void HalveMod(Limb* x, const Limb* m, std::size_t n) {
    Limb top = 0;
    if ((x[0] & 1) != 0) {
        top = Add(x, x, m, n);
    }
    ShiftRightOne(x, n, top);
}

void PlainPower(Limb* r, const Limb* base, const Limb* exponent, std::size_t exponentLimbs,
                Reducer& reducer, std::size_t n) {
    Limbs product(2 * n);
    Limbs acc(n);
    acc[0] = 1;
    reducer.Reduce(acc.data(), acc.data(), n);  // 1 mod m: 0 when m is 1
    for (std::size_t i = BitLength(exponent, exponentLimbs); i-- > 0;) {
        Square(product.data(), acc.data(), n);
        reducer.Reduce(acc.data(), product.data(), 2 * n);
        if (TestBit(exponent, i)) {
            Multiply(product.data(), acc.data(), n, base, n);
            reducer.Reduce(acc.data(), product.data(), 2 * n);
        }
    }
    Copy(r, acc.data(), n);
}

}  // namespace

bool InverseOfSmall(Limb* result, const Limb* modulus, std::size_t n, std::uint32_t e) {
    if (IsZero(modulus, n)) {
        return false;
    }
    Clear(result, n);
    if (Equals(modulus, n, 1)) {
        return true;
    }
    // e * d = 1 + k * modulus with k = -modulus^-1 mod e.
    const std::uint32_t inverse = SmallInverse(RemainderSmall(modulus, n, e), e);
    if (inverse == 0) {
        return false;
    }
    const std::uint32_t k = e - inverse;
    Limbs t(n + 1);
    t[n] = MultiplyAddRow(t.data(), modulus, n, k);
    AddLimb(t.data(), n + 1, 1);
    DivideExactSmall(t.data(), n + 1, e);
    Copy(result, t.data(), n);
    return true;
}

bool InverseModOdd(Limb* result, const Limb* a, const Limb* m, std::size_t n) {
    // Invariants: x1 * a = u and x2 * a = v (mod m).
    Limbs u(a, a + n), v(m, m + n), x1(n), x2(n);
    x1[0] = 1;
    while (!IsZero(u.data(), n)) {
        while ((u[0] & 1) == 0) {
            ShiftRightOne(u.data(), n);
            HalveMod(x1.data(), m, n);
        }
        while ((v[0] & 1) == 0) {
            ShiftRightOne(v.data(), n);
            HalveMod(x2.data(), m, n);
        }
        if (Compare(u.data(), v.data(), n) >= 0) {
            Subtract(u.data(), u.data(), v.data(), n);
            SubtractMod(x1.data(), x2.data(), m, n);
        } else {
            Subtract(v.data(), v.data(), u.data(), n);
            SubtractMod(x2.data(), x1.data(), m, n);
        }
    }
    if (!Equals(v.data(), n, 1)) {
        return false;
    }
    Copy(result, x2.data(), n);
    return true;
}

void ModularPower(Limb* r, const Limb* base, std::size_t baseLimbs, const Limb* exponent,
                  std::size_t exponentLimbs, const Limb* modulus, std::size_t n) {
    Reducer reducer(modulus, n, std::max(baseLimbs, 2 * n));
    Limbs reduced(n);
    reducer.Reduce(reduced.data(), base, baseLimbs);
    if ((modulus[0] & 1) == 0) {
        PlainPower(r, reduced.data(), exponent, exponentLimbs, reducer, n);
        return;
    }
    Montgomery montgomery(modulus, n);
    Clear(r, n);
    montgomery.Power(r, reduced.data(), exponent, exponentLimbs);
}

}  // namespace Zelmarik::rsa
