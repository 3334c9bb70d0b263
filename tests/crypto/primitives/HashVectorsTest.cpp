// Published vectors: SHA-256 (FIPS 180), HMAC-SHA-256 (RFC 4231), PBKDF2-HMAC-SHA-256
// (the archive's parameters), SHA-1 (FIPS 180), CRC-32 (the "123456789" check value).

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "crypto/CipherSuite.h"
#include "crypto/Hashes.h"
#include "tests/crypto/primitives/HexBytes.h"
#include "tests/crypto/primitives/Sha1PathLoop.h"

namespace crypto {
namespace {

using test::AsBytes;
using test::FromHex;
using test::ToHex;

std::string Sha256Hex(std::span<const std::uint8_t> data, std::size_t pieceSize) {
    Sha256Context context;
    Sha256Init(context);
    while (!data.empty()) {
        const std::size_t take = std::min(pieceSize, data.size());
        Sha256Update(context, data.first(take));
        data = data.subspan(take);
    }
    std::array<std::uint8_t, kSha256DigestSize> digest;
    Sha256Final(context, digest);
    return ToHex(digest);
}

TEST(Sha256, MatchesFips180WhateverThePieces) {
    EXPECT_EQ(Sha256Hex(AsBytes("abc"), 64),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    const std::string million(1000000, 'a');
    for (const std::size_t piece : {1u, 63u, 64u, 65u, 1000000u}) {
        EXPECT_EQ(Sha256Hex(AsBytes(million), piece),
                  "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0")
            << "pieces of " << piece;
    }
}

// RFC 4231 test case 6: a key longer than a block is hashed first.
TEST(HmacSha256, MatchesRfc4231) {
    const std::vector<std::uint8_t> key(131, 0xaa);
    std::array<std::uint8_t, kSha256DigestSize> mac{};
    HmacSha256(key, AsBytes("Test Using Larger Than Block-Size Key - Hash Key First"), mac);
    EXPECT_EQ(ToHex(mac), "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
}

std::string Pbkdf2Hex(std::string_view password, std::span<const std::uint8_t> salt,
                      std::uint32_t iterations, std::size_t length) {
    std::vector<std::uint8_t> derived(length);
    EXPECT_EQ(
        DeriveKey(HmacSha256, kSha256DigestSize, AsBytes(password), salt, iterations, derived), 0);
    return ToHex(derived);
}

// The archive's form: 100 iterations, a 64-byte salt, 96 bytes out. Made with
// python3 -c "import hashlib; print(hashlib.pbkdf2_hmac('sha256', b'correct horse',
// bytes(range(64)), 100, 96).hex())"
TEST(DeriveKey, GivesTheArchiveKeyLengthFromA64ByteSalt) {
    std::array<std::uint8_t, 64> salt;
    for (std::size_t i = 0; i < salt.size(); ++i) {
        salt[i] = static_cast<std::uint8_t>(i);
    }
    ASSERT_EQ(SuiteMaxKeySize() + 32, 96u);
    EXPECT_EQ(
        Pbkdf2Hex("correct horse", salt, 100, 96),
        "b678fc565e33b1e3c7ba0d1deff6b4fc49afdcfd2e8f599e1b52e22d7b003d0044342296e28e2fb127ba40"
        "c8b93ce271309f1b8153c22ddae6b22f939b0991c26f26873c9e2e670568c638e0a3b13458103a613755"
        "88d7778908916f4b526e95");
}

TEST(DeriveKey, RefusesParametersItCannotHonour) {
    std::array<std::uint8_t, 32> derived{};
    EXPECT_EQ(DeriveKey(HmacSha256, 0, AsBytes("pw"), AsBytes("salt"), 1, derived), 1);
    EXPECT_EQ(
        DeriveKey(HmacSha256, kMaxPrfHashLength + 1, AsBytes("pw"), AsBytes("salt"), 1, derived),
        1);
    EXPECT_EQ(DeriveKey(HmacSha256, 32, AsBytes("pw"), AsBytes("salt"), 0, derived), 1);
}

TEST(Sha1Transform, CompressesTheSingleBlockOfAbcAloneAndInPairs) {
    std::array<std::uint8_t, 64> abc{'a', 'b', 'c', 0x80};
    abc[63] = 24;  // message length in bits
    const std::array<std::uint8_t, 64> empty{0x80};
    const std::array<std::uint32_t, 5> initial = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                                  0xC3D2E1F0};
    const std::array<std::uint32_t, 5> abcDigest = {0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C,
                                                    0x9CD0D89D};
    const std::array<std::uint32_t, 5> emptyDigest = {0xDA39A3EE, 0x5E6B4B0D, 0x3255BFEF,
                                                      0x95601890, 0xAFD80709};
    test::OnEachSha1Path([&] {
        std::array<std::uint32_t, 5> state = initial;
        Sha1Transform(state, abc);
        EXPECT_EQ(state, abcDigest);
        // Each of a pair keeps to its own state and block.
        std::array<std::uint32_t, 5> first = initial;
        std::array<std::uint32_t, 5> second = initial;
        Sha1TransformPair(first, empty, second, abc);
        EXPECT_EQ(first, emptyDigest);
        EXPECT_EQ(second, abcDigest);
    });
}

TEST(Crc32, GivesTheCheckValues) {
    EXPECT_EQ(Crc32(AsBytes("123456789")), 0xCBF43926u);
    // The plain form starts at 0 and does not invert; python3: ~zlib.crc32(data, 0xFFFFFFFF).
    EXPECT_EQ(Crc32Plain(AsBytes("123456789")), 0x2DFD2D88u);
    const auto whole = AsBytes("123456789");
    EXPECT_EQ(Crc32Plain(whole.subspan(4), Crc32Plain(whole.first(4))), 0x2DFD2D88u);
}

}  // namespace
}  // namespace crypto
