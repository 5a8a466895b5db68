// What bits 0 to 2 of a processor's and of a memory controller's supported voltages are called.
#pragma once

inline constexpr const char* ProcessorVoltageNames[] = {"5V   Supported", "3.3V Supported", "2.9V Supported", nullptr};
inline constexpr const auto& MemoryVoltageNames = ProcessorVoltageNames;
