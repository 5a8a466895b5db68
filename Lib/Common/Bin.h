// RyxBin: the library's value container.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// One value: Size bytes at Data (null when Size is 0). Borrowed is non-zero when Data belongs to someone else and must
// outlive the container.
struct RyxBin {
    std::uint32_t Size;
    std::uint8_t* Data;
    std::uint32_t Borrowed;
};

// Makes a container of a copy of `size` bytes (zeroed ones when `bytes` is null); unlike RyxBinCreate it also makes an
// empty one. The caller owns it. RyxErrorArgument: no out-parameter; RyxErrorMemory: no memory, nothing allocated.
RyxStatus RyxBinMake(const void* bytes, std::uint32_t size, RyxBin** bin);

// Releases a container, and its data unless borrowed. RyxErrorObject: no container.
RyxStatus RyxBinFree(RyxBin* bin);

// Owns a container for the length of a scope.
struct RyxBinRelease {
    void operator()(RyxBin* bin) const { RyxBinFree(bin); }
};
using RyxBinOwner = std::unique_ptr<RyxBin, RyxBinRelease>;
