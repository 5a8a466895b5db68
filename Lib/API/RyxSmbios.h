// SMBIOS values: fields of the entry point structure and of the structures in the table.
#pragma once

#include "Lib/API/RyxBin.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/RyxNumbers.h"

#include <array>
#include <cstdint>

// Gives the value of a field as a new container that the caller owns; a string value ends in its NUL. Instances count
// from 1. No such instance: RyxOk and `bin` untouched. Every call takes a fresh copy of the table. A row number past
// the type's last row addresses a row of a type that follows. RyxErrorUnsupported: the field is not in this structure;
// RyxErrorArgument: the type has no rows, none stands there, or no out-parameter; RyxErrorNotFound, RyxErrorBuffer,
// RyxErrorTableRead: no table; RyxErrorMemory. When the whole table is wanted, every type has rows, newer ones follow a
// type's own, and a number behind them is RyxErrorArgument.
RyxStatus RyxSmbiosDataGet(std::uint32_t field, std::uint32_t instance, RyxBin** bin);

// Tells whether the user wants the whole table (see RyxLibInit): then every structure counts, whatever its handle and
// place, the lengths of structures decide which fields they have, and a tool has to show every structure of a type,
// also where it shows the first one otherwise. The walk ends at a structure whose length is below 4.
bool RyxSmbiosWholeGet();

// Whether the whole table counts where the environment does not say (see RyxLibInit).
void RyxSmbiosWholeDefaultSet(bool whole);

// Gives the bytes of a structure from `offset` to the end of its formatted area, never past the table, as a new
// container that the caller owns (empty when the table ends right at the offset). Instances, and the result without a
// match, are as for RyxSmbiosDataGet. RyxErrorUnsupported: the formatted area does not reach beyond the offset.
RyxStatus RyxSmbiosAreaGet(std::uint8_t type, std::uint32_t instance, std::uint8_t offset, RyxBin** bin);

// Gives the strings of a structure's set, each with its NUL, one behind the other as a new container that the caller
// owns; an empty one when there are none. Instances, and the result without a match, are as for RyxSmbiosDataGet.
RyxStatus RyxSmbiosStringsGet(std::uint8_t type, std::uint32_t instance, RyxBin** bin);

// Gives the number of structures of each type: of the whole table, and of these how many count when it is not wanted.
// Prints nothing. RyxErrorArgument: no out-parameter; RyxErrorNotFound, RyxErrorBuffer, RyxErrorTableRead: no table.
RyxStatus RyxSmbiosCountsGet(std::array<DmiTypeCount, 256>* counts);

// Gives an entry point field (0 to 13; any other number gives an empty value) as a new container that the caller owns.
// RyxErrorNotFound: no entry point; RyxErrorArgument: no out-parameter; RyxErrorMemory.
RyxStatus RyxSmbiosEpsDataGet(std::uint32_t field, RyxBin** bin);
