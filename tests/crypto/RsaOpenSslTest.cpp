// Our RSA arithmetic against OpenSSL's on full-size random keys.
#include <gtest/gtest.h>
#include <openssl/bn.h>

#include <array>
#include <memory>
#include <vector>

#include "crypto/KeyGeneration.h"
#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"
#include "crypto/rsa/RowKernels.h"

namespace {

using Number = std::array<std::uint32_t, Zelmarik::kRsaNumberWords>;
using Prime = std::array<std::uint32_t, Zelmarik::kRsaPrimeWords>;

struct BnFree {
    void operator()(BIGNUM* bn) const { BN_clear_free(bn); }
};
struct CtxFree {
    void operator()(BN_CTX* ctx) const { BN_CTX_free(ctx); }
};
using Bn = std::unique_ptr<BIGNUM, BnFree>;

Bn NewBn() {
    return Bn(BN_new());
}

template <std::size_t N>
Bn FromWords(const std::array<std::uint32_t, N>& words) {
    std::vector<unsigned char> bytes(4 * N);
    for (std::size_t i = 0; i < 4 * N; ++i) {
        bytes[i] = static_cast<unsigned char>(words[i / 4] >> (8 * (i % 4)));
    }
    return Bn(BN_lebin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

template <std::size_t N>
std::array<std::uint32_t, N> ToWords(const BIGNUM* bn) {
    std::vector<unsigned char> bytes(4 * N);
    EXPECT_EQ(BN_bn2lebinpad(bn, bytes.data(), static_cast<int>(bytes.size())), 4 * N);
    std::array<std::uint32_t, N> words{};
    for (std::size_t i = 0; i < 4 * N; ++i) {
        words[i / 4] |= static_cast<std::uint32_t>(bytes[i]) << (8 * (i % 4));
    }
    return words;
}

class RsaAgainstOpenSsl : public ::testing::Test {
protected:
    // c^d mod pq with d = 65537^-1 mod (p - 1)(q - 1), or 0 when there is none.
    Bn PrivateReference(const BIGNUM* c, const BIGNUM* p, const BIGNUM* q) {
        Bn p1 = NewBn(), q1 = NewBn(), phi = NewBn(), n = NewBn(), d = NewBn(), m = NewBn();
        BN_sub(p1.get(), p, BN_value_one());
        BN_sub(q1.get(), q, BN_value_one());
        BN_mul(phi.get(), p1.get(), q1.get(), ctx_.get());
        BN_mul(n.get(), p, q, ctx_.get());
        if (BN_mod_inverse(d.get(), e_.get(), phi.get(), ctx_.get()) == nullptr) {
            BN_zero(d.get());
        }
        EXPECT_EQ(BN_mod_exp(m.get(), c, d.get(), n.get(), ctx_.get()), 1);
        return m;
    }

    Bn Prime2048() {
        Bn p = NewBn();
        EXPECT_EQ(BN_generate_prime_ex(p.get(), 2048, 0, nullptr, nullptr, nullptr), 1);
        return p;
    }

    Bn Random(int bits, int top, int bottom) {
        Bn r = NewBn();
        EXPECT_EQ(BN_rand(r.get(), bits, top, bottom), 1);
        return r;
    }

    // Random keys, their public and private operations, and the awkward values.
    void CheckRandomKeys(int count);

    void ExpectOpenAgrees(const BIGNUM* c, const BIGNUM* p, const BIGNUM* q) {
        Number plain{};
        ASSERT_EQ(Zelmarik::RsaOpenBlock(ToWords<128>(c).data(), plain.data(),
                                         ToWords<64>(p).data(), ToWords<64>(q).data()),
                  0);
        EXPECT_EQ(plain, ToWords<128>(PrivateReference(c, p, q).get()));
    }

    std::unique_ptr<BN_CTX, CtxFree> ctx_{BN_CTX_new()};
    Bn e_{BN_new()};
    void SetUp() override { BN_set_word(e_.get(), Zelmarik::kRsaPublicExponent); }
};

void RsaAgainstOpenSsl::CheckRandomKeys(int count) {
    for (int key = 0; key < count; ++key) {
        const Bn p = Prime2048(), q = Prime2048();
        Bn n = NewBn();
        BN_mul(n.get(), p.get(), q.get(), ctx_.get());
        const Number modulus = ToWords<128>(n.get());
        const Number exponent = ToWords<128>(e_.get());
        for (int i = 0; i < 3; ++i) {
            Bn message = NewBn(), sealed = NewBn();
            BN_rand_range(message.get(), n.get());
            BN_mod_exp(sealed.get(), message.get(), e_.get(), n.get(), ctx_.get());

            Number ours{};
            ASSERT_EQ(Zelmarik::NumberModExp(ours.data(), ToWords<128>(message.get()).data(),
                                             exponent.data(), modulus.data()),
                      0);
            EXPECT_EQ(ours, ToWords<128>(sealed.get()));

            Number opened{};
            ASSERT_EQ(
                Zelmarik::RsaOpenBlock(ours.data(), opened.data(), ToWords<64>(p.get()).data(),
                                       ToWords<64>(q.get()).data()),
                0);
            EXPECT_EQ(opened, ToWords<128>(message.get()));
        }
        // Values at and above the modulus, and multiples of one prime.
        Bn above = NewBn(), multiple = NewBn();
        BN_add(above.get(), n.get(), e_.get());
        if (BN_num_bits(above.get()) <= 4096) {
            ExpectOpenAgrees(above.get(), p.get(), q.get());
        }
        BN_copy(multiple.get(), p.get());
        BN_mul_word(multiple.get(), 12345);
        ExpectOpenAgrees(multiple.get(), p.get(), q.get());
        ExpectOpenAgrees(Random(4096, -1, 0).get(), q.get(), p.get());  // larger prime second
    }
}

TEST_F(RsaAgainstOpenSsl, RandomKeysOpenAndSealAlike) {
    CheckRandomKeys(2);
}

// The portable arithmetic, on a processor where the unrolled kernels would be chosen.
TEST_F(RsaAgainstOpenSsl, PortableArithmeticAgreesToo) {
    Zelmarik::rsa::SetRowKernelsDisabled(true);
    CheckRandomKeys(1);
    Zelmarik::rsa::SetRowKernelsDisabled(false);
}

TEST_F(RsaAgainstOpenSsl, ModExpOfAnySize) {
    for (int i = 0; i < 8; ++i) {
        const int modulusBits = 64 + 4032 * (i % 4) / 3;
        const Bn base = Random(4096, -1, 0), exponent = Random(64 + 300 * i, -1, 0);
        const Bn modulus = Random(modulusBits, 0, i % 2);
        Bn expected = NewBn();
        ASSERT_EQ(BN_mod_exp(expected.get(), base.get(), exponent.get(), modulus.get(), ctx_.get()),
                  1);
        Number ours{};
        ASSERT_EQ(Zelmarik::NumberModExp(ours.data(), ToWords<128>(base.get()).data(),
                                         ToWords<128>(exponent.get()).data(),
                                         ToWords<128>(modulus.get()).data()),
                  0);
        EXPECT_EQ(ours, ToWords<128>(expected.get())) << "modulus bits " << modulusBits;
    }
}

TEST_F(RsaAgainstOpenSsl, GeneratedKeysHoldPrimesAndConsistentNumbers) {
    Zelmarik::GeneratedKeyPair pair;
    ASSERT_EQ(Zelmarik::GenerateKeyPair(u"oracle", -1, pair), Zelmarik::KeyGenerationResult::Ok);
    Zelmarik::DCCSecurityKey key;
    ASSERT_TRUE(key.ParsePrivateKeyText(pair.privateKeyText.c_str()));
    const auto& numbers = key.PrivateKey->Numbers;
    const Bn p = FromWords(numbers[0]), q = FromWords(numbers[1]);
    Number modulusWords{};
    Zelmarik::DCRSA::NumberFromHex(modulusWords.data(), modulusWords.size(), pair.publicKeyText,
                                   1024);
    const Bn n = FromWords(modulusWords);

    EXPECT_EQ(BN_check_prime(p.get(), ctx_.get(), nullptr), 1);
    EXPECT_EQ(BN_check_prime(q.get(), ctx_.get(), nullptr), 1);
    Bn product = NewBn();
    BN_mul(product.get(), p.get(), q.get(), ctx_.get());
    EXPECT_EQ(BN_cmp(product.get(), n.get()), 0);

    // d mod (p - 1), d mod (q - 1) and q^-1 mod p, with d = e^-1 mod (p - 1)(q - 1).
    Bn p1 = NewBn(), q1 = NewBn(), phi = NewBn(), d = NewBn(), dp = NewBn(), dq = NewBn(),
       qInverse = NewBn();
    BN_sub(p1.get(), p.get(), BN_value_one());
    BN_sub(q1.get(), q.get(), BN_value_one());
    BN_mul(phi.get(), p1.get(), q1.get(), ctx_.get());
    ASSERT_NE(BN_mod_inverse(d.get(), e_.get(), phi.get(), ctx_.get()), nullptr);
    BN_mod(dp.get(), d.get(), p1.get(), ctx_.get());
    BN_mod(dq.get(), d.get(), q1.get(), ctx_.get());
    ASSERT_NE(BN_mod_inverse(qInverse.get(), q.get(), p.get(), ctx_.get()), nullptr);
    EXPECT_EQ(BN_cmp(FromWords(numbers[2]).get(), dp.get()), 0);
    EXPECT_EQ(BN_cmp(FromWords(numbers[3]).get(), dq.get()), 0);
    EXPECT_EQ(BN_cmp(FromWords(numbers[4]).get(), qInverse.get()), 0);
}

}  // namespace
