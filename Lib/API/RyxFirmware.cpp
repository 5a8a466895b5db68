// Requests to the maker's firmware.
#include "Lib/API/RyxFirmware.h"

#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/Guid.h"
#include "Lib/Common/Instance.h"

#include <algorithm>

RyxStatus RyxFirmwareRequest(std::uint64_t command, std::uint64_t* firmwareStatus, RyxBin* payload) {
    constexpr Guid channel = GuidFromText("b1de44fc-7946-4982-9b4b-2f8ca45ea792");
    if (firmwareStatus == nullptr) {
        return RyxErrorArgument;
    }
    FirmwareChannelState& state = FirmwareChannelStateGet();
    if (state.Method == FlashMethodNone && FlashMethodSelect() != RyxOk) {
        state.LastStatus = FirmwareStatusPending;
        return RyxErrorGeneral;
    }
    state.LastStatus = FirmwareStatusPending;
    std::uint8_t* data = payload == nullptr ? nullptr : payload->Data;
    const std::uint32_t length = payload == nullptr ? 0 : payload->Size;
    FirmwareRequestHeader header{command, FirmwareStatusPending, length + std::uint32_t{sizeof header}, 0, {}};
    std::copy(channel.begin(), channel.end(), header.Channel);

    GlobalMutexAcquire();
    const RyxStatus status = FirmwareTransport(&header, data, length);
    GlobalMutexRelease();
    state.LastStatus = header.Status;
    *firmwareStatus = header.Status;
    return status == RyxOk ? RyxOk : RyxErrorFirmwareRequest;
}
