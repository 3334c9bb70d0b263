#include "crypto/random/PoolState.h"

#include <cstring>

#include "platform/SecureMemory.h"

namespace crypto::random {

PoolState::PoolState(CarriedPoolState& carried) : carried_(carried) {
    platform::LockMemory(bytes_.data(), bytes_.size());
}

PoolState::~PoolState() {
    std::memset(bytes_.data(), 0xFF, bytes_.size());
    platform::SecureWipe(bytes_.data(), bytes_.size());
    platform::UnlockMemory(bytes_.data(), bytes_.size());
}

void PoolState::Add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (writePos_ == kPoolSize) {
            writePos_ = 0;
        }
        bytes_[writePos_] = static_cast<std::uint8_t>(bytes_[writePos_] + byte);
        ++writePos_;
        MixPool(bytes_);
    }
}

void PoolState::GetBytes(platform::EntropySources& sources, std::uint8_t* buffer,
                         std::uint32_t count, bool forceSlowPoll) {
    if (!carried_.slowPollDone || forceSlowPoll) {
        carried_.slowPollDone = true;
        sources.SlowPoll(*this);
    }
    FastPoll(sources);
    std::uint32_t readPos = carried_.readPos;
    for (std::uint32_t i = 0; i < count; ++i) {
        buffer[i] = bytes_[readPos];
        readPos = (readPos + 1) % kPoolSize;
    }
    for (std::size_t i = 0; i < kPoolSize; ++i) {
        bytes_[i] = static_cast<std::uint8_t>(~bytes_[i]);
    }
    FastPoll(sources);
    for (std::uint32_t i = 0; i < count; ++i) {
        buffer[i] ^= bytes_[readPos];
        readPos = (readPos + 1) % kPoolSize;
    }
    carried_.readPos = readPos;
}

}  // namespace crypto::random
