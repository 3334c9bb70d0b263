// Hostile bytes in the three forms in which keys reach the system:
// - a *.privkey text, parsed from memory as PrivateFromFile parses what it read (the RSA
//   operation with its primes is left out: one costs most of a second under the sanitizers);
// - the text of a recipient's public key, whose modulus, if the check of recipient keys lets it
//   pass, seals an RSA slot: the sealed value must come out below that modulus;
// - a key blob, which must survive being written and read again byte for byte.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

#include "crypto/KeyFile.h"
#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"

namespace {

using Zelmarik::DCCSecurityKey;

void LoadKeyFile(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > Zelmarik::kLongestKeyFile) {
        return;  // refused unread
    }
    std::vector<char> text(bytes.begin(), bytes.end());
    text.push_back('\0');
    DCCSecurityKey key;
    key.ParsePrivateKeyText(text.data());
}

void SealForPublicKey(std::span<const std::uint8_t> bytes) {
    DCCSecurityKey key;
    key.SetPublicKeyText(
        std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    std::vector<std::uint32_t> modulus(Zelmarik::kRsaNumberWords);
    Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), key.PublicKeyText.get(),
                                   DCCSecurityKey::kPublicKeyDigits);
    if (!Zelmarik::PublicModulusProblem(modulus.data()).empty()) {
        return;  // no archive is sealed for it
    }
    // A message whose top word is zero, as in a key block, but otherwise full.
    std::vector<std::uint32_t> message(Zelmarik::kRsaNumberWords, 0xC3A5C35Au);
    message.back() = 0;
    std::vector<std::uint32_t> exponent(Zelmarik::kRsaNumberWords, 0);
    exponent[0] = Zelmarik::kRsaPublicExponent;
    std::vector<std::uint32_t> sealed(Zelmarik::kRsaNumberWords);
    if (Zelmarik::NumberModExp(sealed.data(), message.data(), exponent.data(), modulus.data()) ==
            0 &&
        !std::lexicographical_compare(sealed.rbegin(), sealed.rend(), modulus.rbegin(),
                                      modulus.rend())) {
        std::abort();
    }
}

void RoundTripKeyBlob(std::span<const std::uint8_t> bytes) {
    DCCSecurityKey first;
    if (!Zelmarik::DeserializeFromBlob(bytes, first)) {
        return;
    }
    const Zelmarik::Blob written = Zelmarik::SerializeToBlob(first);
    DCCSecurityKey second;
    if (written.Size() == 0 || !Zelmarik::DeserializeFromBlob(written.Bytes(), second)) {
        std::abort();  // a key that was read can always be written and read again
    }
    if (!std::ranges::equal(Zelmarik::SerializeToBlob(second).Bytes(), written.Bytes())) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    LoadKeyFile(bytes);
    SealForPublicKey(bytes);
    RoundTripKeyBlob(bytes);
    return 0;
}
