// RSA-4096 against OpenSSL on the same key: the private operation without padding, the public
// operation with 65537, and key pair generation.
#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "crypto/KeyGeneration.h"
#include "crypto/Rsa.h"
#include "crypto/rsa/RowKernels.h"

namespace {

using Number = std::array<std::uint32_t, Zelmarik::kRsaNumberWords>;
using Prime = std::array<std::uint32_t, Zelmarik::kRsaPrimeWords>;

struct PkeyFree {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct PkeyCtxFree {
    void operator()(EVP_PKEY_CTX* ctx) const { EVP_PKEY_CTX_free(ctx); }
};
struct BnFree {
    void operator()(BIGNUM* bn) const { BN_clear_free(bn); }
};
using Bn = std::unique_ptr<BIGNUM, BnFree>;

Bn Param(EVP_PKEY* key, const char* name) {
    BIGNUM* value = nullptr;
    if (EVP_PKEY_get_bn_param(key, name, &value) != 1) {
        throw std::runtime_error(name);
    }
    return Bn(value);
}

template <std::size_t N>
std::array<std::uint32_t, N> Words(const BIGNUM* bn) {
    std::array<unsigned char, 4 * N> bytes{};
    BN_bn2lebinpad(bn, bytes.data(), static_cast<int>(bytes.size()));
    std::array<std::uint32_t, N> words{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        words[i / 4] |= static_cast<std::uint32_t>(bytes[i]) << (8 * (i % 4));
    }
    return words;
}

// One OpenSSL key, its numbers in our form, and a value below its modulus in both forms.
struct SharedKey {
    SharedKey() : key(EVP_RSA_gen(4096)) {
        const Bn n = Param(key.get(), OSSL_PKEY_PARAM_RSA_N);
        p = Words<64>(Param(key.get(), OSSL_PKEY_PARAM_RSA_FACTOR1).get());
        q = Words<64>(Param(key.get(), OSSL_PKEY_PARAM_RSA_FACTOR2).get());
        modulus = Words<128>(n.get());
        exponent[0] = Zelmarik::kRsaPublicExponent;
        Bn value(BN_new());
        BN_rand_range(value.get(), n.get());
        message = Words<128>(value.get());
        BN_bn2binpad(value.get(), messageBigEndian.data(), 512);
    }

    std::unique_ptr<EVP_PKEY, PkeyFree> key;
    Prime p{}, q{};
    Number modulus{}, exponent{}, message{};
    std::array<unsigned char, 512> messageBigEndian{};
};

const SharedKey& Key() {
    static const SharedKey key;
    return key;
}

// An OpenSSL context for one direction without padding.
std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> NoPaddingContext(bool decrypt) {
    std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new(Key().key.get(), nullptr));
    const int init = decrypt ? EVP_PKEY_decrypt_init(ctx.get()) : EVP_PKEY_encrypt_init(ctx.get());
    if (init != 1 || EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_NO_PADDING) != 1) {
        throw std::runtime_error("no-padding context");
    }
    return ctx;
}

void RsaOpenBlock(benchmark::State& state) {
    const SharedKey& key = Key();
    Number plain{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Zelmarik::RsaOpenBlock(key.message.data(), plain.data(), key.p.data(), key.q.data()));
    }
}
BENCHMARK(RsaOpenBlock)->Unit(benchmark::kMillisecond);

// The same without the BMI2/ADX kernels: what a processor without them, or a 32-bit build,
// falls back to (the latter with 32-bit limbs, slower still).
void RsaOpenBlockPortable(benchmark::State& state) {
    Zelmarik::rsa::SetRowKernelsDisabled(true);
    RsaOpenBlock(state);
    Zelmarik::rsa::SetRowKernelsDisabled(false);
}
BENCHMARK(RsaOpenBlockPortable)->Unit(benchmark::kMillisecond);

void OpenSslPrivate(benchmark::State& state) {
    auto ctx = NoPaddingContext(true);
    std::array<unsigned char, 512> out{};
    for (auto _ : state) {
        std::size_t size = out.size();
        benchmark::DoNotOptimize(
            EVP_PKEY_decrypt(ctx.get(), out.data(), &size, Key().messageBigEndian.data(), 512));
    }
}
BENCHMARK(OpenSslPrivate)->Unit(benchmark::kMillisecond);

void NumberModExp65537(benchmark::State& state) {
    const SharedKey& key = Key();
    Number sealed{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(Zelmarik::NumberModExp(sealed.data(), key.message.data(),
                                                        key.exponent.data(), key.modulus.data()));
    }
}
BENCHMARK(NumberModExp65537)->Unit(benchmark::kMicrosecond);

void OpenSslPublic(benchmark::State& state) {
    auto ctx = NoPaddingContext(false);
    std::array<unsigned char, 512> out{};
    for (auto _ : state) {
        std::size_t size = out.size();
        benchmark::DoNotOptimize(
            EVP_PKEY_encrypt(ctx.get(), out.data(), &size, Key().messageBigEndian.data(), 512));
    }
}
BENCHMARK(OpenSslPublic)->Unit(benchmark::kMicrosecond);

void GenerateKeyPair(benchmark::State& state) {
    for (auto _ : state) {
        Zelmarik::GeneratedKeyPair pair;
        benchmark::DoNotOptimize(Zelmarik::GenerateKeyPair(u"bench", -1, pair));
    }
}
BENCHMARK(GenerateKeyPair)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(10)
    ->ReportAggregatesOnly(true);

void OpenSslGenerateRsa4096(benchmark::State& state) {
    for (auto _ : state) {
        std::unique_ptr<EVP_PKEY, PkeyFree> key(EVP_RSA_gen(4096));
        benchmark::DoNotOptimize(key.get());
    }
}
BENCHMARK(OpenSslGenerateRsa4096)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(10)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
