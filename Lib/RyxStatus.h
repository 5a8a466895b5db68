// Status codes: the result of every library and viewer operation.
#pragma once

#include <cstdint>

// 0 is success; a failure is 0x80000000 plus a number. The viewer reports the number without the top bit.
using RyxStatus = std::uint32_t;

constexpr RyxStatus RyxOk = 0;
constexpr RyxStatus RyxErrorGeneral = 0x80000001;            // no firmware method, affinity not settable
constexpr RyxStatus RyxErrorArgument = 0x80000002;           // missing or invalid argument
constexpr RyxStatus RyxErrorUnsupported = 0x80000003;        // not supported, or not present
constexpr RyxStatus RyxErrorMemory = 0x80000009;             // out of memory
constexpr RyxStatus RyxErrorNotFound = 0x8000000E;           // no such command, entry point, table or file
constexpr RyxStatus RyxErrorParameter = 0x8000001E;          // a command's parameters don't fit its format
constexpr RyxStatus RyxErrorObject = 0x80000020;             // no value container, or not the expected object
constexpr RyxStatus RyxErrorNotAdministrator = 0x80000029;   // the process has no administrator rights
constexpr RyxStatus RyxErrorDriverLoad = 0x8000002A;         // the helper driver could not be loaded
constexpr RyxStatus RyxErrorDriverUnload = 0x8000002B;       // the helper driver could not be unloaded
constexpr RyxStatus RyxErrorDriverRequest = 0x8000002C;      // the helper driver refused a request
constexpr RyxStatus RyxErrorDuplicate = 0x80000031;          // a command was given twice
constexpr RyxStatus RyxErrorFileOpen = 0x80000065;           // a file can't be opened
constexpr RyxStatus RyxErrorFileClose = 0x80000066;          // a file can't be closed
constexpr RyxStatus RyxErrorFileRead = 0x80000067;           // short read
constexpr RyxStatus RyxErrorBuffer = 0x800000C9;             // a buffer could not be allocated
constexpr RyxStatus RyxErrorPhysicalMemory = 0x800000CC;     // physical memory could not be read or written
constexpr RyxStatus RyxErrorTableRead = 0x800000CE;          // structure table or communication buffer not readable
constexpr RyxStatus RyxErrorCommunicationWrite = 0x800000CF; // communication buffer not writable
constexpr RyxStatus RyxErrorMethodSetup = 0x80000131;        // no SMI port or no ACPI data for firmware method 2
constexpr RyxStatus RyxErrorRootTable = 0x80000259;          // no ACPI root table, or one of unknown signature
constexpr RyxStatus RyxErrorNoCommunication = 0x8000025A;    // the ACPI tables name no communication buffer
constexpr RyxStatus RyxErrorPowerRequest = 0x800002C1;       // a power request failed
constexpr RyxStatus RyxErrorNoPlatformInfo = 0x8000044D;     // the firmware gave no platform information
constexpr RyxStatus RyxErrorNoAnswer = 0x8000044E;           // the firmware gave no usable answer on a command name
constexpr RyxStatus RyxErrorFirmwareRequest = 0x8000045E;    // a firmware request could not be carried
constexpr RyxStatus RyxErrorFirmwareRefusal = 0x80000462;    // the firmware refuses a command
constexpr RyxStatus RyxErrorPlatformDetail = 0x80000466;     // the firmware refused the platform detail request
constexpr RyxStatus RyxErrorNotDecimal = 0x8000076E;         // a text is not a decimal number
constexpr RyxStatus RyxErrorDigest = 0x80000837;             // the digest of the executable failed

// The states of a registered instance (not failures): the first of its kind, or one beside others.
constexpr RyxStatus RyxInstanceFirst = 0x80000013;
constexpr RyxStatus RyxInstanceAnother = 0x80000014;

// The number that a status shows to the user: without its top bit.
constexpr std::uint32_t RyxStatusNumber(RyxStatus status) {
    return status & 0x7FFFFFFFU;
}
