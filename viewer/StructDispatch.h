// The two tables indexed by structure type, the decoder of a type and the name that its structures are shown under, and
// what can be selected of a type.
#pragma once

#include "viewer/Decoders.h"

#include <array>

// The decoder of each type.
extern const std::array<const StructDecoder*, 256> StructDecoderTable;

// The display name of each type; that of a type that no decoder knows lacks its number.
extern const std::array<const char*, 256> StructTypeNameTable;

// The decoder of a type, where the user can see the type; null for newer and other types unless the whole table is
// wanted.
const StructDecoder* StructDecoderFind(std::uint64_t type);

// The instances that can be asked for, from 1 on, and the end of those that a listing shows, itself excluded.
std::uint64_t InstanceLimit();
std::uint64_t InstanceEndAll();

// The structures of a table that no selection shows unless the whole table is wanted, and all of them. None of either
// when the table can't be read.
struct StructCounts {
    std::uint32_t Hidden;
    std::uint32_t All;
};
StructCounts StructuresCount();

// RyxOk when the viewer accepts the selection of a type, an instance (0: every one) and a field (0: every one),
// RyxErrorUnsupported when not.
RyxStatus SelectionCheck(std::uint64_t type, std::uint64_t instance, std::uint64_t field);
