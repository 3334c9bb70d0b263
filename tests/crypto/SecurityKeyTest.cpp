#include "crypto/SecurityKey.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Zelmarik::DCCBitlockerKey;
using Zelmarik::DCCPrivateKey;
using Zelmarik::DCCSecurityKey;
using Zelmarik::DeserializeFromBlob;
using Zelmarik::SerializeToBlob;
using Bytes = std::vector<std::uint8_t>;

// A key with every part present and distinct values everywhere.
DCCSecurityKey FullKey() {
    DCCSecurityKey key;
    key.Id = 0x1122334455667788ull;
    key.Name = u"Schl\u00fcssel";
    key.Text2 = u"two";
    key.Text3 = u"three";
    key.ValidityYears = 3;
    key.Created = {2024, 5, 2, 17, 9, 30, 0, 0};
    key.Expires = {2027, 5, 2, 17, 9, 30, 0, 0};
    key.SetPublicKeyText(std::string(DCCSecurityKey::kPublicKeyDigits, 'a'));
    key.PrivateKey = std::make_unique<DCCPrivateKey>();
    for (std::size_t n = 0; n < DCCPrivateKey::kNumberCount; ++n) {
        for (std::size_t w = 0; w < DCCPrivateKey::kNumberWords; ++w) {
            key.PrivateKey->Numbers[n][w] = static_cast<std::uint32_t>(n * 1000 + w + 1);
        }
    }
    key.BitlockerKey = std::make_unique<DCCBitlockerKey>();
    key.BitlockerKey->Data.fill(0x5A);
    key.Flags = Zelmarik::KeyHasPublic | Zelmarik::KeyHasPrivate | Zelmarik::KeyHasBitlocker;
    return key;
}

Bytes ToBytes(const DCCSecurityKey& key) {
    const Zelmarik::Blob blob = SerializeToBlob(key);
    return Bytes(blob.Data(), blob.Data() + blob.Size());
}

TEST(SecurityKeyBlob, FullKeyRoundTripsWithItsSize) {
    const DCCSecurityKey key = FullKey();
    const Bytes bytes = ToBytes(key);
    // 4 + 8 + name + 4 + public + 1 + private + 1 + BitLocker + texts + 4 + 32
    const std::size_t nameBytes = 4 + 2 * key.Name.size() + 2;
    EXPECT_EQ(bytes.size(), 4 + 8 + nameBytes + 4 + 1024 + 1 + 1280 + 1 + 32 + (4 + 6 + 2) +
                                (4 + 10 + 2) + 4 + 32);
    // The first prime's lowest word sits right behind the private flag, little-endian.
    const std::size_t privateAt = 4 + 8 + nameBytes + 4 + 1024;
    EXPECT_EQ(bytes[privateAt], 1);
    EXPECT_EQ(bytes[privateAt + 1], 1);
    EXPECT_EQ(bytes[privateAt + 2], 0);

    DCCSecurityKey read;
    ASSERT_TRUE(DeserializeFromBlob(bytes, read));
    EXPECT_EQ(ToBytes(read), bytes);
}

TEST(SecurityKeyBlob, PublicBlockFollowsFlagNotPointer) {
    DCCSecurityKey key;
    key.SetPublicKeyText("0123456789abcdef");
    DCCSecurityKey read;
    ASSERT_TRUE(DeserializeFromBlob(ToBytes(key), read));
    ASSERT_NE(read.PublicKeyText, nullptr);
    EXPECT_STREQ(read.PublicKeyText.get(), "0123456789abcdef");
    EXPECT_EQ(read.PublicKeyText[DCCSecurityKey::kPublicKeyDigits], '\0');

    // A flag claiming a public key over data without one misreads the rest and fails.
    DCCSecurityKey liar;
    liar.Flags = Zelmarik::KeyHasPublic;
    EXPECT_FALSE(DeserializeFromBlob(ToBytes(liar), read));
}

// Copies own their blocks, and only the blocks the flags put in force.
TEST(SecurityKeyCopy, OwnedBlocksFollowTheFlags) {
    DCCSecurityKey source = FullKey();
    DCCSecurityKey copy(source);
    EXPECT_EQ(ToBytes(copy), ToBytes(source));
    copy.PublicKeyText[0] = 'F';
    copy.PrivateKey->Numbers[1][7] = 0;
    copy.BitlockerKey->Data[3] = 0;
    EXPECT_EQ(source.PublicKeyText[0], 'a');
    EXPECT_EQ(source.PrivateKey->Numbers[1][7], 1008u);
    EXPECT_EQ(source.BitlockerKey->Data[3], 0x5A);

    source.Flags = Zelmarik::KeyHasPrivate;
    copy = source;
    EXPECT_EQ(copy.PublicKeyText, nullptr);
    EXPECT_EQ(copy.BitlockerKey, nullptr);
    copy = copy;  // self-assignment keeps everything
    ASSERT_NE(copy.PrivateKey, nullptr);
    EXPECT_EQ(copy.PrivateKey->Numbers, source.PrivateKey->Numbers);
}

TEST(SecurityKeyDeserialize, PrivateFlagZeroDropsExistingPrivateKey) {
    DCCSecurityKey target;
    target.PrivateKey = std::make_unique<DCCPrivateKey>();
    target.BitlockerKey = std::make_unique<DCCBitlockerKey>();
    ASSERT_TRUE(DeserializeFromBlob(ToBytes(DCCSecurityKey{}), target));
    EXPECT_EQ(target.PrivateKey, nullptr);
    EXPECT_EQ(target.BitlockerKey, nullptr);
}

// Feeds `bytes` cut to `size` straight to Deserialize, as a blob cut short would.
bool DeserializeCut(const Bytes& bytes, std::size_t size, DCCSecurityKey& target) {
    Zelmarik::CRawReader reader(std::span<const std::uint8_t>(bytes.data() + 4, size - 4));
    return target.Deserialize(reader);
}

TEST(SecurityKeyDeserialize, TruncatedPrivateKeyKeepsOnlyAnExistingObject) {
    const DCCSecurityKey source = FullKey();
    const Bytes bytes = ToBytes(source);
    const std::size_t privateAt = 4 + 8 + 4 + 2 * source.Name.size() + 2 + 4 + 1024;
    const std::size_t cut = privateAt + 1 + 600;  // inside the private numbers

    DCCSecurityKey fresh;
    EXPECT_FALSE(DeserializeCut(bytes, cut, fresh));
    EXPECT_EQ(fresh.PrivateKey, nullptr);
    EXPECT_EQ(fresh.BitlockerKey, nullptr);

    DCCSecurityKey existing;
    existing.PrivateKey = std::make_unique<DCCPrivateKey>();
    const DCCPrivateKey* before = existing.PrivateKey.get();
    EXPECT_FALSE(DeserializeCut(bytes, cut, existing));
    EXPECT_EQ(existing.PrivateKey.get(), before);
    // Its first two numbers came in whole before the data ran out.
    EXPECT_EQ(existing.PrivateKey->Numbers[1], source.PrivateKey->Numbers[1]);

    // Cut at the private flag itself: even an existing object goes.
    DCCSecurityKey atFlag;
    atFlag.PrivateKey = std::make_unique<DCCPrivateKey>();
    EXPECT_FALSE(DeserializeCut(bytes, privateAt, atFlag));
    EXPECT_EQ(atFlag.PrivateKey, nullptr);
}

TEST(PrivateKeyNumbers, HasAllNumbersNeedsEveryNumberNonZero) {
    DCCPrivateKey key;
    EXPECT_FALSE(key.HasAllNumbers());
    for (auto& number : key.Numbers) {
        number[63] = 1;
    }
    EXPECT_TRUE(key.HasAllNumbers());
    key.Numbers[DCCPrivateKey::kNumberCount - 1][63] = 0;
    EXPECT_FALSE(key.HasAllNumbers());
}

}  // namespace
