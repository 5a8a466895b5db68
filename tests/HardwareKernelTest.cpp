// How the driver that ships reaches the machine, in a kernel of this test's own.
#define RyxDriver ShippedDriver
#include "driver/FirmwareTable.h"
#include "driver/Hardware.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <utility>

namespace {

constexpr ULONG FirstAddress = 0x1000;

alignas(16) UCHAR Memory[64]; // from FirstAddress on
bool New = true;              // the system has what came with the versions 8 and 10
bool Writes = false;          // what is mapped is going to be written
std::string Held;             // what is mapped or allocated: how much, and how
PVOID Freed = nullptr;

std::string Hold(std::size_t size, MEMORY_CACHING_TYPE cached) {
    return std::to_string(size) + (cached == MmNonCached ? " uncached" : " cached");
}

PVOID Mapped(PHYSICAL_ADDRESS address, const std::string& how) {
    EXPECT_EQ(Held, "");
    if (address.QuadPart < FirstAddress || address.QuadPart >= FirstAddress + LONGLONG{sizeof Memory}) {
        return nullptr;
    }
    Held = how;
    return Memory + (address.QuadPart - FirstAddress);
}

PVOID NTAPI SpaceMap(PHYSICAL_ADDRESS address, SIZE_T size, ULONG protection) {
    EXPECT_EQ(protection, (Writes ? PAGE_READWRITE : PAGE_READONLY) | PAGE_NOCACHE);
    return Mapped(address, Hold(size, MmNonCached));
}

PVOID NTAPI NodeAllocate(SIZE_T size, PHYSICAL_ADDRESS lowest, PHYSICAL_ADDRESS highest, PHYSICAL_ADDRESS boundary,
                         ULONG protection, ULONG node) {
    EXPECT_EQ(lowest.QuadPart, 0x10000);
    EXPECT_EQ(highest.QuadPart, 0xFFFFFFFF);
    EXPECT_EQ(boundary.QuadPart, 0);
    EXPECT_EQ(protection, ULONG{PAGE_READWRITE | PAGE_NOCACHE});
    EXPECT_EQ(node, 0x80000000U);
    Held = size <= sizeof Memory ? Hold(size, MmNonCached) : "";
    return Held.empty() ? nullptr : Memory;
}

// The system's table "FACP" is as long as is set here; 0: there is none.
ULONG TableLength = 0;

NTSTATUS NTAPI InformationQuery(ULONG kind, PVOID information, ULONG length, ULONG*) {
    auto* const words = static_cast<ULONG*>(information);
    EXPECT_EQ(kind, 76U);
    EXPECT_EQ(words[0], 0x41435049U); // 'ACPI'
    EXPECT_EQ(words[1], 1U);
    EXPECT_EQ(length, 16 + words[3]);
    if (TableLength == 0 || words[2] != 0x50434146) { // "FACP" as it stands in memory
        return STATUS_NOT_FOUND;
    }
    const ULONG room = std::exchange(words[3], TableLength);
    if (room < TableLength) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    std::fill_n(static_cast<UCHAR*>(information) + 16, TableLength, UCHAR{0xCD});
    return STATUS_SUCCESS;
}

PHYSICAL_MEMORY_RANGE* NTAPI Ranges() {
    static PHYSICAL_MEMORY_RANGE ranges[2];
    return ranges;
}

} // namespace

PVOID NTAPI MmMapIoSpace(PHYSICAL_ADDRESS address, std::size_t size, MEMORY_CACHING_TYPE cached) {
    EXPECT_FALSE(New) << "what is mapped can be executed";
    return Mapped(address, Hold(size, cached));
}

void NTAPI MmUnmapIoSpace(PVOID, std::size_t size) {
    EXPECT_EQ(Held, Hold(size, MmNonCached));
    Held.clear();
}

PVOID NTAPI MmAllocateContiguousMemorySpecifyCache(std::size_t size, PHYSICAL_ADDRESS lowest, PHYSICAL_ADDRESS highest,
                                                   PHYSICAL_ADDRESS boundary, MEMORY_CACHING_TYPE cached) {
    EXPECT_FALSE(New) << "the buffer can be executed";
    EXPECT_EQ(cached, MmNonCached);
    return NodeAllocate(size, lowest, highest, boundary, PAGE_READWRITE | PAGE_NOCACHE, 0x80000000);
}

void NTAPI MmFreeContiguousMemory(PVOID memory) {
    EXPECT_TRUE(New);
    Freed = memory;
}

void NTAPI MmFreeContiguousMemorySpecifyCache(PVOID memory, std::size_t size, MEMORY_CACHING_TYPE cached) {
    EXPECT_FALSE(New);
    EXPECT_EQ(Held, Hold(size, cached));
    Freed = memory;
}

PHYSICAL_ADDRESS NTAPI MmGetPhysicalAddress(PVOID) {
    PHYSICAL_ADDRESS address;
    address.QuadPart = 0x12345000;
    return address;
}

PVOID NTAPI MmGetSystemRoutineAddress(PUNICODE_STRING name) {
    const std::wstring text(name->Buffer, name->Length / sizeof(WCHAR));
    const std::pair<const wchar_t*, PVOID> all[] = {
        {L"MmGetPhysicalMemoryRanges", reinterpret_cast<PVOID>(Ranges)},
        {L"ZwQuerySystemInformation", reinterpret_cast<PVOID>(InformationQuery)},
        {L"MmMapIoSpaceEx", reinterpret_cast<PVOID>(SpaceMap)},
        {L"MmAllocateContiguousNodeMemory", reinterpret_cast<PVOID>(NodeAllocate)},
    };
    const auto* const found = std::find_if(all, std::end(all), [&](const auto& one) { return text == one.first; });
    return New && found != std::end(all) ? found->second : nullptr;
}

void NTAPI ExFreePool(PVOID memory) {
    Freed = memory;
}

namespace {

// On a system that has everything, and on one that has nothing but what every system has.
class ShippedHardware : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        New = GetParam();
        ShippedDriver::HardwareStart();
    }
};
INSTANTIATE_TEST_SUITE_P(Systems, ShippedHardware, testing::Bool());

TEST_P(ShippedHardware, CopiesFromAndToWhateverIsMapped) {
    for (ULONG offset = 0; offset < 9; ++offset) {
        for (ULONG length = 1; length < 27; ++length) {
            UCHAR expected[sizeof Memory];
            UCHAR data[32]{};
            for (std::size_t i = 0; i < sizeof Memory; ++i) {
                expected[i] = Memory[i] = static_cast<UCHAR>(0x81 + 3 * i);
            }
            Writes = false;
            EXPECT_EQ(ShippedDriver::HardwareRead(FirstAddress + offset, length, data), STATUS_SUCCESS);
            EXPECT_TRUE(std::equal(data, data + length, Memory + offset)) << offset << ' ' << length;
            EXPECT_EQ(std::count(data + length, std::end(data), 0), static_cast<int>(sizeof data - length));

            for (ULONG i = 0; i < length; ++i) {
                expected[offset + i] = data[i] = static_cast<UCHAR>(0xF1 - 5 * i);
            }
            Writes = true;
            EXPECT_EQ(ShippedDriver::HardwareWrite(FirstAddress + offset, length, data), STATUS_SUCCESS);
            EXPECT_TRUE(std::equal(expected, std::end(expected), Memory)) << offset << ' ' << length;
            EXPECT_EQ(Held, "");
        }
    }
    UCHAR byte = 7;
    EXPECT_EQ(ShippedDriver::HardwareWrite(0x2000, 1, &byte), STATUS_ACCESS_DENIED);
    Writes = false;
    EXPECT_EQ(ShippedDriver::HardwareRead(0x2000, 1, &byte), STATUS_ACCESS_DENIED);
    EXPECT_EQ(ULONG{ShippedDriver::HardwareMappingPriority()}, New ? 0x40000010U : 0x10U);
}

TEST_P(ShippedHardware, AsksForRangesAndTablesWhereTheSystemTells) {
    EXPECT_EQ(ShippedDriver::HardwareRangesGet(), New ? Ranges() : nullptr);
    ShippedDriver::HardwareRangesFree(Ranges());
    EXPECT_EQ(Freed, Ranges());

    const ULONG signature = 0x50434146;
    const std::pair<ULONG, NTSTATUS> lengths[] = {
        {0, STATUS_NOT_FOUND}, {8, STATUS_SUCCESS}, {16, STATUS_SUCCESS}, {17, STATUS_BUFFER_TOO_SMALL}};
    for (const auto& [there, expected] : lengths) {
        TableLength = there;
        UCHAR table[17]{};
        ULONG length = 0;
        EXPECT_EQ(ShippedDriver::HardwareTableGet(signature, table, 16, &length), New ? expected : STATUS_NOT_FOUND);
        const bool given = New && expected == STATUS_SUCCESS;
        EXPECT_EQ(length, given ? there : 0);
        EXPECT_EQ(std::count(table, std::end(table), 0xCD), given ? static_cast<int>(there) : 0);
    }
}

TEST_P(ShippedHardware, AllocatesZeroedMemory) {
    std::fill(std::begin(Memory), std::end(Memory), UCHAR{0xAA});
    ULONG address = 0;
    EXPECT_EQ(ShippedDriver::HardwareBufferAllocate(40, &address), Memory);
    EXPECT_EQ(address, 0x12345000U);
    EXPECT_EQ(Held, "40 uncached");
    EXPECT_EQ(std::count(Memory, Memory + 40, 0), 40);
    EXPECT_EQ(Memory[40], 0xAA);
    ShippedDriver::HardwareBufferFree(Memory, 40);
    EXPECT_EQ(Freed, Memory);
    EXPECT_EQ(ShippedDriver::HardwareBufferAllocate(sizeof Memory + 1, &address), nullptr);
    Held.clear();
}

} // namespace
