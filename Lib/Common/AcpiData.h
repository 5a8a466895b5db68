// What the library takes from the ACPI tables: how to reach the firmware through its communication buffer.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// A table that the root table names.
struct AcpiTable {
    std::uint32_t Address;
    std::uint32_t Signature; // four characters, as stored
    std::uint32_t Length;    // as the table states it
};

struct AcpiState {
    bool Collected = false;    // the discovery ran
    RyxStatus Result = RyxOk;  // and this is what came of it
    std::uint16_t SmiPort = 0; // I/O port that raises a system management interrupt
    std::uint32_t Pm1aControl = 0;
    std::uint16_t ResetPort = 0;
    std::uint8_t ResetValue = 0;
    bool LowPowerIdle = false;
    std::uint8_t SleepS3 = 0;
    std::uint8_t SleepS4 = 0;
    std::uint8_t SleepS5 = 0;
    std::uint32_t CommunicationBuffer = 0; // physical address
    std::uint32_t SmiValue = 0;            // its low byte is written to the port
    std::uint64_t UpdateArea = 0;          // for other tools
    std::uint32_t UpdateAreaSize = 0;
    std::uint32_t UpdateDepot = 0; // physical address of the "PNVS" mark; for other tools
    std::unique_ptr<AcpiTable[]> Tables;
    std::uint32_t TableCount = 0;
    std::unique_ptr<std::uint8_t[]> Dsdt;
    std::uint32_t DsdtLength = 0;
};

const AcpiState& AcpiStateGet();

// The state at process start.
void AcpiStateReset();

// Collects the values above, once; later calls give the first one's status. RyxErrorNoCommunication: the tables name no
// communication buffer; RyxErrorRootTable, RyxErrorPhysicalMemory: no root table; RyxErrorBuffer: no memory.
RyxStatus AcpiDataCollect();

// Releases the table list, the DSDT and the FADT that the search for the root table keeps. The values stay.
void AcpiDataRelease();
