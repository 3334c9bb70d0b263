#pragma once
// The inner step of multiplication, r[0, n) += a[0, n) * m, unrolled for the sizes of RSA and
// written with the processor's carry-chain instructions (BMI2 and ADX) where it has them.

#include <cstddef>

#include "crypto/rsa/Limbs.h"

namespace Zelmarik::rsa {

// Gives the carry out of the top.
using RowKernel = Limb (*)(Limb* r, const Limb* a, Limb m);

// The kernel for `n` limbs, or null when there is none for this size or processor.
RowKernel FixedRowKernel(std::size_t n);

// Lets tests and benchmarks run the portable code on a processor that has the kernels.
void SetRowKernelsDisabled(bool disabled);

}  // namespace Zelmarik::rsa
