#include "archive/detail/KeyBlockSealing.h"

#include <algorithm>

#include "Common/Common/Endian.h"
#include "Common/Common/SecureBuffer.h"
#include "crypto/Hashes.h"
#include "crypto/RandomPool.h"
#include "crypto/Rsa.h"
#include "platform/LocalTime.h"
#include "platform/SecureMemory.h"

namespace {

using Zelmarik::SecureVector;

// The password, the salt and the master key area while the block is built, pinned in memory.
class WorkArea {
public:
    explicit WorkArea(std::span<const std::uint8_t> password)
        : bytes_(password.size() + dcf::kSaltSize + dcf::kMasterKeySize) {
        platform::LockMemory(bytes_.data(), bytes_.size());  // refusal is tolerated
        std::copy(password.begin(), password.end(), bytes_.begin());
        passwordSize_ = password.size();
    }
    ~WorkArea() {
        platform::SecureWipe(bytes_.data(), bytes_.size());
        platform::UnlockMemory(bytes_.data(), bytes_.size());
    }
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;

    std::span<std::uint8_t> Password() { return {bytes_.data(), passwordSize_}; }
    std::span<std::uint8_t> Salt() { return {bytes_.data() + passwordSize_, dcf::kSaltSize}; }
    std::span<std::uint8_t> MasterKey() {
        return {bytes_.data() + passwordSize_ + dcf::kSaltSize, dcf::kMasterKeySize};
    }

private:
    SecureVector<std::uint8_t> bytes_;
    std::size_t passwordSize_ = 0;
};

bool IsAllZero(const std::uint32_t* words) {
    return words == nullptr ||
           std::all_of(words, words + Zelmarik::kRsaNumberWords, [](auto w) { return w == 0; });
}

// c = m^65537 mod n over the plain key block, stored at the RSA slot.
bool SealRsaSlot(std::span<std::uint8_t, dcf::kKeyBlockSize> block, const std::uint32_t* modulus) {
    SecureVector<std::uint8_t> message(dcf::kRsaSlotSize);
    dcf::BuildRsaMessage(block, std::span<std::uint8_t, dcf::kRsaSlotSize>(message));
    SecureVector<std::uint32_t> number(Zelmarik::kRsaNumberWords);
    for (std::size_t i = 0; i < number.size(); ++i) {
        number[i] = Zelmarik::LoadLittle<std::uint32_t>(message.data() + 4 * i);
    }
    std::uint32_t exponent[Zelmarik::kRsaNumberWords] = {Zelmarik::kRsaPublicExponent};
    if (Zelmarik::NumberModExp(number.data(), number.data(), exponent, modulus) != 0) {
        return false;
    }
    for (std::size_t i = 0; i < number.size(); ++i) {
        Zelmarik::StoreLittle<std::uint32_t>(block.data() + dcf::kRsaSlotOffset + 4 * i, number[i]);
    }
    return true;
}

// Days from 1601-01-01 to a date of the proleptic Gregorian calendar.
std::int64_t DaysSince1601(std::int64_t year, unsigned month, unsigned day) {
    // Counted from March, so that the leap day ends a year.
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    constexpr std::int64_t kDaysFrom0000To1601 = 584694;  // 0000-03-01 to 1601-01-01
    return era * 146097 + dayOfEra - kDaysFrom0000To1601;
}

}  // namespace

std::uint64_t LocalFileTime() {
    const platform::LocalDateTime now = platform::CurrentLocalTime();
    const std::int64_t days = DaysSince1601(now.year, now.month, now.day);
    const std::int64_t seconds = ((days * 24 + now.hour) * 60 + now.minute) * 60 + now.second;
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    return seconds > 0 ? static_cast<std::uint64_t>(seconds * kTicksPerSecond) : 0;
}

int SealKeyBlock(std::span<std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                 std::span<const std::uint8_t> password, const std::uint32_t* modulus,
                 KeyContextPtr& context) {
    context = AllocateKeyContext();
    if (!context) {
        return kKeyBlockNoMemory;
    }
    std::fill(keyBlock.begin(), keyBlock.end(), std::uint8_t{0});
    WorkArea work(password);
    SecureVector<std::uint8_t> derived(dcf::kDerivedKeySize);
    const auto fail = [&](int result) {
        platform::SecureWipe(keyBlock.data(), keyBlock.size());
        context.reset();
        return result;
    };
    if (!crypto::RandomGetBytes(work.MasterKey().data(), dcf::kMasterKeySize, true) ||
        !crypto::RandomGetBytes(work.Salt().data(), dcf::kSaltSize, true)) {
        return fail(kKeyBlockNoRandom);
    }
    if (crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, work.Password(),
                          work.Salt(), dcf::kIterations, derived) != 0) {
        return fail(kKeyBlockSealFailed);
    }
    dcf::KeyBlockFields fields;
    fields.crc = crypto::Crc32(work.MasterKey());
    fields.created = LocalFileTime();
    fields.suiteId = crypto::kSuiteAes;
    std::copy(work.Salt().begin(), work.Salt().end(), keyBlock.begin());
    dcf::StoreKeyBlockFields(keyBlock, fields);
    std::copy(work.MasterKey().begin(), work.MasterKey().end(),
              keyBlock.begin() + dcf::kMasterKeyOffset);
    if (!LoadKeys(*context, crypto::kSuiteAes, derived)) {
        return fail(kKeyBlockSealFailed);
    }
    // The RSA message takes its bytes from the plain block, before the password slot is sealed.
    const bool slotFilled = IsAllZero(modulus)
                                ? crypto::RandomGetBytes(keyBlock.data() + dcf::kRsaSlotOffset,
                                                         dcf::kRsaSlotSize, false)
                                : SealRsaSlot(keyBlock, modulus);
    if (!slotFilled) {
        return fail(IsAllZero(modulus) ? kKeyBlockNoRandom : kKeyBlockSealFailed);
    }
    if (!EncryptRegion(*context,
                       keyBlock.subspan(dcf::kPasswordSlotOffset, dcf::kPasswordSlotSize))) {
        return fail(kKeyBlockSealFailed);
    }
    std::copy(work.MasterKey().begin(), work.MasterKey().end(), context->MasterKeyArea.begin());
    std::copy(work.Salt().begin(), work.Salt().end(), context->Salt.begin());
    context->Iterations = dcf::kIterations;
    context->PrfId = fields.prfId;
    context->Created = fields.created;
    if (!LoadKeys(*context, crypto::kSuiteAes, context->MasterKeyArea)) {
        return fail(kKeyBlockSealFailed);
    }
    return kKeyBlockOpened;
}
