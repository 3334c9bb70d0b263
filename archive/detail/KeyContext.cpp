#include "archive/detail/KeyContext.h"

#include <algorithm>
#include <new>

#include "Common/Common/Endian.h"
#include "Common/Common/SecureBuffer.h"
#include "crypto/Hashes.h"
#include "crypto/Rsa.h"
#include "platform/SecureMemory.h"

namespace {

using Zelmarik::SecureVector;

// The plain first half of a key block: the salt and the password slot, or the RSA message.
using PlainHalf = SecureVector<std::uint8_t>;

std::span<const std::uint8_t> IvOf(const KeyContext& context) {
    return std::span<const std::uint8_t>(context.IvArea).first(crypto::kIvSize);
}

std::span<const std::uint8_t> WhiteningOf(const KeyContext& context) {
    return std::span<const std::uint8_t>(context.IvArea)
        .subspan(dcf::kWhiteningOffset, dcf::kWhiteningSize);
}

bool SuiteRowIsEmpty(std::uint32_t suite) {
    const auto table = crypto::SuiteTable();
    return suite >= table.size() || table[suite].ciphers[0] == 0;
}

// The RSA slot opened with the two primes, the master key area put back in place. Empty when
// the operation fails or the message lacks "FILE".
PlainHalf OpenBySlot(std::span<const std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                     const std::uint32_t* prime1, const std::uint32_t* prime2) {
    SecureVector<std::uint32_t> cipher(Zelmarik::kRsaNumberWords);
    SecureVector<std::uint32_t> plain(Zelmarik::kRsaNumberWords);
    for (std::size_t i = 0; i < cipher.size(); ++i) {
        cipher[i] =
            Zelmarik::LoadLittle<std::uint32_t>(keyBlock.data() + dcf::kRsaSlotOffset + 4 * i);
    }
    if (Zelmarik::RsaOpenBlock(cipher.data(), plain.data(), prime1, prime2) != 0) {
        return {};
    }
    PlainHalf message(dcf::kRsaSlotSize);
    for (std::size_t i = 0; i < plain.size(); ++i) {
        Zelmarik::StoreLittle<std::uint32_t>(message.data() + 4 * i, plain[i]);
    }
    if (!dcf::HasFileMagic(message)) {
        return {};
    }
    dcf::RestoreMasterKeyPosition(std::span<std::uint8_t, dcf::kRsaSlotSize>(message));
    return message;
}

// The password slot decrypted with the first suite that shows "FILE", which goes to `suite`.
// Empty when no suite does.
// The password key for the salt of `keyBlock`.
bool DerivePasswordKey(std::span<const std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                       std::span<const std::uint8_t> password, std::span<std::uint8_t> derived) {
    const auto salt = keyBlock.first(dcf::kSaltSize);
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    // A fuzzer opens one key block thousands of times a second: the key of the last password
    // and salt is kept. Never in a product build, where no key outlives its archive.
    static SecureVector<std::uint8_t> lastInput;
    static SecureVector<std::uint8_t> lastKey;
    SecureVector<std::uint8_t> input(password.begin(), password.end());
    input.insert(input.end(), salt.begin(), salt.end());
    if (input == lastInput && lastKey.size() == derived.size()) {
        std::copy(lastKey.begin(), lastKey.end(), derived.begin());
        return true;
    }
    if (crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, password, salt,
                          dcf::kIterations, derived) != 0) {
        return false;
    }
    lastInput = std::move(input);
    lastKey.assign(derived.begin(), derived.end());
    return true;
#else
    return crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, password, salt,
                             dcf::kIterations, derived) == 0;
#endif
}

PlainHalf OpenByPassword(std::span<const std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                         std::span<const std::uint8_t> password, KeyContext& context,
                         std::uint32_t& suite) {
    SecureVector<std::uint8_t> derived(dcf::kDerivedKeySize);
    if (!DerivePasswordKey(keyBlock, password, derived)) {
        return {};
    }
    const std::span<const std::uint8_t> passwordKey(derived);
    for (std::uint32_t candidate = 1; !SuiteRowIsEmpty(candidate); ++candidate) {
        PlainHalf half(keyBlock.begin(), keyBlock.begin() + dcf::kRsaSlotOffset);
        const std::span<std::uint8_t> slot =
            std::span<std::uint8_t>(half).subspan(dcf::kPasswordSlotOffset, dcf::kPasswordSlotSize);
        if (LoadKeys(context, candidate, passwordKey) && DecryptRegion(context, slot) &&
            dcf::HasFileMagic(half)) {
            suite = candidate;
            return half;
        }
    }
    return {};
}

}  // namespace

void ReleaseKeyContext(KeyContext* context) {
    if (context == nullptr) {
        return;
    }
    platform::SecureWipe(context, sizeof(KeyContext));
    platform::UnlockMemory(context, sizeof(KeyContext));
    delete context;
}

KeyContextPtr AllocateKeyContext() {
    KeyContextPtr context(new (std::nothrow) KeyContext{});
    if (context) {
        platform::LockMemory(context.get(), sizeof(KeyContext));  // refusal is tolerated
    }
    return context;
}

bool LoadKeys(KeyContext& context, std::uint32_t suite, std::span<const std::uint8_t> keyArea) {
    if (keyArea.size() < dcf::kIvAreaSize || SuiteRowIsEmpty(suite)) {
        return false;
    }
    std::copy_n(keyArea.begin(), dcf::kIvAreaSize, context.IvArea.begin());
    context.SuiteId = suite;
    // No schedule of an earlier suite stays behind a shorter one.
    platform::SecureWipe(context.KeySchedule.data(), context.KeySchedule.size());
    return crypto::SuiteInit(suite, keyArea.subspan(dcf::kIvAreaSize), context.KeySchedule);
}

bool EncryptRegion(const KeyContext& context, std::span<std::uint8_t> region) {
    return crypto::RegionEncrypt(region, context.KeySchedule, IvOf(context), WhiteningOf(context),
                                 context.SuiteId);
}

bool DecryptRegion(const KeyContext& context, std::span<std::uint8_t> region) {
    return crypto::RegionDecrypt(region, context.KeySchedule, IvOf(context), WhiteningOf(context),
                                 context.SuiteId);
}

int OpenKeyBlock(std::span<const std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                 std::span<const std::uint8_t> password, KeyContextPtr& context,
                 const std::uint32_t* prime1, const std::uint32_t* prime2) {
    context = AllocateKeyContext();
    if (!context) {
        return kKeyBlockNoMemory;
    }
    const bool byPrivateKey = prime1 != nullptr && prime2 != nullptr && password.empty();
    std::uint32_t suite = 0;
    const PlainHalf plain = byPrivateKey ? OpenBySlot(keyBlock, prime1, prime2)
                                         : OpenByPassword(keyBlock, password, *context, suite);
    if (plain.empty()) {
        context.reset();
        return kKeyBlockRefused;
    }
    const dcf::KeyBlockFields fields = dcf::LoadKeyBlockFields(plain);
    const auto masterKey =
        std::span<const std::uint8_t>(plain).subspan(dcf::kMasterKeyOffset, dcf::kMasterKeySize);
    if (crypto::Crc32(masterKey) != fields.crc) {
        context.reset();
        return kKeyBlockRefused;
    }
    std::copy(masterKey.begin(), masterKey.end(), context->MasterKeyArea.begin());
    std::copy_n(keyBlock.begin(), dcf::kSaltSize, context->Salt.begin());
    context->Iterations = dcf::kIterations;
    context->PrfId = byPrivateKey ? fields.prfId : dcf::kPrfHmacSha256;
    context->Created = fields.created;
    if (!LoadKeys(*context, byPrivateKey ? fields.suiteId : suite, context->MasterKeyArea)) {
        context.reset();
        return kKeyBlockRefused;
    }
    return kKeyBlockOpened;
}
