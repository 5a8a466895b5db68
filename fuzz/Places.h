// Where the root table target puts its tables, shared with the seeds that fit them.
#pragma once

#include <cstdint>

constexpr std::uint32_t TablesBase = 0x7F7E0000;
constexpr std::uint32_t RootPointerPlace = 0xFE000;

// The ways to the root table, as bits of an input's first byte.
constexpr std::uint8_t WayRegistry = 1;
constexpr std::uint8_t WayMakerTable = 2;
constexpr std::uint8_t WaySegment = 4;
constexpr std::uint8_t WayFadt = 8;
