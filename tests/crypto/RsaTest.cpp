#include "crypto/Rsa.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>

namespace {

using Number = std::array<std::uint32_t, Zelmarik::kRsaNumberWords>;
using Prime = std::array<std::uint32_t, Zelmarik::kRsaPrimeWords>;

// Reference arithmetic on numbers below 2^63, by doubling, so that no wider type is needed.
std::uint64_t MulMod(std::uint64_t a, std::uint64_t b, std::uint64_t m) {
    std::uint64_t result = 0;
    a %= m;
    for (; b != 0; b >>= 1) {
        if ((b & 1) != 0) {
            result = (result + a) % m;
        }
        a = (a + a) % m;
    }
    return result;
}

std::uint64_t PowMod(std::uint64_t base, std::uint64_t exponent, std::uint64_t m) {
    std::uint64_t result = 1 % m;
    for (base %= m; exponent != 0; exponent >>= 1) {
        if ((exponent & 1) != 0) {
            result = MulMod(result, base, m);
        }
        base = MulMod(base, base, m);
    }
    return result;
}

// 65537^-1 mod phi, or 0 when there is none (and modulo 1).
std::uint64_t PrivateExponent(std::uint64_t phi) {
    if (phi <= 1) {
        return 0;
    }
    std::int64_t r0 = static_cast<std::int64_t>(phi), r1 = 65537 % r0, t0 = 0, t1 = 1;
    while (r1 != 0) {
        const std::int64_t q = r0 / r1;
        std::int64_t next = r0 - q * r1;
        r0 = r1;
        r1 = next;
        next = t0 - q * t1;
        t0 = t1;
        t1 = next;
    }
    if (r0 != 1) {
        return 0;
    }
    return static_cast<std::uint64_t>(t0 < 0 ? t0 + static_cast<std::int64_t>(phi) : t0);
}

template <typename Array>
Array Small(std::uint64_t value) {
    Array number{};
    number[0] = static_cast<std::uint32_t>(value);
    number[1] = static_cast<std::uint32_t>(value >> 32);
    return number;
}

std::uint64_t Low64(const Number& number) {
    return number[0] | (static_cast<std::uint64_t>(number[1]) << 32);
}

// The private operation on small numbers against the reference, c^d mod pq with d as the
// system computes it from the two numbers, whatever they are.
void ExpectOpenMatches(std::uint64_t p, std::uint64_t q, std::uint64_t c) {
    const std::uint64_t n = p * q;
    const std::uint64_t d = PrivateExponent((p - 1) * (q - 1));
    Number plain{};
    ASSERT_EQ(Zelmarik::RsaOpenBlock(Small<Number>(c).data(), plain.data(), Small<Prime>(p).data(),
                                     Small<Prime>(q).data()),
              0);
    EXPECT_EQ(Low64(plain), PowMod(c, d, n)) << "p=" << p << " q=" << q << " c=" << c;
    EXPECT_TRUE(
        std::all_of(plain.begin() + 2, plain.end(), [](std::uint32_t w) { return w == 0; }));
}

// Distinct odd primes, and numbers that are not, which still give the power.
TEST(RsaOpenBlock, SmallNumbersAgreeWithReference) {
    std::mt19937_64 random(7);
    const std::uint64_t pairs[][2] = {{61, 53},
                                      {2147483647, 2147483629},
                                      {4294967291, 65521},
                                      {91, 1000003},
                                      {1000003, 1000003},
                                      {2, 1000003},
                                      {65536, 99991},
                                      {3, 3},
                                      {1, 7}};
    for (const auto& pair : pairs) {
        for (int i = 0; i < 5; ++i) {
            ExpectOpenMatches(pair[0], pair[1], random() % (pair[0] * pair[1]));
        }
        ExpectOpenMatches(pair[0], pair[1], pair[0] * 3);            // p divides c
        ExpectOpenMatches(pair[0], pair[1], pair[0] * pair[1] + 5);  // c above n
        ExpectOpenMatches(pair[0], pair[1], 0);
    }
}

TEST(RsaOpenBlock, NoInverseGivesOne) {
    // 65537 divides p - 1: no private exponent exists.
    const std::uint64_t p = 65537 * 14 + 1;  // a prime
    ASSERT_EQ((p - 1) % 65537, 0u);
    ASSERT_EQ(PrivateExponent((p - 1) * 1000002), 0u);
    for (std::uint64_t c : {std::uint64_t{0}, std::uint64_t{12345}, p}) {
        Number plain{};
        ASSERT_EQ(Zelmarik::RsaOpenBlock(Small<Number>(c).data(), plain.data(),
                                         Small<Prime>(p).data(), Small<Prime>(1000003).data()),
                  0);
        EXPECT_EQ(plain, Small<Number>(1));
    }
}

TEST(RsaOpenBlock, ErrorResults) {
    const Number block = Small<Number>(5);
    Number plain{};
    const Prime p = Small<Prime>(61), zero{};
    EXPECT_EQ(Zelmarik::RsaOpenBlock(nullptr, plain.data(), p.data(), p.data()), 1);
    EXPECT_EQ(Zelmarik::RsaOpenBlock(block.data(), nullptr, p.data(), p.data()), 1);
    EXPECT_EQ(Zelmarik::RsaOpenBlock(block.data(), plain.data(), nullptr, p.data()), 14);
    EXPECT_EQ(Zelmarik::RsaOpenBlock(block.data(), plain.data(), p.data(), nullptr), 14);
    EXPECT_EQ(Zelmarik::RsaOpenBlock(block.data(), plain.data(), zero.data(), p.data()), 21);
}

TEST(NumberModExp, SmallNumbersAgreeWithReference) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 50; ++i) {
        const std::uint64_t m = (random() >> (1 + random() % 62)) + 1;  // odd and even
        const std::uint64_t base = random(), exponent = random() >> (random() % 64);
        Number result{};
        ASSERT_EQ(Zelmarik::NumberModExp(result.data(), Small<Number>(base).data(),
                                         Small<Number>(exponent).data(), Small<Number>(m).data()),
                  0);
        EXPECT_EQ(result, Small<Number>(PowMod(base, exponent, m)))
            << base << "^" << exponent << " mod " << m;
    }
}

TEST(NumberModExp, EdgesAndAliasing) {
    Number result{};
    const Number zero{};
    EXPECT_EQ(Zelmarik::NumberModExp(result.data(), Small<Number>(2).data(),
                                     Small<Number>(3).data(), zero.data()),
              Zelmarik::kModExpZeroModulus);
    Number top{};  // 2^4095 + 1: a full-size odd modulus
    top[127] = 0x80000000;
    top[0] = 1;
    ASSERT_EQ(Zelmarik::NumberModExp(result.data(), zero.data(), zero.data(), top.data()), 0);
    EXPECT_EQ(result, Small<Number>(1));  // 0^0
    ASSERT_EQ(Zelmarik::NumberModExp(result.data(), Small<Number>(7).data(), zero.data(),
                                     Small<Number>(1).data()),
              0);
    EXPECT_EQ(result, zero);  // anything mod 1

    // 2^4095 mod (2^4095 + 1) = -1 = 2^4095, the base given as the result array too.
    Number value{};
    value[0] = 2;
    Number exponent = Small<Number>(4095);
    ASSERT_EQ(Zelmarik::NumberModExp(value.data(), value.data(), exponent.data(), top.data()), 0);
    Number expected{};
    expected[127] = 0x80000000;
    EXPECT_EQ(value, expected);
}

}  // namespace
