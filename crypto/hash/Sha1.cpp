#include <bit>

#include "Common/Common/Endian.h"
#include "crypto/Hashes.h"
#include "platform/SecureMemory.h"

namespace crypto {

void Sha1Transform(std::span<std::uint32_t, 5> state, std::span<const std::uint8_t, 64> block) {
    std::uint32_t w[80];
    for (int i = 0; i < 16; ++i) {
        w[i] = Zelmarik::LoadBig<std::uint32_t>(block.data() + 4 * i);
    }
    for (int i = 16; i < 80; ++i) {
        w[i] = std::rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    }
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
    for (int i = 0; i < 80; ++i) {
        std::uint32_t f;
        std::uint32_t k;
        if (i < 20) {
            f = (b & c) | (~b & d);
            k = 0x5A827999;
        } else if (i < 40) {
            f = b ^ c ^ d;
            k = 0x6ED9EBA1;
        } else if (i < 60) {
            f = (b & c) | (b & d) | (c & d);
            k = 0x8F1BBCDC;
        } else {
            f = b ^ c ^ d;
            k = 0xCA62C1D6;
        }
        const std::uint32_t next = std::rotl(a, 5) + f + e + k + w[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
    platform::SecureWipe(w, sizeof(w));
}

}  // namespace crypto
