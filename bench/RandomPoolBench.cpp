// The random pool: the fixed cost of sealing an archive (the master key area and the salt, each
// with a forced slow poll), a plain request, and one mixing of the pool; the first and the last
// on the portable SHA-1 (argument 0) and on the SHA extensions (argument 1).
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string>

#include "crypto/CpuFeatures.h"
#include "crypto/RandomPool.h"
#include "crypto/random/PoolMixing.h"

namespace {

// Selects the SHA-1 path of the benchmark's argument; false when the processor lacks it.
bool SelectSha1Path(benchmark::State& state) {
    const bool extensions = state.range(0) != 0;
    if (extensions && !crypto::CpuHasShaNi()) {
        state.SkipWithError("no SHA extensions on this processor");
        return false;
    }
    crypto::SetShaNiDisabled(!extensions);
    state.SetLabel(std::string(crypto::Sha1PathName()));
    return true;
}

// Start and stop stay outside the timing: the stop alone waits a poll interval.
class RunningPool {
public:
    RunningPool() { crypto::RandomStart(); }
    ~RunningPool() { crypto::RandomStop(); }
    RunningPool(const RunningPool&) = delete;
    RunningPool& operator=(const RunningPool&) = delete;
};

void SealingRandomBytes(benchmark::State& state) {
    if (!SelectSha1Path(state)) {
        return;
    }
    RunningPool pool;
    std::array<std::uint8_t, 256> masterKeyArea{};
    std::array<std::uint8_t, 64> salt{};
    for (auto _ : state) {
        if (!crypto::RandomGetBytes(masterKeyArea.data(), masterKeyArea.size(), true) ||
            !crypto::RandomGetBytes(salt.data(), salt.size(), true)) {
            state.SkipWithError("the pool did not start");
        }
        benchmark::DoNotOptimize(salt.data());
    }
}
BENCHMARK(SealingRandomBytes)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void RequestWithoutSlowPoll(benchmark::State& state) {
    RunningPool pool;
    std::array<std::uint8_t, 512> filler{};
    crypto::RandomGetBytes(filler.data(), filler.size(), false);
    for (auto _ : state) {
        if (!crypto::RandomGetBytes(filler.data(), filler.size(), false)) {
            state.SkipWithError("the pool did not start");
        }
        benchmark::DoNotOptimize(filler.data());
    }
}
BENCHMARK(RequestWithoutSlowPoll)->Unit(benchmark::kMillisecond)->UseRealTime();

void MixPool(benchmark::State& state) {
    if (!SelectSha1Path(state)) {
        return;
    }
    std::array<std::uint8_t, crypto::random::kPoolBlockSize> pool{};
    for (auto _ : state) {
        crypto::random::MixPool(pool);
        benchmark::DoNotOptimize(pool.data());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(MixPool)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
