// The buffers that firmware requests travel in. They are the platform's, because it decides what memory the firmware
// reaches: here a buffer that the helper driver allocates.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

constexpr std::uint32_t Flash4kSize = 0x1000;

// A buffer of this process, and the physical address of the driver's own buffer that goes with it; 0 when none does.
struct Flash4kBuffer {
    std::unique_ptr<std::uint8_t[]> Local;
    std::uint32_t Size = 0;
    std::uint32_t PhysicalAddress = 0;
};

// Allocates `size` zeroed bytes and, with `physical`, takes the driver's communication buffer. RyxErrorArgument:
// no out-parameter; RyxErrorMemory: no memory, or the driver gives no buffer; `buffer` is then empty.
RyxStatus Flash4kBufferAllocate(std::uint32_t size, bool physical, Flash4kBuffer* buffer);

// Gives back what the buffer holds, which is empty afterwards. RyxErrorArgument: no buffer; RyxErrorDriverRequest: the
// driver did not take its buffer back.
RyxStatus Flash4kBufferRelease(Flash4kBuffer* buffer);
