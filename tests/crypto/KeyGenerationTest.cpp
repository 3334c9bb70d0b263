#include "crypto/KeyGeneration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"
#include "platform/LocalTime.h"

namespace {

using Zelmarik::DCCSecurityKey;
using Zelmarik::GeneratedKeyPair;
using Zelmarik::KeyGenerationResult;
using Number = std::array<std::uint32_t, Zelmarik::kRsaNumberWords>;

class KeyGenerationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        pair_ = new GeneratedKeyPair;
        ASSERT_EQ(Zelmarik::GenerateKeyPair(u"Zo\u00eb \u6771", 3, *pair_),
                  KeyGenerationResult::Ok);
    }
    static void TearDownTestSuite() { delete pair_; }

    static DCCSecurityKey ParsedKey() {
        DCCSecurityKey key;
        EXPECT_TRUE(key.ParsePrivateKeyText(pair_->privateKeyText.c_str()));
        return key;
    }

    static GeneratedKeyPair* pair_;
};

GeneratedKeyPair* KeyGenerationTest::pair_ = nullptr;

TEST_F(KeyGenerationTest, PrivateTextReadsBack) {
    const platform::LocalDateTime before = platform::CurrentLocalTime();
    const DCCSecurityKey key = ParsedKey();
    EXPECT_EQ(key.Name, u"Zo\u00eb \u6771");
    EXPECT_EQ(key.Created.Year, before.year);  // a test run across New Year's midnight aside
    EXPECT_EQ(key.Expires.Year, key.Created.Year + 3);
    ASSERT_NE(key.PrivateKey, nullptr);
    EXPECT_TRUE(key.PrivateKey->HasAllNumbers());
    // Both primes have exactly 2048 bits with the top two set.
    EXPECT_EQ(key.PrivateKey->Numbers[0][63] >> 30, 3u);
    EXPECT_EQ(key.PrivateKey->Numbers[1][63] >> 30, 3u);

    // The public text is the full modulus in upper-case hex.
    const std::string& text = pair_->publicKeyText;
    ASSERT_EQ(text.size(), 1024u);
    EXPECT_EQ(text.find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_GE(text[0], '8');
}

// A generated modulus can seal; the degenerate ones that once made archives nobody could open
// are refused, each with its reason.
TEST_F(KeyGenerationTest, DegenerateModuliAreRefusedWithTheirReason) {
    Number modulus{};
    const std::string& text = pair_->publicKeyText;
    Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), text, text.size());
    EXPECT_EQ(Zelmarik::PublicModulusProblem(modulus.data()), "");

    Number zero{};
    Number one{};
    one[0] = 1;
    Number short4093{};  // 2^4092
    short4093[127] = 1u << 28;
    Number bits512{};  // a real modulus cut to 512 bits, top bit set
    std::copy(modulus.begin(), modulus.begin() + 16, bits512.begin());
    bits512[15] |= 0x80000000u;
    Number ones{};
    ones.fill(0xFFFFFFFFu);
    Number even = modulus;
    even[0] &= ~1u;
    Number factor3{};  // 2^4095 + 1
    factor3[127] = 0x80000000u;
    factor3[0] = 1;
    const std::pair<const Number*, std::string> cases[] = {
        {&zero, "has 0 bits"},       {&one, "has 1 bits"}, {&short4093, "has 4093 bits"},
        {&bits512, "has 512 bits"},  {&even, "is even"},   {&ones, "small factor 3"},
        {&factor3, "small factor 3"}};
    for (const auto& [number, reason] : cases) {
        const std::string problem = Zelmarik::PublicModulusProblem(number->data());
        EXPECT_NE(problem.find(reason), std::string::npos) << problem;
    }
}

TEST(KeyGeneration, NamesThatWouldBreakTheFileAreRefused) {
    GeneratedKeyPair pair;
    EXPECT_EQ(Zelmarik::GenerateKeyPair(u"two\nlines", -1, pair), KeyGenerationResult::BadName);
    EXPECT_EQ(Zelmarik::GenerateKeyPair(std::u16string(u"a\0b", 3), -1, pair),
              KeyGenerationResult::BadName);
    EXPECT_TRUE(pair.privateKeyText.empty());
}

}  // namespace
