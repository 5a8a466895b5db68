// The buffers that firmware requests travel in.
#include "Lib/Platform/Flash4kBufferAllocate.h"

#include "Lib/Platform/Driver.h"

#include <new>

RyxStatus Flash4kBufferAllocate(std::uint32_t size, bool physical, Flash4kBuffer* buffer) {
    if (buffer == nullptr) {
        return RyxErrorArgument;
    }
    Flash4kBuffer made;
    made.Local.reset(new (std::nothrow) std::uint8_t[size]());
    made.Size = size;
    if (made.Local == nullptr) {
        return RyxErrorMemory;
    }
    if (physical) {
        const std::uint32_t wanted = Flash4kSize;
        if (!DriverDeviceControl(DriverBufferGet, &wanted, sizeof wanted, &made.PhysicalAddress,
                                 sizeof made.PhysicalAddress) ||
            made.PhysicalAddress == 0) {
            return RyxErrorMemory;
        }
    }
    *buffer = std::move(made);
    return RyxOk;
}

RyxStatus Flash4kBufferRelease(Flash4kBuffer* buffer) {
    if (buffer == nullptr) {
        return RyxErrorArgument;
    }
    const bool physical = buffer->PhysicalAddress != 0;
    *buffer = Flash4kBuffer{};
    const std::uint32_t size = Flash4kSize;
    return !physical || DriverDeviceControl(DriverBufferRelease, &size, sizeof size) ? RyxOk : RyxErrorDriverRequest;
}
