#include "crypto/rsa/Limbs.h"

#include <bit>

namespace Zelmarik::rsa {

void LimbsFromWords(Limb* limbs, std::size_t limbCount, const std::uint32_t* words,
                    std::size_t wordCount) {
    for (std::size_t i = 0; i < limbCount; ++i) {
        Limb limb = 0;
        for (std::size_t k = 0; k < kWordsPerLimb; ++k) {
            const std::size_t w = i * kWordsPerLimb + k;
            if (w < wordCount) {
                limb |= static_cast<Limb>(words[w]) << (32 * k);
            }
        }
        limbs[i] = limb;
    }
}

void WordsFromLimbs(std::uint32_t* words, std::size_t wordCount, const Limb* limbs,
                    std::size_t limbCount) {
    for (std::size_t w = 0; w < wordCount; ++w) {
        const std::size_t i = w / kWordsPerLimb;
        words[w] =
            i < limbCount ? static_cast<std::uint32_t>(limbs[i] >> (32 * (w % kWordsPerLimb))) : 0;
    }
}

void Clear(Limb* a, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        a[i] = 0;
    }
}

void Copy(Limb* r, const Limb* a, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        r[i] = a[i];
    }
}

bool IsZero(const Limb* a, std::size_t n) {
    Limb any = 0;
    for (std::size_t i = 0; i < n; ++i) {
        any |= a[i];
    }
    return any == 0;
}

bool Equals(const Limb* a, std::size_t n, Limb value) {
    return n == 0 ? value == 0 : a[0] == value && IsZero(a + 1, n - 1);
}

int Compare(const Limb* a, const Limb* b, std::size_t n) {
    for (std::size_t i = n; i-- > 0;) {
        if (a[i] != b[i]) {
            return a[i] < b[i] ? -1 : 1;
        }
    }
    return 0;
}

std::size_t SignificantLimbs(const Limb* a, std::size_t n) {
    while (n > 0 && a[n - 1] == 0) {
        --n;
    }
    return n;
}

std::size_t BitLength(const Limb* a, std::size_t n) {
    const std::size_t top = SignificantLimbs(a, n);
    return top == 0 ? 0 : (top - 1) * kLimbBits + (kLimbBits - std::countl_zero(a[top - 1]));
}

Limb Add(Limb* r, const Limb* a, const Limb* b, std::size_t n) {
    Limb carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const WideLimb sum = static_cast<WideLimb>(a[i]) + b[i] + carry;
        r[i] = static_cast<Limb>(sum);
        carry = static_cast<Limb>(sum >> kLimbBits);
    }
    return carry;
}

Limb Subtract(Limb* r, const Limb* a, const Limb* b, std::size_t n) {
    Limb borrow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const WideLimb difference = static_cast<WideLimb>(a[i]) - b[i] - borrow;
        r[i] = static_cast<Limb>(difference);
        borrow = static_cast<Limb>(difference >> kLimbBits) & 1;
    }
    return borrow;
}

Limb SubtractLimb(Limb* a, std::size_t n, Limb value) {
    for (std::size_t i = 0; i < n && value != 0; ++i) {
        const Limb before = a[i];
        a[i] = before - value;
        value = before < value ? 1 : 0;
    }
    return value;
}

Limb AddLimb(Limb* a, std::size_t n, Limb value) {
    for (std::size_t i = 0; i < n && value != 0; ++i) {
        a[i] += value;
        value = a[i] < value ? 1 : 0;
    }
    return value;
}

void ShiftRightOne(Limb* a, std::size_t n, Limb top) {
    for (std::size_t i = 0; i < n; ++i) {
        const Limb above = i + 1 < n ? a[i + 1] : top;
        a[i] = (a[i] >> 1) | (above << (kLimbBits - 1));
    }
}

Limb MultiplyAddRow(Limb* r, const Limb* a, std::size_t n, Limb m) {
    Limb carry = 0;
    for (std::size_t j = 0; j < n; ++j) {
        const WideLimb t = static_cast<WideLimb>(a[j]) * m + r[j] + carry;
        r[j] = static_cast<Limb>(t);
        carry = static_cast<Limb>(t >> kLimbBits);
    }
    return carry;
}

void Multiply(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) {
    Clear(r, na + nb);
    for (std::size_t i = 0; i < na; ++i) {
        r[i + nb] = MultiplyAddRow(r + i, b, nb, a[i]);
    }
}

void Square(Limb* r, const Limb* a, std::size_t n) {
    Clear(r, 2 * n);
    // The products below the diagonal, doubled, then the squares on it.
    for (std::size_t i = 0; i + 1 < n; ++i) {
        r[i + n] = MultiplyAddRow(r + 2 * i + 1, a + i + 1, n - i - 1, a[i]);
    }
    Limb carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const WideLimb square = static_cast<WideLimb>(a[i]) * a[i];
        const Limb low = r[2 * i];
        const Limb high = r[2 * i + 1];
        const WideLimb sumLow = static_cast<WideLimb>(low << 1) + static_cast<Limb>(square) + carry;
        const WideLimb sumHigh = static_cast<WideLimb>((high << 1) | (low >> (kLimbBits - 1))) +
                                 static_cast<Limb>(square >> kLimbBits) +
                                 static_cast<Limb>(sumLow >> kLimbBits);
        r[2 * i] = static_cast<Limb>(sumLow);
        r[2 * i + 1] = static_cast<Limb>(sumHigh);
        carry = static_cast<Limb>(sumHigh >> kLimbBits) + (high >> (kLimbBits - 1));
    }
}

std::uint32_t RemainderSmall(const Limb* a, std::size_t n, std::uint32_t d) {
    // 32 bits at a time keep each step within 64 bits, whatever the limb.
    std::uint64_t remainder = 0;
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = kWordsPerLimb; k-- > 0;) {
            const auto word = static_cast<std::uint32_t>(a[i] >> (32 * k));
            remainder = ((remainder << 32) | word) % d;
        }
    }
    return static_cast<std::uint32_t>(remainder);
}

void DivideExactSmall(Limb* a, std::size_t n, std::uint32_t d) {
    WideLimb remainder = 0;
    for (std::size_t i = n; i-- > 0;) {
        const WideLimb current = (remainder << kLimbBits) | a[i];
        a[i] = static_cast<Limb>(current / d);
        remainder = current % d;
    }
}

}  // namespace Zelmarik::rsa
