#include "crypto/KeyGeneration.h"

#include <cstdio>

#include "crypto/KeyFile.h"
#include "crypto/Rsa.h"
#include "crypto/rsa/Limbs.h"
#include "crypto/rsa/NumberTheory.h"
#include "crypto/rsa/Primes.h"
#include "crypto/rsa/Reducer.h"
#include "platform/File.h"
#include "platform/LocalTime.h"
#include "platform/PrivateFile.h"
#include "platform/Text.h"

namespace Zelmarik {

namespace {

constexpr std::size_t kPrimeLimbs = rsa::LimbsForWords(kRsaPrimeWords);
constexpr std::size_t kPrimeBits = kRsaPrimeWords * 32;

// `digits` hexadecimal digits of `a`, most significant first.
template <typename Text>
void AppendHex(Text& text, const rsa::Limb* a, std::size_t limbs, std::size_t digits) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = digits; i-- > 0;) {
        const std::size_t limb = i * 4 / rsa::kLimbBits;
        const unsigned shift = static_cast<unsigned>(i * 4 % rsa::kLimbBits);
        text.push_back(limb < limbs ? kDigits[(a[limb] >> shift) & 0xF] : '0');
    }
}

std::string DateLine() {
    const platform::LocalDateTime now = platform::CurrentLocalTime();
    char line[64];
    std::snprintf(line, sizeof line, "%u.%u.%u, %u:%02u", unsigned{now.day}, unsigned{now.month},
                  unsigned{now.year}, unsigned{now.hour}, unsigned{now.minute});
    return line;
}

bool IsUsableName(const std::u16string& name) {
    return name.find_first_of(u"\r\n") == std::u16string::npos &&
           name.find(u'\0') == std::u16string::npos;
}

}  // namespace

KeyGenerationResult GenerateKeyPair(const std::u16string& name, std::int32_t validityYears,
                                    GeneratedKeyPair& pair) {
    if (!IsUsableName(name)) {
        return KeyGenerationResult::BadName;
    }
    rsa::Limbs p(kPrimeLimbs), q(kPrimeLimbs), n(2 * kPrimeLimbs);
    do {
        if (!rsa::RandomPrime(p.data(), kPrimeBits, kRsaPublicExponent) ||
            !rsa::RandomPrime(q.data(), kPrimeBits, kRsaPublicExponent)) {
            return KeyGenerationResult::NoRandom;
        }
    } while (rsa::Compare(p.data(), q.data(), kPrimeLimbs) == 0);
    rsa::Multiply(n.data(), p.data(), kPrimeLimbs, q.data(), kPrimeLimbs);

    // d mod (p - 1) is the inverse of e modulo p - 1, since e * d = 1 mod (p - 1)(q - 1); both
    // exist, for the primes were drawn with e coprime to p - 1 and q - 1.
    rsa::Limbs pMinusOne(p), qMinusOne(q), dp(kPrimeLimbs), dq(kPrimeLimbs), qInverse(kPrimeLimbs);
    rsa::SubtractLimb(pMinusOne.data(), kPrimeLimbs, 1);
    rsa::SubtractLimb(qMinusOne.data(), kPrimeLimbs, 1);
    rsa::InverseOfSmall(dp.data(), pMinusOne.data(), kPrimeLimbs, kRsaPublicExponent);
    rsa::InverseOfSmall(dq.data(), qMinusOne.data(), kPrimeLimbs, kRsaPublicExponent);
    rsa::Reducer(p.data(), kPrimeLimbs, kPrimeLimbs).Reduce(qInverse.data(), q.data(), kPrimeLimbs);
    rsa::InverseModOdd(qInverse.data(), qInverse.data(), p.data(), kPrimeLimbs);

    SecureText& text = pair.privateKeyText;
    text.clear();
    const std::string utf8Name = platform::Utf16ToUtf8(name);
    text.append(utf8Name.data(), utf8Name.size());
    text += '\n';
    for (const rsa::Limbs* number : {&p, &q, &dp, &dq, &qInverse}) {
        AppendHex(text, number->data(), kPrimeLimbs, kKeyNumberDigits);
        text += '\n';
    }
    text += kPrivateKeyFormatMarker;
    text += '\n';
    const std::string tail = DateLine() + '\n' + std::to_string(validityYears) + '\n';
    text.append(tail.data(), tail.size());

    pair.publicKeyText.clear();
    AppendHex(pair.publicKeyText, n.data(), 2 * kPrimeLimbs, 2 * kKeyNumberDigits);
    return KeyGenerationResult::Ok;
}

platform::ErrorCode WriteKeyPairFiles(const GeneratedKeyPair& pair,
                                      const std::u16string& privateKeyPath,
                                      const std::u16string& publicKeyPath, bool replace) {
    if (!replace && platform::PathExists(publicKeyPath)) {
        return platform::kErrorFileExists;
    }
    if (const platform::ErrorCode error = platform::WritePrivateFile(
            privateKeyPath, pair.privateKeyText.data(), pair.privateKeyText.size(), replace)) {
        return error;
    }
    platform::File file;
    platform::ErrorCode error = file.Open(
        publicKeyPath, replace ? platform::OpenMode::CreateAlways : platform::OpenMode::CreateNew);
    if (error == platform::kErrorSuccess) {
        error = file.Write(pair.publicKeyText.data(), pair.publicKeyText.size());
    }
    if (error != platform::kErrorSuccess) {
        file.Close();
        platform::RemoveFile(privateKeyPath);  // no half of a pair stays behind
    }
    return error;
}

}  // namespace Zelmarik
