// Reading values: every value that the viewer shows comes through these helpers.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <span>
#include <string_view>

// What was read: the bytes as SMBIOS stores them, and the first eight of them as a little-endian number.
struct FieldValue {
    std::span<const std::uint8_t> Bytes;
    std::uint64_t Number = 0;
};

// Each gives a value whose bytes stay valid until the end of the viewer's run. RyxErrorUnsupported: the library could
// not give the value; RyxErrorObject: no structure of that instance; RyxErrorMemory: no memory to keep the value.
RyxStatus EpsFieldRead(std::uint32_t field, FieldValue* value);
RyxStatus StructFieldRead(std::uint32_t field, std::uint32_t instance, FieldValue* value);

// The bytes of a structure from an offset to the end of its formatted area.
RyxStatus StructAreaRead(std::uint8_t type, std::uint32_t instance, std::uint8_t offset, FieldValue* value);

// The strings of a structure's set, each with its NUL.
RyxStatus StructStringsRead(std::uint8_t type, std::uint32_t instance, FieldValue* value);

// A text in the latest value: bytes of it up to a NUL or their end; empty when there is none. Where a console shows it,
// a dot stands for every control character.
std::string_view TextOf(std::span<const std::uint8_t> bytes);

// How a listing shows a text.
std::string_view TextShown(std::string_view text);

// A string of those that StructStringsRead gave last, by its number; empty for one that the set does not hold.
std::string_view StringOf(const FieldValue& strings, std::uint32_t number);

// The text of a string field, whole and, unless it is empty, terminated; empty for an absent string too. It stays valid
// as bytes do. Where a console shows it, a dot stands for every control character.
RyxStatus StructStringRead(std::uint32_t field, std::uint32_t instance, std::string_view* text);

// The SMBIOS version from the entry point; an out-parameter keeps its value when its field can't be read.
RyxStatus SmbiosVersionGet(std::uint8_t* major, std::uint8_t* minor);

// Prints a text without conversions as a format of its own.
void FixedPrint(const char* text);
