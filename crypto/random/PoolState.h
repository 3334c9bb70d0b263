#pragma once
// One run of the random pool: its pinned bytes, where entropy goes in, and how output comes out.

#include <array>
#include <cstdint>
#include <span>

#include "crypto/random/PoolMixing.h"
#include "platform/EntropySources.h"

namespace crypto::random {

// What survives a stop of the pool, so that a later start goes on from there.
struct CarriedPoolState {
    std::uint32_t readPos = 0;
    bool slowPollDone = false;
};

class PoolState final : public platform::EntropySink {
public:
    // A zeroed pool, pinned in memory where the system allows it.
    explicit PoolState(CarriedPoolState& carried);
    // Fills the pool with 0xFF, then with 0, and unpins it.
    ~PoolState();
    PoolState(const PoolState&) = delete;
    PoolState& operator=(const PoolState&) = delete;

    // Adds each byte at the write position, wrapping at 512, and mixes the whole pool after each.
    void Add(std::span<const std::uint8_t> bytes) override;

    // Slow poll when none has run yet or when forced, fast poll, count bytes out, all pool bytes
    // inverted, fast poll, count more bytes XORed into the output.
    void GetBytes(platform::EntropySources& sources, std::uint8_t* buffer, std::uint32_t count,
                  bool forceSlowPoll);

    void FastPoll(platform::EntropySources& sources) { sources.FastPoll(*this); }

    std::span<const std::uint8_t, kPoolBlockSize> Bytes() const { return bytes_; }
    std::uint32_t WritePos() const { return writePos_; }

private:
    alignas(64) std::array<std::uint8_t, kPoolBlockSize> bytes_{};
    std::uint32_t writePos_ = 0;
    CarriedPoolState& carried_;
};

}  // namespace crypto::random
