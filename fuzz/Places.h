// Where the root table target puts its tables, shared with the seeds that fit them.
#pragma once

#include "Lib/Platform/StandIn/Machine.h"

#include <cstdint>
#include <cstring>

constexpr std::uint32_t TablesBase = 0x7F7E0000;
constexpr std::uint32_t RootPointerPlace = 0xFE000;

// The ways to the root table, as bits of an input's first byte.
constexpr std::uint8_t WayRegistry = 1;
constexpr std::uint8_t WayMakerTable = 2;
constexpr std::uint8_t WaySegment = 4;
constexpr std::uint8_t WayFadt = 8;

// A root pointer to an XSDT at TablesBase.
inline StandIn::Bytes RootPointerMake() {
    StandIn::Bytes pointer(36);
    const std::uint64_t xsdt = TablesBase;
    std::memcpy(pointer.data(), "RSD PTR ", 8);
    std::memcpy(pointer.data() + 24, &xsdt, sizeof xsdt);
    return pointer;
}
