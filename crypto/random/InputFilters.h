#pragma once
// Which mouse and keyboard events feed the random pool, and with what. Each filter keeps the last
// values of its hook; the hooks run on one thread, so the filters need no lock.

#include <array>
#include <cstdint>
#include <optional>

#include "platform/EntropySources.h"

namespace crypto::random {

// The two 32-bit values an event adds to the pool, in this order.
using EventWords = std::array<std::uint32_t, 2>;

class MouseEventFilter {
public:
    // CRC of the timing, then CRC of the record; nothing when the record's CRC equals either of
    // the last two.
    std::optional<EventWords> Filter(const platform::MouseEvent& event, std::uint32_t ticks);

private:
    std::uint32_t lastTicks_ = 0;
    std::uint32_t lastCrc1_ = 0;
    std::uint32_t lastCrc2_ = 0;
};

class KeyEventFilter {
public:
    // The key data, then CRC of the timing; only for the release of a key pressed once without
    // Alt whose scan code is not the same as both of the last two.
    std::optional<EventWords> Filter(std::uint32_t keyData, std::uint32_t ticks);

private:
    std::uint32_t lastTicks_ = 0;
    std::uint32_t lastCode1_ = 0;
    std::uint32_t lastCode2_ = 0;
};

}  // namespace crypto::random
