// The SHA-1 digest.
#include "Lib/Common/QelCrypto.h"

#include <bit>
#include <cstring>

namespace {

constexpr std::size_t BlockSize = 64;
constexpr std::size_t LengthOffset = BlockSize - 8;

using Chain = std::array<std::uint32_t, 5>;

std::uint32_t WordAt(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U | std::uint32_t{bytes[2]} << 8U | bytes[3];
}

void BlockDigest(Chain& chain, const std::uint8_t* block) {
    std::uint32_t schedule[80];
    for (std::size_t t = 0; t < 16; ++t) {
        schedule[t] = WordAt(block + 4 * t);
    }
    for (std::size_t t = 16; t < 80; ++t) {
        schedule[t] = std::rotl(schedule[t - 3] ^ schedule[t - 8] ^ schedule[t - 14] ^ schedule[t - 16], 1);
    }
    std::uint32_t a = chain[0];
    std::uint32_t b = chain[1];
    std::uint32_t c = chain[2];
    std::uint32_t d = chain[3];
    std::uint32_t e = chain[4];
    const auto round = [&](std::uint32_t mixed, std::size_t t) {
        const std::uint32_t next = std::rotl(a, 5) + mixed + e + schedule[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    };
    for (std::size_t t = 0; t < 20; ++t) {
        round((d ^ (b & (c ^ d))) + 0x5A827999, t);
    }
    for (std::size_t t = 20; t < 40; ++t) {
        round((b ^ c ^ d) + 0x6ED9EBA1, t);
    }
    for (std::size_t t = 40; t < 60; ++t) {
        round(((b & c) | (d & (b | c))) + 0x8F1BBCDC, t);
    }
    for (std::size_t t = 60; t < 80; ++t) {
        round((b ^ c ^ d) + 0xCA62C1D6, t);
    }
    chain[0] += a;
    chain[1] += b;
    chain[2] += c;
    chain[3] += d;
    chain[4] += e;
}

} // namespace

RyxStatus QelSha1(const void* data, std::size_t size, QelSha1Digest* digest) {
    if (digest == nullptr || (data == nullptr && size != 0)) {
        return RyxErrorArgument;
    }
    Chain chain{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::size_t left = size;
    for (; left >= BlockSize; left -= BlockSize, bytes += BlockSize) {
        BlockDigest(chain, bytes);
    }
    // The message's end: the bytes left, a one bit, zeros, and the length in bits as the last eight bytes of a block.
    std::uint8_t tail[2 * BlockSize]{};
    if (left != 0) {
        std::memcpy(tail, bytes, left);
    }
    tail[left] = 0x80;
    const std::size_t blocks = left < LengthOffset ? 1 : 2;
    const std::uint64_t bits = std::uint64_t{size} * 8;
    for (std::size_t i = 0; i < 8; ++i) {
        tail[blocks * BlockSize - 1 - i] = static_cast<std::uint8_t>(bits >> (8 * i));
    }
    for (std::size_t i = 0; i < blocks; ++i) {
        BlockDigest(chain, tail + i * BlockSize);
    }
    for (std::size_t i = 0; i < digest->size(); ++i) {
        (*digest)[i] = static_cast<std::uint8_t>(chain[i / 4] >> (24 - 8 * (i % 4)));
    }
    return RyxOk;
}
