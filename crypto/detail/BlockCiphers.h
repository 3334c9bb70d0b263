#pragma once
// The block ciphers behind the cipher table. Each takes its key bytes and a schedule area of
// raw bytes; blocks are transformed in place, `count` whole blocks at a time.
//
// Schedule areas carry no alignment: words go in and out through ScheduleWords.h.

#include <cstddef>
#include <cstdint>

namespace crypto::detail {

using CipherInitFunction = void (*)(const std::uint8_t* key, std::uint8_t* schedule);
using CipherBlocksFunction = void (*)(const std::uint8_t* schedule, std::uint8_t* blocks,
                                      std::size_t count);

// The chunk chain's encryption of `count` blocks with this cipher alone, for a cipher that has a
// faster form than one call per block: `chain` (4 bytes) runs on, `whitening` holds 4 bytes.
// False, with nothing done, when no such form is in force.
using ChainEncryptFunction = bool (*)(const std::uint8_t* schedule, std::uint8_t* blocks,
                                      std::size_t count, std::uint8_t* chain,
                                      const std::uint8_t* whitening);
// Its decryption, the same way.
using ChainDecryptFunction = ChainEncryptFunction;

struct BlockCipherOps {
    CipherInitFunction init;
    CipherBlocksFunction encrypt;
    CipherBlocksFunction decrypt;
    // Bytes the schedule really occupies; RC6's 44 round keys run past its table entry.
    std::size_t scheduleSpace;
    ChainEncryptFunction chainEncrypt;  // null for most ciphers
    ChainDecryptFunction chainDecrypt;  // null for most ciphers
};

extern const BlockCipherOps kAesOps;
extern const BlockCipherOps kSerpentOps;
extern const BlockCipherOps kTwofishOps;
extern const BlockCipherOps kMarsOps;
extern const BlockCipherOps kBlowfishOps;
extern const BlockCipherOps kCast5Ops;
extern const BlockCipherOps kCast6Ops;
extern const BlockCipherOps kRc5Ops;
extern const BlockCipherOps kRc6Ops;

}  // namespace crypto::detail
