// The maker's firmware: its answers to request records, however they reach it.
#pragma once

#include "machine/model/Machine.h"

#include <cstdint>
#include <string>

namespace StandIn {

// Gives a machine what its firmware publishes: the ACPI tables and the communication buffer of the SMI kind.
void FirmwarePrepare(Machine* machine);

// A write to an I/O port. On the SMI's port it is a system management interrupt: the firmware answers what stands in
// its communication buffer.
void PortWrite(std::uint16_t port, std::uint8_t value);

// The firmware's own variables. The name is that of the vendor's variable; the result is an error number, and
// VendorVariableUnknown for a name that isn't the firmware's.
constexpr std::uint32_t VendorVariableUnknown = 0xFFFFFFFF;
std::uint32_t VendorVariableRead(const std::u16string& name, Bytes* data);
std::uint32_t VendorVariableWrite(const std::u16string& name, const Bytes& data);

// Whether a session is open.
bool FirmwareSessionOpen();

// Ends whatever goes on.
void FirmwareForget();

} // namespace StandIn
