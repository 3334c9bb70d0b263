#include "archive/detail/ChunkCodecStored.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

#include "Common/Common/Endian.h"

namespace {

// Shorter pieces are deflated without asking: the guess would cost more than it saves. Longer
// ones too, which no suite makes: the table of counts below stops there.
constexpr std::size_t kMinGuessed = 256;
constexpr std::size_t kMaxGuessed = 4096;
// Bits per byte below which the byte frequencies alone would let deflate save a few percent.
constexpr double kStoredEntropy = 7.8;
// Repeated four-byte strings above which matches would save something.
constexpr int kMaxRepeats = 1;
constexpr unsigned kHashBits = 11;

constexpr std::size_t kMaxStoredBlock = 65535;
constexpr std::uint8_t kZlibHeader[2] = {0x78, 0x01};  // deflate, 32 KiB window, check bits
constexpr std::size_t kBlockHeaderSize = 5;
constexpr std::size_t kChecksumSize = 4;

// count · log2(count) for every count a guessed piece can have.
const std::array<float, kMaxGuessed + 1>& CountLogCount() {
    static const auto table = [] {
        std::array<float, kMaxGuessed + 1> values{};
        for (std::size_t count = 2; count <= kMaxGuessed; ++count) {
            values[count] = static_cast<float>(count * std::log2(static_cast<double>(count)));
        }
        return values;
    }();
    return table;
}

// Shannon entropy of the byte values in bits per byte; four histograms so that runs of one value
// do not wait on their own counts.
double ByteEntropy(std::span<const std::uint8_t> piece) {
    std::array<std::array<std::uint16_t, 256>, 4> counts{};
    std::size_t i = 0;
    for (; i + 4 <= piece.size(); i += 4) {
        ++counts[0][piece[i]];
        ++counts[1][piece[i + 1]];
        ++counts[2][piece[i + 2]];
        ++counts[3][piece[i + 3]];
    }
    for (; i < piece.size(); ++i) {
        ++counts[0][piece[i]];
    }
    const auto& countLogCount = CountLogCount();
    double sum = 0;
    for (std::size_t value = 0; value < 256; ++value) {
        sum += countLogCount[counts[0][value] + counts[1][value] + counts[2][value] +
                             counts[3][value]];
    }
    const double total = static_cast<double>(piece.size());
    return std::log2(total) - sum / total;
}

// Whether some four-byte strings occur twice: each is looked for where an earlier one with the
// same hash was kept. A string of four zero bytes counts as seen; that only costs a deflate.
bool HasRepeats(std::span<const std::uint8_t> piece) {
    std::array<std::uint32_t, 1u << kHashBits> seen{};
    int repeats = 0;
    for (std::size_t i = 0; i + 4 <= piece.size(); ++i) {
        const auto word = Zelmarik::LoadLittle<std::uint32_t>(piece.data() + i);
        std::uint32_t& slot = seen[(word * 2654435761u) >> (32 - kHashBits)];
        if (slot == word && ++repeats > kMaxRepeats) {
            return true;
        }
        slot = word;
    }
    return false;
}

}  // namespace

bool LooksIncompressible(std::span<const std::uint8_t> piece) {
    if (piece.size() < kMinGuessed || piece.size() > kMaxGuessed) {
        return false;
    }
    return ByteEntropy(piece) >= kStoredEntropy && !HasRepeats(piece);
}

bool WriteStoredStream(std::span<const std::uint8_t> piece, std::span<std::uint8_t> out,
                       std::size_t& produced) {
    produced = 0;
    const std::size_t blocks =
        std::max<std::size_t>(1, (piece.size() + kMaxStoredBlock - 1) / kMaxStoredBlock);
    const std::size_t length =
        sizeof(kZlibHeader) + blocks * kBlockHeaderSize + piece.size() + kChecksumSize;
    if (out.size() < length || piece.size() > std::numeric_limits<uInt>::max()) {
        return false;
    }
    std::uint8_t* p = std::copy(std::begin(kZlibHeader), std::end(kZlibHeader), out.data());
    std::span<const std::uint8_t> rest = piece;
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::size_t take = std::min(rest.size(), kMaxStoredBlock);
        *p++ = static_cast<std::uint8_t>(block + 1 == blocks ? 1 : 0);  // final flag, type 0
        Zelmarik::StoreLittle<std::uint16_t>(p, static_cast<std::uint16_t>(take));
        Zelmarik::StoreLittle<std::uint16_t>(p + 2, static_cast<std::uint16_t>(~take));
        p = std::copy_n(rest.data(), take, p + 4);
        rest = rest.subspan(take);
    }
    const uLong checksum =
        adler32(adler32(0, nullptr, 0), piece.data(), static_cast<uInt>(piece.size()));
    Zelmarik::StoreBig<std::uint32_t>(p, static_cast<std::uint32_t>(checksum));
    produced = length;
    return true;
}
