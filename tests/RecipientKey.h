#pragma once
// One recipient's key pair for a whole test program, made at its first use: it takes a while.

#include <array>
#include <stdexcept>

#include "crypto/KeyGeneration.h"
#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"

namespace tests {

struct RecipientKey {
    Zelmarik::GeneratedKeyPair pair;
    Zelmarik::DCCSecurityKey privateKey;  // read from the pair's text, in force
    std::array<std::uint32_t, Zelmarik::kRsaNumberWords> modulus{};
};

inline const RecipientKey& Recipient() {
    static const RecipientKey key = [] {
        RecipientKey made;
        if (Zelmarik::GenerateKeyPair(u"recipient", -1, made.pair) !=
                Zelmarik::KeyGenerationResult::Ok ||
            !made.privateKey.ParsePrivateKeyText(made.pair.privateKeyText.c_str())) {
            throw std::runtime_error("no key pair for the tests");
        }
        made.privateKey.Flags |= Zelmarik::KeyHasPrivate;
        Zelmarik::DCRSA::NumberFromHex(made.modulus.data(), made.modulus.size(),
                                       made.pair.publicKeyText, made.pair.publicKeyText.size());
        return made;
    }();
    return key;
}

}  // namespace tests
