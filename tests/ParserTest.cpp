// Table acquisition, the structure walk and the field lookup.
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/DriverLoad.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/model/EntryPoint.h"
#include "machine/model/Faults.h"
#include "machine/model/SampleMachine.h"
#include "tests/Support.h"

#include <gtest/gtest.h>

using StandIn::Bytes;
using StandIn::Machine;
using StandIn::SmbiosBuilder;

namespace {

constexpr std::uint32_t SegmentAddress = 0xF0000;

// A value as text: its bytes in hexadecimal, "none" without a value, or the status of a failure.
std::string Shown(RyxStatus status, RyxBin* bin) {
    const RyxBinOwner owner(bin);
    char piece[16];
    if (status != RyxOk) {
        std::snprintf(piece, sizeof piece, "%08X", status);
        return piece;
    }
    if (bin == nullptr) {
        return "none";
    }
    std::string text;
    for (std::uint32_t i = 0; i < bin->Size; ++i) {
        std::snprintf(piece, sizeof piece, "%s%02X", i > 0 ? " " : "", bin->Data[i]);
        text += piece;
    }
    return text;
}

std::string Field(std::uint32_t type, std::uint32_t row, std::uint32_t instance = 1) {
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosDataGet(type * RyxFieldsPerType + row, instance, &bin);
    return Shown(status, bin);
}

std::string EntryPointField(std::uint32_t field) {
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosEpsDataGet(field, &bin);
    return Shown(status, bin);
}

void Start(const Machine& machine) {
    StartOver(machine);
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
}

// A machine whose table is exactly these bytes, at SMBIOS 2.8, on one road or the other.
void StartWith(const Bytes& table, bool legacy = true) {
    Machine machine;
    std::string error;
    const auto length = static_cast<std::uint16_t>(table.size());
    const Bytes entryPoint =
        legacy ? StandIn::EntryPoint21(2, 8, 0xE0000, length, 1, length) : StandIn::EntryPoint30(2, 8, 0xE0000, length);
    ASSERT_TRUE(StandIn::TablesInstall(machine, entryPoint, table, &error)) << error;
    Start(machine);
}

// A segment with bytes of an entry point at an offset; its table address and length as given.
Machine SegmentMachine(std::uint32_t offset, std::uint32_t tableAddress, std::uint16_t tableLength) {
    Machine machine;
    machine.Memory.push_back({SegmentAddress + offset, StandIn::EntryPoint21(2, 7, tableAddress, tableLength, 1, 40)});
    SmbiosBuilder table;
    table.Begin(11).Byte(5);
    machine.Memory.push_back({0xE0000, table.Table()});
    return machine;
}

TEST(Acquisition, FindsTheEntryPointOnItsBoundariesOnly) {
    for (const std::uint32_t offset : {0x0U, 0x10U, 0x30U, 0x40U, 0x1250U, 0xFFB0U, 0xFFC0U, 0xFFD0U, 0xFFE0U}) {
        Start(SegmentMachine(offset, 0xE0000, 7));
        EXPECT_EQ(Field(11, 3), "05") << offset;
    }
    for (const std::uint32_t offset : {0x8U, 0xFFF0U}) {
        Start(SegmentMachine(offset, 0xE0000, 7));
        EXPECT_EQ(Captured([] { EXPECT_EQ(Field(11, 3), "8000000E"); }),
                  "Failed to read DMI struct. Status = 8000000E\n");
    }
    Machine wrongSums = SegmentMachine(0x20, 0xE0000, 7);
    wrongSums.Memory[0].Data[4] ^= 0x55;
    wrongSums.Memory[0].Data[21] ^= 0x55;
    Start(wrongSums);
    EXPECT_EQ(Field(11, 3), "05");
    Machine halfAnchor = SegmentMachine(0x20, 0xE0000, 7);
    halfAnchor.Memory[0].Data[16] = '-';
    Start(halfAnchor);
    Captured([] { EXPECT_EQ(Field(11, 3), "8000000E"); });
}

TEST(Acquisition, FailsWithItsMessages) {
    Machine unreadable = SegmentMachine(0, 0xE0000, 7);
    unreadable.Faults.push_back({*StandIn::OperationFind("DeviceIoControl"), DriverMemoryRead});
    Start(unreadable);
    EXPECT_EQ(Captured([] { EXPECT_EQ(Field(11, 3), "8000000E"); }),
              "Failed to read DMI entry information. Status = 800000CC\n");
    EXPECT_EQ(EntryPointField(0), "8000000E");
    EXPECT_EQ(StandIn::CallCount("GetSystemFirmwareTable"), 0U);

    Machine tableUnreadable = SegmentMachine(0, 0xE0000, 7);
    tableUnreadable.Faults.push_back({*StandIn::OperationFind("DeviceIoControl"), DriverMemoryRead, 2});
    Start(tableUnreadable);
    EXPECT_EQ(Captured([] { EXPECT_EQ(Field(11, 3), "800000CE"); }),
              "Failed to read physical memory data(SMBIOS) to buffer. Status = 800000CC\n");
    EXPECT_EQ(Field(11, 3), "05") << "the next request is undisturbed";

    Start(SegmentMachine(0, 0xE0000, 0));
    EXPECT_EQ(Captured([] { EXPECT_EQ(Field(11, 3), "800000CE"); }),
              "Failed to read physical memory data(SMBIOS) to buffer. Status = 80000002\n");
}

TEST(Acquisition, AnEntryPointWithoutAnAddressSendsToTheService) {
    Machine machine = SegmentMachine(0, 0, 7);
    SmbiosBuilder table;
    table.Begin(11).Byte(9);
    std::string error;
    ASSERT_TRUE(StandIn::TablesInstall(machine, StandIn::EntryPoint30(3, 1, 0x1000, 7), table.Table(), &error));
    Start(machine);
    EXPECT_EQ(Field(11, 3), "09");
    // What the scan found stays, but for what the service tells.
    EXPECT_EQ(EntryPointField(0), "5F 53 4D 5F");
    EXPECT_EQ(EntryPointField(3), "03");
    EXPECT_EQ(EntryPointField(4), "01");
}

TEST(Acquisition, EntryPointFieldsOfTheService) {
    SmbiosBuilder table;
    table.Begin(11).Byte(9);
    Start(StandIn::MachineWithTable(table, 3, 2, false));
    const char* const expected[] = {
        "00 00 00 00",    "00", "00",    "03",          "02",    "00 00", "01", "00 00 00 00 00",
        "00 00 00 00 00", "00", "07 00", "00 00 00 00", "00 00", "00"};
    for (std::uint32_t field = 0; field < std::size(expected); ++field) {
        EXPECT_EQ(EntryPointField(field), expected[field]) << field;
    }
    EXPECT_EQ(EntryPointField(14), "") << "an unknown field is empty";
}

// The service's answer is not to be trusted: its header may claim more than there is, and it may be very long.
TEST(Acquisition, TheServicesAnswerIsChecked) {
    SmbiosBuilder table;
    table.Begin(11).Byte(9);
    Machine machine = StandIn::MachineWithTable(table, 2, 8, false);
    const Bytes good = *machine.SmbiosTable;
    for (const Bytes& answer : {Bytes(), Bytes(good.begin(), good.begin() + 7), Bytes(good.begin(), good.end() - 1)}) {
        machine.SmbiosTable = answer;
        Start(machine);
        Captured([] { EXPECT_EQ(Field(11, 3), "8000000E"); });
    }
    machine.SmbiosTable = Bytes(8);
    Start(machine);
    EXPECT_EQ(Field(11, 3), "none") << "a header alone is an empty table";
    // A table of more than 64 KiB is asked for again, and one of more than 16 MiB is not taken.
    constexpr std::uint32_t largest = 16U << 20U;
    const std::pair<std::uint32_t, std::uint64_t> sizes[] = {
        {0x10000, 1}, {0x10001, 2}, {largest, 2}, {largest + 1, 1}};
    for (const auto& [size, calls] : sizes) {
        Bytes answer(good.begin(), good.begin() + 8);
        answer.resize(size);
        StandIn::BytesPut(answer, 4, size - 8);
        std::copy_n(Bytes{11, 5, 0, 0, 7}.begin(), 5, answer.end() - 7);
        answer[8 + 1] = 4;
        std::fill(answer.begin() + 12, answer.end() - 9, std::uint8_t{'x'});
        machine.SmbiosTable = answer;
        Start(machine);
        Captured([size = size] { EXPECT_EQ(Field(11, 3), size > largest ? "8000000E" : "07") << size; });
        EXPECT_EQ(StandIn::CallCount("GetSystemFirmwareTable"), calls) << size;
    }
}

TEST(Acquisition, IsCountedOnBothRoads) {
    SmbiosBuilder table;
    table.Begin(1).String("Maker").String("").Byte(0).Byte(0).Raw(Bytes(16, 0)).Byte(6).Byte(0).Byte(0);
    // Two entry point fields for the version, then eleven fields of the structure.
    const Viewed legacy = View({"/type", "1"}, StandIn::MachineWithTable(table, 2, 8, true));
    EXPECT_EQ(legacy.Error, 0U);
    EXPECT_EQ(StandIn::ControlCount(DriverMemoryRead), 1U + 11U) << "the segment once, the table at every request";
    EXPECT_EQ(StandIn::CallCount("GetSystemFirmwareTable"), 0U);
    const Viewed firmware = View({"/type", "1"}, StandIn::MachineWithTable(table, 2, 8, false));
    EXPECT_EQ(firmware.Output, legacy.Output);
    EXPECT_EQ(StandIn::ControlCount(DriverMemoryRead), 2U + 11U) << "the segment at every request";
    EXPECT_EQ(StandIn::CallCount("GetSystemFirmwareTable"), 2U + 11U);
}

TEST(Lookup, InstancesCountAmongTheFirst128Structures) {
    for (const int before : {127, 128}) {
        SmbiosBuilder table;
        for (int i = 0; i < before; ++i) {
            table.Begin(130, 1).Byte(0);
        }
        Start(StandIn::MachineWithTable(table.Begin(11).Byte(1), 2, 8));
        EXPECT_EQ(Field(11, 3), before < 128 ? "01" : "none");
    }
    SmbiosBuilder handles;
    handles.Begin(11, 0x123).Byte(1).Begin(11, 0x23).Byte(2).Begin(127, 0xFEFF).Begin(11, 0xFF).Byte(3);
    handles.Begin(200, 5);
    Start(StandIn::MachineWithTable(handles, 2, 8));
    EXPECT_EQ(Field(11, 3, 0), "none");
    EXPECT_EQ(Field(11, 3, 1), "02") << "a handle above 00FFh does not count";
    EXPECT_EQ(Field(11, 3, 2), "03") << "and type 127 does not end the table";
    EXPECT_EQ(Field(127, 2), "FF FE");
    EXPECT_EQ(Field(200, 0), "80000002") << "present, but without rows";
    EXPECT_EQ(Field(201, 0), "none");
}

TEST(Lookup, RulesPlaceValues) {
    SmbiosBuilder table;
    table.Begin(0).Raw(Bytes(14, 0)).Raw({0x12, 0x34});
    table.Begin(2).Raw(Bytes(10, 0)).Raw({3, 0x11, 0, 0x12, 0, 0x13, 0x01});
    table.Begin(3).Raw(Bytes(15, 0)).Raw({2, 3, 1, 2, 3, 4, 5, 6, 1}).SetString("sku");
    table.Begin(5).Raw(Bytes(10, 0)).Raw({2, 0xA1, 0, 0xA2, 0, 0x2C});
    table.Begin(15).Raw(Bytes(17, 0)).Raw({2, 2, 1, 0, 0x10, 2});
    table.Begin(32).Raw(Bytes(6, 0)).Raw({0, 0x85, 9});
    table.Begin(37).Raw({3, 9, 4, 1, 0x11, 0, 2, 0x12, 0, 3, 0x13, 0, 4, 0x14, 0x01});
    table.Begin(40).Raw({2, 6, 1, 0, 2, 0, 7, 7, 2, 0, 3, 0, 8, 9});
    table.Begin(42).Raw({0xF0, 1, 2, 3, 4}).Begin(42).Raw({0x02, 9, 9});
    Start(StandIn::MachineWithTable(table, 2, 8));
    EXPECT_EQ(Field(0, 9), "12 34");
    EXPECT_EQ(Field(2, 13), "11 00 12 00 13 01");
    EXPECT_EQ(Field(3, 17), "01 02 03 04 05 06");
    EXPECT_EQ(Field(3, 18), "73 6B 75 00");
    EXPECT_EQ(Field(5, 12), "A1 00 A2 00");
    EXPECT_EQ(Field(5, 13), "2C");
    EXPECT_EQ(Field(15, 13), "01 00 10 02");
    EXPECT_EQ(Field(32, 4), "00 85 09");
    EXPECT_EQ(Field(37, 8), "04");
    EXPECT_EQ(Field(37, 9), "14 01");
    EXPECT_EQ(Field(40, 4), "06 01 00 02 00 07");
    EXPECT_EQ(Field(42, 4), "01 02 03 04");
    EXPECT_EQ(Field(42, 4, 2), "09");
    RyxBin* bin = nullptr;
    RyxStatus status = RyxSmbiosAreaGet(40, 1, 5, &bin);
    EXPECT_EQ(Shown(status, bin), "06 01 00 02 00 07 07 02 00 03 00 08 09");
    EXPECT_EQ(RyxSmbiosAreaGet(40, 1, 18, &bin), RyxErrorUnsupported);
}

TEST(Lookup, CountsOf0AndCountsBeyondTheTable) {
    SmbiosBuilder table;
    table.Begin(2).Raw(Bytes(10, 0)).Raw({0, 0});
    table.Begin(3).Raw(Bytes(15, 0)).Raw({0, 9, 1}).SetString("s");
    table.Begin(5).Raw(Bytes(10, 0)).Raw({200, 0});
    table.Begin(37).Raw({3, 9, 0, 1, 0x11, 0, 2, 0x12, 0, 3}); // a count of 0 puts the last entry before the first
    Start(StandIn::MachineWithTable(table, 2, 8));
    EXPECT_EQ(Field(2, 13), "");
    EXPECT_EQ(Field(3, 17), "");
    EXPECT_EQ(Field(3, 18), "73 00");
    EXPECT_EQ(Field(5, 12), "80000003");
    EXPECT_EQ(Field(5, 13), "80000003");
    EXPECT_EQ(Field(37, 8), "03");
}

// A computed offset is one byte wide: what a count puts at 256 and behind lies at the structure's start again.
TEST(Lookup, ComputedOffsetsWrapWithinOneByte) {
    SmbiosBuilder table;
    table.Begin(3).Raw({0, 1}).Raw(Bytes(13)).Raw({16, 15}).Byte(0).SetString("sku"); // 21 + 240 elements: 5
    table.Begin(5).Raw({0, 0, 0, 0, 0, 0x2C}).Raw(Bytes(4)).Raw({125}).Byte(0);       // 15 + 250 bytes: 9
    table.Begin(37).Raw({3, 9, 86, 0x12, 0x34}).Raw(Bytes(6));                        // 7 + 255 bytes: 6
    Start(StandIn::MachineWithTable(table, 2, 8));
    EXPECT_EQ(Field(3, 18), "73 6B 75 00");
    EXPECT_EQ(Field(5, 13), "2C");
    EXPECT_EQ(Field(37, 8), "56");
    EXPECT_EQ(Field(37, 9), "12 34");
}

// Damaged tables: every field of every type is asked for, on both roads, under the sanitizers in CI.
TEST(Lookup, NeverReadsPastADamagedTable) {
    const Bytes whole = *StandIn::SampleMachine().SmbiosTable;
    Bytes table(whole.begin() + 8, whole.end());
    const auto ask = [](const Bytes& bytes) {
        for (const bool legacy : {true, false}) {
            StartWith(bytes, legacy);
            Captured([] {
                for (std::uint32_t type = 0; type < 128; type = type == 42 ? 126 : type + 1) {
                    for (std::uint32_t row = 0; row < 26; ++row) {
                        Field(type, row, type % 2 + 1);
                    }
                }
            });
        }
    };
    for (std::size_t size = 1; size < table.size(); size += table.size() / 40) {
        ask(Bytes(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    for (std::uint8_t length = 0; length < 4; ++length) {
        Bytes damaged = table;
        damaged[1] = length;
        ask(damaged);
    }
    ask(Bytes(300, 0x20)); // no terminator anywhere
    ask(Bytes(300, 0x00));
    ask(Bytes(300, 0xFF));
}

TEST(Lookup, AnAreaEndsWithTheTable) {
    StartWith({11, 5, 0, 0, 1, 0, 0, 1, 8, 1});
    EXPECT_EQ(Field(1, 0), "none") << "three bytes are no structure";
    StartWith({11, 9, 0, 0, 1, 2, 3});
    const auto area = [](std::uint8_t offset) {
        RyxBin* bin = nullptr;
        const RyxStatus status = RyxSmbiosAreaGet(11, 1, offset, &bin);
        return Shown(status, bin);
    };
    EXPECT_EQ(area(5), "02 03") << "the area ends with the table";
    EXPECT_EQ(area(7), "");
    EXPECT_EQ(area(8), "80000003");
}

} // namespace
