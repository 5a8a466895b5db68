// The firmware communication channel.
#include "Lib/Common/FirmwareChannel.h"

#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/FirmwareVariables.h"

#include <cstring>

namespace {

// Options that follow the method and the platform information.
constexpr std::size_t OptionCleared = 13;
constexpr std::size_t OptionVariables = 27;
constexpr std::size_t OptionOther = 28;
constexpr std::size_t OptionBuffer = 29;
constexpr std::size_t OptionInfoFlag1 = 32;
constexpr std::size_t OptionDetailFirst = 36;
constexpr std::size_t OptionDetailSecond = 37;
constexpr std::size_t OptionInfoFlag0 = 38;

constexpr char16_t VendorGuid[] = u"{8a4acd56-02fc-41ce-b686-9f429a3fc1b3}";
constexpr std::uint32_t VariablesBufferSize = 8200;
constexpr std::uint32_t VariablesHeaderOffset = 8;
constexpr std::uint32_t HeaderSize = sizeof(FirmwareRequestHeader);

// Fields of the platform information.
constexpr std::size_t InfoValues = 8;
constexpr std::size_t InfoBufferSize = 48;
constexpr std::size_t InfoFlags = 56;
constexpr std::uint32_t DetailSize = 8;

FirmwareChannelState State;

std::uint8_t* Options() {
    return LibraryContextGet().Options.Byte;
}

// Opens a session over the firmware variables, unless one is open or is known not to open.
RyxStatus VariablesSetUp() {
    using Probe = FirmwareChannelState::Probe;
    if (State.Variables != Probe::Not) {
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
    State.Variables = FirmwareChannelState::Probe::Not;
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
    std::uint8_t* const buffer = State.VariablesBuffer.Local.get();
    std::uint8_t* const record = buffer + VariablesHeaderOffset;
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
    std::uint8_t* const options = Options();
    options[OptionVariables] = method == FlashMethodVariables;
    options[OptionOther] = method == FlashMethodOther;
    options[OptionBuffer] = method == FlashMethodBuffer;
    if (method != FlashMethodBuffer) {
        options[OptionCleared] = 0;
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
    RyxBin* detail = nullptr;
    if (const RyxStatus status = RyxBinCreate(DetailSize, &detail); status != RyxOk) {
        State.HostBufferSize = Flash4kSize;
        return status;
    }
    const RyxBinOwner owner(detail);
    std::uint64_t answer = FirmwareStatusPending;
    if (const RyxStatus status = RyxFirmwareRequest(FirmwareCommandPlatformDetail, &answer, detail); status != RyxOk) {
        return status;
    }
    if (answer != 0) {
        const RyxStatus status = static_cast<std::uint32_t>(answer) | 0x80000000U;
        return status == RyxErrorUnsupported || status == RyxErrorNoPlatformInfo ? status : RyxErrorPlatformDetail;
    }
    std::uint32_t flags[2];
    std::memcpy(flags, detail->Data, sizeof flags);
    Options()[OptionDetailFirst] = flags[0] != 0;
    Options()[OptionDetailSecond] = flags[1] != 0;
    return RyxOk;
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
        RyxBin* info = nullptr;
        if (const RyxStatus status = RyxBinCreate(State.PlatformInfo.size(), &info); status != RyxOk) {
            State.HostBufferSize = Flash4kSize;
            return status;
        }
        const RyxBinOwner owner(info);
        std::uint64_t answer = FirmwareStatusPending;
        if (RyxFirmwareRequest(FirmwareCommandPlatformInfo, &answer, info) == RyxOk && answer == 0) {
            std::memcpy(State.PlatformInfo.data(), info->Data, State.PlatformInfo.size());
            State.PlatformInfoCached = true;
        }
    }
    if (!PlatformInfoHeld()) {
        return RyxErrorNoPlatformInfo;
    }
    const std::uint8_t* const info = State.PlatformInfo.data();
    std::memcpy(State.PlatformValues.data(), info + InfoValues, sizeof State.PlatformValues);
    std::memcpy(&State.HostBufferSize, info + InfoBufferSize, sizeof State.HostBufferSize);
    if (State.HostBufferSize == 0) {
        State.HostBufferSize = Flash4kSize;
    }
    Options()[OptionInfoFlag0] = info[InfoFlags] & 1U;
    Options()[OptionInfoFlag1] = info[InfoFlags] >> 1U & 1U;
    return DetailQuery();
}

bool PlatformInfoHeld() {
    std::uint64_t identifier = 0;
    std::memcpy(&identifier, State.PlatformInfo.data(), sizeof identifier);
    return identifier != 0;
}

RyxStatus FirmwareTransport(FirmwareRequestHeader* header, std::uint8_t* payload, std::uint32_t length) {
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

RyxStatus FirmwareChannelEnd() {
    FlashMethodSwitch(FlashMethodNone);
    Flash4kBufferRelease(&State.VariablesBuffer);
    return Flash4kBufferRelease(&State.DriverBuffer);
}
