// The helper driver as the system runs it: its image, its service, its device, and the requests that go there.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Control codes of the helper driver that the library sends.
constexpr std::uint32_t DriverMemoryRead = 0x222182;     // in: u32 address; out: the bytes
constexpr std::uint32_t DriverMemoryWrite = 0x222186;    // in: u32 address; out: the bytes to write
constexpr std::uint32_t DriverBufferGet = 0x22218A;      // in: u32 size; out: u32 physical address
constexpr std::uint32_t DriverBufferRelease = 0x22218E;  // in: u32 size
constexpr std::uint32_t DriverPortWriteByte = 0x22219E;  // in: u16 port, u8 value, three zero bytes
constexpr std::uint32_t DriverRsdtLocate = 0x2221AA;     // out: u32 physical address
constexpr std::uint32_t DriverVersionRead = 0x2221B0;    // out: u16 version word
constexpr std::uint32_t DriverRsdtLocateNear = 0x2221C2; // in: u32 address; out: u32 physical address

// The driver file that the program carries: the 64-bit or the 32-bit one. The bytes stay the program's. False when the
// program carries none.
bool DriverImageFind(bool bits64, const void** image, std::uint32_t* size);

// Creates the service for the driver file at `path` and starts it. The result is the system's error number, or 0;
// whether the driver runs shows when the device is opened.
std::uint32_t DriverServiceStart(const char* path);

// Stops the service and deletes it; a service that is missing or refuses is left alone.
void DriverServiceRemove();

// Opens the device of the driver that runs, which is then this process's until it is closed. False when none opens;
// `error`, where it is wanted, then gets the system's error number.
bool DriverDeviceOpen(std::uint32_t* error = nullptr);
bool DriverDeviceIsOpen();
void DriverDeviceClose();

// Forgets the open device without closing it: for tests, which replace the machine under the library.
void DriverDeviceForget();

// Sends one control request. Lengths are in bytes, and a length of 0 goes with a null buffer. False when the driver
// refuses it or no device is open.
bool DriverDeviceControl(std::uint32_t code, const void* input, std::uint32_t inputLength, void* output = nullptr,
                         std::uint32_t outputLength = 0);

// Reads `length` bytes of physical memory. RyxErrorArgument: no buffer or a length of 0; RyxErrorPhysicalMemory.
RyxStatus PhysicalMemoryRead(std::uint32_t address, std::uint32_t length, void* buffer);

// Writes `length` bytes to physical memory. Statuses as for PhysicalMemoryRead.
RyxStatus PhysicalMemoryWrite(std::uint32_t address, std::uint32_t length, const void* buffer);

// Reads the driver's version word. RyxErrorArgument: no out-parameter; RyxErrorDriverRequest.
RyxStatus DriverVersionGet(std::uint16_t* version);
