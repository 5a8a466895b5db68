// The operating system's firmware table service, looked up at run time.
#pragma once

#include <cstdint>
#include <memory>

// Gets the SMBIOS structure table: a buffer of at least 64 KiB that holds the bare table followed by zeros, the table's
// size in bytes, the version (major x 10 + minor) and the DMI revision. False when an out-parameter, the service or the
// table is missing, when memory runs out, or when the answer's header claims more than the answer holds.
bool SmbiosFirmwareTableGet(std::unique_ptr<std::uint8_t[]>* table, std::uint32_t* size, std::uint8_t* version,
                            std::uint8_t* revision);

// Gets the ACPI table of a signature (four characters, as stored) into a buffer of `capacity` bytes. The result is what
// the service returns: the bytes given, a larger number when the buffer is too small, 0 for no such table or service.
std::uint32_t AcpiFirmwareTableGet(std::uint32_t signature, std::uint8_t* buffer, std::uint32_t capacity);
