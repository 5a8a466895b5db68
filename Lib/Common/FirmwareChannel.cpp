// The firmware communication channel.
#include "Lib/Common/FirmwareChannel.h"

#include "Lib/Common/AcpiData.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/LittleEndian.h"
#include "Lib/Platform/FirmwareVariables.h"

#include <cstring>

namespace {

constexpr Guid ChannelGuid = GuidFromText("b1de44fc-7946-4982-9b4b-2f8ca45ea792");
constexpr char16_t VendorGuid[] = u"{8a4acd56-02fc-41ce-b686-9f429a3fc1b3}";
constexpr std::uint32_t VariablesBufferSize = 8200;
constexpr std::uint32_t VariablesHeaderOffset = 8;
constexpr std::uint32_t HeaderSize = sizeof(FirmwareRequestHeader);

// Firmware commands.
constexpr std::uint64_t FirmwareCommandPlatformInfo = 0x10000;
constexpr std::uint64_t FirmwareCommandPlatformDetail = 0x12900;

// Fields of the platform information.
constexpr std::size_t InfoValues = 8;
constexpr std::size_t InfoBufferSize = 48;
constexpr std::size_t InfoFlags = 56;

FirmwareChannelState State;

std::uint8_t* Options() {
    return LibraryContextGet().Options.Byte;
}

// Opens a session over the firmware variables, unless one is open or is known not to open.
RyxStatus VariablesSetUp() {
    using Probe = FirmwareChannelState::Probe;
    if (State.Variables != Probe::Unprobed) {
        return State.Variables == Probe::Open ? RyxOk : RyxErrorUnsupported;
    }
    std::uint32_t length = 0;
    if (FirmwareVariablePrivilegeEnable() && FirmwareVariablesAvailable() &&
        Flash4kBufferAllocate(VariablesBufferSize, false, &State.VariablesBuffer) == RyxOk &&
        FirmwareVariableRead(u"OpenSessionId", VendorGuid, State.VariablesBuffer.Local.get(), VariablesBufferSize,
                             &length) &&
        length >= State.SessionIdentifier.size()) {
        std::memcpy(State.SessionIdentifier.data(), State.VariablesBuffer.Local.get(), State.SessionIdentifier.size());
        State.Variables = Probe::Open;
        return RyxOk;
    }
    Flash4kBufferRelease(&State.VariablesBuffer);
    State.Variables = Probe::Unavailable;
    return RyxErrorGeneral;
}

RyxStatus VariablesEnd() {
    State.Variables = FirmwareChannelState::Probe::Unprobed;
    Flash4kBufferRelease(&State.VariablesBuffer);
    return FirmwareVariableWrite(u"CloseSessionId", VendorGuid, State.SessionIdentifier.data(),
                                 static_cast<std::uint32_t>(State.SessionIdentifier.size()))
               ? RyxOk
               : RyxErrorUnsupported;
}

RyxStatus VariablesTransport(FirmwareRequestHeader* header, std::uint8_t* payload, std::uint32_t length) {
    if (State.VariablesBuffer.Local == nullptr) {
        return RyxErrorGeneral;
    }
    if (length > VariablesBufferSize - VariablesHeaderOffset - HeaderSize) {
        return RyxErrorArgument;
    }
    std::uint8_t* buffer = State.VariablesBuffer.Local.get();
    std::uint8_t* record = buffer + VariablesHeaderOffset;
    std::memcpy(record, header, HeaderSize);
    if (length != 0) {
        std::memcpy(record + HeaderSize, payload, length);
    }
    // The firmware answers in the variable that the session identifier names, read as four characters.
    char16_t answer[sizeof State.SessionIdentifier / sizeof(char16_t) + 1]{};
    std::memcpy(answer, State.SessionIdentifier.data(), State.SessionIdentifier.size());
    std::uint32_t answered = 0;
    if (!FirmwareVariableWrite(u"FlashCommunication", VendorGuid, buffer, VariablesBufferSize) ||
        !FirmwareVariableRead(answer, VendorGuid, record, VariablesBufferSize - VariablesHeaderOffset, &answered) ||
        answered < HeaderSize) {
        return RyxErrorGeneral;
    }
    std::memcpy(header, record, HeaderSize);
    if (length != 0) {
        std::memcpy(payload, record + HeaderSize, length);
    }
    return RyxOk;
}

RyxStatus BufferSetUpOnce() {
    if (AcpiDataCollect() != RyxOk || AcpiStateGet().SmiPort == 0) {
        return RyxErrorMethodSetup;
    }
    PlatformInfoQuery();
    return Flash4kBufferAllocate(Flash4kSize, true, &State.DriverBuffer);
}

RyxStatus BufferSetUp() {
    if (!State.BufferSetUp) {
        State.BufferStatus = BufferSetUpOnce();
        State.BufferSetUp = true;
    }
    return State.BufferStatus;
}

// Makes the firmware look at the communication buffer.
RyxStatus FirmwareTrigger() {
    const AcpiState& acpi = AcpiStateGet();
    const std::uint8_t write[6] = {static_cast<std::uint8_t>(acpi.SmiPort),
                                   static_cast<std::uint8_t>(acpi.SmiPort >> 8),
                                   static_cast<std::uint8_t>(acpi.SmiValue),
                                   0,
                                   0,
                                   0};
    CallbackFunctionsCall(CallbackTypeFirmwareTrigger, 0);
    const RyxStatus status = DriverRequest(DriverControl, DriverPortWriteByte, write, sizeof write);
    CallbackFunctionsCall(CallbackTypeFirmwareTrigger, 1);
    return status;
}

RyxStatus BufferTransport(FirmwareRequestHeader* header, std::uint8_t* payload, std::uint32_t length) {
    const std::uint32_t address = AcpiStateGet().CommunicationBuffer;
    if (address == 0) {
        return RyxErrorNoCommunication;
    }
    if (length > Flash4kSize - HeaderSize || address > UINT32_MAX - Flash4kSize) {
        return RyxErrorArgument;
    }
    if (PhysicalMemoryWrite(address, HeaderSize, header) != RyxOk ||
        (length != 0 && PhysicalMemoryWrite(address + HeaderSize, length, payload) != RyxOk)) {
        return RyxErrorCommunicationWrite;
    }
    if (const RyxStatus status = FirmwareTrigger(); status != RyxOk) {
        return status;
    }
    if (PhysicalMemoryRead(address, HeaderSize, header) != RyxOk ||
        (length != 0 && PhysicalMemoryRead(address + HeaderSize, length, payload) != RyxOk)) {
        return RyxErrorTableRead;
    }
    return RyxOk;
}

RyxStatus MethodSetUp(std::uint8_t method) {
    if (method == FlashMethodVariables) {
        return VariablesSetUp();
    }
    if (method != FlashMethodBuffer) {
        return RyxErrorUnsupported;
    }
    const std::uint8_t previous = State.Method;
    State.Method = FlashMethodSettingUp;
    const RyxStatus status = BufferSetUp();
    State.Method = previous;
    return status;
}

void OptionsFollow(std::uint8_t method) {
    for (const FlashMethodOption& entry : FlashMethodOptions) {
        Options()[entry.Option] = entry.Method == method;
    }
    if (method != FlashMethodBuffer) {
        Options()[RyxOptionBufferOnly] = 0;
    }
}

void MethodEnd(std::uint8_t method) {
    if (method == FlashMethodVariables) {
        // A session that does not close is the firmware's to drop.
        VariablesEnd();
    }
}

// FlashMethodSwitch with the reason for a failure.
RyxStatus MethodSwitch(std::uint8_t method) {
    if (method == State.Method) {
        return RyxOk;
    }
    if (method == FlashMethodNone) {
        MethodEnd(State.Method);
        State.Method = FlashMethodNone;
        return RyxOk;
    }
    if (method == FlashMethodBuffer && VariablesSetUp() == RyxOk) {
        return MethodSwitch(FlashMethodVariables);
    }
    if (const RyxStatus status = MethodSetUp(method); status != RyxOk) {
        return status;
    }
    OptionsFollow(method);
    MethodEnd(State.Method);
    State.Method = method;
    // The method is good for requests whether or not the firmware tells about itself.
    PlatformInfoQuery();
    return RyxOk;
}

RyxStatus DetailQuery() {
    std::uint8_t detail[8]{};
    std::uint64_t answer = FirmwareStatusPending;
    if (const RyxStatus status = FirmwareRequest(FirmwareCommandPlatformDetail, &answer, detail, sizeof detail);
        status != RyxOk) {
        return status;
    }
    if (answer != 0) {
        const RyxStatus status = static_cast<std::uint32_t>(answer) | 0x80000000U;
        return status == RyxErrorUnsupported || status == RyxErrorNoPlatformInfo ? status : RyxErrorPlatformDetail;
    }
    Options()[RyxOptionDetailFirst] = LittleEndianRead<std::uint32_t>(detail) != 0;
    Options()[RyxOptionDetailSecond] = LittleEndianRead<std::uint32_t>(detail + 4) != 0;
    return RyxOk;
}

RyxStatus Transport(FirmwareRequestHeader* header, std::uint8_t* payload, std::uint32_t length) {
    switch (State.Method) {
    case FlashMethodSettingUp:
    case FlashMethodBuffer:
        return BufferTransport(header, payload, length);
    case FlashMethodVariables:
        return VariablesTransport(header, payload, length);
    default:
        return RyxErrorGeneral;
    }
}

} // namespace

FirmwareChannelState& FirmwareChannelStateGet() {
    return State;
}

void FirmwareChannelReset() {
    State = FirmwareChannelState{};
}

RyxStatus FlashMethodSelect() {
    State.AttemptCount = 0;
    for (const std::uint8_t method : {FlashMethodOther, FlashMethodVariables, FlashMethodBuffer}) {
        const RyxStatus status = MethodSwitch(method);
        State.Attempts[State.AttemptCount++] = {method, status};
        if (status == RyxOk) {
            return RyxOk;
        }
    }
    return RyxErrorGeneral;
}

RyxStatus FlashMethodSwitch(std::uint8_t method) {
    if (State.Method == FlashMethodSettingUp) {
        return RyxErrorUnsupported;
    }
    return MethodSwitch(method) == RyxOk ? RyxOk : RyxErrorGeneral;
}

RyxStatus PlatformInfoQuery() {
    if (PlatformInfoHeld()) {
        return RyxOk;
    }
    if (!State.PlatformInfoCached) {
        std::array<std::uint8_t, sizeof State.PlatformInfo> answered{};
        std::uint64_t answer = FirmwareStatusPending;
        if (FirmwareRequest(FirmwareCommandPlatformInfo, &answer, answered.data(), sizeof answered) == RyxOk &&
            answer == 0) {
            State.PlatformInfo = answered;
            State.PlatformInfoCached = true;
        }
    }
    if (!PlatformInfoHeld()) {
        return RyxErrorNoPlatformInfo;
    }
    const std::uint8_t* info = State.PlatformInfo.data();
    std::memcpy(State.PlatformValues.data(), info + InfoValues, sizeof State.PlatformValues);
    State.HostBufferSize = LittleEndianRead<std::uint64_t>(info + InfoBufferSize);
    if (State.HostBufferSize == 0) {
        State.HostBufferSize = Flash4kSize;
    }
    Options()[RyxOptionInfoFlag0] = info[InfoFlags] & 1U;
    Options()[RyxOptionInfoFlag1] = info[InfoFlags] >> 1U & 1U;
    return DetailQuery();
}

bool PlatformInfoHeld() {
    return LittleEndianRead<std::uint64_t>(State.PlatformInfo.data()) != 0;
}

RyxStatus FirmwareRequest(std::uint64_t command, std::uint64_t* firmwareStatus, std::uint8_t* payload,
                          std::uint32_t length) {
    if (firmwareStatus == nullptr) {
        return RyxErrorArgument;
    }
    const bool ready = State.Method != FlashMethodNone || FlashMethodSelect() == RyxOk;
    State.LastStatus = FirmwareStatusPending;
    if (!ready) {
        return RyxErrorGeneral;
    }
    FirmwareRequestHeader header{command, FirmwareStatusPending, length + std::uint32_t{sizeof header}, 0, ChannelGuid};
    GlobalMutexAcquire();
    const RyxStatus status = Transport(&header, payload, length);
    GlobalMutexRelease();
    State.LastStatus = header.Status;
    *firmwareStatus = header.Status;
    return status == RyxOk ? RyxOk : RyxErrorFirmwareRequest;
}

RyxStatus FirmwareChannelEnd() {
    FlashMethodSwitch(FlashMethodNone);
    Flash4kBufferRelease(&State.VariablesBuffer);
    return Flash4kBufferRelease(&State.DriverBuffer);
}
