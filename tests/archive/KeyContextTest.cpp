#include "archive/detail/KeyContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/archive/ImageBuilder.h"

namespace {

using tests::Bytes;

// The key block of an image made with `settings`, and the keys it must open to.
struct SealedKeyBlock {
    explicit SealedKeyBlock(const tests::ImageSettings& settings) : builder(settings) {
        builder.KeyBlock();
        std::copy_n(builder.Image().begin(), dcf::kKeyBlockSize, block.begin());
    }
    tests::ImageBuilder builder;
    dcf::KeyBlock block{};
};

std::span<const std::uint8_t> Password(const char* text) {
    return {reinterpret_cast<const std::uint8_t*>(text), std::strlen(text)};
}

TEST(KeyContext, WrongPasswordAndDamagedMasterKeyAreaAreRefused) {
    const SealedKeyBlock sealed{tests::ImageSettings{}};
    KeyContextPtr context;
    EXPECT_EQ(OpenKeyBlock(sealed.block, Password("Secret"), context, nullptr, nullptr),
              kKeyBlockRefused);
    EXPECT_FALSE(context);

    // "FILE" still decrypts, but the master key area no longer matches its CRC.
    dcf::KeyBlock damaged = sealed.block;
    damaged[300] ^= 1;
    EXPECT_EQ(OpenKeyBlock(damaged, Password("secret"), context, nullptr, nullptr),
              kKeyBlockRefused);
    EXPECT_FALSE(context);

    // Primes with a password: the password route decides, and null primes never take the
    // RSA route.
    const std::array<std::uint32_t, 64> prime{3};
    EXPECT_EQ(OpenKeyBlock(sealed.block, Password("secret"), context, prime.data(), prime.data()),
              kKeyBlockOpened);
    EXPECT_EQ(OpenKeyBlock(sealed.block, {}, context, prime.data(), nullptr), kKeyBlockRefused);
}

}  // namespace
