#pragma once
// Sealing the master key area of a new archive in its key block: under a key derived from the
// password, and under the recipient's RSA public key or random filler.

#include <cstdint>
#include <span>

#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyContext.h"

// Results of SealKeyBlock besides kKeyBlockOpened (0) and kKeyBlockNoMemory.
inline constexpr int kKeyBlockNoRandom = 1;
inline constexpr int kKeyBlockSealFailed = 4;

// Fills `keyBlock` with a new sealed key block: a random salt and master key area, the password
// slot encrypted with the key derived from `password` (its bytes, without terminator), and the
// RSA slot sealed for `modulus` (kRsaNumberWords words, least significant first), or random
// when it is null or all zero. The random pool must run. On success `context` holds the keys of
// the master key area; on failure it is empty and `keyBlock` is zero.
int SealKeyBlock(std::span<std::uint8_t, dcf::kKeyBlockSize> keyBlock,
                 std::span<const std::uint8_t> password, const std::uint32_t* modulus,
                 KeyContextPtr& context);

// The local wall clock as the ticks of a FILETIME: 100 ns since 1601, not converted to UTC.
std::uint64_t LocalFileTime();
