// The two tables indexed by structure type, the decoder of a type and the name that its structures are shown under, and
// what can be selected of a type.
#pragma once

#include "viewer/Decoders.h"

#include <array>

// The decoder of each type; null for a type that has none.
extern const std::array<const StructDecoder*, 128> StructDecoderTable;

// The display name of each type; empty for a type without a decoder.
extern const std::array<const char*, 128> StructTypeNameTable;

// RyxOk when the viewer accepts the selection of a type, an instance (0: every one) and a field (0: every one),
// RyxErrorUnsupported when not.
RyxStatus SelectionCheck(std::uint64_t type, std::uint64_t instance, std::uint64_t field);
