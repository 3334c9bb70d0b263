#pragma once
// The opened keys of one archive: a heap record pinned in memory from the moment the key block
// is opened (or sealed) until it is released, wiped before it is freed.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "archive/detail/DcfRecords.h"
#include "crypto/CipherSuite.h"

struct KeyContext {
    std::uint32_t SuiteId = 0;
    std::array<std::uint8_t, dcf::kIvAreaSize> IvArea{};
    std::array<std::uint8_t, crypto::kScheduleBlockSize> KeySchedule{};
    std::array<std::uint8_t, dcf::kMasterKeySize> MasterKeyArea{};
    std::array<std::uint8_t, dcf::kSaltSize> Salt{};
    std::uint32_t Iterations = 0;
    std::uint32_t PrfId = 0;
    std::uint64_t Created = 0;
};

// Wipes the whole record, unpins and frees it; a null context is ignored.
void ReleaseKeyContext(KeyContext* context);

struct KeyContextRelease {
    void operator()(KeyContext* context) const { ReleaseKeyContext(context); }
};
using KeyContextPtr = std::unique_ptr<KeyContext, KeyContextRelease>;

// A zeroed context on the heap, pinned as far as the system allows; null without memory.
KeyContextPtr AllocateKeyContext();

// Results of OpenKeyBlock.
inline constexpr int kKeyBlockOpened = 0;
inline constexpr int kKeyBlockNoMemory = 2;
inline constexpr int kKeyBlockRefused = 3;

// Opens a key block. With both primes (kRsaPrimeWords words each) and an empty password, by the
// RSA slot; else by the password, trying every suite up to the first empty row of the table.
// The CRC of the master key area decides in both cases. On success `context` holds the schedule
// and IV area of the master key area; on failure it stays empty.
int OpenKeyBlock(std::span<const std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                 std::span<const std::uint8_t> password, KeyContextPtr& context,
                 const std::uint32_t* prime1, const std::uint32_t* prime2);

// Sets IvArea from the first 32 bytes of `keyArea` and the schedule of `suite` from the rest.
// False for a suite the table can't initialise.
bool LoadKeys(KeyContext& context, std::uint32_t suite, std::span<const std::uint8_t> keyArea);

// The regions of an image, all from the same IV and whitening of the context.
bool EncryptRegion(const KeyContext& context, std::span<std::uint8_t> region);
bool DecryptRegion(const KeyContext& context, std::span<std::uint8_t> region);
