// The helper driver: its service, its control requests, and physical memory through it.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstddef>
#include <cstdint>

// Operations of DriverRequest.
constexpr std::uint32_t DriverLoad = 0;
constexpr std::uint32_t DriverUnload = 1;
constexpr std::uint32_t DriverControl = 2;

// Control codes of the helper driver that the library sends.
constexpr std::uint32_t DriverMemoryRead = 0x222182;     // in: u32 address; out: the bytes
constexpr std::uint32_t DriverMemoryWrite = 0x222186;    // in: u32 address; out: the bytes to write
constexpr std::uint32_t DriverBufferGet = 0x22218A;      // in: u32 size; out: u32 physical address
constexpr std::uint32_t DriverBufferRelease = 0x22218E;  // in: u32 size
constexpr std::uint32_t DriverPortWriteByte = 0x22219E;  // in: u16 port, u8 value, three zero bytes
constexpr std::uint32_t DriverRsdtLocate = 0x2221AA;     // out: u32 physical address
constexpr std::uint32_t DriverVersionRead = 0x2221B0;    // out: u16 version word
constexpr std::uint32_t DriverRsdtLocateNear = 0x2221C2; // in: u32 address; out: u32 physical address

// Loads the driver (RyxErrorDriverLoad), unloads it (RyxErrorDriverUnload), or sends one control request
// (RyxErrorDriverRequest); any other operation gives RyxErrorUnsupported. A load that fails takes back
// what it made: the service when it came to installing it, the driver file and the count when it wrote them. Only a
// control request uses the other arguments; lengths are in bytes, and a length of 0 goes with a null buffer.
RyxStatus DriverRequest(std::uint32_t operation, std::uint32_t code = 0, const void* input = nullptr,
                        std::uint32_t inputLength = 0, void* output = nullptr, std::uint32_t outputLength = 0);

// Reads `length` bytes of physical memory. RyxErrorArgument: no buffer or a length of 0; RyxErrorPhysicalMemory.
RyxStatus PhysicalMemoryRead(std::uint32_t address, std::uint32_t length, void* buffer);

// Writes `length` bytes to physical memory. Statuses as for PhysicalMemoryRead.
RyxStatus PhysicalMemoryWrite(std::uint32_t address, std::uint32_t length, const void* buffer);

// Reads the driver's version word. RyxErrorArgument: no out-parameter; RyxErrorDriverRequest.
RyxStatus DriverVersionGet(std::uint16_t* version);

// True when the last load found this 32-bit process under a 64-bit system.
bool DriverSystemIs64Bit();

// Forgets the loaded driver without touching it: for tests, which replace the machine under the library.
void DriverStateReset();
