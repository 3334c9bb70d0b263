#include "crypto/random/InputFilters.h"

#include "Common/Common/Endian.h"
#include "crypto/Hashes.h"

namespace crypto::random {
namespace {

constexpr std::uint32_t kRepeatCountMask = 0xFFFF;
constexpr std::uint32_t kAltDownBit = 1u << 29;
constexpr std::uint32_t kReleasedBit = 1u << 31;

// Plain CRC-32 over the elapsed time, then the time itself, each least significant byte first.
std::uint32_t TimingCrc(std::uint32_t elapsed, std::uint32_t ticks) {
    std::uint8_t bytes[8];
    Zelmarik::StoreLittle(bytes, elapsed);
    Zelmarik::StoreLittle(bytes + 4, ticks);
    return Crc32Plain(bytes);
}

}  // namespace

std::optional<EventWords> MouseEventFilter::Filter(const platform::MouseEvent& event,
                                                   std::uint32_t ticks) {
    const std::uint32_t elapsed = lastTicks_ - ticks;
    lastTicks_ = ticks;
    std::uint8_t record[20];
    Zelmarik::StoreLittle(record, static_cast<std::uint32_t>(event.x));
    Zelmarik::StoreLittle(record + 4, static_cast<std::uint32_t>(event.y));
    Zelmarik::StoreLittle(record + 8, event.window);
    Zelmarik::StoreLittle(record + 12, event.hitTestCode);
    Zelmarik::StoreLittle(record + 16, event.extraInfo);
    const std::uint32_t crc = Crc32Plain(record);
    std::optional<EventWords> words;
    if (crc != lastCrc1_ && crc != lastCrc2_) {
        words = EventWords{TimingCrc(elapsed, ticks), crc};
    }
    lastCrc2_ = lastCrc1_;
    lastCrc1_ = crc;
    return words;
}

std::optional<EventWords> KeyEventFilter::Filter(std::uint32_t keyData, std::uint32_t ticks) {
    const std::uint32_t scanCode = (keyData >> 16) & 0xFF;
    const bool releasedOnce = (keyData & kRepeatCountMask) == 1 && (keyData & kReleasedBit) != 0 &&
                              (keyData & kAltDownBit) == 0;
    if (!releasedOnce || (scanCode == lastCode1_ && scanCode == lastCode2_)) {
        return std::nullopt;
    }
    const std::uint32_t elapsed = lastTicks_ - ticks;
    lastTicks_ = ticks;
    lastCode2_ = lastCode1_;
    lastCode1_ = scanCode;
    return EventWords{keyData, TimingCrc(elapsed, ticks)};
}

}  // namespace crypto::random
