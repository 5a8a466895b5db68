// The SHA-1 digest.
#include "Lib/Common/QelCrypto.h"

#include <bit>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace {

constexpr std::size_t BlockSize = 64;
constexpr std::size_t LengthOffset = BlockSize - 8;

using Chain = std::array<std::uint32_t, 5>;

std::uint32_t WordAt(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U | std::uint32_t{bytes[2]} << 8U | bytes[3];
}

// The part of a round that changes every 20 rounds: a constant, and three words mixed.
template <std::size_t T> std::uint32_t Mixed(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    if constexpr (T < 20) {
        return (d ^ (b & (c ^ d))) + 0x5A827999;
    } else if constexpr (T < 40) {
        return (b ^ c ^ d) + 0x6ED9EBA1;
    } else if constexpr (T < 60) {
        return ((b & c) | (d & (b | c))) + 0x8F1BBCDC;
    } else {
        return (b ^ c ^ d) + 0xCA62C1D6;
    }
}

// Round T. Instead of moving the five words on, each round takes them one place further.
template <std::size_t T>
[[gnu::always_inline]] inline void Round(Chain& words, std::uint32_t (&schedule)[16], const std::uint8_t* block) {
    std::uint32_t& word = schedule[T % 16];
    if constexpr (T < 16) {
        word = WordAt(block + 4 * T);
    } else {
        word = std::rotl(schedule[(T + 13) % 16] ^ schedule[(T + 8) % 16] ^ schedule[(T + 2) % 16] ^ word, 1);
    }
    constexpr auto place = [](std::size_t letter) { return (letter + 80 - T) % 5; };
    std::uint32_t& b = words[place(1)];
    words[place(4)] += std::rotl(words[place(0)], 5) + Mixed<T>(b, words[place(2)], words[place(3)]) + word;
    b = std::rotl(b, 30);
}

// All rounds are written out, so that every place is a constant: the digest of the program's own file is the dearest
// step of a start.
template <std::size_t... T>
void BlockDigest(Chain& chain, const std::uint8_t* block, std::index_sequence<T...> /*rounds*/) {
    std::uint32_t schedule[16]; // the last 16 words; each new one takes the place of the oldest
    Chain words = chain;
    (Round<T>(words, schedule, block), ...);
    for (std::size_t i = 0; i < chain.size(); ++i) {
        chain[i] += words[i];
    }
}

using BlocksDigest = void (*)(Chain& chain, const std::uint8_t* blocks, std::size_t count);

void BlocksDigestByWords(Chain& chain, const std::uint8_t* blocks, std::size_t count) {
    for (; count != 0; --count, blocks += BlockSize) {
        BlockDigest(chain, blocks, std::make_index_sequence<80>());
    }
}

#if defined(__x86_64__)

// The chain's first four words, the first one highest; the fifth one, highest in its place; and the schedule's last 16.
struct ShaState {
    __m128i Abcd;
    __m128i E;
    __m128i Schedule[4];
};

// Rounds 4 G to 4 G + 3.
template <int G>
[[gnu::target("sha,sse4.1"), gnu::always_inline]] inline void FourRounds(ShaState& state, const std::uint8_t* block) {
    __m128i& words = state.Schedule[G % 4];
    if constexpr (G < 4) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block) + G);
        words = _mm_shuffle_epi8(bytes, _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F));
    } else {
        const __m128i mixed = _mm_sha1msg1_epu32(words, state.Schedule[(G + 1) % 4]);
        words = _mm_sha1msg2_epu32(_mm_xor_si128(mixed, state.Schedule[(G + 2) % 4]), state.Schedule[(G + 3) % 4]);
    }
    // The fifth word is what the first one was four rounds ago, turned; before a block's first rounds it stands ready.
    const __m128i sum = G == 0 ? _mm_add_epi32(state.E, words) : _mm_sha1nexte_epu32(state.E, words);
    state.E = state.Abcd;
    state.Abcd = _mm_sha1rnds4_epu32(state.Abcd, sum, G / 5);
}

template <int... G>
[[gnu::target("sha,sse4.1")]] void BlocksDigestBySha(Chain& chain, const std::uint8_t* blocks, std::size_t count,
                                                     std::integer_sequence<int, G...> /*groups*/) {
    constexpr int reversed = 0x1B;
    auto* const place = reinterpret_cast<__m128i*>(chain.data());
    ShaState state{};
    state.Abcd = _mm_shuffle_epi32(_mm_loadu_si128(place), reversed);
    state.E = _mm_set_epi32(static_cast<int>(chain[4]), 0, 0, 0);
    for (; count != 0; --count, blocks += BlockSize) {
        const ShaState before = state;
        (FourRounds<G>(state, blocks), ...);
        state.Abcd = _mm_add_epi32(state.Abcd, before.Abcd);
        state.E = _mm_sha1nexte_epu32(state.E, before.E);
    }
    _mm_storeu_si128(place, _mm_shuffle_epi32(state.Abcd, reversed));
    chain[4] = static_cast<std::uint32_t>(_mm_extract_epi32(state.E, 3));
}

void BlocksDigestBySha(Chain& chain, const std::uint8_t* blocks, std::size_t count) {
    BlocksDigestBySha(chain, blocks, count, std::make_integer_sequence<int, 20>());
}

bool HasShaInstructions() {
    unsigned unused = 0;
    unsigned features = 0;
    unsigned wide = 0;
    return __get_cpuid_count(7, 0, &unused, &features, &unused, &unused) != 0 && (features & bit_SHA) != 0 &&
           __get_cpuid(1, &unused, &unused, &wide, &unused) != 0 && (wide & bit_SSE4_1) != 0;
}

BlocksDigest BlocksDigestFastest() {
    return HasShaInstructions() ? static_cast<BlocksDigest>(BlocksDigestBySha) : BlocksDigestByWords;
}

#else

BlocksDigest BlocksDigestFastest() {
    return BlocksDigestByWords;
}

#endif

} // namespace

RyxStatus QelSha1(const void* data, std::size_t size, QelSha1Digest* digest, bool byWords) {
    if (digest == nullptr || (data == nullptr && size != 0)) {
        return RyxErrorArgument;
    }
    const BlocksDigest blocksDigest = byWords ? BlocksDigestByWords : BlocksDigestFastest();
    Chain chain{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    const std::size_t left = size % BlockSize;
    blocksDigest(chain, bytes, size / BlockSize);
    // The message's end: the bytes left, a one bit, zeros, and the length in bits as the last eight bytes of a block.
    std::uint8_t tail[2 * BlockSize]{};
    if (left != 0) {
        std::memcpy(tail, bytes + size - left, left);
    }
    tail[left] = 0x80;
    const std::size_t blocks = left < LengthOffset ? 1 : 2;
    const std::uint64_t bits = std::uint64_t{size} * 8;
    for (std::size_t i = 0; i < 8; ++i) {
        tail[blocks * BlockSize - 1 - i] = static_cast<std::uint8_t>(bits >> (8 * i));
    }
    blocksDigest(chain, tail, blocks);
    for (std::size_t i = 0; i < digest->size(); ++i) {
        (*digest)[i] = static_cast<std::uint8_t>(chain[i / 4] >> (24 - 8 * (i % 4)));
    }
    return RyxOk;
}
