// AES-256 on both paths, the chunk chain, regions and the key derivation, side by side with
// OpenSSL's EVP AES-256 on the same buffers.

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <random>
#include <vector>

#include "crypto/ChunkChain.h"
#include "crypto/CipherSuite.h"
#include "crypto/CpuFeatures.h"
#include "crypto/Hashes.h"

namespace {

constexpr std::size_t kBufferSize = 64u << 20;

struct Fixture {
    std::vector<std::uint8_t> key = std::vector<std::uint8_t>(64);
    std::vector<std::uint8_t> ivArea = std::vector<std::uint8_t>(32);
    std::vector<std::uint8_t> schedule = std::vector<std::uint8_t>(crypto::kScheduleBlockSize);
    std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(kBufferSize);

    Fixture() {
        std::mt19937 random(1);
        for (auto* bytes : {&key, &ivArea, &buffer}) {
            for (auto& b : *bytes) {
                b = static_cast<std::uint8_t>(random());
            }
        }
    }
    // Key setup picks the AES path in force; -1 leaves the probe's choice.
    void Prepare(benchmark::State& state) {
        crypto::SetAesNiDisabled(state.range(0) == 0);
        if (!crypto::SuiteInit(crypto::kSuiteAes, key, schedule)) {
            state.SkipWithError("suite setup failed");
        }
        state.SetLabel(std::string(crypto::AesPathName()));
    }
};

Fixture& Shared() {
    static Fixture fixture;
    return fixture;
}

void Finish(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBufferSize);
    crypto::SetAesNiDisabled(false);
}

void AesEncryptBlocks(benchmark::State& state) {
    Fixture& f = Shared();
    f.Prepare(state);
    for (auto _ : state) {
        crypto::CipherEncryptBlocks(crypto::kCipherAes, f.buffer, f.schedule);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void AesDecryptBlocks(benchmark::State& state) {
    Fixture& f = Shared();
    f.Prepare(state);
    for (auto _ : state) {
        crypto::CipherDecryptBlocks(crypto::kCipherAes, f.buffer, f.schedule);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void ChunkChainEncrypt(benchmark::State& state) {
    Fixture& f = Shared();
    f.Prepare(state);
    auto chain = crypto::ChunkChain::Create(crypto::kSuiteAes, f.schedule, f.ivArea);
    for (auto _ : state) {
        chain->Restart();
        chain->EncryptBlocks(f.buffer);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void ChunkChainDecrypt(benchmark::State& state) {
    Fixture& f = Shared();
    f.Prepare(state);
    auto chain = crypto::ChunkChain::Create(crypto::kSuiteAes, f.schedule, f.ivArea);
    for (auto _ : state) {
        chain->Restart();
        chain->DecryptBlocks(f.buffer);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void RegionEncrypt(benchmark::State& state) {
    Fixture& f = Shared();
    f.Prepare(state);
    const auto whitening = std::span(f.ivArea).subspan(8, 8);
    for (auto _ : state) {
        if (!crypto::RegionEncrypt(f.buffer, f.schedule, f.ivArea, whitening, crypto::kSuiteAes)) {
            state.SkipWithError("region refused");
        }
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void OpenSslAes(benchmark::State& state, const EVP_CIPHER* cipher, bool encrypt) {
    Fixture& f = Shared();
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    EVP_CipherInit_ex(context, cipher, nullptr, f.key.data(), f.ivArea.data(), encrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context, 0);
    int length = 0;
    for (auto _ : state) {
        EVP_CipherUpdate(context, f.buffer.data(), &length, f.buffer.data(),
                         static_cast<int>(f.buffer.size()));
        benchmark::ClobberMemory();
    }
    EVP_CIPHER_CTX_free(context);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBufferSize);
}

void OpenSslEcbEncrypt(benchmark::State& state) {
    OpenSslAes(state, EVP_aes_256_ecb(), true);
}
void OpenSslEcbDecrypt(benchmark::State& state) {
    OpenSslAes(state, EVP_aes_256_ecb(), false);
}
void OpenSslCbcEncrypt(benchmark::State& state) {
    OpenSslAes(state, EVP_aes_256_cbc(), true);
}

void DeriveKey96(benchmark::State& state) {
    const std::vector<std::uint8_t> password = {'s', 'e', 'c', 'r', 'e', 't'};
    const std::vector<std::uint8_t> salt(64, 0x5A);
    std::vector<std::uint8_t> derived(96);
    for (auto _ : state) {
        crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, password, salt, 100,
                          derived);
        benchmark::DoNotOptimize(derived.data());
    }
}

// Argument: 1 for AES-NI where the processor has it, 0 for the tables.
void BothPaths(benchmark::internal::Benchmark* b) {
    b->ArgName("aesni")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(AesEncryptBlocks)->Apply(BothPaths);
BENCHMARK(AesDecryptBlocks)->Apply(BothPaths);
BENCHMARK(ChunkChainEncrypt)->Apply(BothPaths);
BENCHMARK(ChunkChainDecrypt)->Apply(BothPaths);
BENCHMARK(RegionEncrypt)->Apply(BothPaths);
BENCHMARK(OpenSslEcbEncrypt)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OpenSslEcbDecrypt)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OpenSslCbcEncrypt)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(DeriveKey96)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::AddCustomContext("aes_ni_available", crypto::CpuHasAesNi() ? "yes" : "no");
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
