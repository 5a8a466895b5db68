// Functions that a tool registers to be called at certain points of the library's work.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Called with 0 right before the port write that makes the firmware look at a request, and with 1 right after it.
constexpr std::uint32_t CallbackTypeFirmwareTrigger = 3;

using CallbackFunction = void (*)(std::uint32_t phase);

// Registers a function for a type, in addition to any others. RyxErrorArgument: no function; RyxErrorMemory.
RyxStatus CallbackFunctionRegister(std::uint32_t type, CallbackFunction function);

// Calls every function of the type, in the order of registration.
void CallbackFunctionsCall(std::uint32_t type, std::uint32_t phase);

// Releases all pairs.
void CallbackFunctionsRelease();
