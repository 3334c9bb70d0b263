#include "crypto/rsa/Reducer.h"

#include <bit>

namespace Zelmarik::rsa {

Reducer::Reducer(const Limb* divisor, std::size_t limbCount, std::size_t maxDividend)
    : limbCount_(limbCount),
      significant_(SignificantLimbs(divisor, limbCount)),
      shift_(static_cast<unsigned>(std::countl_zero(divisor[significant_ - 1]))),
      divisor_(significant_),
      work_(maxDividend + 1) {
    for (std::size_t i = significant_; i-- > 0;) {
        const Limb below = i > 0 && shift_ != 0 ? divisor[i - 1] >> (kLimbBits - shift_) : 0;
        divisor_[i] = (divisor[i] << shift_) | below;
    }
}

void Reducer::ReduceByOneLimb(Limb* remainder, const Limb* dividend,
                              std::size_t dividendCount) const {
    const Limb d = divisor_[0] >> shift_;
    WideLimb rest = 0;
    for (std::size_t i = dividendCount; i-- > 0;) {
        rest = ((rest << kLimbBits) | dividend[i]) % d;
    }
    Clear(remainder, limbCount_);
    remainder[0] = static_cast<Limb>(rest);
}

void Reducer::Reduce(Limb* remainder, const Limb* dividend, std::size_t dividendCount) {
    const std::size_t t = significant_;
    const std::size_t m = SignificantLimbs(dividend, dividendCount);
    if (t == 1) {
        ReduceByOneLimb(remainder, dividend, m);
        return;
    }
    if (m < t) {  // already below the divisor
        Copy(remainder, dividend, m);
        Clear(remainder + m, limbCount_ - m);
        return;
    }
    Limb* u = work_.data();
    // The dividend, shifted like the divisor, with one limb more on top.
    u[m] = 0;
    for (std::size_t i = m; i-- > 0;) {
        const Limb below = i > 0 && shift_ != 0 ? dividend[i - 1] >> (kLimbBits - shift_) : 0;
        u[i] = (dividend[i] << shift_) | below;
    }
    if (shift_ != 0 && m > 0) {
        u[m] = dividend[m - 1] >> (kLimbBits - shift_);
    }
    const Limb* v = divisor_.data();
    const Limb vTop = v[t - 1];
    const Limb vNext = v[t - 2];
    for (std::size_t j = m - t + 1; j-- > 0;) {
        // Estimate the quotient limb from the top limbs; it is at most two too large.
        const WideLimb top = (static_cast<WideLimb>(u[j + t]) << kLimbBits) | u[j + t - 1];
        WideLimb q = top / vTop;
        WideLimb r = top % vTop;
        const WideLimb base = static_cast<WideLimb>(1) << kLimbBits;
        while (q >= base || q * vNext > ((r << kLimbBits) | u[j + t - 2])) {
            --q;
            r += vTop;
            if (r >= base) {
                break;
            }
        }
        // u[j, j + t] -= q * v
        Limb carry = 0;
        Limb borrow = 0;
        for (std::size_t i = 0; i < t; ++i) {
            const WideLimb product = q * v[i] + carry;
            carry = static_cast<Limb>(product >> kLimbBits);
            const WideLimb difference =
                static_cast<WideLimb>(u[i + j]) - static_cast<Limb>(product) - borrow;
            u[i + j] = static_cast<Limb>(difference);
            borrow = static_cast<Limb>(difference >> kLimbBits) & 1;
        }
        const WideLimb difference = static_cast<WideLimb>(u[j + t]) - carry - borrow;
        u[j + t] = static_cast<Limb>(difference);
        if (((difference >> kLimbBits) & 1) != 0) {
            // The estimate was one too large: add the divisor back.
            u[j + t] += Add(u + j, u + j, v, t);
        }
    }
    Clear(remainder, limbCount_);
    for (std::size_t i = 0; i < t; ++i) {
        const Limb above = i + 1 < t && shift_ != 0 ? u[i + 1] << (kLimbBits - shift_) : 0;
        remainder[i] = (u[i] >> shift_) | above;
    }
}

}  // namespace Zelmarik::rsa
