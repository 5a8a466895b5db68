// What the library asks of the system's power management.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Power operations 1 to 9: 6 holds the system awake, 7 lets it sleep again. RyxErrorUnsupported for all others.
constexpr std::uint8_t PowerHoldAwake = 6;
constexpr std::uint8_t PowerLetSleep = 7;
RyxStatus PowerRequest(std::uint8_t operation);

// 1 while the system is held awake.
std::uint32_t PowerExecutionState();

// The state at process start; a system that is held awake stays so.
void PowerStateReset();
