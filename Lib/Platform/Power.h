// What the process asks of the system's power management.
#pragma once

#include <cstdint>

// Execution states; Continuous makes the others last until the next call.
constexpr std::uint32_t PowerSystemRequired = 0x00000001;
constexpr std::uint32_t PowerDisplayRequired = 0x00000002;
constexpr std::uint32_t PowerAwayModeRequired = 0x00000040;
constexpr std::uint32_t PowerContinuous = 0x80000000;

// Sets the calling thread's execution state; a refusal changes nothing.
void PowerStateSet(std::uint32_t states);
