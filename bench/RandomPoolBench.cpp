// The random pool: the fixed cost of sealing an archive (the master key area and the salt, each
// with a forced slow poll), a plain request, and one mixing of the pool.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "crypto/RandomPool.h"
#include "crypto/random/PoolMixing.h"

namespace {

// Start and stop stay outside the timing: the stop alone waits a poll interval.
class RunningPool {
public:
    RunningPool() { crypto::RandomStart(); }
    ~RunningPool() { crypto::RandomStop(); }
    RunningPool(const RunningPool&) = delete;
    RunningPool& operator=(const RunningPool&) = delete;
};

void SealingRandomBytes(benchmark::State& state) {
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
BENCHMARK(SealingRandomBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

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
    std::array<std::uint8_t, crypto::random::kPoolBlockSize> pool{};
    for (auto _ : state) {
        crypto::random::MixPool(pool);
        benchmark::DoNotOptimize(pool.data());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(MixPool)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
