// SMBIOS entry points, and the tables that they lead to.
#pragma once

#include "machine/model/Machine.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace StandIn {

constexpr std::size_t LegacyEntrySize = 31;

// What an entry point of either kind says.
struct EntryPoint {
    bool Legacy;
    std::uint8_t Major;
    std::uint8_t Minor;
    std::uint8_t Revision;
    std::uint64_t TableAddress;
    std::uint32_t TableLength;
};

bool BeginsWith(const Bytes& bytes, std::string_view anchor);

// Reads an entry point; none with `error` set when it is neither kind or is cut short.
std::optional<EntryPoint> EntryPointParse(const Bytes& bytes, std::string* error);

// Puts an entry point and its structure table into a machine: into memory for "_SM_", and as the firmware table
// service's answer for both kinds. False with `error` set when the entry point can't be read.
bool TablesInstall(Machine& machine, const Bytes& entryPoint, Bytes table, std::string* error);

} // namespace StandIn
