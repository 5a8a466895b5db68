// Values: the container RyxBin, how tools make one and look into it.
#pragma once

#include "Lib/Common/Bin.h"

// Makes a container of `size` zeroed bytes (only the low 32 bits of the size count). The caller owns it and releases it
// with RyxBinFree. RyxErrorArgument: no out-parameter, or a size of 0; RyxErrorMemory: no memory, nothing allocated.
RyxStatus RyxBinCreate(std::uint64_t size, RyxBin** bin);

// Gives the container's data (null when empty) and its size in bytes. The data stays the container's.
// RyxErrorObject: no container; RyxErrorArgument: a missing out-parameter.
RyxStatus RyxBinInfoGet(const RyxBin* bin, std::uint8_t** data, std::uint64_t* size);
