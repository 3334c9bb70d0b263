// SHA-1 with the SHA extensions: four rounds per instruction. The only file built with -msha.

#include <immintrin.h>

#include <utility>

#include "crypto/detail/Sha1Paths.h"

namespace crypto::detail {
namespace {

// One compression in registers. The message goes in as four groups of four words, each group
// reversed so that its first word is the highest lane; the schedule extends the ring of groups
// four rounds ahead of their use.
struct Sha1Lane {
    __m128i abcd;  // a in the highest lane
    __m128i e;     // e in the highest lane
    __m128i savedAbcd;
    __m128i savedE;
    __m128i previous;  // abcd before the last four rounds: the next group's e comes from it
    __m128i w[4];

    void Load(const std::uint32_t* state, const std::uint8_t* block) {
        const __m128i reverseBytes = _mm_set_epi64x(0x0001020304050607, 0x08090a0b0c0d0e0f);
        abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
        e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
        savedAbcd = abcd;
        savedE = e;
        for (int i = 0; i < 4; ++i) {
            w[i] = _mm_shuffle_epi8(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i)), reverseBytes);
        }
    }

    template <int Group>
    void Rounds() {
        if constexpr (Group >= 4) {
            w[Group % 4] = _mm_sha1msg2_epu32(
                _mm_xor_si128(_mm_sha1msg1_epu32(w[Group % 4], w[(Group + 1) % 4]),
                              w[(Group + 2) % 4]),
                w[(Group + 3) % 4]);
        }
        __m128i next;
        if constexpr (Group == 0) {
            next = _mm_add_epi32(e, w[0]);
        } else {
            next = _mm_sha1nexte_epu32(previous, w[Group % 4]);
        }
        previous = abcd;
        abcd = _mm_sha1rnds4_epu32(abcd, next, Group / 5);
    }

    void Store(std::uint32_t* state) {
        e = _mm_sha1nexte_epu32(previous, savedE);
        abcd = _mm_add_epi32(abcd, savedAbcd);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
        state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
    }
};

// Each group of rounds on every lane before the next group, so that the lanes interleave.
template <int Group, typename... Lanes>
void GroupOnEachLane(Lanes&... lanes) {
    (lanes.template Rounds<Group>(), ...);
}

template <typename... Lanes, int... Group>
void RunRounds(std::integer_sequence<int, Group...>, Lanes&... lanes) {
    (GroupOnEachLane<Group>(lanes...), ...);
}

}  // namespace

void Sha1CompressShaNi(std::uint32_t* state, const std::uint8_t* block) {
    Sha1Lane lane;
    lane.Load(state, block);
    RunRounds(std::make_integer_sequence<int, 20>(), lane);
    lane.Store(state);
}

void Sha1CompressPairShaNi(std::uint32_t* first, const std::uint8_t* firstBlock,
                           std::uint32_t* second, const std::uint8_t* secondBlock) {
    Sha1Lane one;
    Sha1Lane two;
    one.Load(first, firstBlock);
    two.Load(second, secondBlock);
    RunRounds(std::make_integer_sequence<int, 20>(), one, two);
    one.Store(first);
    two.Store(second);
}

}  // namespace crypto::detail
