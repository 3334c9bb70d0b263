#include <algorithm>

#include "crypto/CipherSuite.h"
#include "crypto/detail/ResolvedSuite.h"

namespace crypto {
namespace {

using detail::BlockCipherOps;

constexpr CipherInfo kCiphers[] = {
    {kCipherAes, "AES", 16, 32, 488},           {kCipherSerpent, "Serpent", 16, 32, 560},
    {kCipherTwofish, "Twofish", 16, 32, 4288},  {kCipherMars, "MARS", 16, 56, 160},
    {kCipherBlowfish, "Blowfish", 8, 56, 4168}, {kCipherCast5, "CAST5", 8, 16, 128},
    {kCipherCast6, "CAST6", 16, 32, 384},       {kCipherRc5, "RC5", 8, 64, 104},
    {kCipherRc6, "RC6", 16, 64, 160},           {0, "", 0, 0, 0},
};

const BlockCipherOps* const kCipherOps[] = {
    &detail::kAesOps,   &detail::kSerpentOps,  &detail::kTwofishOps,
    &detail::kMarsOps,  &detail::kBlowfishOps, &detail::kCast5Ops,
    &detail::kCast6Ops, &detail::kRc5Ops,      &detail::kRc6Ops,
};

// Rows 11 and 12 named IDEA and Triple DES, which no archive needs; they stay empty here, so
// that such a suite id fails like any other empty row.
constexpr SuiteInfo kSuites[] = {
    {{0}, 0},
    {{kCipherAes, 0}, kModeCipherByCipher},
    {{kCipherSerpent, 0}, kModeCipherByCipher},
    {{kCipherTwofish, 0}, kModeCipherByCipher},
    {{kCipherMars, 0}, kModeCipherByCipher},
    {{kCipherBlowfish, 0}, kModeCipherByCipher},
    {{kCipherCast5, 0}, kModeCipherByCipher},
    {{kCipherCast6, 0}, kModeCipherByCipher},
    {{kCipherRc5, 0}, kModeCipherByCipher},
    {{kCipherRc6, 0}, kModeCipherByCipher},
    {{0}, 0},
    {{0}, 0},
    {{0}, 0},
    {{kCipherBlowfish, kCipherAes, 0}, kModeCipherByCipherAlso},
    {{kCipherSerpent, kCipherBlowfish, kCipherAes, 0}, kModeCipherByCipherAlso},
    {{kCipherTwofish, kCipherAes, 0}, kModeBlockByBlock},
    {{kCipherSerpent, kCipherTwofish, kCipherAes, 0}, kModeBlockByBlock},
    {{kCipherAes, kCipherSerpent, 0}, kModeBlockByBlock},
    {{kCipherAes, kCipherTwofish, kCipherSerpent, 0}, kModeBlockByBlock},
    {{kCipherSerpent, kCipherTwofish, 0}, kModeBlockByBlock},
};

const CipherInfo* FindCipher(std::uint32_t cipher) {
    for (const CipherInfo& row : kCiphers) {
        if (row.id == 0) {
            break;
        }
        if (row.id == cipher) {
            return &row;
        }
    }
    return nullptr;
}

// The cipher ids of a suite row, empty for an unknown suite.
std::span<const std::uint32_t> SuiteCiphers(std::uint32_t suite) {
    if (suite >= std::size(kSuites)) {
        return {};
    }
    const auto& ids = kSuites[suite].ciphers;
    const auto end = std::find(ids.begin(), ids.end(), 0u);
    return std::span(ids.begin(), end);
}

template <typename Column>
std::uint32_t SumOverSuite(std::uint32_t suite, Column column) {
    std::uint32_t sum = 0;
    for (const std::uint32_t cipher : SuiteCiphers(suite)) {
        sum += column(cipher);
    }
    return sum;
}

// What a cipher really writes: its table space, or more where its schedule is larger (RC6).
std::size_t ScheduleExtent(const CipherInfo& info, const BlockCipherOps& ops) {
    return std::max<std::size_t>(info.scheduleSize, ops.scheduleSpace);
}

template <typename Transform>
void TransformBlocks(std::uint32_t cipher, std::span<std::uint8_t> blocks,
                     std::span<const std::uint8_t> schedule, Transform transform) {
    const CipherInfo* info = FindCipher(cipher);
    if (info == nullptr) {
        return;
    }
    const BlockCipherOps& ops = *detail::FindCipherOps(cipher);
    if (schedule.size() < ScheduleExtent(*info, ops)) {
        return;
    }
    transform(ops, schedule.data(), blocks.data(), blocks.size() / info->blockSize);
}

}  // namespace

std::span<const CipherInfo> CipherTable() {
    return kCiphers;
}

std::span<const SuiteInfo> SuiteTable() {
    return kSuites;
}

std::uint32_t CipherBlockSize(std::uint32_t cipher) {
    const CipherInfo* info = FindCipher(cipher);
    return info != nullptr ? info->blockSize : 0;
}

std::uint32_t CipherKeySize(std::uint32_t cipher) {
    const CipherInfo* info = FindCipher(cipher);
    return info != nullptr ? info->keySize : 0;
}

std::uint32_t CipherScheduleSize(std::uint32_t cipher) {
    const CipherInfo* info = FindCipher(cipher);
    return info != nullptr ? info->scheduleSize : 0;
}

std::uint32_t SuiteKeySize(std::uint32_t suite) {
    return SumOverSuite(suite, CipherKeySize);
}

std::uint32_t SuiteScheduleSize(std::uint32_t suite) {
    return SumOverSuite(suite, CipherScheduleSize);
}

std::uint32_t SuiteMaxKeySize() {
    std::uint32_t largest = 0;
    for (std::uint32_t suite = 1; !SuiteCiphers(suite).empty(); ++suite) {
        largest = std::max(largest, SuiteKeySize(suite));
    }
    return largest;
}

std::uint32_t SuiteLastCipher(std::uint32_t suite) {
    const auto ciphers = SuiteCiphers(suite);
    return ciphers.empty() ? 0 : ciphers.back();
}

std::uint32_t SuiteBlockSize(std::uint32_t suite) {
    const auto ciphers = SuiteCiphers(suite);
    return ciphers.empty() ? 0 : CipherBlockSize(ciphers.front());
}

bool CipherInit(std::uint32_t cipher, std::span<const std::uint8_t> key,
                std::span<std::uint8_t> schedule) {
    const CipherInfo* info = FindCipher(cipher);
    if (info == nullptr) {
        return false;
    }
    const BlockCipherOps& ops = *detail::FindCipherOps(cipher);
    if (key.size() < info->keySize || schedule.size() < ScheduleExtent(*info, ops)) {
        return false;
    }
    ops.init(key.data(), schedule.data());
    return true;
}

bool SuiteInit(std::uint32_t suite, std::span<const std::uint8_t> key,
               std::span<std::uint8_t> schedule) {
    if (SuiteCiphers(suite).empty() || key.size() < SuiteKeySize(suite) ||
        !detail::ResolveSuite(suite, schedule)) {
        return false;
    }
    for (const std::uint32_t cipher : SuiteCiphers(suite)) {
        if (!CipherInit(cipher, key, schedule)) {
            return false;
        }
        key = key.subspan(CipherKeySize(cipher));
        schedule = schedule.subspan(CipherScheduleSize(cipher));
    }
    return true;
}

void CipherEncryptBlocks(std::uint32_t cipher, std::span<std::uint8_t> blocks,
                         std::span<const std::uint8_t> schedule) {
    TransformBlocks(cipher, blocks, schedule,
                    [](const BlockCipherOps& ops, const std::uint8_t* keys, std::uint8_t* data,
                       std::size_t count) { ops.encrypt(keys, data, count); });
}

void CipherDecryptBlocks(std::uint32_t cipher, std::span<std::uint8_t> blocks,
                         std::span<const std::uint8_t> schedule) {
    TransformBlocks(cipher, blocks, schedule,
                    [](const BlockCipherOps& ops, const std::uint8_t* keys, std::uint8_t* data,
                       std::size_t count) { ops.decrypt(keys, data, count); });
}

void CipherEncryptBlock(std::uint32_t cipher, std::span<std::uint8_t> block,
                        std::span<const std::uint8_t> schedule) {
    CipherEncryptBlocks(cipher,
                        block.first(std::min<std::size_t>(block.size(), CipherBlockSize(cipher))),
                        schedule);
}

void CipherDecryptBlock(std::uint32_t cipher, std::span<std::uint8_t> block,
                        std::span<const std::uint8_t> schedule) {
    CipherDecryptBlocks(cipher,
                        block.first(std::min<std::size_t>(block.size(), CipherBlockSize(cipher))),
                        schedule);
}

namespace detail {

const BlockCipherOps* FindCipherOps(std::uint32_t cipher) {
    if (cipher == 0 || cipher > std::size(kCipherOps)) {
        return nullptr;
    }
    return kCipherOps[cipher - 1];
}

std::optional<ResolvedSuite> ResolveSuite(std::uint32_t suite,
                                          std::span<const std::uint8_t> schedule) {
    const auto ciphers = SuiteCiphers(suite);
    if (ciphers.empty()) {
        return std::nullopt;
    }
    ResolvedSuite resolved{};
    resolved.mode = kSuites[suite].mode;
    std::size_t offset = 0;
    for (const std::uint32_t cipher : ciphers) {
        const CipherInfo& info = *FindCipher(cipher);
        const BlockCipherOps& ops = *FindCipherOps(cipher);
        if (offset + ScheduleExtent(info, ops) > schedule.size()) {
            return std::nullopt;
        }
        resolved.ciphers[resolved.count++] = {&ops, schedule.data() + offset, info.blockSize};
        offset += info.scheduleSize;
    }
    return resolved;
}

}  // namespace detail
}  // namespace crypto
