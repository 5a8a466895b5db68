// The SHA-1 digest.
#pragma once

#include "Lib/RyxStatus.h"

#include <array>
#include <cstddef>
#include <cstdint>

using QelSha1Digest = std::array<std::uint8_t, 20>;

// Computes the SHA-1 digest of `size` bytes. RyxErrorArgument: no out-parameter, or no data with a size above 0.
RyxStatus QelSha1(const void* data, std::size_t size, QelSha1Digest* digest);
