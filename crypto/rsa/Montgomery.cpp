#include "crypto/rsa/Montgomery.h"

#include <cstdint>

#include "crypto/rsa/Reducer.h"

namespace Zelmarik::rsa {

namespace {

// r[0, 2n) = a * b through a row kernel for n limbs.
void KernelProduct(Limb* r, const Limb* a, const Limb* b, std::size_t n, RowKernel row) {
    Clear(r, 2 * n);
    for (std::size_t i = 0; i < n; ++i) {
        r[i + n] = row(r + i, b, a[i]);
    }
}

// -m^-1 mod 2^kLimbBits for odd m, by Newton's iteration: each step doubles the good bits.
Limb NegativeInverse(Limb m) {
    Limb inverse = m;  // right in the low three bits
    for (int i = 0; i < 5; ++i) {
        inverse *= 2 - m * inverse;
    }
    return 0 - inverse;
}

unsigned WindowBits(std::size_t exponentBits) {
    if (exponentBits > 671) {
        return 6;
    }
    if (exponentBits > 239) {
        return 5;
    }
    if (exponentBits > 79) {
        return 4;
    }
    return exponentBits > 23 ? 3 : 1;
}

}  // namespace

Montgomery::Montgomery(const Limb* modulus, std::size_t limbCount)
    : n_(SignificantLimbs(modulus, limbCount)),
      k0_(NegativeInverse(modulus[0])),
      row_(FixedRowKernel(n_)),
      halfRow_(n_ % 2 == 0 ? FixedRowKernel(n_ / 2) : nullptr),
      modulus_(modulus, modulus + n_),
      rSquared_(n_),
      product_(2 * n_ + 1),
      accumulator_(n_),
      cross_(halfRow_ != nullptr ? n_ : 0),
      table_((std::size_t{1} << (kMaxWindow - 1)) * n_) {
    // R^2 mod m, with R = 2^(n * kLimbBits).
    Limbs rSquaredFull(2 * n_ + 1);
    rSquaredFull[2 * n_] = 1;
    Reducer(modulus_.data(), n_, 2 * n_ + 1)
        .Reduce(rSquared_.data(), rSquaredFull.data(), 2 * n_ + 1);
}

void Montgomery::Reduce(Limb* r) {
    Limb* t = product_.data();
    const Limb* m = modulus_.data();
    Limb extra = 0;
    for (std::size_t i = 0; i < n_; ++i) {
        const Limb carry = Row(t + i, m, t[i] * k0_);
        const WideLimb sum = static_cast<WideLimb>(t[i + n_]) + carry + extra;
        t[i + n_] = static_cast<Limb>(sum);
        extra = static_cast<Limb>(sum >> kLimbBits);
    }
    if (extra != 0 || Compare(t + n_, m, n_) >= 0) {
        Subtract(r, t + n_, m, n_);
    } else {
        Copy(r, t + n_, n_);
    }
}

void Montgomery::Product(const Limb* a, const Limb* b) {
    if (row_ != nullptr) {
        KernelProduct(product_.data(), a, b, n_, row_);
        return;
    }
    rsa::Multiply(product_.data(), a, n_, b, n_);
}

void Montgomery::SquareByHalves(const Limb* a) {
    // (h B + l)^2 = h^2 B^2 + 2 h l B + l^2, with B = 2^(kLimbBits * half).
    const std::size_t half = n_ / 2;
    Limb* t = product_.data();
    KernelProduct(t, a, a, half, halfRow_);
    KernelProduct(t + n_, a + half, a + half, half, halfRow_);
    KernelProduct(cross_.data(), a, a + half, half, halfRow_);
    for (int twice = 0; twice < 2; ++twice) {
        const Limb carry = Add(t + half, t + half, cross_.data(), n_);
        AddLimb(t + half + n_, n_ - half, carry);
    }
}

void Montgomery::Multiply(Limb* r, const Limb* a, const Limb* b) {
    Product(a, b);
    Reduce(r);
}

void Montgomery::Square(Limb* r, const Limb* a) {
    // Unrolled kernels need rows of one length: a square from halves, or a full product.
    if (halfRow_ != nullptr) {
        SquareByHalves(a);
    } else if (row_ != nullptr) {
        Product(a, a);
    } else {
        rsa::Square(product_.data(), a, n_);
    }
    Reduce(r);
}

void Montgomery::ToMontgomery(Limb* r, const Limb* a) {
    Multiply(r, a, rSquared_.data());
}

void Montgomery::FromMontgomery(Limb* r, const Limb* a) {
    Copy(product_.data(), a, n_);
    Clear(product_.data() + n_, n_);
    Reduce(r);
}

void Montgomery::Power(Limb* r, const Limb* base, const Limb* exponent, std::size_t exponentLimbs) {
    const std::size_t bits = BitLength(exponent, exponentLimbs);
    Limb* acc = accumulator_.data();
    if (bits == 0) {
        Clear(r, n_);
        r[0] = Equals(modulus_.data(), n_, 1) ? 0 : 1;
        return;
    }
    const unsigned window = WindowBits(bits);
    ToMontgomery(TableEntry(0), base);
    if (window > 1) {
        Square(acc, TableEntry(0));
        for (std::size_t k = 1; k < (std::size_t{1} << (window - 1)); ++k) {
            Multiply(TableEntry(k), TableEntry(k - 1), acc);
        }
    }
    // Walk the exponent from the top: zeros square, a window of up to `window` bits ending in
    // a one squares once per bit and multiplies by its odd power.
    bool started = false;
    std::size_t i = bits;  // bits above i are done
    while (i > 0) {
        if (!TestBit(exponent, i - 1)) {
            Square(acc, acc);
            --i;
            continue;
        }
        std::size_t low = i > window ? i - window : 0;
        while (!TestBit(exponent, low)) {
            ++low;
        }
        std::size_t value = 0;
        for (std::size_t b = i; b-- > low;) {
            value = (value << 1) | (TestBit(exponent, b) ? 1 : 0);
        }
        if (started) {
            for (std::size_t s = low; s < i; ++s) {
                Square(acc, acc);
            }
            Multiply(acc, acc, TableEntry(value >> 1));
        } else {
            Copy(acc, TableEntry(value >> 1), n_);
            started = true;
        }
        i = low;
    }
    FromMontgomery(r, acc);
}

}  // namespace Zelmarik::rsa
