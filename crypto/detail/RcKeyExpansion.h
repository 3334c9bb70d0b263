#pragma once
// The key expansion shared by RC5 and RC6: a 16-byte key as little-endian words, mixed into a
// table of `Words` words that starts from the magic constants P32 and Q32.

#include <algorithm>
#include <bit>
#include <cstdint>

#include "Common/Common/Endian.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {

inline constexpr int kRcKeyWords = 4;

template <int Words>
void ExpandRcKey(const std::uint8_t* key, std::uint8_t* schedule) {
    std::uint32_t l[kRcKeyWords];
    for (int i = 0; i < kRcKeyWords; ++i) {
        l[i] = Zelmarik::LoadLittle<std::uint32_t>(key + 4 * i);
    }
    std::uint32_t s[Words];
    s[0] = 0xB7E15163;
    for (int i = 1; i < Words; ++i) {
        s[i] = s[i - 1] + 0x9E3779B9;
    }
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    for (int k = 0, i = 0, j = 0; k < 3 * std::max(Words, kRcKeyWords); ++k) {
        a = s[i] = std::rotl(s[i] + a + b, 3);
        b = l[j] = std::rotl(l[j] + a + b, static_cast<int>((a + b) & 31));
        i = (i + 1) % Words;
        j = (j + 1) % kRcKeyWords;
    }
    WriteWords(schedule, s, Words);
    platform::SecureWipe(l, sizeof(l));
    platform::SecureWipe(s, sizeof(s));
}

}  // namespace crypto::detail
