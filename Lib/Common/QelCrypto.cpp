// The SHA-1 digest.
#include "Lib/Common/QelCrypto.h"

#include <bit>
#include <cstring>
#include <utility>

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

} // namespace

RyxStatus QelSha1(const void* data, std::size_t size, QelSha1Digest* digest) {
    if (digest == nullptr || (data == nullptr && size != 0)) {
        return RyxErrorArgument;
    }
    constexpr auto rounds = std::make_index_sequence<80>();
    Chain chain{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    const std::size_t left = size % BlockSize;
    for (std::size_t at = 0; at != size - left; at += BlockSize) {
        BlockDigest(chain, bytes + at, rounds);
    }
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
    for (std::size_t block = 0; block < blocks; ++block) {
        BlockDigest(chain, tail + block * BlockSize, rounds);
    }
    for (std::size_t i = 0; i < digest->size(); ++i) {
        (*digest)[i] = static_cast<std::uint8_t>(chain[i / 4] >> (24 - 8 * (i % 4)));
    }
    return RyxOk;
}
