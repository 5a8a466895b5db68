// Numbers as tables, records and answers hold them: the least significant byte first, as every processor that this is
// built for does.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

static_assert(std::endian::native == std::endian::little);

// The number of that type; the bytes need no alignment.
template <typename Number> Number LittleEndianRead(const void* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

// The number in `size` bytes, of which no more than the first eight count; 0 for none, whatever `bytes` is.
inline std::uint64_t LittleEndianRead(const void* bytes, std::size_t size) {
    const auto* const from = static_cast<const std::uint8_t*>(bytes);
    std::uint64_t number = 0;
    for (std::size_t i = std::min(size, sizeof number); i-- > 0;) {
        number = number << 8U | from[i];
    }
    return number;
}
