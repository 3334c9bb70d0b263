#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "crypto/Hashes.h"
#include "crypto/random/InputFilters.h"

namespace crypto::random {
namespace {

// Plain CRC-32 of elapsed time and time, laid out byte by byte, least significant first.
std::uint32_t TimingCrc(std::uint32_t elapsed, std::uint32_t ticks) {
    const std::uint8_t bytes[8] = {
        static_cast<std::uint8_t>(elapsed),       static_cast<std::uint8_t>(elapsed >> 8),
        static_cast<std::uint8_t>(elapsed >> 16), static_cast<std::uint8_t>(elapsed >> 24),
        static_cast<std::uint8_t>(ticks),         static_cast<std::uint8_t>(ticks >> 8),
        static_cast<std::uint8_t>(ticks >> 16),   static_cast<std::uint8_t>(ticks >> 24)};
    return Crc32Plain(bytes);
}

// Key data: repeat count in bits 0-15, scan code in 16-23, Alt in 29, previous state in 30,
// transition (released) in 31.
constexpr std::uint32_t KeyData(std::uint32_t scanCode, std::uint32_t repeat, bool released,
                                bool alt = false) {
    return repeat | scanCode << 16 | (alt ? 1u << 29 : 0) | (released ? 3u << 30 : 0);
}

TEST(KeyEventFilter, OnlyTheReleaseOfAKeyPressedOnceWithoutAltCounts) {
    KeyEventFilter filter;
    EXPECT_FALSE(filter.Filter(KeyData(0x1E, 1, false), 10));
    EXPECT_FALSE(filter.Filter(KeyData(0x1E, 2, true), 20));
    EXPECT_FALSE(filter.Filter(KeyData(0x1E, 1, true, true), 30));

    // Rejected events leave the last time alone: elapsed is 0 - 1000.
    const auto words = filter.Filter(KeyData(0x1E, 1, true), 1000);
    ASSERT_TRUE(words);
    EXPECT_EQ((*words)[0], KeyData(0x1E, 1, true));
    EXPECT_EQ((*words)[1], Crc32Plain(std::array<std::uint8_t, 8>{0x18, 0xFC, 0xFF, 0xFF, 0xE8,
                                                                  0x03, 0x00, 0x00}));
    const auto next = filter.Filter(KeyData(0x30, 1, true), 1250);
    ASSERT_TRUE(next);
    EXPECT_EQ((*next)[1], TimingCrc(1000u - 1250u, 1250));
}

TEST(KeyEventFilter, AScanCodeEqualToBothOfTheLastTwoIsDropped) {
    KeyEventFilter filter;
    const std::uint32_t a = KeyData(0x1E, 1, true);
    const std::uint32_t b = KeyData(0x30, 1, true);
    EXPECT_TRUE(filter.Filter(a, 1));
    EXPECT_TRUE(filter.Filter(a, 2)) << "equal to the last one only";
    EXPECT_FALSE(filter.Filter(a, 3));
    EXPECT_TRUE(filter.Filter(b, 4));
    EXPECT_TRUE(filter.Filter(a, 5));
    // Scan code 0 equals both initial last codes.
    KeyEventFilter fresh;
    EXPECT_FALSE(fresh.Filter(KeyData(0, 1, true), 1));
}

TEST(MouseEventFilter, WordsAreTimingCrcThenRecordCrcOverTwentyLittleEndianBytes) {
    MouseEventFilter filter;
    const platform::MouseEvent event{-5, 300, 0x00010203, 1, 0xA0B0C0D0};
    const auto words = filter.Filter(event, 700);
    ASSERT_TRUE(words);
    EXPECT_EQ((*words)[0], TimingCrc(0u - 700u, 700));
    const std::array<std::uint8_t, 20> record = {0xFB, 0xFF, 0xFF, 0xFF, 0x2C, 0x01, 0x00,
                                                 0x00, 0x03, 0x02, 0x01, 0x00, 0x01, 0x00,
                                                 0x00, 0x00, 0xD0, 0xC0, 0xB0, 0xA0};
    EXPECT_EQ((*words)[1], Crc32Plain(record));
}

TEST(MouseEventFilter, ARecordEqualToEitherOfTheLastTwoAddsNothing) {
    MouseEventFilter filter;
    const platform::MouseEvent a{10, 20, 0x100, 1, 0};
    const platform::MouseEvent b{11, 20, 0x100, 1, 0};
    const platform::MouseEvent c{12, 20, 0x100, 1, 0};
    EXPECT_TRUE(filter.Filter(a, 100));
    EXPECT_FALSE(filter.Filter(a, 150)) << "the same record twice";
    EXPECT_TRUE(filter.Filter(b, 200));
    EXPECT_FALSE(filter.Filter(a, 250)) << "alternating with one other record";
    EXPECT_FALSE(filter.Filter(b, 300));
    EXPECT_FALSE(filter.Filter(a, 350));
    // Every event, added or not, moves the last time on.
    const auto words = filter.Filter(c, 420);
    ASSERT_TRUE(words);
    EXPECT_EQ((*words)[0], TimingCrc(350u - 420u, 420));
}

}  // namespace
}  // namespace crypto::random
