// The firmware communication channel: choosing a method, and carrying requests over it.
#pragma once

#include "Lib/Common/Guid.h"
#include "Lib/Platform/Flash4kBufferAllocate.h"
#include "Lib/RyxNumbers.h"
#include "Lib/RyxStatus.h"

#include <array>
#include <cstddef>
#include <cstdint>

// Communication methods.
constexpr std::uint8_t FlashMethodNone = 0;
constexpr std::uint8_t FlashMethodSettingUp = 1; // method 2 while it is set up
constexpr std::uint8_t FlashMethodBuffer = 2;    // a physical buffer and a system management interrupt
constexpr std::uint8_t FlashMethodVariables = 3; // firmware environment variables
constexpr std::uint8_t FlashMethodOther = 4;     // not available on this platform

// The options that show which method is in use, and switch it.
struct FlashMethodOption {
    std::uint8_t Method;
    std::uint32_t Option;
};
constexpr FlashMethodOption FlashMethodOptions[] = {{FlashMethodVariables, RyxOptionMethodVariables},
                                                    {FlashMethodOther, RyxOptionMethodOther},
                                                    {FlashMethodBuffer, RyxOptionMethodBuffer}};

// The status of a request that the firmware has not answered.
constexpr std::uint64_t FirmwareStatusPending = 255;

// A request's header, as the firmware sees it; the payload follows.
struct FirmwareRequestHeader {
    std::uint64_t Command;
    std::uint64_t Status;
    std::uint32_t Length; // header and payload
    std::uint32_t Reserved;
    Guid Channel;
};
static_assert(sizeof(FirmwareRequestHeader) == 40);

// What a method answered when it was set up.
struct FlashMethodAttempt {
    std::uint8_t Method;
    RyxStatus Status;
};

struct FirmwareChannelState {
    std::uint8_t Method = FlashMethodNone;
    std::uint64_t LastStatus = 0;                 // of the last request
    std::array<FlashMethodAttempt, 3> Attempts{}; // of the last selection, in the order tried
    std::uint8_t AttemptCount = 0;

    enum class Probe : std::uint8_t { Unprobed, Open, Unavailable };
    Probe Variables = Probe::Unprobed;
    Flash4kBuffer VariablesBuffer; // session identifier, request header, payload
    std::array<std::uint8_t, 8> SessionIdentifier{};

    bool BufferSetUp = false; // method 2 was set up
    RyxStatus BufferStatus = RyxOk;
    Flash4kBuffer DriverBuffer;

    bool PlatformInfoCached = false;
    std::array<std::uint8_t, 64> PlatformInfo{};
    std::array<std::uint64_t, 5> PlatformValues{}; // for other tools
    std::uint64_t HostBufferSize = 0;
};

FirmwareChannelState& FirmwareChannelStateGet();

// The state at process start; what is open is forgotten, not closed.
void FirmwareChannelReset();

// Chooses a method: 4, else 3, else 2. RyxErrorGeneral: none can be used.
RyxStatus FlashMethodSelect();

// Switches to method 2, 3 or 4, or with 0 to none, ending the one in use; options 13, 27, 28 and 29 follow. Where
// method 3 is available, a switch to 2 is one to 3. RyxErrorGeneral: the method can't be used, and the one in use
// stays; RyxErrorUnsupported: method 2 is being set up.
RyxStatus FlashMethodSwitch(std::uint8_t method);

// Asks the firmware for the platform information, unless it is held, and sets options 32 and 36 to 38 by it.
// RyxErrorNoPlatformInfo: the firmware gave none; RyxErrorPlatformDetail: it refused the details;
// RyxErrorFirmwareRequest.
RyxStatus PlatformInfoQuery();

// Whether the firmware's platform information is held: its first 64-bit word is not 0.
bool PlatformInfoHeld();

// Sends a command with a payload of `length` bytes (null for 0), which receives the firmware's answer in place; the
// results are those of RyxFirmwareRequest.
RyxStatus FirmwareRequest(std::uint64_t command, std::uint64_t* firmwareStatus, std::uint8_t* payload,
                          std::uint32_t length);

// Ends the method in use and releases the buffers. RyxErrorDriverRequest: the driver kept its communication buffer.
RyxStatus FirmwareChannelEnd();
