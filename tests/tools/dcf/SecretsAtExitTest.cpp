// What dcf extract and the stub leave in their memory when they exit: no trace of the password,
// the key derived from it, the private key or the master key area of the archive.
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "archive/detail/KeyContext.h"
#include "archive/detail/SfxTrailer.h"
#include "crypto/Hashes.h"
#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/tools/dcf/DcfProgram.h"
#include "tests/tools/dcf/MemoryAtExit.h"

namespace {

using namespace dcftest;
using tests::Bytes;

constexpr char kPassword[] = "Qx7 memory probe 49152";

// Pieces of a secret, each long enough to be found nowhere by chance.
std::vector<std::pair<std::string, Bytes>> Pieces(const std::string& what, const Bytes& secret) {
    std::vector<std::pair<std::string, Bytes>> pieces;
    for (std::size_t at = 0; at + 16 <= secret.size(); at += 16) {
        pieces.emplace_back(what + " at " + std::to_string(at),
                            Bytes(secret.begin() + at, secret.begin() + at + 16));
    }
    return pieces;
}

void ExpectNoneFound(const MemoryAtExit& memory,
                     const std::vector<std::pair<std::string, Bytes>>& needles) {
    ASSERT_GT(memory.dump.size(), 0u);
    for (const auto& [what, needle] : needles) {
        const std::string where = memory.Find(needle);
        EXPECT_EQ(where, "") << what << " is still in memory";
    }
}

// The master key area of an image, opened as a reader opens it.
Bytes MasterKeyArea(const Bytes& keyBlock, std::span<const std::uint8_t> password,
                    const std::uint32_t* prime1 = nullptr, const std::uint32_t* prime2 = nullptr) {
    KeyContextPtr keys;
    EXPECT_EQ(OpenKeyBlock(std::span<const std::uint8_t, dcf::kKeyBlockSize>(keyBlock.data(),
                                                                             dcf::kKeyBlockSize),
                           password, keys, prime1, prime2),
              kKeyBlockOpened);
    return keys ? Bytes(keys->MasterKeyArea.begin(), keys->MasterKeyArea.end()) : Bytes();
}

class SecretsAtExitTest : public ::testing::Test {
protected:
    Bytes Image(const tests::ImageSettings& settings, Bytes& keyBlock) {
        std::vector<std::size_t> at;
        const Bytes image = tests::BuildImage(settings, {u"\\d"},
                                              {{u"\\d\\a", tests::Noise(300000, 5), {}}}, {}, &at);
        keyBlock.assign(image.begin() + at[1], image.begin() + at[1] + dcf::kKeyBlockSize);
        return image;
    }

    tests::TestFolder folder_;
};

TEST_F(SecretsAtExitTest, DcfExtractForgetsThePasswordAndTheKeys) {
    tests::ImageSettings settings;
    settings.password = u"Qx7 memory probe 49152";
    Bytes keyBlock;
    const Bytes image = Image(settings, keyBlock);
    WriteAll(folder_.Native() / "a.dcf", std::string(image.begin(), image.end()));
    WriteAll(folder_.Native() / "pw", std::string(kPassword) + "\n");

    const Bytes password(std::begin(kPassword), std::end(kPassword) - 1);
    Bytes wide;
    for (const char c : password) {
        wide.insert(wide.end(), {static_cast<std::uint8_t>(c), 0});
    }
    Bytes derived(dcf::kDerivedKeySize);
    ASSERT_EQ(crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, password,
                                std::span<const std::uint8_t>(keyBlock).first(dcf::kSaltSize),
                                dcf::kIterations, derived),
              0);
    std::vector<std::pair<std::string, Bytes>> needles = {{"the password", password},
                                                          {"the password in UTF-16", wide}};
    for (auto& piece : Pieces("the derived key", derived)) {
        needles.push_back(std::move(piece));
    }
    for (auto& piece : Pieces("the master key area", MasterKeyArea(keyBlock, password))) {
        needles.push_back(std::move(piece));
    }

    for (const std::vector<std::string>& way : {std::vector<std::string>{"--password-file", "pw"},
                                                std::vector<std::string>{"--password-stdin"}}) {
        SCOPED_TRACE(way[0]);
        std::vector<std::string> arguments = {"extract", "a.dcf",       "-C",     "out",
                                              "-q",      "--overwrite", "replace"};
        arguments.insert(arguments.end(), way.begin(), way.end());
        MemoryAtExit memory;
        if (!RunToExit(folder_.Native(), DCF_TOOL_PATH, arguments, std::string(kPassword) + "\n",
                       memory)) {
            GTEST_SKIP() << "no tracing of a child process here";
        }
        ASSERT_EQ(memory.code, 0);
        ExpectNoneFound(memory, needles);
    }
}

#ifdef DCF_STUB_PATH  // the sanitizer trees build no stub program
TEST_F(SecretsAtExitTest, TheStubForgetsThePrivateKeyAndTheKeys) {
    ASSERT_EQ(RunDcf(folder_.Native(), "keygen --name r --out key").code, 0);
    Zelmarik::DCCSecurityKey key;
    ASSERT_EQ(key.PrivateFromFile((folder_.Native() / "key.privkey").u16string().c_str()), 0u);
    const std::string publicText = ReadAll(folder_.Native() / "key.pubkey");
    std::array<std::uint32_t, Zelmarik::kRsaNumberWords> modulus{};
    Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), publicText, publicText.size());

    tests::ImageSettings settings;
    settings.modulus = modulus.data();
    Bytes keyBlock;
    const Bytes image = Image(settings, keyBlock);
    // The stub's own bytes, the image and the trailer: a self-extracting file.
    std::string sfx = ReadAll(DCF_STUB_PATH);
    sfx.append(image.begin(), image.end());
    const SfxTrailerBytes trailer = BuildSfxTrailer(image.size());
    sfx.append(trailer.begin(), trailer.end());
    WriteAll(folder_.Native() / "a.exe", sfx);

    const auto& numbers = key.PrivateKey->Numbers;
    std::vector<std::pair<std::string, Bytes>> needles;
    const std::string privateText = ReadAll(folder_.Native() / "key.privkey");
    for (std::size_t line = 1, at = privateText.find('\n') + 1; line <= 5; ++line) {
        needles.emplace_back("key file line " + std::to_string(line),
                             Bytes(privateText.begin() + at, privateText.begin() + at + 32));
        at = privateText.find('\n', at) + 1;
    }
    for (std::size_t n = 0; n < 2; ++n) {
        Bytes prime(reinterpret_cast<const std::uint8_t*>(numbers[n].data()),
                    reinterpret_cast<const std::uint8_t*>(numbers[n].data()) + 256);
        for (auto& piece : Pieces("prime " + std::to_string(n + 1), prime)) {
            needles.push_back(std::move(piece));
        }
    }
    for (auto& piece : Pieces("the master key area",
                              MasterKeyArea(keyBlock, {}, numbers[0].data(), numbers[1].data()))) {
        needles.push_back(std::move(piece));
    }

    MemoryAtExit memory;
    if (!RunToExit(folder_.Native(), DCF_STUB_PATH,
                   {"-key", "key.privkey", "-target", "out", "-source", "a.exe"}, "", memory)) {
        GTEST_SKIP() << "no tracing of a child process here";
    }
    ASSERT_EQ(memory.code, 0);
    ASSERT_EQ(ReadAll(folder_.Native() / "out" / "d" / "a").size(), 300000u);
    ExpectNoneFound(memory, needles);
}
#endif

}  // namespace
