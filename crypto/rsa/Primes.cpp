#include "crypto/rsa/Primes.h"

#include <vector>

#include "Common/Common/Endian.h"
#include "crypto/rsa/Montgomery.h"
#include "platform/SystemRandom.h"

namespace Zelmarik::rsa {

namespace {

// Candidates tried from one random start before drawing a new one.
constexpr std::uint32_t kRunLength = 1u << 16;

// A random base in [2, n - 2] for an odd n of `bits` bits: below 2^(bits - 1).
bool RandomBase(Limb* a, std::size_t limbs, std::size_t bits) {
    do {
        if (!RandomLimbs(a, limbs)) {
            return false;
        }
        const std::size_t keep = bits - 1;
        for (std::size_t i = 0; i < limbs; ++i) {
            if (i * kLimbBits >= keep) {
                a[i] = 0;
            } else if ((i + 1) * kLimbBits > keep) {
                a[i] &= (Limb{1} << (keep - i * kLimbBits)) - 1;
            }
        }
    } while (SignificantLimbs(a, limbs) <= 1 && a[0] < 2);
    return true;
}

}  // namespace

const std::vector<std::uint32_t>& SmallPrimes() {
    static const std::vector<std::uint32_t> primes = [] {
        std::vector<bool> composite(kSieveBound);
        std::vector<std::uint32_t> found;
        for (std::uint32_t i = 3; i < kSieveBound; i += 2) {
            if (!composite[i]) {
                found.push_back(i);
                for (std::uint32_t k = i * i; k < kSieveBound; k += 2 * i) {
                    composite[k] = true;
                }
            }
        }
        return found;
    }();
    return primes;
}

bool RandomLimbs(Limb* limbs, std::size_t n) {
    std::vector<std::uint8_t, WipingAllocator<std::uint8_t>> bytes(n * sizeof(Limb));
    if (!platform::SystemRandom(bytes.data(), bytes.size())) {
        return false;
    }
    for (std::size_t i = 0; i < n; ++i) {
        limbs[i] = LoadLittle<Limb>(bytes.data() + i * sizeof(Limb));
    }
    return true;
}

bool IsProbablePrime(const Limb* n, std::size_t limbs, int rounds, bool& randomFailed) {
    randomFailed = false;
    // n - 1 = 2^s * d with d odd.
    Limbs nMinusOne(n, n + limbs), d(n, n + limbs);
    SubtractLimb(nMinusOne.data(), limbs, 1);
    SubtractLimb(d.data(), limbs, 1);
    std::size_t s = 0;
    while ((d[0] & 1) == 0) {
        ShiftRightOne(d.data(), limbs);
        ++s;
    }
    Montgomery montgomery(n, limbs);
    Limbs one(limbs), oneM(limbs), minusOneM(limbs), base(limbs), x(limbs);
    one[0] = 1;
    montgomery.ToMontgomery(oneM.data(), one.data());
    montgomery.ToMontgomery(minusOneM.data(), nMinusOne.data());
    const std::size_t bits = BitLength(n, limbs);
    for (int round = 0; round < rounds; ++round) {
        if (!RandomBase(base.data(), limbs, bits)) {
            randomFailed = true;
            return false;
        }
        montgomery.Power(x.data(), base.data(), d.data(), limbs);
        if (Equals(x.data(), limbs, 1) || Compare(x.data(), nMinusOne.data(), limbs) == 0) {
            continue;
        }
        montgomery.ToMontgomery(x.data(), x.data());
        bool witness = true;
        for (std::size_t i = 1; i < s && witness; ++i) {
            montgomery.Square(x.data(), x.data());
            if (Compare(x.data(), minusOneM.data(), limbs) == 0) {
                witness = false;
            } else if (Compare(x.data(), oneM.data(), limbs) == 0) {
                break;
            }
        }
        if (witness) {
            return false;
        }
    }
    return true;
}

bool RandomPrime(Limb* p, std::size_t bits, std::uint32_t e) {
    const std::size_t limbs = bits / kLimbBits;
    const std::vector<std::uint32_t>& primes = SmallPrimes();
    std::vector<std::uint32_t> residues(primes.size());
    for (;;) {
        if (!RandomLimbs(p, limbs)) {
            return false;
        }
        p[limbs - 1] |= Limb{3} << (kLimbBits - 2);
        p[0] |= 1;
        for (std::size_t i = 0; i < primes.size(); ++i) {
            residues[i] = RemainderSmall(p, limbs, primes[i]);
        }
        const std::uint32_t residueE = RemainderSmall(p, limbs, e);
        // Walk p, p + 2, p + 4, ... as long as the top two bits stay.
        for (std::uint32_t delta = 0; delta < kRunLength; delta += 2) {
            bool divisible = (residueE + delta) % e == 1;
            for (std::size_t i = 0; i < primes.size() && !divisible; ++i) {
                divisible = (residues[i] + delta) % primes[i] == 0;
            }
            if (divisible) {
                continue;
            }
            Limbs candidate(p, p + limbs);
            if (AddLimb(candidate.data(), limbs, delta) != 0 ||
                (candidate[limbs - 1] >> (kLimbBits - 2)) != 3) {
                break;
            }
            bool randomFailed = false;
            // One round throws out nearly every composite before the full count is spent.
            if (IsProbablePrime(candidate.data(), limbs, 1, randomFailed) &&
                IsProbablePrime(candidate.data(), limbs, kMillerRabinRounds - 1, randomFailed)) {
                Copy(p, candidate.data(), limbs);
                return true;
            }
            if (randomFailed) {
                return false;
            }
        }
    }
}

}  // namespace Zelmarik::rsa
