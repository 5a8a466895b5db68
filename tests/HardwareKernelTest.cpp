// How the driver that ships reaches the machine, in a kernel of this test's own.
#define RyxDriver ShippedDriver
#include "driver/Hardware.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

constexpr ULONG FirstAddress = 0x1000;
constexpr ULONG FirmwareAddress = 0xF0000;

alignas(16) UCHAR Memory[64]; // from FirstAddress on
bool FirmwareCanBeMapped = true;
std::string Held; // what is mapped or allocated: how much, and how it is cached
PVOID Freed = nullptr;

std::string Hold(std::size_t size, MEMORY_CACHING_TYPE cached) {
    return std::to_string(size) + (cached == MmNonCached ? " uncached" : " cached");
}

PHYSICAL_MEMORY_RANGE* NTAPI Ranges() {
    static PHYSICAL_MEMORY_RANGE ranges[2];
    return ranges;
}

} // namespace

PVOID NTAPI MmMapIoSpace(PHYSICAL_ADDRESS address, std::size_t size, MEMORY_CACHING_TYPE cached) {
    const bool firmware = address.QuadPart == FirmwareAddress && FirmwareCanBeMapped;
    const bool memory = address.QuadPart >= FirstAddress && address.QuadPart < FirstAddress + LONGLONG{sizeof Memory};
    EXPECT_EQ(Held, "");
    if (!firmware && !memory) {
        return nullptr;
    }
    Held = Hold(size, cached);
    return firmware ? Memory : Memory + (address.QuadPart - FirstAddress);
}

void NTAPI MmUnmapIoSpace(PVOID, std::size_t size) {
    EXPECT_EQ(Held, Hold(size, size == 0x1000 ? MmCached : MmNonCached));
    Held.clear();
}

PVOID NTAPI MmAllocateContiguousMemorySpecifyCache(std::size_t size, PHYSICAL_ADDRESS lowest, PHYSICAL_ADDRESS highest,
                                                   PHYSICAL_ADDRESS boundary, MEMORY_CACHING_TYPE cached) {
    EXPECT_EQ(lowest.QuadPart, 0x10000);
    EXPECT_EQ(highest.QuadPart, 0xFFFFFFFF);
    EXPECT_EQ(boundary.QuadPart, 0);
    Held = size <= sizeof Memory ? Hold(size, cached) : "";
    return Held.empty() ? nullptr : Memory;
}

void NTAPI MmFreeContiguousMemorySpecifyCache(PVOID memory, std::size_t size, MEMORY_CACHING_TYPE cached) {
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
    return text == L"MmGetPhysicalMemoryRanges" ? reinterpret_cast<PVOID>(Ranges) : nullptr;
}

void NTAPI ExFreePool(PVOID memory) {
    Freed = memory;
}

namespace {

TEST(ShippedHardware, CopiesFromAndToWhateverIsMapped) {
    for (ULONG offset = 0; offset < 9; ++offset) {
        for (ULONG length = 1; length < 27; ++length) {
            UCHAR expected[sizeof Memory];
            UCHAR data[32]{};
            for (std::size_t i = 0; i < sizeof Memory; ++i) {
                expected[i] = Memory[i] = static_cast<UCHAR>(0x81 + 3 * i);
            }
            EXPECT_EQ(ShippedDriver::HardwareRead(FirstAddress + offset, length, data), STATUS_SUCCESS);
            EXPECT_TRUE(std::equal(data, data + length, Memory + offset)) << offset << ' ' << length;
            EXPECT_EQ(std::count(data + length, std::end(data), 0), static_cast<int>(sizeof data - length));

            for (ULONG i = 0; i < length; ++i) {
                expected[offset + i] = data[i] = static_cast<UCHAR>(0xF1 - 5 * i);
            }
            EXPECT_EQ(ShippedDriver::HardwareWrite(FirstAddress + offset, length, data), STATUS_SUCCESS);
            EXPECT_TRUE(std::equal(expected, std::end(expected), Memory)) << offset << ' ' << length;
            EXPECT_EQ(Held, "");
        }
    }
    UCHAR byte = 7;
    EXPECT_EQ(ShippedDriver::HardwareRead(0x2000, 1, &byte), STATUS_ACCESS_DENIED);
    EXPECT_EQ(ShippedDriver::HardwareWrite(0x2000, 1, &byte), STATUS_ACCESS_DENIED);
}

TEST(ShippedHardware, AsksForTheRangesWhereFirmwareCanBeMapped) {
    for (const bool mapped : {true, false}) {
        FirmwareCanBeMapped = mapped;
        ShippedDriver::HardwareStart();
        EXPECT_EQ(ShippedDriver::HardwareRangesGet(), mapped ? Ranges() : nullptr);
        EXPECT_EQ(Held, "");
    }
    ShippedDriver::HardwareRangesFree(Ranges());
    EXPECT_EQ(Freed, Ranges());
}

TEST(ShippedHardware, AllocatesZeroedMemory) {
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
