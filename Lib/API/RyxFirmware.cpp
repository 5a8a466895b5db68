// Requests to the maker's firmware.
#include "Lib/API/RyxFirmware.h"

#include "Lib/Common/FirmwareChannel.h"

RyxStatus RyxFirmwareRequest(std::uint64_t command, std::uint64_t* firmwareStatus, RyxBin* payload) {
    return payload == nullptr ? FirmwareRequest(command, firmwareStatus, nullptr, 0)
                              : FirmwareRequest(command, firmwareStatus, payload->Data, payload->Size);
}
