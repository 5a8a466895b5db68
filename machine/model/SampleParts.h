// What the sample machines have in common.
#pragma once

#include "machine/model/SmbiosBuilder.h"

#include <cstdint>

namespace StandIn {

// What structures of one group tell those of later groups to refer to.
struct SampleHandles {
    std::uint16_t Processor = 0;
    std::uint16_t Board = 0;
    std::uint16_t Chassis = 0;
    std::uint16_t ModuleSlots[3] = {};
    std::uint16_t Caches[3] = {};
    std::uint16_t SystemArray = 0;
    std::uint16_t FlashArray = 0;
    std::uint16_t Devices[4] = {};
    std::uint16_t ArrayRange = 0;
    std::uint16_t VoltageProbe = 0;
    std::uint16_t TemperatureProbe = 0;
    std::uint16_t CurrentProbe = 0;
    std::uint16_t Fan = 0;
};

// Adds structures of the types that the standard has not changed since 2.8: 5, 6, 8, 10 to 15, 18 and 21 to 41.
void SamplePartsAdd(SmbiosBuilder& table, SampleHandles& handles);

} // namespace StandIn
