// Firmware environment variables.
#pragma once

#include <cstdint>

// Lets this process use firmware variables. False when the system refuses the privilege.
bool FirmwareVariablePrivilegeEnable();

// Whether the system reaches firmware variables at all: a read of no variable must fail for its address.
bool FirmwareVariablesAvailable();

// Reads a variable of a vendor GUID (in braces) into a buffer of `size` bytes; `length` receives the bytes that it
// holds. Names of up to 63 characters. False when the variable is missing, empty or larger than the buffer.
bool FirmwareVariableRead(const char16_t* name, const char16_t* guid, void* buffer, std::uint32_t size,
                          std::uint32_t* length);

// Writes a variable.
bool FirmwareVariableWrite(const char16_t* name, const char16_t* guid, const void* data, std::uint32_t size);
