// What targets share with the seeds that fit them: where the root table target puts its tables, and bits of inputs.
#pragma once

#include <cstdint>

constexpr std::uint32_t TablesBase = 0x7F7E0000;
constexpr std::uint32_t RootPointerPlace = 0xFE000;

// The ways to the root table, as bits of an input's first byte.
constexpr std::uint8_t WayRegistry = 1;
constexpr std::uint8_t WayMakerTable = 2;
constexpr std::uint8_t WaySegment = 4;
constexpr std::uint8_t WayFadt = 8;
constexpr std::uint8_t WayAllMemory = 0xF0; // Windows manages no memory, so that searches go through much of it

// The ways to and through a structure table, as bits of an input's second byte: what takes long needs several at once.
constexpr std::uint8_t WayService = 0x07;      // the firmware table service gives the table, not memory
constexpr std::uint8_t WayEmptySegment = 0x3F; // so it does, and no entry point ends the search through the segment
constexpr std::uint8_t WayWhole = 0x40;        // no limit hides structures
constexpr std::uint8_t WayConsole = 0x80;      // the output is a console

// From this value on, an input's first byte asks for the output for programs; what is above it is the version.
constexpr std::uint8_t ForPrograms = 200;

// From these values on, an input's third byte asks for every row of the types in the table, one by one, and for the
// decoders of all types, not of those in the table only.
constexpr std::uint8_t EveryRow = 0xF0;
constexpr std::uint8_t EveryType = 0xF8;
