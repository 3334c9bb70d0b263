// Published vectors: SHA-256 (FIPS 180), HMAC-SHA-256 (RFC 4231), PBKDF2-HMAC-SHA-256
// (RFC 7914), SHA-1 (FIPS 180), CRC-32 (the "123456789" check value).

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

TEST(Sha256, MatchesFips180Examples) {
    EXPECT_EQ(Sha256Hex(AsBytes("abc"), 64),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Sha256Hex({}, 64),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Sha256Hex(AsBytes("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"), 64),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(Sha256, GivesTheSameDigestWhateverThePieces) {
    const std::string million(1000000, 'a');
    const std::string expected = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";
    for (const std::size_t piece : {1u, 63u, 64u, 65u, 1000000u}) {
        EXPECT_EQ(Sha256Hex(AsBytes(million), piece), expected) << "pieces of " << piece;
    }
}

struct HmacVector {
    const char* key;
    const char* message;
    const char* mac;
};

// RFC 4231 test cases 1, 2, 3, 4, 6 and 7 (case 5 is a truncated MAC).
constexpr HmacVector kHmacVectors[] = {
    {"0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b", "4869205468657265",
     "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
    {"4a656665", "7768617420646f2079612077616e7420666f72206e6f7468696e673f",
     "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
    {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
     "dddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddddd"
     "dddddddddddd",
     "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe"},
    {"0102030405060708090a0b0c0d0e0f10111213141516171819",
     "cdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcd"
     "cdcdcdcdcdcd",
     "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b"},
    {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
     "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
     "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
     "54657374205573696e67204c6172676572205468616e20426c6f636b2d53697a65204b6579202d2048617368"
     "204b6579204669727374",
     "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
    {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
     "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
     "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
     "5468697320697320612074657374207573696e672061206c6172676572207468616e20626c6f636b2d73697a"
     "65206b657920616e642061206c6172676572207468616e20626c6f636b2d73697a6520646174612e20546865"
     "206b6579206e6565647320746f20626520686173686564206265666f7265206265696e672075736564206279"
     "2074686520484d414320616c676f726974686d2e",
     "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"},
};

class HmacSha256Vectors : public testing::TestWithParam<HmacVector> {};

TEST_P(HmacSha256Vectors, MatchesRfc4231) {
    const auto key = FromHex(GetParam().key);
    const auto message = FromHex(GetParam().message);
    std::array<std::uint8_t, kSha256DigestSize> mac{};
    HmacSha256(key, message, mac);
    EXPECT_EQ(ToHex(mac), GetParam().mac);
}

INSTANTIATE_TEST_SUITE_P(Rfc4231, HmacSha256Vectors, testing::ValuesIn(kHmacVectors));

std::array<std::uint8_t, kSha256DigestSize> Hmac(std::span<const std::uint8_t> key) {
    std::array<std::uint8_t, kSha256DigestSize> mac{};
    HmacSha256(key, AsBytes("message"), mac);
    return mac;
}

std::array<std::uint8_t, kSha256DigestSize> Digest(std::span<const std::uint8_t> data) {
    Sha256Context context;
    Sha256Init(context);
    Sha256Update(context, data);
    std::array<std::uint8_t, kSha256DigestSize> digest;
    Sha256Final(context, digest);
    return digest;
}

// Keys longer than a block are hashed first, a block-long one is not; an empty key is a block
// of zeros.
TEST(HmacSha256, HashesOnlyKeysLongerThanABlock) {
    const std::vector<std::uint8_t> key64(64, 0x5A);
    const std::vector<std::uint8_t> key65(65, 0x5A);
    EXPECT_EQ(Hmac(key65), Hmac(Digest(key65)));
    EXPECT_NE(Hmac(key64), Hmac(Digest(key64)));
    EXPECT_EQ(Hmac({}), Hmac(std::vector<std::uint8_t>(64, 0)));
}

std::string Pbkdf2Hex(std::string_view password, std::span<const std::uint8_t> salt,
                      std::uint32_t iterations, std::size_t length) {
    std::vector<std::uint8_t> derived(length);
    EXPECT_EQ(
        DeriveKey(HmacSha256, kSha256DigestSize, AsBytes(password), salt, iterations, derived), 0);
    return ToHex(derived);
}

TEST(DeriveKey, MatchesRfc7914) {
    EXPECT_EQ(
        Pbkdf2Hex("passwd", AsBytes("salt"), 1, 64),
        "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc49ca9cccf179b645991664"
        "b39d77ef317c71b845b1e30bd509112041d3a19783");
    EXPECT_EQ(
        Pbkdf2Hex("Password", AsBytes("NaCl"), 80000, 64),
        "4ddcd8f60b98be21830cee5ef22701f9641a4418d04c0414aeff08876b34ab56a1d425a1225833549adb84"
        "1b51c9b3176a272bdebba1d078478f62b397f33c8d");
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
    EXPECT_EQ(Crc32({}), 0u);
    // The plain form starts at 0 and does not invert; python3: ~zlib.crc32(data, 0xFFFFFFFF).
    EXPECT_EQ(Crc32Plain(AsBytes("123456789")), 0x2DFD2D88u);
    const auto whole = AsBytes("123456789");
    EXPECT_EQ(Crc32Plain(whole.subspan(4), Crc32Plain(whole.first(4))), 0x2DFD2D88u);
}

}  // namespace
}  // namespace crypto
