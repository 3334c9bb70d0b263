#pragma once
// Arithmetic modulo one odd number in Montgomery form, and exponentiation by sliding windows.
// Everything that depends on the modulus is computed once, and the work space is held, so the
// loops of an exponentiation allocate nothing.

#include <cstddef>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

class Montgomery {
public:
    // `modulus` must be odd; limbs above its top nonzero limb are ignored.
    Montgomery(const Limb* modulus, std::size_t limbCount);

    // Limbs of the modulus, and of every number given to or taken from this object.
    std::size_t Size() const { return n_; }
    const Limb* Modulus() const { return modulus_.data(); }

    // r = a * b / R mod m, for a and b below m; r may be a or b.
    void Multiply(Limb* r, const Limb* a, const Limb* b);
    void Square(Limb* r, const Limb* a);
    void ToMontgomery(Limb* r, const Limb* a);
    void FromMontgomery(Limb* r, const Limb* a);

    // r = base ^ exponent mod m for base below m, both in ordinary form; 0^0 is 1.
    void Power(Limb* r, const Limb* base, const Limb* exponent, std::size_t exponentLimbs);

private:
    static constexpr unsigned kMaxWindow = 6;

    // r = product_ / R mod m.
    void Reduce(Limb* r);
    Limb* TableEntry(std::size_t index) { return table_.data() + index * n_; }

    std::size_t n_;
    Limb k0_;  // -m^-1 mod 2^kLimbBits
    Limbs modulus_;
    Limbs rSquared_;
    Limbs product_;
    Limbs accumulator_;
    Limbs table_;  // odd powers of the base: b, b^3, b^5, ...
};

}  // namespace Zelmarik::rsa
