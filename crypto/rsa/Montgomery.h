#pragma once
// Arithmetic modulo one odd number in Montgomery form, and exponentiation by sliding windows.
// Everything that depends on the modulus is computed once, and the work space is held, so the
// loops of an exponentiation allocate nothing.

#include <cstddef>

#include "crypto/rsa/Limbs.h"
#include "crypto/rsa/RowKernels.h"

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

    // product_ = a * b.
    void Product(const Limb* a, const Limb* b);
    // product_ = a * a from three products of halves, when a kernel for halves exists.
    void SquareByHalves(const Limb* a);
    // r = product_ / R mod m.
    void Reduce(Limb* r);
    Limb Row(Limb* r, const Limb* a, Limb m) const {
        return row_ != nullptr ? row_(r, a, m) : MultiplyAddRow(r, a, n_, m);
    }
    Limb* TableEntry(std::size_t index) { return table_.data() + index * n_; }

    std::size_t n_;
    Limb k0_;            // -m^-1 mod 2^kLimbBits
    RowKernel row_;      // for n_ limbs, or null
    RowKernel halfRow_;  // for n_ / 2 limbs, or null
    Limbs modulus_;
    Limbs rSquared_;
    Limbs product_;
    Limbs accumulator_;
    Limbs cross_;  // the product of the two halves of a square
    Limbs table_;  // odd powers of the base: b, b^3, b^5, ...
};

}  // namespace Zelmarik::rsa
