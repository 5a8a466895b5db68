// Requests to the maker's firmware over the communication method in use.
#pragma once

#include "Lib/API/RyxBin.h"

#include <cstdint>

// Sends a command with an optional payload, which receives the firmware's answer in place. `firmwareStatus` receives
// the firmware's own result, 0 for success. Every request runs under the machine-wide mutex.
// RyxErrorArgument: no status out-parameter; RyxErrorGeneral: no method could be chosen; RyxErrorFirmwareRequest: the
// method could not carry the request.
RyxStatus RyxFirmwareRequest(std::uint64_t command, std::uint64_t* firmwareStatus, RyxBin* payload);
