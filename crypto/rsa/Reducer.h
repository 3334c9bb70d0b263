#pragma once
// Remainders by one fixed divisor through long division, with the divisor normalised once and
// all work space held, so that reducing allocates nothing.

#include <cstddef>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

class Reducer {
public:
    // `divisor` of `limbCount` limbs must not be zero; dividends have at most `maxDividend` limbs.
    Reducer(const Limb* divisor, std::size_t limbCount, std::size_t maxDividend);

    // remainder[0, limbCount) = dividend mod divisor; `remainder` may overlap `dividend`.
    void Reduce(Limb* remainder, const Limb* dividend, std::size_t dividendCount);

private:
    void ReduceByOneLimb(Limb* remainder, const Limb* dividend, std::size_t dividendCount) const;

    std::size_t limbCount_;
    std::size_t significant_;
    unsigned shift_;
    Limbs divisor_;  // shifted so that its top bit is set
    Limbs work_;
};

}  // namespace Zelmarik::rsa
