// The stand-in's numbers of 64 bits, which programs and drivers know by the same name.
#pragma once

#include <cstdint>

typedef union _LARGE_INTEGER {
    struct {
        std::uint32_t LowPart;
        std::int32_t HighPart;
    } u;
    long long QuadPart;
} LARGE_INTEGER, *PLARGE_INTEGER;
