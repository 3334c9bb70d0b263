#pragma once
// Multiple-precision arithmetic on limb arrays, least significant limb first. A limb is the
// widest word whose product the compiler can hold: 64 bits where a 128-bit type exists, else 32.

#include <cstddef>
#include <cstdint>

#include "Common/Common/SecureBuffer.h"

namespace Zelmarik::rsa {

#if defined(__SIZEOF_INT128__)
using Limb = std::uint64_t;
__extension__ typedef unsigned __int128 WideLimb;
#else
using Limb = std::uint32_t;
using WideLimb = std::uint64_t;
#endif

inline constexpr std::size_t kLimbBits = sizeof(Limb) * 8;
inline constexpr std::size_t kWordsPerLimb = sizeof(Limb) / sizeof(std::uint32_t);

// Numbers that may hold key material live here.
using Limbs = SecureVector<Limb>;

// Limbs needed for `words` 32-bit words.
constexpr std::size_t LimbsForWords(std::size_t words) {
    return (words + kWordsPerLimb - 1) / kWordsPerLimb;
}

// 32-bit words to limbs and back; missing places are zero.
void LimbsFromWords(Limb* limbs, std::size_t limbCount, const std::uint32_t* words,
                    std::size_t wordCount);
void WordsFromLimbs(std::uint32_t* words, std::size_t wordCount, const Limb* limbs,
                    std::size_t limbCount);

void Clear(Limb* a, std::size_t n);
void Copy(Limb* r, const Limb* a, std::size_t n);
bool IsZero(const Limb* a, std::size_t n);
// a == value, with value a single limb.
bool Equals(const Limb* a, std::size_t n, Limb value);
// -1, 0 or 1.
int Compare(const Limb* a, const Limb* b, std::size_t n);
// Limbs up to and including the top nonzero one.
std::size_t SignificantLimbs(const Limb* a, std::size_t n);
std::size_t BitLength(const Limb* a, std::size_t n);
inline bool TestBit(const Limb* a, std::size_t bit) {
    return ((a[bit / kLimbBits] >> (bit % kLimbBits)) & 1) != 0;
}

// r = a + b, gives the carry; r may be a or b.
Limb Add(Limb* r, const Limb* a, const Limb* b, std::size_t n);
// r = a - b, gives the borrow; r may be a or b.
Limb Subtract(Limb* r, const Limb* a, const Limb* b, std::size_t n);
// a -= value, gives the borrow.
Limb SubtractLimb(Limb* a, std::size_t n, Limb value);
// a += value, gives the carry.
Limb AddLimb(Limb* a, std::size_t n, Limb value);
// a >>= 1, with `top` shifted in from above.
void ShiftRightOne(Limb* a, std::size_t n, Limb top = 0);

// r[0, n) += a[0, n) * m, gives the carry out of the top.
Limb MultiplyAddRow(Limb* r, const Limb* a, std::size_t n, Limb m);
// r[0, na + nb) = a * b; r must not overlap a or b.
void Multiply(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb);
// r[0, 2n) = a * a; r must not overlap a.
void Square(Limb* r, const Limb* a, std::size_t n);

// a mod d for a small divisor d (below 2^32).
std::uint32_t RemainderSmall(const Limb* a, std::size_t n, std::uint32_t d);
// a / d for a divisor d below 2^32 that divides a exactly.
void DivideExactSmall(Limb* a, std::size_t n, std::uint32_t d);

}  // namespace Zelmarik::rsa
