// Randomized comparison with OpenSSL's libcrypto and Crypto++, adapting byte orders where this
// system's differ. MARS has no oracle for its first key expansion: its rounds are checked with
// the expanded key that Crypto++ computes, installed as our schedule.

#define OPENSSL_SUPPRESS_DEPRECATED

#include <gtest/gtest.h>
#include <openssl/blowfish.h>
#include <openssl/cast.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/sha.h>

#if __has_include(<cryptopp/serpent.h>)
#include <cryptopp/cast.h>
#include <cryptopp/mars.h>
#include <cryptopp/rc5.h>
#include <cryptopp/rc6.h>
#include <cryptopp/serpent.h>
#include <cryptopp/twofish.h>
#else
#include <crypto++/cast.h>
#include <crypto++/mars.h>
#include <crypto++/rc5.h>
#include <crypto++/rc6.h>
#include <crypto++/serpent.h>
#include <crypto++/twofish.h>
#endif

#include <cstring>
#include <random>
#include <vector>

#include "crypto/CipherSuite.h"
#include "crypto/Hashes.h"
#include "crypto/detail/BlockCiphers.h"
#include "tests/crypto/primitives/AesPathFixture.h"
#include "tests/crypto/primitives/HexBytes.h"
#include "tests/crypto/primitives/Sha1PathLoop.h"

namespace crypto {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::RandomBytes;
constexpr int kTrials = 50;

Bytes Schedule(std::uint32_t cipher, const Bytes& key) {
    Bytes schedule(kScheduleBlockSize);
    EXPECT_TRUE(CipherInit(cipher, key, schedule));
    return schedule;
}

Bytes Encrypted(std::uint32_t cipher, const Bytes& key, Bytes data) {
    CipherEncryptBlocks(cipher, data, Schedule(cipher, key));
    return data;
}

// Swaps the bytes of each 32-bit word: little-endian halves against big-endian ones.
Bytes SwapWords(Bytes data) {
    for (std::size_t i = 0; i + 4 <= data.size(); i += 4) {
        std::swap(data[i], data[i + 3]);
        std::swap(data[i + 1], data[i + 2]);
    }
    return data;
}

Bytes OpenSslAes(const EVP_CIPHER* mode, const Bytes& key, const Bytes& iv, const Bytes& in,
                 bool encrypt) {
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    Bytes out(in.size() + 16);
    int length = 0;
    EXPECT_EQ(EVP_CipherInit_ex(context, mode, nullptr, key.data(),
                                iv.empty() ? nullptr : iv.data(), encrypt ? 1 : 0),
              1);
    EVP_CIPHER_CTX_set_padding(context, 0);
    EXPECT_EQ(
        EVP_CipherUpdate(context, out.data(), &length, in.data(), static_cast<int>(in.size())), 1);
    EVP_CIPHER_CTX_free(context);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

class AesAgainstOpenSsl : public test::AesPathTest {};

TEST_P(AesAgainstOpenSsl, EncryptsAndDecryptsAsAes256Ecb) {
    std::mt19937 random(1);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes key = RandomBytes(random, 32);
        const Bytes plain = RandomBytes(random, 16 * (1 + trial % 19));
        const Bytes encrypted = Encrypted(kCipherAes, key, plain);
        ASSERT_EQ(encrypted, OpenSslAes(EVP_aes_256_ecb(), key, {}, plain, true)) << AesPathName();
        Bytes decrypted = encrypted;
        CipherDecryptBlocks(kCipherAes, decrypted, Schedule(kCipherAes, key));
        ASSERT_EQ(decrypted, plain);
    }
}

// A region of suite 1 is AES-256-CBC from the IV with the whitening XORed onto every block.
TEST_P(AesAgainstOpenSsl, RegionIsCbcWithWhiteningOnTop) {
    std::mt19937 random(2);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes key = RandomBytes(random, 32);
        const Bytes ivArea = RandomBytes(random, 32);
        const Bytes iv(ivArea.begin(), ivArea.begin() + 16);
        const Bytes plain = RandomBytes(random, 16 * (1 + trial % 70));
        Bytes region = plain;
        const Bytes schedule = Schedule(kCipherAes, key);
        ASSERT_TRUE(
            RegionEncrypt(region, schedule, ivArea, std::span(ivArea).subspan(8, 8), kSuiteAes));

        Bytes expected = OpenSslAes(EVP_aes_256_cbc(), key, iv, plain, true);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            expected[i] ^= ivArea[8 + i % 8];
        }
        ASSERT_EQ(region, expected);
        ASSERT_TRUE(
            RegionDecrypt(region, schedule, ivArea, std::span(ivArea).subspan(8, 8), kSuiteAes));
        ASSERT_EQ(region, plain);
    }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AesAgainstOpenSsl,
                         testing::Values(test::AesPath::Tables, test::AesPath::AesNi),
                         test::AesPathLabel);

// Blowfish stores its halves little-endian, OpenSSL big-endian.
TEST(BlowfishAndCast5AgainstOpenSsl, Match) {
    std::mt19937 random(3);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes key = RandomBytes(random, 56);
        const Bytes plain = RandomBytes(random, 8);
        Bytes expected(8);
        BF_KEY blowfish;
        BF_set_key(&blowfish, 56, key.data());
        const Bytes swapped = SwapWords(plain);
        BF_ecb_encrypt(swapped.data(), expected.data(), &blowfish, BF_ENCRYPT);
        ASSERT_EQ(Encrypted(kCipherBlowfish, key, plain), SwapWords(expected));

        const Bytes castKey(key.begin(), key.begin() + 16);
        CAST_KEY cast;
        CAST_set_key(&cast, 16, castKey.data());
        CAST_ecb_encrypt(plain.data(), expected.data(), &cast, CAST_ENCRYPT);
        ASSERT_EQ(Encrypted(kCipherCast5, castKey, plain), expected);
    }
}

TEST(HashesAgainstOpenSsl, Sha256HmacAndPbkdf2Match) {
    std::mt19937 random(5);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes data = RandomBytes(random, random() % 300);
        const Bytes key = RandomBytes(random, random() % 150);

        Sha256Context context;
        Sha256Init(context);
        Sha256Update(context, data);
        std::array<std::uint8_t, 32> digest;
        Sha256Final(context, digest);
        Bytes expected(32);
        SHA256(data.data(), data.size(), expected.data());
        ASSERT_TRUE(std::equal(digest.begin(), digest.end(), expected.begin()));

        std::array<std::uint8_t, 32> mac;
        HmacSha256(key, data, mac);
        unsigned int macLength = 0;
        HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data.data(), data.size(),
             expected.data(), &macLength);
        ASSERT_TRUE(std::equal(mac.begin(), mac.end(), expected.begin()));
    }
    for (int trial = 0; trial < 5; ++trial) {
        const Bytes password = RandomBytes(random, random() % 65);
        const Bytes salt = RandomBytes(random, 64);
        Bytes derived(96);
        ASSERT_EQ(DeriveKey(HmacSha256, 32, password, salt, 100, derived), 0);
        Bytes expected(96);
        PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password.data()),
                          static_cast<int>(password.size()), salt.data(), 64, 100, EVP_sha256(), 96,
                          expected.data());
        ASSERT_EQ(derived, expected);
    }
}

using Sha1State = std::array<std::uint32_t, 5>;

Sha1State OpenSslSha1Transform(const Sha1State& state, const Bytes& block) {
    SHA_CTX reference{};
    reference.h0 = state[0];
    reference.h1 = state[1];
    reference.h2 = state[2];
    reference.h3 = state[3];
    reference.h4 = state[4];
    SHA1_Transform(&reference, block.data());
    return {reference.h0, reference.h1, reference.h2, reference.h3, reference.h4};
}

TEST(Sha1TransformAgainstOpenSsl, MatchesForAnyStateAndBlockAloneAndInPairs) {
    test::OnEachSha1Path([] {
        std::mt19937 random(6);
        const auto randomState = [&random] {
            Sha1State state;
            for (auto& word : state) {
                word = static_cast<std::uint32_t>(random());
            }
            return state;
        };
        for (int trial = 0; trial < kTrials; ++trial) {
            const Bytes block = RandomBytes(random, 64);
            const Bytes other = RandomBytes(random, 64);
            const Sha1State start = randomState();
            const Sha1State otherStart = randomState();
            Sha1State state = start;
            Sha1Transform(state, std::span<const std::uint8_t, 64>(block.data(), 64));
            ASSERT_EQ(state, OpenSslSha1Transform(start, block));
            state = start;
            Sha1State otherState = otherStart;
            Sha1TransformPair(state, std::span<const std::uint8_t, 64>(block.data(), 64),
                              otherState, std::span<const std::uint8_t, 64>(other.data(), 64));
            ASSERT_EQ(state, OpenSslSha1Transform(start, block));
            ASSERT_EQ(otherState, OpenSslSha1Transform(otherStart, other));
        }
    });
}

template <typename CryptoppEncryption, typename... Extra>
void ExpectSameAsCryptopp(std::uint32_t cipher, std::size_t usedKeyBytes, Extra... extra) {
    std::mt19937 random(cipher);
    const std::size_t blockSize = CipherBlockSize(cipher);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes key = RandomBytes(random, CipherKeySize(cipher));
        const Bytes plain = RandomBytes(random, blockSize);
        CryptoppEncryption reference(key.data(), usedKeyBytes, extra...);
        Bytes expected(blockSize);
        reference.ProcessBlock(plain.data(), expected.data());
        ASSERT_EQ(Encrypted(cipher, key, plain), expected) << "trial " << trial;
    }
}

TEST(CiphersAgainstCryptopp, SerpentTwofishCast6Rc5Rc6Match) {
    ExpectSameAsCryptopp<CryptoPP::Serpent::Encryption>(kCipherSerpent, 32);
    ExpectSameAsCryptopp<CryptoPP::Twofish::Encryption>(kCipherTwofish, 32);
    ExpectSameAsCryptopp<CryptoPP::CAST256::Encryption>(kCipherCast6, 16);
    ExpectSameAsCryptopp<CryptoPP::RC5::Encryption>(kCipherRc5, 16, 12u);
    ExpectSameAsCryptopp<CryptoPP::RC6::Encryption>(kCipherRc6, 16, 20u);
}

// Crypto++ implements the later key expansion; its expanded key lets our rounds be compared.
class CryptoppMarsKeys : public CryptoPP::MARS::Encryption {
public:
    using CryptoPP::MARS::Encryption::Encryption;
    const CryptoPP::word32* Expanded() const { return m_k; }
};

TEST(MarsAgainstCryptopp, RoundsMatchOnTheSameExpandedKey) {
    std::mt19937 random(8);
    for (int trial = 0; trial < kTrials; ++trial) {
        const Bytes key = RandomBytes(random, 16);
        const Bytes plain = RandomBytes(random, 16);
        CryptoppMarsKeys reference(key.data(), key.size());
        Bytes expected(16);
        reference.ProcessBlock(plain.data(), expected.data());

        Bytes schedule(CipherScheduleSize(kCipherMars));
        std::memcpy(schedule.data(), reference.Expanded(), schedule.size());
        Bytes block = plain;
        detail::kMarsOps.encrypt(schedule.data(), block.data(), 1);
        ASSERT_EQ(block, expected) << "trial " << trial;
        detail::kMarsOps.decrypt(schedule.data(), block.data(), 1);
        ASSERT_EQ(block, plain);
    }
}

}  // namespace
}  // namespace crypto
